/* Memory that runs out. */
#ifndef KESTREL_TESTS_MODULES_LITTLE_MEMORY_H
#define KESTREL_TESTS_MODULES_LITTLE_MEMORY_H

/* Makes a block of 3 GiB or more impossible to allocate, for its lifetime. (Builds with AddressSanitizer
 * always refuse such blocks; see little_memory.cpp.) */
struct little_memory {
  little_memory();
  ~little_memory();
  little_memory(const little_memory &) = delete;
  little_memory &operator=(const little_memory &) = delete;
};

#endif
