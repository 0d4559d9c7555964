/* URLs as transfers take them. libcurl's own parser reads them, so that what is judged and shown here is what
 * it will do. */
#ifndef KESTREL_SOFTSWITCH_TRANSFER_URL_H
#define KESTREL_SOFTSWITCH_TRANSFER_URL_H

#include <curl/curl.h>
#include <string>

namespace softswitch {

/* The schemes, as libcurl's options for protocols want them. */
inline constexpr char transfer_schemes[] = "tftp,ftp,ftps,http,https,scp,sftp";

/* A parsed URL. */
class url_guard {
public:
  url_guard() : handle(curl_url()) {}
  ~url_guard() { curl_url_cleanup(handle); }
  url_guard(const url_guard &) = delete;
  url_guard &operator=(const url_guard &) = delete;
  CURLU *const handle;
};

/* A part of a URL, percent-decoded if wanted; empty when it has none. */
std::string url_part(const url_guard &url, CURLUPart part, bool decoded = false);

/* Parses a URL. False when it is none, when its scheme is unknown, or when it names a folder or nothing for
 * a scheme that would list folders. */
bool url_parse(const url_guard &url, const char *text, bool upload);

/* Scheme, host, port and path: what logs may show. Printable ASCII. */
std::string url_shown(const url_guard &url);

/* A text from elsewhere as printable ASCII of at most `length_max` characters. */
std::string printable(std::string text, size_t length_max);

} // namespace softswitch

#endif
