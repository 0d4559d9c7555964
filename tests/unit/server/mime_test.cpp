/* Content types of files. */
#include "server/http_conn.h"

#include <gtest/gtest.h>

struct MimeType : testing::Test {
  ~MimeType() override { mg_destroy_server(&server); }
  std::string of(const char *path) const {
    const struct vec type = mime_type_of(server, path);
    return {type.ptr, type.len};
  }
  mg_server *server = mg_create_server(nullptr, nullptr);
};

TEST_F(MimeType, IsThatOfTheExtension) {
  const std::map<std::string, std::string> types = {
      {"html", "text/html"},
      {"htm", "text/html"},
      {"shtm", "text/html"},
      {"shtml", "text/html"},
      {"css", "text/css"},
      {"js", "application/x-javascript"},
      {"ico", "image/x-icon"},
      {"gif", "image/gif"},
      {"jpg", "image/jpeg"},
      {"jpeg", "image/jpeg"},
      {"png", "image/png"},
      {"svg", "image/svg+xml"},
      {"txt", "text/plain"},
      {"torrent", "application/x-bittorrent"},
      {"wav", "audio/x-wav"},
      {"mp3", "audio/mpeg"},
      {"mid", "audio/midi"},
      {"m3u", "audio/x-mpegurl"},
      {"ogg", "audio/ogg"},
      {"ram", "audio/x-pn-realaudio"},
      {"xml", "text/xml"},
      {"json", "application/json"},
      {"xslt", "application/xml"},
      {"xsl", "application/xml"},
      {"doc", "application/msword"},
      {"exe", "application/octet-stream"},
      {"zip", "application/zip"},
      {"xls", "application/vnd.ms-excel"},
      {"tgz", "application/gzip"},
      {"tar", "application/x-tar"},
      {"gz", "application/gzip"},
      {"arj", "application/x-arj"},
      {"rar", "application/vnd.rar"},
      {"rtf", "application/rtf"},
      {"pdf", "application/pdf"},
      {"swf", "application/x-shockwave-flash"},
      {"mpg", "video/mpeg"},
      {"webm", "video/webm"},
      {"mpeg", "video/mpeg"},
      {"mov", "video/quicktime"},
      {"mp4", "video/mp4"},
      {"m4v", "video/x-m4v"},
      {"asf", "video/x-ms-asf"},
      {"avi", "video/x-msvideo"},
      {"bmp", "image/bmp"},
      {"ttf", "font/ttf"},
  };
  for (const auto &[extension, type] : types) EXPECT_EQ(of(("/srv/a." + extension).c_str()), type);
}

TEST_F(MimeType, CaseOfTheExtensionIsNoMatter) {
  EXPECT_EQ(of("/srv/A.HtMl"), "text/html");
}

TEST_F(MimeType, IsThatOfTheLastExtensionOfTheLastComponent) {
  EXPECT_EQ(of("/srv/a.html.gz"), "application/gzip");
  EXPECT_EQ(of("/srv/a.html/b"), "text/plain");
  EXPECT_EQ(of("a.css"), "text/css");
}

TEST_F(MimeType, IsPlainTextForAllOthers) {
  for (const char *path :
       {"/srv/README", "/srv/a.unknown", "/srv/a.", "/srv/ahtml", "/srv/a.htmlx", "/srv/a.ht", ""})
    EXPECT_EQ(of(path), "text/plain") << path;
}

TEST_F(MimeType, ExtraTypesComeFirst) {
  mg_set_option(server, "extra_mime_types",
                "html=text/x-own,.conf=text/x-conf; charset=utf-8,css,=a/b,.=c/d,js=");
  EXPECT_EQ(of("/srv/a.HTML"), "text/x-own");
  EXPECT_EQ(of("/srv/a.conf"), "text/x-conf; charset=utf-8");
  EXPECT_EQ(of("/srv/a.css"), "text/css"); /* entries without an extension or type say nothing */
  EXPECT_EQ(of("/srv/a.js"), "application/x-javascript");
  EXPECT_EQ(of("/srv/a"), "text/plain");
  EXPECT_EQ(of("/srv/a."), "text/plain");
}
