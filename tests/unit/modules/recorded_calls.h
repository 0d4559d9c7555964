/* What platform functions were called with, where the software switch makes no difference of it. These
 * programs bring functions of those names of their own (recorded_acl.cpp, recorded_routing.cpp,
 * recorded_bgp.cpp), which go on to the library's. */
#ifndef KESTREL_TESTS_MODULES_RECORDED_CALLS_H
#define KESTREL_TESTS_MODULES_RECORDED_CALLS_H

#include "platform/api/openapi_common.h"

#include <string>

/* The arguments of the latest call behind the rule's number, separated by blanks: a number as it is, a text
 * as its size and what stands before its terminator, "3:a0", an address as its family and text, "1:10.0.0.1".
 * Empty when there was no call since the last forget_calls(). */
std::string recorded_arguments(const std::string &function);
void forget_calls();

/* --- For the functions that record ---------------------------------------------------------------------- */

void record_call(const char *function, const std::string &arguments);
std::string written(uint32_t number);
std::string written(const open_buffdesc *text);
std::string written(const open_inet_addr_t *address);

/* The arguments with blanks between them. */
template <typename First, typename Second, typename... Others>
std::string written(First first, Second second, Others... others) {
  return written(first) + " " + written(second, others...);
}

#endif
