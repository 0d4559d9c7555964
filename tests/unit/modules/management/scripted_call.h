/* One call of a scripted platform function (scripted_platform.h): it is recorded, then fails or puts out what
 * the test has given. */
#ifndef KESTREL_TESTS_MODULES_MANAGEMENT_SCRIPTED_CALL_H
#define KESTREL_TESTS_MODULES_MANAGEMENT_SCRIPTED_CALL_H

#include "platform/api/openapi_common.h"
#include "tests/unit/modules/recorded_calls.h"

#include <string>

class scripted_call {
public:
  scripted_call(openapiClientHandle_t *handle, const char *function) { begin(handle, function, ""); }
  template <typename... Arguments>
  scripted_call(openapiClientHandle_t *handle, const char *function, Arguments... arguments) {
    begin(handle, function, written(arguments...));
  }

  /* Outputs, by their names when there are several. */
  scripted_call &put(uint32_t *number, const char *name = "");
  scripted_call &put(int32_t *number, const char *name = "");
  scripted_call &put(open_inet_addr_t *address, const char *name = "");
  scripted_call &put(open_buffdesc *text);
  scripted_call &expect_zeroed(const open_buffdesc *text);
  open_error_t result() const { return rc_; }

private:
  void begin(openapiClientHandle_t *handle, const char *function, const std::string &arguments);
  /* What the output may be given as: of this call, of every call of the function. */
  std::string name_of_output(const char *name) const;
  std::string name_of_every_output(const char *name) const;

  std::string function_, call_;
  open_error_t rc_;
};

#endif
