#include "tools/kestrelctl/server_address.h"

#include "tools/api/letters.h"
#include "tools/kestrelctl/text.h"

#include <curl/curl.h>
#include <memory>

struct url_release {
  void operator()(CURLU *url) const { curl_url_cleanup(url); }
};

/* A part of an address; empty when there is none. */
static std::string part_of(CURLU *url, CURLUPart part) {
  char *text = nullptr;
  if (curl_url_get(url, part, &text, 0) != CURLUE_OK) return "";
  const std::string copy = text;
  curl_free(text);
  return copy;
}

static bool has_more(CURLU *url) {
  const std::string path = part_of(url, CURLUPART_PATH);
  if (!path.empty() && path != "/") return true;
  for (CURLUPart part :
       {CURLUPART_USER, CURLUPART_PASSWORD, CURLUPART_QUERY, CURLUPART_FRAGMENT, CURLUPART_OPTIONS})
    if (!part_of(url, part).empty()) return true;
  return false;
}

bool read_server_address(const std::string &text, std::string *address, std::string *error) {
  const std::unique_ptr<CURLU, url_release> url(curl_url());
  const std::string full = text.find("://") == text.npos ? "https://" + text : text;
  const bool is_url = url != nullptr && curl_url_set(url.get(), CURLUPART_URL, full.c_str(), 0) == CURLUE_OK;
  const std::string scheme = is_url ? lower_case(part_of(url.get(), CURLUPART_SCHEME)) : "";
  if ((scheme != "https" && scheme != "http") || has_more(url.get())) {
    *error = "\"" + printable(text) + "\" is no address of a switch, such as " + DEFAULT_SERVER;
    return false;
  }
  std::string port = part_of(url.get(), CURLUPART_PORT);
  if (port.empty()) port = scheme == "https" ? "8446" : "8080";
  *address = scheme + "://" + lower_case(part_of(url.get(), CURLUPART_HOST)) + ":" + port;
  return true;
}
