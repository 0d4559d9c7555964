/* Codes and reasons; see outcome.h. */
#include "platform/softswitch/transfer/outcome.h"

#include <openssl/x509_vfy.h>
#include <string.h>

namespace softswitch {

void set_outcome(transfer_result *result, OPEN_TRANSFER_CODE_t code, const std::string &reason) {
  result->code = code;
  std::string kept = printable(reason, sizeof result->reason - 1);
  memcpy(result->reason, kept.c_str(), kept.size() + 1);
}

/* --- By libcurl's result -------------------------------------------------------------------------------- */

struct curl_outcome {
  CURLcode ended;
  OPEN_TRANSFER_CODE_t code;
  const char *reason;
};

static constexpr curl_outcome outcomes[] = {
    {CURLE_COULDNT_RESOLVE_HOST, OPEN_TRANSFER_UNREACHABLE, "the server's name cannot be resolved"},
    {CURLE_COULDNT_CONNECT, OPEN_TRANSFER_UNREACHABLE, "the server cannot be reached"},
    {CURLE_SSL_CACERT_BADFILE, OPEN_TRANSFER_NOT_TRUSTED, "the trusted certificates cannot be read"},
    {CURLE_LOGIN_DENIED, OPEN_TRANSFER_ACCESS_DENIED, "the server refuses user or password"},
    {CURLE_AUTH_ERROR, OPEN_TRANSFER_ACCESS_DENIED, "the server refuses user or password"},
    {CURLE_REMOTE_ACCESS_DENIED, OPEN_TRANSFER_ACCESS_DENIED, "the server denies access"},
    {CURLE_UPLOAD_FAILED, OPEN_TRANSFER_ACCESS_DENIED, "the server does not take the file"},
    {CURLE_TFTP_PERM, OPEN_TRANSFER_ACCESS_DENIED, "the server denies access"},
    {CURLE_REMOTE_FILE_EXISTS, OPEN_TRANSFER_ACCESS_DENIED, "the server has such a file already"},
    {CURLE_TFTP_NOSUCHUSER, OPEN_TRANSFER_ACCESS_DENIED, "the server refuses the user"},
    {CURLE_REMOTE_FILE_NOT_FOUND, OPEN_TRANSFER_NO_FILE, "the server has no such file"},
    {CURLE_TFTP_NOTFOUND, OPEN_TRANSFER_NO_FILE, "the server has no such file"},
    {CURLE_TFTP_ILLEGAL, OPEN_TRANSFER_FAILED, "the server breaks the rules of TFTP"},
    {CURLE_TFTP_UNKNOWNID, OPEN_TRANSFER_FAILED, "the server breaks the rules of TFTP"},
    {CURLE_PARTIAL_FILE, OPEN_TRANSFER_CUT, "the connection ended before the file did"},
    {CURLE_GOT_NOTHING, OPEN_TRANSFER_CUT, "the server closed the connection without an answer"},
    {CURLE_REMOTE_DISK_FULL, OPEN_TRANSFER_FAILED, "the server has no room"},
    {CURLE_TOO_MANY_REDIRECTS, OPEN_TRANSFER_FAILED, "the server redirects too often"},
};

/* libcurl's own words, unless they show what is secret. */
static std::string message_of(CURLcode ended, const char *message, const url_guard &url) {
  std::string text = *message ? message : curl_easy_strerror(ended);
  while (text.ends_with('.') || text.ends_with('\n')) text.pop_back();
  for (CURLUPart part : {CURLUPART_USER, CURLUPART_PASSWORD, CURLUPART_QUERY}) {
    for (bool decoded : {false, true}) {
      std::string secret = url_part(url, part, decoded);
      if (!secret.empty() && text.find(secret) != std::string::npos) return curl_easy_strerror(ended);
    }
  }
  return text;
}

/* --- By more than that ---------------------------------------------------------------------------------- */

static std::string with_number(const char *reason, long number) {
  return std::string(reason) + " (" + std::to_string(number) + ")";
}

/* The server's answer is a number: of HTTP or FTP. */
static void set_answer_outcome(transfer_result *result, long answer) {
  if (answer == 401 || answer == 403 || answer == 530 || answer == 532)
    set_outcome(result, OPEN_TRANSFER_ACCESS_DENIED, with_number("the server denies access", answer));
  else if (answer == 404 || answer == 410 || answer == 550)
    set_outcome(result, OPEN_TRANSFER_NO_FILE, with_number("the server has no such file", answer));
  else
    set_outcome(result, OPEN_TRANSFER_FAILED, with_number("the server refuses", answer));
}

/* Why a certificate or a host key is not trusted. */
static std::string distrust(CURL *curl, const url_guard &url) {
  std::string scheme = url_part(url, CURLUPART_SCHEME);
  if (scheme == "scp" || scheme == "sftp") return "the server's host key is not a known one";
  long verified = X509_V_OK;
  curl_easy_getinfo(curl, CURLINFO_SSL_VERIFYRESULT, &verified);
  /* libcurl looks at the name before it says how the rest was verified. */
  if (verified == X509_V_OK || verified == X509_V_ERR_UNSPECIFIED)
    return "the server's certificate is for another name";
  return std::string("the server's certificate is not trusted: ") + X509_verify_cert_error_string(verified);
}

/* Whether a connection was lost. */
static bool is_break(CURLcode ended) {
  return ended == CURLE_RECV_ERROR || ended == CURLE_SEND_ERROR;
}

void set_curl_outcome(transfer_result *result, CURL *curl, CURLcode ended, bool connected,
                      const char *message, const url_guard &url) {
  long answer = 0;
  curl_easy_getinfo(curl, CURLINFO_RESPONSE_CODE, &answer);
  if (ended == CURLE_HTTP_RETURNED_ERROR || ended == CURLE_FTP_COULDNT_RETR_FILE)
    return set_answer_outcome(result, answer);
  if (ended == CURLE_PEER_FAILED_VERIFICATION)
    return set_outcome(result, OPEN_TRANSFER_NOT_TRUSTED, distrust(curl, url));
  if (!connected && (ended == CURLE_OPERATION_TIMEDOUT || is_break(ended)))
    return set_outcome(result, OPEN_TRANSFER_UNREACHABLE, "the server does not answer");
  if (ended == CURLE_OPERATION_TIMEDOUT) return set_outcome(result, OPEN_TRANSFER_TIMED_OUT, "no data moves");
  if (ended == CURLE_UNSUPPORTED_PROTOCOL && answer / 100 == 3)
    return set_outcome(result, OPEN_TRANSFER_FAILED, "the server redirects to a URL that is not followed");
  if (is_break(ended)) ended = CURLE_PARTIAL_FILE;
  for (const curl_outcome &row : outcomes) {
    if (row.ended == ended) return set_outcome(result, row.code, row.reason);
  }
  set_outcome(result, OPEN_TRANSFER_FAILED, message_of(ended, message, url));
}

} // namespace softswitch
