/* From a URI to a file, and the walls around the document root. */
#include "tests/unit/server/server_harness.h"

#include <filesystem>
#include <fstream>
#include <gtest/gtest.h>
#include <stdlib.h>
#include <string.h>
#include <unistd.h>

namespace fs = std::filesystem;

/* A document root with some files, beside it what must not be reached, and a request to be mapped. */
struct FileTarget : testing::Test {
  FileTarget() {
    for (const char *path : {"root/dir", "root/bin", "other", "rootx"})
      fs::create_directories(dir.file(path));
    for (const char *path : {"root/a.txt", "root/dir/b.txt", "root/bin/p.cgi", "root/.htpasswd",
                             "other/o.txt", "rootx/secret", "secret"})
      std::ofstream(dir.file(path)) << "text";
    option("document_root", dir.file("root"));
    conn.server = server;
    conn.mg_conn.request_method = "GET";
  }
  ~FileTarget() override {
    free(conn.path_info);
    mg_destroy_server(&server);
  }
  void option(const char *name, const std::string &value) { mg_set_option(server, name, value.c_str()); }
  void link(const std::string &to, const char *path) { fs::create_symlink(to, dir.file(path)); }

  /* What a URI leads to: a path relative to the directory, "forbidden", "missing" with the path, or "none".
   */
  std::string target_of(const std::string &uri) {
    conn.mg_conn.uri = uri.c_str();
    free(conn.path_info);
    conn.path_info = nullptr;
    if (!find_file_target(&conn, &target)) return "none";
    if (target.forbidden) return target.exists ? "?" : "forbidden";
    const std::string prefix = fs::canonical(dir.path).string() + "/", path = target.path;
    if (path.substr(0, prefix.size()) != prefix) return "outside: " + path;
    return (target.exists ? "" : "missing ") + path.substr(prefix.size());
  }

  TempDir dir;
  mg_server *server = mg_create_server(nullptr, nullptr);
  struct connection conn = {};
  struct file_target target;
};

TEST_F(FileTarget, IsTheFileUnderTheDocumentRoot) {
  EXPECT_EQ(target_of("/a.txt"), "root/a.txt");
  EXPECT_EQ(target.st.st_size, 4);
  EXPECT_STREQ(target.root, dir.file("root").c_str());
  EXPECT_EQ(target_of("/dir"), "root/dir");
  EXPECT_EQ(target_of("/dir/"), "root/dir/");
  EXPECT_EQ(target_of("/dir/b.txt"), "root/dir/b.txt");
  EXPECT_EQ(target_of("/"), "root/");
  EXPECT_EQ(target_of("/nope"), "missing root/nope");
  EXPECT_EQ(target_of("/no/such/place"), "missing root/no/such/place");
}

TEST_F(FileTarget, NothingIsFoundWithoutADocumentRoot) {
  option("document_root", "");
  EXPECT_EQ(target_of("/a.txt"), "none");
}

TEST_F(FileTarget, AFileIsNoDirectory) {
  EXPECT_EQ(target_of("/a.txt/"), "missing root/a.txt/");
  EXPECT_EQ(target_of("/a.txt/."), "missing root/a.txt/");
  EXPECT_EQ(target_of("/a.txt/x"), "missing root/a.txt/x");
}

TEST_F(FileTarget, ComponentsThatSayNothingAreDropped) {
  EXPECT_EQ(target_of("/./dir/././b.txt"), "root/dir/b.txt");
  EXPECT_EQ(target_of("//dir//b.txt"), "root/dir/b.txt");
  EXPECT_EQ(target_of("/dir/."), "root/dir/");
  EXPECT_EQ(target_of("/."), "root/");
}

TEST_F(FileTarget, NoComponentLeadsUp) {
  for (const char *uri : {"/..", "/../secret", "/dir/../a.txt", "/dir/..", "/x/../../secret",
                          "/../rootx/secret", "/.././../secret"})
    EXPECT_EQ(target_of(uri), "none") << uri;
  EXPECT_EQ(target_of("/..."), "missing root/...");
  EXPECT_EQ(target_of("/..a"), "missing root/..a");
  EXPECT_EQ(target_of("/dir/a..b/..c"), "missing root/dir/a..b/..c");
}

TEST_F(FileTarget, OnlyAPathIsLookedUp) {
  for (const char *uri : {"*", "", "x/secret:80", "../secret:80", "a.txt", "http://host/a.txt"})
    EXPECT_EQ(target_of(uri), "none") << uri;
}

TEST_F(FileTarget, BytesOfANameStandForThemselves) {
  std::ofstream(dir.file("root/a\\b c\xc0\xaf%2e")) << "x";
  EXPECT_EQ(target_of("/a\\b c\xc0\xaf%2e"), "root/a\\b c\xc0\xaf%2e");
  EXPECT_EQ(target_of("/..\\secret"), "missing root/..\\secret");
  EXPECT_EQ(target_of("/\xc0\xae\xc0\xae/secret"), "missing root/\xc0\xae\xc0\xae/secret");
}

TEST_F(FileTarget, LinksOutOfTheRootAreForbidden) {
  link(dir.file("secret"), "root/link");
  link("../secret", "root/relative");
  link(dir.file("other"), "root/directory");
  link("/", "root/all");
  link("../rootx", "root/similar");
  for (const char *uri :
       {"/link", "/relative", "/directory", "/directory/", "/directory/o.txt", "/directory/nope", "/all/",
        "/all/etc/passwd", "/similar/secret", "/directory/new/file"})
    EXPECT_EQ(target_of(uri), "forbidden") << uri;
}

TEST_F(FileTarget, LinksThatLeadNowhereAreForbidden) {
  link(dir.file("not-yet"), "root/outside");
  link("not-yet", "root/inside");
  link("loop", "root/loop");
  for (const char *uri : {"/outside", "/inside", "/outside/x", "/loop", "/loop/x"})
    EXPECT_EQ(target_of(uri), "forbidden") << uri;
}

TEST_F(FileTarget, LinksInsideOfTheRootAreFollowed) {
  link("dir/b.txt", "root/link");
  link("dir", "root/directory");
  EXPECT_EQ(target_of("/link"), "root/link");
  EXPECT_EQ(target_of("/directory/b.txt"), "root/directory/b.txt");
}

TEST_F(FileTarget, RootMayBeALinkRelativeAndEndWithSlashes) {
  link("root", "linked");
  option("document_root", dir.file("linked//"));
  EXPECT_EQ(target_of("/a.txt"), "linked/a.txt");
  EXPECT_STREQ(target.root, dir.file("linked").c_str());

  char before[MG_MAX_PATH];
  ASSERT_NE(getcwd(before, sizeof(before)), nullptr);
  ASSERT_EQ(chdir(dir.path.c_str()), 0);
  option("document_root", "./root/");
  EXPECT_EQ(target_of("/dir/b.txt"), "root/dir/b.txt");
  option("document_root", ".");
  EXPECT_EQ(target_of("/secret"), "secret");
  ASSERT_EQ(chdir(before), 0);
}

TEST_F(FileTarget, RootMayBeThatOfTheSystem) {
  option("document_root", "/");
  const std::string path = dir.file("secret");
  EXPECT_EQ(target_of(path), "secret");
  EXPECT_STREQ(target.root, "/");
  EXPECT_TRUE(find_file_target(&conn, &target) && target.exists);
  conn.mg_conn.uri = "/";
  ASSERT_TRUE(find_file_target(&conn, &target));
  EXPECT_STREQ(target.path, "/");
  EXPECT_TRUE(target.exists);
}

TEST_F(FileTarget, ARootThatIsNotThereHoldsNothing) {
  option("document_root", dir.file("gone"));
  EXPECT_EQ(target_of("/"), "forbidden");
  EXPECT_EQ(target_of("/secret"), "forbidden");
  option("document_root", dir.file("root/a.txt"));
  EXPECT_EQ(target_of("/"), "missing root/a.txt/");
}

TEST_F(FileTarget, TooLongAPathIsNotCut) {
  const std::string root = "/" + std::string(MG_MAX_PATH - 10, 'x');
  option("document_root", root);
  EXPECT_EQ(target_of("/12345678"), "none");
  EXPECT_EQ(target_of("/1234567"), "forbidden"); /* fits, but is too long a name for the system */
  option("document_root", root + "xxxxxxxxxx");
  EXPECT_EQ(target_of("/"), "none");
}

TEST_F(FileTarget, HiddenFilesAreForbidden) {
  option("hide_files_patterns", "**.bak$|**/private$|**/.git");
  fs::create_directories(dir.file("root/private/x"));
  std::ofstream(dir.file("root/x.bak")) << "x";
  link("x.bak", "root/shown.txt");
  for (const char *uri : {"/.htpasswd", "/dir/.htpasswd", "/x.HTPASSWD", "/x.bak", "/shown.txt", "/new.bak",
                          "/private", "/private/", "/private/x", "/private/x/", "/.git/config", "/.gitignore",
                          "/.htpasswd/", "/.htpasswd/x"})
    EXPECT_EQ(target_of(uri), "forbidden") << uri;
  EXPECT_EQ(target_of("/x.bakery"), "missing root/x.bakery");
  EXPECT_EQ(target_of("/privately"), "missing root/privately");
}

TEST_F(FileTarget, WhatIsNeitherFileNorDirectoryIsForbidden) {
  ASSERT_EQ(mkfifo(dir.file("root/pipe").c_str(), 0600), 0);
  EXPECT_EQ(target_of("/pipe"), "forbidden");
  option("document_root", "/dev");
  EXPECT_EQ(target_of("/null"), "forbidden");
}

/* --- Rewrites ------------------------------------------------------------------------------------------ */

TEST_F(FileTarget, RewrittenPrefixesLieElsewhere) {
  option("url_rewrites", "/o=" + dir.file("other") + ",/o/deep/=" + dir.file("root/dir") + "/,404=/error");
  EXPECT_EQ(target_of("/o/o.txt"), "other/o.txt");
  EXPECT_STREQ(target.root, dir.file("other").c_str());
  EXPECT_EQ(target_of("/o"), "other");
  EXPECT_EQ(target_of("/o/"), "other/");
  EXPECT_EQ(target_of("/o/deep/b.txt"), "root/dir/b.txt"); /* the longest prefix */
  EXPECT_EQ(target_of("/o/deep"), "root/dir");
  EXPECT_EQ(target_of("/a.txt"), "root/a.txt");
  option("url_rewrites", "/o/deep/=" + dir.file("root/dir") + ",/o=" + dir.file("other"));
  EXPECT_EQ(target_of("/o/deep/b.txt"), "root/dir/b.txt");
}

TEST_F(FileTarget, RewrittenPrefixStandsForWholeComponents) {
  option("url_rewrites", "/r=" + dir.file("root") + ",/d=" + dir.file("root/dir") + "/");
  EXPECT_EQ(target_of("/rx/secret"), "missing root/rx/secret"); /* not rootx/secret */
  EXPECT_EQ(target_of("/R/a.txt"), "missing root/R/a.txt");
  EXPECT_EQ(target_of("/d../a.txt"), "missing root/d../a.txt");
  EXPECT_EQ(target_of("/d/../a.txt"), "none");
}

TEST_F(FileTarget, RewriteMayBeOfEverythingAndOfOneFile) {
  option("document_root", "");
  option("url_rewrites", "/=" + dir.file("other") + ",/one=" + dir.file("root/a.txt"));
  EXPECT_EQ(target_of("/o.txt"), "other/o.txt");
  EXPECT_EQ(target_of("/"), "other/");
  EXPECT_EQ(target_of("/one"), "root/a.txt");
  EXPECT_EQ(target_of("/one/"), "missing root/a.txt/");
}

TEST_F(FileTarget, RewritesThatSayNothingAreIgnored) {
  option("url_rewrites", "a=/etc,=/etc,/a.txt,/dir=,404=/etc");
  EXPECT_EQ(target_of("/a.txt"), "root/a.txt");
  EXPECT_EQ(target_of("/dir/b.txt"), "root/dir/b.txt");
}

TEST_F(FileTarget, LinksOutOfARewrittenDirectoryAreForbidden) {
  option("url_rewrites", "/o=" + dir.file("other"));
  link("../root/a.txt", "other/link");
  EXPECT_EQ(target_of("/o/link"), "forbidden"); /* the document root is another place */
}

/* --- Path information ---------------------------------------------------------------------------------- */

TEST_F(FileTarget, WhatFollowsAProgramIsItsPathInformation) {
  EXPECT_EQ(target_of("/bin/p.cgi/a/b"), "root/bin/p.cgi");
  EXPECT_STREQ(conn.path_info, "/a/b");
  EXPECT_TRUE(S_ISREG(target.st.st_mode));
  EXPECT_EQ(target_of("/bin/p.cgi/"), "root/bin/p.cgi");
  EXPECT_STREQ(conn.path_info, "/");
  EXPECT_EQ(target_of("/bin/p.cgi/.htpasswd"), "root/bin/p.cgi"); /* names no file */
  EXPECT_STREQ(conn.path_info, "/.htpasswd");
  EXPECT_EQ(target_of("/bin/p.cgi"), "root/bin/p.cgi");
  EXPECT_EQ(conn.path_info, nullptr);
  option("url_rewrites", "/run=" + dir.file("root/bin/p.cgi"));
  EXPECT_EQ(target_of("/run/x"), "root/bin/p.cgi");
  EXPECT_STREQ(conn.path_info, "/x");
}

TEST_F(FileTarget, OnlyAProgramHasPathInformation) {
  fs::create_directories(dir.file("root/d.cgi"));
  EXPECT_EQ(target_of("/a.txt/a"), "missing root/a.txt/a");
  EXPECT_EQ(target_of("/d.cgi/a"), "missing root/d.cgi/a");
  EXPECT_EQ(target_of("/none.cgi/a"), "missing root/none.cgi/a");
  EXPECT_EQ(conn.path_info, nullptr);
  link(dir.file("other"), "root/away");
  std::ofstream(dir.file("other/p.cgi")) << "x";
  EXPECT_EQ(target_of("/away/p.cgi/a"), "forbidden");
}

TEST_F(FileTarget, MethodsThatChangeFilesNameTheVeryFile) {
  for (const char *method : {"PUT", "DELETE", "MKCOL", "PROPFIND"}) {
    conn.mg_conn.request_method = method;
    EXPECT_EQ(target_of("/bin/p.cgi/a"), "missing root/bin/p.cgi/a");
    EXPECT_EQ(conn.path_info, nullptr);
  }
}

/* --- Index files --------------------------------------------------------------------------------------- */

TEST_F(FileTarget, IndexIsTheFirstNameThatIsAFile) {
  option("index_files", "index.html,index.htm,i.txt");
  fs::create_directories(dir.file("root/dir/index.html"));
  std::ofstream(dir.file("root/dir/i.txt")) << "12345";
  target_of("/dir/");
  ASSERT_TRUE(find_index_file(&conn, &target));
  EXPECT_EQ(target.path, dir.file("root/dir/i.txt"));
  EXPECT_EQ(target.st.st_size, 5);
  std::ofstream(dir.file("root/dir/index.htm")) << "12";
  target_of("/dir/");
  ASSERT_TRUE(find_index_file(&conn, &target));
  EXPECT_EQ(target.path, dir.file("root/dir/index.htm"));
}

TEST_F(FileTarget, IndexIsNeitherHiddenNorOutside) {
  option("index_files", "a.bak,link,../a.txt,.htpasswd," + std::string(MG_MAX_PATH, 'x'));
  option("hide_files_patterns", "**.bak$");
  std::ofstream(dir.file("root/dir/a.bak")) << "x";
  std::ofstream(dir.file("root/dir/.htpasswd")) << "x";
  link(dir.file("secret"), "root/dir/link");
  target_of("/");
  EXPECT_FALSE(find_index_file(&conn, &target));
  link("../../root/dir/b.txt", "root/dir/good");
  option("index_files", "a.bak,link,good");
  target_of("/dir/");
  ASSERT_TRUE(find_index_file(&conn, &target));
  EXPECT_EQ(target.path, dir.file("root/dir/good"));
  option("index_files", "");
  target_of("/dir/");
  EXPECT_FALSE(find_index_file(&conn, &target));
  EXPECT_EQ(target.path, dir.file("root/dir/"));
}

/* --- Inside -------------------------------------------------------------------------------------------- */

TEST_F(FileTarget, IsInsideFollowsLinksOfBothPaths) {
  link("root", "linked");
  link("secret", "alias");
  link(dir.file("root/dir"), "other/in");
  const struct {
    const char *root;
    const char *path;
    bool inside;
  } rows[] = {
      {"root", "root", true},
      {"root", "root/", true},
      {"root/", "root", true},
      {"root", "root/a.txt", true},
      {"root", "linked/a.txt", true},
      {"linked", "root/a.txt", true},
      {"root", "root/new", true},
      {"root", "root/new/newer", true},
      {"root", "other/in/b.txt", true},
      {"root", "rootx", false},
      {"root", "rootx/secret", false},
      {"root", "", false},
      {"root", "root/..", false},
      {"root", "new", false},
      {"root/a.txt", "root/a.txt", true},
      {"root", "root/dir/..", true},
      {"gone", "gone/x", false},
      {"root", "alias", false},
      {"root/dir", "root", false},
      {"root/dir", "root/a.txt", false},
  };
  for (const auto &row : rows)
    EXPECT_EQ(is_inside(dir.file(row.root).c_str(), dir.file(row.path).c_str()), row.inside)
        << row.root << " " << row.path;
  EXPECT_TRUE(is_inside("/", dir.path.c_str()));
  EXPECT_FALSE(is_inside(dir.path.c_str(), std::string(MG_MAX_PATH, 'x').c_str()));
}
