/* What a transfer came to, in words and as a code: the many ways in which libcurl can end. */
#ifndef KESTREL_SOFTSWITCH_TRANSFER_OUTCOME_H
#define KESTREL_SOFTSWITCH_TRANSFER_OUTCOME_H

#include "platform/softswitch/transfer/client.h"
#include "platform/softswitch/transfer/url.h"

#include <curl/curl.h>
#include <string>

namespace softswitch {

/* Fills in code and reason, the latter cut to its room. */
void set_outcome(transfer_result *result, OPEN_TRANSFER_CODE_t code, const std::string &reason);

/* The same for how libcurl ended.
 *   curl       the easy handle, still with its transfer
 *   ended      libcurl's result
 *   connected  whether the server had answered and let the switch in
 *   message    libcurl's words on it (CURLOPT_ERRORBUFFER); passed on only where nothing else says why, and
 *              never with user, password or query of the URL */
void set_curl_outcome(transfer_result *result, CURL *curl, CURLcode ended, bool connected,
                      const char *message, const url_guard &url);

} // namespace softswitch

#endif
