/* Platform functions with bent outputs: see bent_platform.h. */
#include "tests/unit/modules/bent_platform.h"

#include "platform/api/openapi_vlan.h"

#include <dlfcn.h>
#include <gtest/gtest.h>
#include <sys/resource.h>

std::optional<uint32_t> bent_vlan_name_size;
std::optional<uint32_t> bent_participation_mode;

open_error_t rpcclt_openapiVlanNameLenGet(openapiClientHandle_t *handle, uint32_t *size) {
  typedef open_error_t (*function)(openapiClientHandle_t *, uint32_t *);
  static const function library_function = reinterpret_cast<function>(dlsym(RTLD_NEXT, __func__));
  open_error_t rc = library_function(handle, size);
  if (bent_vlan_name_size) *size = *bent_vlan_name_size;
  return rc;
}

open_error_t rpcclt_openapiVlanIfParticipationGet(openapiClientHandle_t *handle, uint32_t vlanId,
                                                  uint32_t ifNum, uint32_t *mode) {
  typedef open_error_t (*function)(openapiClientHandle_t *, uint32_t, uint32_t, uint32_t *);
  static const function library_function = reinterpret_cast<function>(dlsym(RTLD_NEXT, __func__));
  open_error_t rc = library_function(handle, vlanId, ifNum, mode);
  if (bent_participation_mode) *mode = *bent_participation_mode;
  return rc;
}

#if defined(__SANITIZE_ADDRESS__)
#define KESTREL_TESTS_WITH_ASAN 1
#elif defined(__has_feature)
#if __has_feature(address_sanitizer)
#define KESTREL_TESTS_WITH_ASAN 1
#endif
#endif

#ifdef KESTREL_TESTS_WITH_ASAN

/* AddressSanitizer needs the address space for itself; it has a limit of its own. */
extern "C" const char *__asan_default_options() {
  return "allocator_may_return_null=1:max_allocation_size_mb=3000";
}

little_memory::little_memory() {}
little_memory::~little_memory() {}

#else

static void set_soft_limit(rlim_t bytes) {
  rlimit limit;
  ASSERT_EQ(getrlimit(RLIMIT_AS, &limit), 0);
  limit.rlim_cur = bytes < limit.rlim_max ? bytes : limit.rlim_max;
  ASSERT_EQ(setrlimit(RLIMIT_AS, &limit), 0);
}

little_memory::little_memory() {
  set_soft_limit(rlim_t{3} << 30);
}
little_memory::~little_memory() {
  set_soft_limit(RLIM_INFINITY);
}

#endif
