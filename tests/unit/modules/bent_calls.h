/* How the platform functions with bent outputs are made: each goes on to the library's function of its name
 * and then bends what a test has ordered (bent_platform.h). */
#ifndef KESTREL_TESTS_MODULES_BENT_CALLS_H
#define KESTREL_TESTS_MODULES_BENT_CALLS_H

#include "platform/api/openapi_common.h"

#include <dlfcn.h>
#include <string>

/* Bends a number when that is ordered for `name`. */
void bend(const std::string &name, uint32_t *output);
/* Bends a text of which the buffer has `room` bytes: fills it with a character, leaves out the terminator and
 * says that the text is longer than the buffer. */
void bend_text(const std::string &name, open_buffdesc *text, uint32_t room);

/* Calls the library's function. */
template <typename... Arguments> open_error_t library_call(const char *function, Arguments... arguments) {
  typedef open_error_t (*library_function)(Arguments...);
  return reinterpret_cast<library_function>(dlsym(RTLD_NEXT, function))(arguments...);
}

/* The same, and bends `output`, which is among the arguments or within one. */
template <typename... Arguments>
open_error_t call_library(const char *function, uint32_t *output, Arguments... arguments) {
  open_error_t rc = library_call(function, arguments...);
  bend(function, output);
  return rc;
}

/* Calls the library's function that reads a text, which can be bent. */
open_error_t read_from_library(const char *function, openapiClientHandle_t *handle, uint32_t id,
                               open_buffdesc *text);

#endif
