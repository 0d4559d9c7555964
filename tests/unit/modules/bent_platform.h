/* Platform functions of which a test may bend the outputs to what the software switch never answers. These
 * programs bring functions of those names of their own, which go on to the library's. */
#ifndef KESTREL_TESTS_MODULES_BENT_PLATFORM_H
#define KESTREL_TESTS_MODULES_BENT_PLATFORM_H

#include <optional>
#include <stdint.h>

/* While set: rpcclt_openapiVlanNameLenGet answers this size. */
extern std::optional<uint32_t> bent_vlan_name_size;
/* While set: rpcclt_openapiVlanIfParticipationGet answers this mode. */
extern std::optional<uint32_t> bent_participation_mode;

/* Makes a block of 3 GiB or more impossible to allocate, for its lifetime. (Builds with AddressSanitizer
 * always refuse such blocks; see bent_platform.cpp.) */
struct little_memory {
  little_memory();
  ~little_memory();
  little_memory(const little_memory &) = delete;
  little_memory &operator=(const little_memory &) = delete;
};

#endif
