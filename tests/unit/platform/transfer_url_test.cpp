/* Tests of the URLs of transfers: which are taken, and that nothing secret is shown of them. */
#include "platform/softswitch/services/transfer_library.h"

#include <gtest/gtest.h>

using namespace softswitch;

namespace {

/* A URL as logs show it; "(refused)" for one that is not taken. */
std::string shown(const std::string &url, bool upload = false) {
  const transfer_functions *library = transfer_library();
  if (!library) return "(no library)";
  std::string room(1024, '\0');
  return library->url_read(url.c_str(), upload, room.data(), room.size()) ? room.c_str() : "(refused)";
}

TEST(TransferUrl, EverySchemeInAnyCase) {
  for (std::string scheme : {"tftp", "ftp", "ftps", "http", "https", "scp", "sftp"}) {
    EXPECT_EQ(shown(scheme + "://192.0.2.1/dir/file"), scheme + "://192.0.2.1/dir/file");
  }
  EXPECT_EQ(shown("HTTP://server/file"), "http://server/file");
}

TEST(TransferUrl, OthersAreRefused) {
  for (std::string url :
       {"file:///etc/passwd", "gopher://h/x", "dict://h/x",     "smb://h/x",      "ldap://h/x",
        "telnet://h",         "smtp://h/x",   "imap://h/x",     "://h/x",         "h/x",
        "/etc/passwd",        "http:",        "http://",        "http://user@/x", "http://h:99999/x",
        "http://h:port/x",    "http://h\n/x", "http://h/\x01",  "http://h h/x",   "http://u:p@ss@h/x",
        "http://[::1/x",      "ht,tp://h/x",  "tftp,ftp://h/x", ",://h/x"}) {
    EXPECT_EQ(shown(url), "(refused)") << url;
    EXPECT_EQ(shown(url, true), "(refused)") << url;
  }
}

TEST(TransferUrl, FoldersAreNoFilesButOfWebServersThatAreAsked) {
  for (std::string scheme : {"tftp", "ftp", "ftps", "scp", "sftp"}) {
    EXPECT_EQ(shown(scheme + "://h/dir/"), "(refused)") << scheme;
    EXPECT_EQ(shown(scheme + "://h"), "(refused)") << scheme;
  }
  EXPECT_EQ(shown("http://h/dir/"), "http://h/dir/");
  EXPECT_EQ(shown("https://h"), "https://h/");
  EXPECT_EQ(shown("http://h/dir/", true), "(refused)");
  EXPECT_EQ(shown("https://h", true), "(refused)");
}

TEST(TransferUrl, UserPasswordQueryAndFragmentAreNotShown) {
  struct shown_url {
    const char *url, *shown;
  };
  for (const shown_url &row : {
           shown_url{"http://u:p@h/x", "http://h/x"},
           shown_url{"http://u@h:8080/x", "http://h:8080/x"},
           shown_url{"http://:p@h/x", "http://h/x"},
           shown_url{"http://u:p:q@[::1]:80/x", "http://[::1]:80/x"},
           shown_url{"http://u%3Ap%40@h/x", "http://h/x"},
           shown_url{"http://h/x?key=secret", "http://h/x"},
           shown_url{"http://h/x?a@b:c", "http://h/x"},
           shown_url{"http://h?secret", "http://h/"},
           shown_url{"http://h/x#secret", "http://h/x"},
           shown_url{"http://u:p@h/x/../y", "http://h/y"},
           shown_url{"sftp://u;x=y:p@h/~/x", "sftp://h/~/x"},
       }) {
    EXPECT_EQ(shown(row.url), row.shown) << row.url;
  }
}

TEST(TransferUrl, ShownIsPrintableAscii) {
  EXPECT_EQ(shown("http://h/\xc3\xa4%0a"), "http://h/\?\?%0a");
}

} // namespace
