/* A platform of which a test gives every answer. This program brings the functions of the system, the
 * chassis, logging, SSH and processes itself, in place of the library's, and no switch stands behind them.
 *
 * A call is named by its function without "rpcclt_openapi" and, behind blanks, what it was called with:
 * numbers as they are, texts with the size of their buffer, "LoggingHostAdd 256:10.0.0.1", addresses with
 * their family, "1:10.0.0.1" (recorded_calls.h). A call that fills a buffer ends with the size of that:
 * "SystemHostnameGet [65]". */
#ifndef KESTREL_TESTS_MODULES_MANAGEMENT_SCRIPTED_PLATFORM_H
#define KESTREL_TESTS_MODULES_MANAGEMENT_SCRIPTED_PLATFORM_H

#include "platform/api/openapi_common.h"

#include <string>
#include <vector>

/* The client handle that modules must hand on; every call checks it. */
openapiClientHandle_t *scripted_handle();

/* Forgets what was given and called. Then each call that is made and puts something out that was not given
 * reports a failure. */
void begin_script();

/* What calls put out: those of a function ("BoxsFanStateGet"), or those with certain numbers or texts
 * ("BoxsFanStateGet 1"), which count first. Of a call with several outputs each is given with its name behind
 * ("ProcMemInfoGet free"). A text that does not fit fills the whole buffer, without terminator, and its size
 * is said to be that of the text. An address is given as its IPv4 number; it comes with family IPv4 unless
 * another one is given under "... family". */
void give(const std::string &call, uint32_t number);
void give(const std::string &call, const std::string &text);

/* All calls of this name answer this; a call that fails fills its outputs with nonsense. OPEN_E_NONE lets
 * them succeed again. */
void fail_call(const std::string &call, open_error_t rc);
/* The call at this position (0 = the first) since the last take_calls() answers this. */
void fail_call_at(size_t position, open_error_t rc);

/* The calls that were made since this was last called. */
std::vector<std::string> take_calls();

#endif
