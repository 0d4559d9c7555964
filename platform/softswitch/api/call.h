/* The frame of every function of the C interface. A function names itself and its arguments and gives the
 * call as a lambda; the frame checks handle and pointers, asks for faults on order, takes the lock and writes
 * the trace:
 *
 *   return api_call(__func__, handle, {vlanId, nextVlanId}, [&](switch_model &model) {
 *     return vlan_next(model, vlanId, nextVlanId);
 *   });
 *
 * Numbers are inputs, those of 64 bits wrapped in number64(); pointers to numbers are outputs, or wrapped in
 * number_in(); texts are wrapped in text_in(), text_out() or secret(), addresses in address_in() or
 * address_out(), other structures in input() or output(). */
#ifndef KESTREL_SOFTSWITCH_API_CALL_H
#define KESTREL_SOFTSWITCH_API_CALL_H

#include "platform/api/openapi_common.h"
#include "platform/softswitch/softswitch.h"

#include <initializer_list>
#include <string>
#include <string_view>

namespace softswitch {

/* One argument, for checking and tracing. */
struct call_argument {
  enum class kind {
    number,
    number64,
    number_in,
    number_out,
    text,
    text_out,
    text_hidden,
    address,
    address_out,
    other_in,
    other_out
  };

  call_argument(uint32_t value) : what(kind::number), number(value) {}
  call_argument(const uint32_t *output) : what(kind::number_out), pointer(output) {}
  call_argument(kind which, const void *at) : what(which), pointer(at) {}

  kind what;
  uint32_t number = 0;
  const void *pointer = nullptr; /* by kind: uint32_t, int64_t, open_buffdesc, open_inet_addr_t, anything */
  std::string (*describe)(const void *) = nullptr; /* other_in: gives what the trace shows */
};

/* A number of 64 bits going in. */
inline call_argument number64(const int64_t &number) {
  return {call_argument::kind::number64, &number};
}
/* A number going in that is pointed to. */
inline call_argument number_in(const uint32_t *number) {
  return {call_argument::kind::number_in, number};
}
inline call_argument text_in(const open_buffdesc *text) {
  return {call_argument::kind::text, text};
}
inline call_argument text_out(const open_buffdesc *text) {
  return {call_argument::kind::text_out, text};
}
/* A text going in that no trace shows. */
inline call_argument secret(const open_buffdesc *text) {
  return {call_argument::kind::text_hidden, text};
}
inline call_argument address_in(const open_inet_addr_t &address) {
  return {call_argument::kind::address, &address};
}
inline call_argument address_in(const open_inet_addr_t *address) {
  return {call_argument::kind::address, address};
}
inline call_argument address_out(const open_inet_addr_t *address) {
  return {call_argument::kind::address_out, address};
}
/* A structure going in. */
inline call_argument input(const void *pointer, std::string (*describe)(const void *)) {
  call_argument argument(call_argument::kind::other_in, pointer);
  argument.describe = describe;
  return argument;
}
/* An output that is not shown. */
inline call_argument output(const void *pointer) {
  return {call_argument::kind::other_out, pointer};
}

using call_arguments = std::initializer_list<call_argument>;

/* Checks pointers, handle and faults on order, in this order. OPEN_E_NONE when the call may go on. */
open_error_t call_check(const char *function, const openapiClientHandle_t *handle,
                        const call_arguments &arguments);
/* Writes the trace line when tracing is on; passes the result on. */
open_error_t call_trace(const char *function, const call_arguments &arguments, open_error_t result);
/* Turns the trace on or off. */
void trace_calls(bool on);

/* A call that works on the model, under the lock. */
template <typename Call>
open_error_t api_call(const char *function, const openapiClientHandle_t *handle, call_arguments arguments,
                      Call call) {
  open_error_t result = call_check(function, handle, arguments);
  if (result == OPEN_E_NONE) {
    locked_switch model;
    result = call(*model);
  }
  return call_trace(function, arguments, result);
}

/* A call that does without the model and its lock. */
template <typename Call>
open_error_t api_call_unlocked(const char *function, const openapiClientHandle_t *handle,
                               call_arguments arguments, Call call) {
  open_error_t result = call_check(function, handle, arguments);
  if (result == OPEN_E_NONE) result = call();
  return call_trace(function, arguments, result);
}

/* --- Handles and texts ---------------------------------------------------------------------------------- */

/* Makes a handle a registered one. */
void register_handle(openapiClientHandle_t *handle);

/* The text of a descriptor, whether its size counts a terminator or not. */
std::string_view text_of(const open_buffdesc &text);
/* Fills a descriptor. OPEN_E_PARAM, with nothing written, when the text and its terminator do not fit. */
open_error_t fill_text(open_buffdesc *into, std::string_view text);

} // namespace softswitch

#endif
