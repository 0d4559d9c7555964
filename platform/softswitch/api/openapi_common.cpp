/* Registration, connectivity and address parsing; the contracts are in platform/api/openapi_common.h. */
#include "platform/api/openapi_common.h"

#include "platform/softswitch/api/call.h"
#include "platform/softswitch/services/faults.h"

#include <stdio.h>
#include <string.h>

using namespace softswitch;

/* A program's name is 1..63 characters. */
static constexpr size_t client_name_max = 63;

static open_error_t register_client(const char *name, openapiClientHandle_t *handle) {
  if (!name || !handle || !*name || strlen(name) > client_name_max) return OPEN_E_PARAM;
  open_error_t ordered;
  if (fault_due("openapiClientRegister", &ordered)) return ordered;
  std::string error;
  if (!start(&error)) {
    fprintf(stderr, "kestrel: %s\n", error.c_str());
    return OPEN_E_FAIL;
  }
  register_handle(handle);
  return OPEN_E_NONE;
}

/* The one call without a registered handle, hence without the frame of the others. */
open_error_t openapiClientRegister(const char *name, openapiClientHandle_t *handle) {
  open_error_t result = register_client(name, handle);
  char no_name[] = "";
  open_buffdesc text = {client_name_max, name ? const_cast<char *>(name) : no_name};
  return call_trace(__func__, {text_in(&text)}, result);
}

open_error_t rpcclt_openapiConnectivityCheck(openapiClientHandle_t *handle) {
  return api_call(__func__, handle, {}, [](switch_model &) { return OPEN_E_NONE; });
}

open_error_t rpcclt_openapiInetAddrGet(openapiClientHandle_t *handle, open_buffdesc *text,
                                       open_inet_addr_t *addr) {
  return api_call_unlocked(__func__, handle, {text_in(text), output(addr)}, [&] {
    bool good = inet_address_read(std::string(text_of(*text)), addr);
    return good ? OPEN_E_NONE : OPEN_E_FAIL;
  });
}
