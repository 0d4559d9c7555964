/* What platform functions were called with, where the software switch makes no difference of it. These
 * programs bring functions of those names of their own (recorded_acl.cpp), which go on to the library's. */
#ifndef KESTREL_TESTS_MODULES_RECORDED_CALLS_H
#define KESTREL_TESTS_MODULES_RECORDED_CALLS_H

#include <string>

/* The arguments of the latest call behind the rule's number, separated by blanks: a number as it is, a text
 * as its size and what stands before its terminator, "3:a0". Empty when there was no call since the last
 * forget_calls(). */
std::string recorded_arguments(const std::string &function);
void forget_calls();

#endif
