/* URLs of transfers; see url.h. */
#include "platform/softswitch/transfer/url.h"

#include <string_view>

namespace softswitch {

std::string url_part(const url_guard &url, CURLUPart part, bool decoded) {
  char *found = nullptr;
  if (curl_url_get(url.handle, part, &found, decoded ? CURLU_URLDECODE : 0) != CURLUE_OK) return "";
  std::string text = found;
  curl_free(found);
  return text;
}

/* Whether a scheme is one word of the list. */
static bool known_scheme(const std::string &scheme) {
  std::string list = std::string(",") + transfer_schemes + ",";
  return !scheme.empty() && list.find("," + scheme + ",") != std::string::npos;
}

bool url_parse(const url_guard &url, const char *text, bool upload) {
  if (!url.handle || curl_url_set(url.handle, CURLUPART_URL, text, 0) != CURLUE_OK) return false;
  std::string scheme = url_part(url, CURLUPART_SCHEME);
  if (!known_scheme(scheme) || url_part(url, CURLUPART_HOST).empty()) return false;
  /* A web server gives a file for a folder, too. */
  bool web = scheme == "http" || scheme == "https";
  return (web && !upload) || !url_part(url, CURLUPART_PATH).ends_with('/');
}

std::string url_shown(const url_guard &url) {
  std::string port = url_part(url, CURLUPART_PORT);
  std::string text = url_part(url, CURLUPART_SCHEME) + "://" + url_part(url, CURLUPART_HOST);
  if (!port.empty()) text += ":" + port;
  text += url_part(url, CURLUPART_PATH);
  return printable(text, text.size());
}

std::string printable(std::string text, size_t length_max) {
  if (text.size() > length_max) text.resize(length_max);
  for (char &byte : text) {
    if (byte < 0x20 || byte > 0x7e) byte = '?';
  }
  return text;
}

} // namespace softswitch
