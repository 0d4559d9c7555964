/* Route matching: whatever the URI, the engine takes exactly the routes that sscanf(3) takes, and never
 * writes past a field. */
#include "tests/support/route_reference.h"

#include <stdint.h>
#include <stdio.h>
#include <stdlib.h>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
  std::string disagreement = find_disagreement(std::string(reinterpret_cast<const char *>(data), size));
  if (disagreement.empty()) return 0;
  fprintf(stderr, "%s\n", disagreement.c_str());
  abort();
}
