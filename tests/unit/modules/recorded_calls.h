/* What platform functions were called with, where the software switch makes no difference of it. These
 * programs bring functions of those names of their own (recorded_acl.cpp, bent_vxlan.cpp), which go on to the
 * library's. */
#ifndef KESTREL_TESTS_MODULES_RECORDED_CALLS_H
#define KESTREL_TESTS_MODULES_RECORDED_CALLS_H

#include <string>
#include <vector>

/* The arguments of the latest call (those of a rule: behind its number), separated by blanks: a number as it
 * is, a text as its size and what stands before its terminator, "3:a0". Empty when there was no call since
 * the last forget_calls(). */
std::string recorded_arguments(const std::string &function);
/* All calls since then in their order, each the function's name and its arguments. */
const std::vector<std::string> &recorded_calls();
void forget_calls();

/* What the functions that record do. */
void record_call(const std::string &function, const std::string &arguments);

#endif
