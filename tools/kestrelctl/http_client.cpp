#include "tools/kestrelctl/http_client.h"

#include "tools/kestrelctl/certificate.h"
#include "tools/kestrelctl/text.h"

#include <algorithm>
#include <curl/curl.h>
#include <memory>
#include <stdlib.h>

struct curl_release {
  void operator()(CURL *curl) const { curl_easy_cleanup(curl); }
};
using curl_holder = std::unique_ptr<CURL, curl_release>;

/* What a request goes through. */
struct exchange {
  curl_holder curl;
  certificate_check check;
  std::string body;
  bool too_large;
  char error[CURL_ERROR_SIZE];
};

static size_t take_body(char *data, size_t size, size_t count, void *argument) {
  exchange *going = static_cast<exchange *>(argument);
  if (going->body.size() + size * count > LARGEST_REPLY) return going->too_large = true, 0;
  going->body.append(data, size * count);
  return size * count;
}

static CURLcode prepare_tls(CURL *, void *context, void *argument) {
  install_certificate_check(static_cast<SSL_CTX *>(context), static_cast<certificate_check *>(argument));
  return CURLE_OK;
}

/* What goes to this machine never goes by way of a proxy. The option takes the place of the variable, which
 * must therefore be in it. */
static std::string no_proxy() {
  for (const char *name : {"no_proxy", "NO_PROXY"}) {
    const char *value = getenv(name);
    if (value != nullptr && value == std::string("*")) return "*";
    if (value != nullptr && *value != '\0') return std::string(value) + ",localhost,127.0.0.1,::1";
  }
  return "localhost,127.0.0.1,::1";
}

/* False when this libcurl cannot do what the checks need. */
static bool set_tls(exchange *going, const connection_settings &settings) {
  CURL *curl = going->curl.get();
  const bool names_count = going->check.trust == trust_in::AUTHORITIES;
  const bool set = curl_easy_setopt(curl, CURLOPT_SSL_CTX_FUNCTION, prepare_tls) == CURLE_OK &&
                   curl_easy_setopt(curl, CURLOPT_SSL_CTX_DATA, &going->check) == CURLE_OK &&
                   curl_easy_setopt(curl, CURLOPT_SSL_VERIFYPEER, 1L) == CURLE_OK &&
                   curl_easy_setopt(curl, CURLOPT_SSL_VERIFYHOST, names_count ? 2L : 0L) == CURLE_OK &&
                   curl_easy_setopt(curl, CURLOPT_SSLVERSION, long{CURL_SSLVERSION_TLSv1_2}) == CURLE_OK;
  if (names_count && !settings.ca_file.empty())
    return set && curl_easy_setopt(curl, CURLOPT_CAINFO, settings.ca_file.c_str()) == CURLE_OK &&
           curl_easy_setopt(curl, CURLOPT_CAPATH, nullptr) == CURLE_OK;
  return set;
}

static void set_transfer(exchange *going, const connection_settings &settings) {
  CURL *curl = going->curl.get();
  curl_easy_setopt(curl, CURLOPT_NOSIGNAL, 1L);
  curl_easy_setopt(curl, CURLOPT_PROTOCOLS_STR, "http,https");
  curl_easy_setopt(curl, CURLOPT_FOLLOWLOCATION, 0L);
  curl_easy_setopt(curl, CURLOPT_HTTP_VERSION, long{CURL_HTTP_VERSION_1_1});
  curl_easy_setopt(curl, CURLOPT_PATH_AS_IS, 1L);
  curl_easy_setopt(curl, CURLOPT_USERAGENT, "kestrelctl");
  curl_easy_setopt(curl, CURLOPT_NOPROXY, no_proxy().c_str());
  curl_easy_setopt(curl, CURLOPT_TIMEOUT, settings.seconds);
  curl_easy_setopt(curl, CURLOPT_CONNECTTIMEOUT, std::min(settings.seconds, long{CONNECT_SECONDS}));
  curl_easy_setopt(curl, CURLOPT_ERRORBUFFER, going->error);
  curl_easy_setopt(curl, CURLOPT_WRITEFUNCTION, take_body);
  curl_easy_setopt(curl, CURLOPT_WRITEDATA, going);
}

static bool prepare(exchange *going, const connection_settings &settings, trust_in trust) {
  going->curl.reset(curl_easy_init());
  going->check = {trust, settings.fingerprint, ""};
  if (going->curl == nullptr || !set_tls(going, settings)) return false;
  set_transfer(going, settings);
  return true;
}

static http_outcome outcome_of(CURLcode code) {
  switch (code) {
  case CURLE_PEER_FAILED_VERIFICATION:
    return http_outcome::NOT_TRUSTED;
  case CURLE_GOT_NOTHING:
  case CURLE_PARTIAL_FILE:
  case CURLE_RECV_ERROR:
  case CURLE_WEIRD_SERVER_REPLY:
  case CURLE_UNSUPPORTED_PROTOCOL:
  case CURLE_WRITE_ERROR:
  case CURLE_BAD_CONTENT_ENCODING:
    return http_outcome::BAD_REPLY;
  default:
    return http_outcome::NOT_REACHED;
  }
}

static http_reply failure_of(const exchange &going, CURLcode code, const connection_settings &settings) {
  std::string error = going.error[0] != '\0' ? going.error : curl_easy_strerror(code);
  if (going.too_large) error = "the answer is larger than " + std::to_string(LARGEST_REPLY) + " bytes";
  if (code == CURLE_OPERATION_TIMEDOUT)
    error = "no answer within " + std::to_string(settings.seconds) + " seconds (" + error + ")";
  return {outcome_of(code), "", printable(error), going.check.seen};
}

static http_reply perform(exchange *going, const connection_settings &settings) {
  const CURLcode code = curl_easy_perform(going->curl.get());
  if (code != CURLE_OK) return failure_of(*going, code, settings);
  return {http_outcome::REPLIED, std::move(going->body), "", going->check.seen};
}

static http_reply unable() {
  return {http_outcome::NOT_REACHED, "", "this libcurl cannot check certificates as it must", ""};
}

http_reply send_request(const connection_settings &settings, const http_message &request) {
  exchange going = {};
  const bool pinned = !settings.fingerprint.empty();
  if (!prepare(&going, settings, pinned ? trust_in::FINGERPRINT : trust_in::AUTHORITIES)) return unable();
  CURL *curl = going.curl.get();
  curl_easy_setopt(curl, CURLOPT_URL, (settings.server + request.target).c_str());
  if (!request.body.empty()) {
    curl_easy_setopt(curl, CURLOPT_POSTFIELDSIZE_LARGE, static_cast<curl_off_t>(request.body.size()));
    curl_easy_setopt(curl, CURLOPT_COPYPOSTFIELDS, request.body.c_str());
  }
  curl_easy_setopt(curl, CURLOPT_CUSTOMREQUEST, request.method.c_str());
  http_reply reply = perform(&going, settings);
  long status = 0;
  curl_easy_getinfo(curl, CURLINFO_RESPONSE_CODE, &status);
  if (reply.outcome != http_outcome::REPLIED || status == 200) return reply;
  return {http_outcome::BAD_REPLY, "", "the server answers with HTTP status " + std::to_string(status), ""};
}

http_reply see_certificate(const connection_settings &settings) {
  exchange going = {};
  if (!prepare(&going, settings, trust_in::ANYTHING)) return unable();
  curl_easy_setopt(going.curl.get(), CURLOPT_URL, settings.server.c_str());
  curl_easy_setopt(going.curl.get(), CURLOPT_CONNECT_ONLY, 1L);
  return perform(&going, settings);
}
