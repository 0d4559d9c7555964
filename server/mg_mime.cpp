/* Content types of files by their extensions. */
#include "server/http_conn.h"

#include <string.h>
#include <strings.h>

static const struct {
  const char *extension;
  const char *type;
} builtin_types[] = {
    {".html", "text/html"},
    {".htm", "text/html"},
    {".shtm", "text/html"},
    {".shtml", "text/html"},
    {".css", "text/css"},
    {".js", "application/x-javascript"},
    {".ico", "image/x-icon"},
    {".gif", "image/gif"},
    {".jpg", "image/jpeg"},
    {".jpeg", "image/jpeg"},
    {".png", "image/png"},
    {".svg", "image/svg+xml"},
    {".txt", "text/plain"},
    {".torrent", "application/x-bittorrent"},
    {".wav", "audio/x-wav"},
    {".mp3", "audio/mpeg"},
    {".mid", "audio/midi"},
    {".m3u", "audio/x-mpegurl"},
    {".ogg", "audio/ogg"},
    {".ram", "audio/x-pn-realaudio"},
    {".xml", "text/xml"},
    {".json", "application/json"},
    {".xslt", "application/xml"},
    {".xsl", "application/xml"},
    {".doc", "application/msword"},
    {".exe", "application/octet-stream"},
    {".zip", "application/zip"},
    {".xls", "application/vnd.ms-excel"},
    {".tgz", "application/gzip"},
    {".tar", "application/x-tar"},
    {".gz", "application/gzip"},
    {".arj", "application/x-arj"},
    {".rar", "application/vnd.rar"},
    {".rtf", "application/rtf"},
    {".pdf", "application/pdf"},
    {".swf", "application/x-shockwave-flash"},
    {".mpg", "video/mpeg"},
    {".webm", "video/webm"},
    {".mpeg", "video/mpeg"},
    {".mov", "video/quicktime"},
    {".mp4", "video/mp4"},
    {".m4v", "video/x-m4v"},
    {".asf", "video/x-ms-asf"},
    {".avi", "video/x-msvideo"},
    {".bmp", "image/bmp"},
    {".ttf", "font/ttf"},
};

/* The last component's extension with its dot, "" when it has none. */
static const char *extension_of(const char *path) {
  const char *slash = strrchr(path, '/');
  const char *dot = strrchr(slash == nullptr ? path : slash, '.');
  return dot == nullptr ? "" : dot;
}

/* Whether an entry of extra_mime_types, which may leave out the dot, names the extension. */
static bool names_extension(struct vec entry, const char *extension) {
  if (entry.len > 0 && entry.ptr[0] == '.') {
    entry.ptr++;
    entry.len--;
  }
  return entry.len > 0 && strlen(extension) == entry.len + 1 &&
         strncasecmp(entry.ptr, extension + 1, entry.len) == 0;
}

struct vec mime_type_of(const struct mg_server *server, const char *path) {
  const char *extension = extension_of(path);
  const char *list = server->config_options[EXTRA_MIME_TYPES];
  struct vec name, type;
  while ((list = next_option(list, &name, &type)) != nullptr) {
    if (type.len > 0 && names_extension(name, extension)) return type;
  }
  for (const auto &entry : builtin_types) {
    if (strcasecmp(entry.extension, extension) == 0) return {entry.type, strlen(entry.type)};
  }
  return {"text/plain", strlen("text/plain")};
}
