/* What platform functions were called with, where the software switch makes no difference of it. These
 * programs bring functions of those names of their own (recorded_acl.cpp, recorded_routing.cpp,
 * recorded_bgp.cpp, bent_vxlan.cpp), which go on to the library's. */
#ifndef KESTREL_TESTS_MODULES_RECORDED_CALLS_H
#define KESTREL_TESTS_MODULES_RECORDED_CALLS_H

#include "platform/api/openapi_common.h"
#include "tests/unit/modules/bent_calls.h"

#include <string>
#include <vector>

/* The arguments of the latest call behind the rule's number, separated by blanks: a number as it is, a text
 * as its size and what stands before its terminator, "3:a0", an address as its family and text, "1:10.0.0.1".
 * Empty when there was no call since the last forget_calls(). */
std::string recorded_arguments(const std::string &function);
/* All calls since then in their order: the function's name and, behind a blank, its arguments. */
const std::vector<std::string> &recorded_calls();
void forget_calls();

/* While it lives, the recorded functions of routing and BGP that change something answer OPEN_E_NONE and
 * change nothing, whatever they are called with. */
struct changes_not_carried_out {
  changes_not_carried_out();
  ~changes_not_carried_out();
  changes_not_carried_out(const changes_not_carried_out &) = delete;
  changes_not_carried_out &operator=(const changes_not_carried_out &) = delete;
};

/* --- For the functions that record ---------------------------------------------------------------------- */

void record_call(const char *function, const std::string &arguments);
std::string written(uint32_t number);
std::string written(int32_t number);
std::string written(const open_buffdesc *text);
std::string written(const open_inet_addr_t *address);

/* The arguments with blanks between them. */
template <typename First, typename Second, typename... Others>
std::string written(First first, Second second, Others... others) {
  return written(first) + " " + written(second, others...);
}

bool changes_are_carried_out();

/* Calls the library's function, which changes something, when changes are carried out. */
template <typename... Arguments> open_error_t carry_out(const char *function, Arguments... arguments) {
  return changes_are_carried_out() ? library_call(function, arguments...) : OPEN_E_NONE;
}

#endif
