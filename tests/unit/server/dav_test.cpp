/* WebDAV beside uploads: what PROPFIND tells, MKCOL makes and DELETE removes. */
#include "tests/unit/server/dav_harness.h"

#include <filesystem>
#include <sys/stat.h>

class Propfind : public DavTest {};
class Mkcol : public DavTest {};
class Delete : public DavTest {};

static const char not_permitted[] = "Operation not permitted";

/* --- PROPFIND ------------------------------------------------------------------------------------------ */

/* The entry of a file or directory of the test. */
static std::string response(const std::string &href, const std::string &file) {
  struct stat st = {};
  EXPECT_EQ(stat(file.c_str(), &st), 0) << file;
  char date[64], etag[64];
  strftime(date, sizeof(date), "%a, %d %b %Y %H:%M:%S GMT", gmtime(&st.st_mtime));
  snprintf(etag, sizeof(etag), "\"%lx.%ld\"", static_cast<unsigned long>(st.st_mtime),
           static_cast<long>(st.st_size));
  const bool is_directory = S_ISDIR(st.st_mode);
  const std::string of_file = "<d:getcontentlength>" + std::to_string(st.st_size) +
                              "</d:getcontentlength><d:getetag>" + etag + "</d:getetag>";
  return "<d:response><d:href>" + href + "</d:href><d:propstat><d:prop><d:resourcetype>" +
         (is_directory ? "<d:collection/></d:resourcetype>" : "</d:resourcetype>" + of_file) +
         "<d:getlastmodified>" + date +
         "</d:getlastmodified></d:prop><d:status>HTTP/1.1 200 OK</d:status></d:propstat></d:response>\n";
}

/* The answer with the lines of its entries sorted: a directory has no order. */
static std::string sorted(const std::string &reply) {
  std::vector<std::string> lines;
  size_t at = reply.find("<d:response>");
  const size_t end = reply.find("</d:multistatus>");
  if (at == std::string::npos || end == std::string::npos) return reply;
  const std::string head = reply.substr(0, at), tail = reply.substr(end);
  for (size_t next; at < end; at = next) {
    next = reply.find('\n', at) + 1;
    lines.push_back(reply.substr(at, next - at));
  }
  std::sort(lines.begin(), lines.end());
  std::string text = head;
  for (const std::string &line : lines) text += line;
  return text + tail;
}

/* A whole answer with these entries, sorted. */
static std::string multistatus(const std::string &responses) {
  const std::string body = "<?xml version=\"1.0\" encoding=\"utf-8\"?>\n<d:multistatus xmlns:d=\"DAV:\">\n" +
                           responses + "</d:multistatus>\n";
  return sorted(
      "HTTP/1.1 207 Multi-Status\r\nContent-Type: application/xml; charset=utf-8\r\nContent-Length: " +
      std::to_string(body.size()) + "\r\nConnection: close\r\n\r\n" + body);
}

TEST_F(Propfind, FileTellsItsLengthAndDate) {
  write("a.txt", "hello");
  const std::string expected = multistatus(response("/a.txt", path("a.txt")));
  EXPECT_EQ(ask("PROPFIND", "/a.txt", "", "Depth: 0\r\n"), expected);
  EXPECT_EQ(ask("PROPFIND", "/a.txt", "", "Depth: 1\r\n"), expected);
  EXPECT_EQ(ask("PROPFIND", "/a.txt"), expected);
}

TEST_F(Propfind, DirectoryTellsWhatIsInItAtDepthOne) {
  write("dir/a.txt", "hello");
  write("dir/empty", "");
  write("dir/sub/deeper.txt", "not told");
  const std::string self = response("/dir/", path("dir"));
  const std::string members = response("/dir/a.txt", path("dir/a.txt")) +
                              response("/dir/empty", path("dir/empty")) +
                              response("/dir/sub/", path("dir/sub"));
  for (const char *uri : {"/dir", "/dir/"}) {
    EXPECT_EQ(ask("PROPFIND", uri, "", "Depth: 0\r\n"), multistatus(self)) << uri;
    EXPECT_EQ(sorted(ask("PROPFIND", uri, "", "Depth: 1\r\n")), multistatus(self + members)) << uri;
    /* A whole tree is too much for one answer: its first level is told. */
    EXPECT_EQ(sorted(ask("PROPFIND", uri, "", "Depth: infinity\r\n")), multistatus(self + members)) << uri;
    EXPECT_EQ(sorted(ask("PROPFIND", uri)), multistatus(self + members)) << uri;
  }
}

TEST_F(Propfind, RootAndEmptyDirectory) {
  EXPECT_EQ(ask("PROPFIND", "/"), multistatus(response("/", path(""))));
  std::filesystem::create_directory(path("dir"));
  EXPECT_EQ(sorted(ask("PROPFIND", "/")),
            multistatus(response("/", path("")) + response("/dir/", path("dir"))));
}

TEST_F(Propfind, NamesAreEncoded) {
  write("a b&<>\"'%41\xc3\xbc\n?#.txt", "");
  write("d;=:@,+~_-.!*()/x", "");
  EXPECT_EQ(sorted(ask("PROPFIND", "/")),
            multistatus(response("/", path("")) +
                        response("/a%20b%26%3C%3E%22%27%2541%C3%BC%0A%3F%23.txt",
                                 path("a b&<>\"'%41\xc3\xbc\n?#.txt")) +
                        response("/d%3B%3D%3A%40%2C%2B~_-.%21%2A%28%29/", path("d;=:@,+~_-.!*()"))));
  const std::string uri = "/d%3b=%3A%40,%2B~_-.!*()";
  const std::string href = "/d%3B%3D%3A%40%2C%2B~_-.%21%2A%28%29/";
  EXPECT_EQ(sorted(ask("PROPFIND", uri)), multistatus(response(href, path("d;=:@,+~_-.!*()")) +
                                                      response(href + "x", path("d;=:@,+~_-.!*()/x"))));
}

TEST_F(Propfind, LongestNamesAreToldWhole) {
  const std::string directory(250, '&'), name(255, '\xfc');
  std::string encoded_directory, encoded_name;
  for (int i = 0; i < 250; i++) encoded_directory += "%26";
  for (int i = 0; i < 255; i++) encoded_name += "%FC";
  write(directory + "/" + name, "");
  EXPECT_EQ(
      sorted(ask("PROPFIND", "/" + directory)),
      multistatus(response("/" + encoded_directory + "/", path(directory)) +
                  response("/" + encoded_directory + "/" + encoded_name, path(directory + "/" + name))));
}

TEST_F(Propfind, ManyEntriesAreToldWhole) {
  std::string expected;
  for (int i = 10000; i < 10500; i++) {
    const std::string name = std::to_string(i);
    write(name, "");
    expected += response("/" + name, path(name));
  }
  EXPECT_TRUE(sorted(ask("PROPFIND", "/")) == multistatus(expected + response("/", path(""))));
}

TEST_F(Propfind, HiddenFilesPipesAndWhatLeadsOutAreNotTold) {
  write("a.txt", "");
  write(".htpasswd", password_line(anna));
  write("b.key", "");
  write("../beside", "");
  std::filesystem::create_symlink("../beside", path("out"));
  std::filesystem::create_symlink("nowhere", path("dangling"));
  ASSERT_EQ(mkfifo(path("pipe").c_str(), 0600), 0);
  set("hide_files_patterns", "**.key$");
  EXPECT_EQ(sorted(ask("PROPFIND", "/")),
            multistatus(response("/", path("")) + response("/a.txt", path("a.txt"))));
  for (const char *uri : {"/.htpasswd", "/b.key", "/out", "/dangling", "/pipe"}) {
    EXPECT_EQ(status("PROPFIND", uri), 404) << uri;
  }
}

TEST_F(Propfind, WhatIsMissingIsNotFound) {
  write("a.txt", "");
  write("a.cgi", "");
  for (const char *uri : {"/none", "/none/", "/none/x", "/a.txt/x", "/a.cgi/x"}) {
    EXPECT_EQ(ask("PROPFIND", uri), failure(404)) << uri;
  }
}

TEST_F(Propfind, DepthIsOneOfThree) {
  for (const char *depth : {"2", "-1", "00", "x", "1, noroot", ""}) {
    EXPECT_EQ(ask("PROPFIND", "/", "", std::string("Depth: ") + depth + "\r\n"), failure(400)) << depth;
  }
}

TEST_F(Propfind, BodyIsIgnoredAndNoRequest) {
  const std::string body = "<propfind xmlns=\"DAV:\"><allprop/></propfind>";
  const std::string expected = multistatus(response("/", path("")));
  EXPECT_EQ(ask("PROPFIND", "/", body), expected);
  remove_handler();
  Client client(server.port());
  const std::string whole = request("PROPFIND", "/", body + "GET /");
  client.send(whole.substr(0, whole.size() - 10));
  EXPECT_TRUE(server.run_until([&] { return client.closed; }, {&client}));
  EXPECT_EQ(client.take(), expected);
}

TEST_F(Propfind, NeedsADigestForTheFileOfWebDav) {
  Client client(server.port());
  EXPECT_EQ(server.ask(client, "PROPFIND / HTTP/1.1\r\n\r\n").substr(0, 12), "HTTP/1.1 401");
  set("dav_auth_file", "");
  EXPECT_EQ(status("PROPFIND", "/"), 401);
}

/* --- MKCOL --------------------------------------------------------------------------------------------- */

TEST_F(Mkcol, DirectoryIsMade) {
  EXPECT_EQ(ask("MKCOL", "/a"), success(201));
  EXPECT_EQ(ask("MKCOL", "/a/b/"), success(201));
  EXPECT_EQ(ask("MKCOL", "/a%20%26"), success(201));
  EXPECT_EQ(tree(), "a &/ a/ a/b/");
}

TEST_F(Mkcol, WhatIsThereIsNotMade) {
  write("dir/a.txt", "old");
  for (const char *uri : {"/", "/dir", "/dir/", "/dir/a.txt", "/dir/."}) {
    EXPECT_EQ(ask("MKCOL", uri), failure(405, "File exists")) << uri;
  }
  EXPECT_EQ(tree(), "dir/ dir/a.txt");
}

TEST_F(Mkcol, ParentMustBeADirectory) {
  write("a.txt", "old");
  write("a.cgi", "old");
  EXPECT_EQ(ask("MKCOL", "/x/y"), failure(409, "No such file or directory"));
  EXPECT_EQ(ask("MKCOL", "/a.txt/y"), failure(409, "Not a directory"));
  EXPECT_EQ(ask("MKCOL", "/a.cgi/y"), failure(409, "Not a directory"));
  EXPECT_EQ(tree(), "a.cgi a.txt");
}

TEST_F(Mkcol, BodyIsNotUnderstood) {
  EXPECT_EQ(ask("MKCOL", "/a", "<x/>"), failure(415));
  EXPECT_EQ(ask("MKCOL", "/a", "", "Transfer-Encoding: chunked\r\n").substr(0, 12), "HTTP/1.1 415");
  EXPECT_EQ(ask("MKCOL", "/a", "", "Content-Length: -1\r\n"), failure(415));
  EXPECT_EQ(tree(), "");
  EXPECT_EQ(ask("MKCOL", "/a", "", "Content-Length: 0\r\n"), success(201));
}

TEST_F(Mkcol, NothingHiddenOrOutsideTheRootIsMade) {
  std::filesystem::create_directory(path("../beside"));
  std::filesystem::create_directory_symlink("../beside", path("door"));
  for (const char *uri : {"/.htpasswd", "/door/x"}) EXPECT_EQ(status("MKCOL", uri), 404) << uri;
  EXPECT_EQ(ask("MKCOL", "/../escaped"), success(201)) << "dropped from the URI";
  EXPECT_EQ(tree(), "door/ escaped/");
  EXPECT_TRUE(std::filesystem::is_empty(path("../beside")));
}

/* --- DELETE -------------------------------------------------------------------------------------------- */

TEST_F(Delete, FileIsRemoved) {
  write("a.txt", "old");
  write("b.txt", "old");
  EXPECT_EQ(ask("DELETE", "/a.txt"), success(200));
  EXPECT_EQ(tree(), "b.txt");
  EXPECT_EQ(ask("DELETE", "/a.txt"), failure(404));
}

TEST_F(Delete, DirectoryIsRemovedWithAllThatIsInIt) {
  std::filesystem::create_directory(path("empty"));
  write("dir/a.txt", "");
  write("dir/sub/deep/b.txt", "");
  write("dir/x\ny/c d", "");
  write("other.txt", "");
  ASSERT_EQ(mkfifo(path("dir/pipe").c_str(), 0600), 0);
  EXPECT_EQ(ask("DELETE", "/empty"), success(200));
  EXPECT_EQ(ask("DELETE", "/dir/", "", "Depth: infinity\r\n"), success(200));
  EXPECT_EQ(tree(), "other.txt");
}

TEST_F(Delete, DeepTreeIsRemoved) {
  std::string name = path("d");
  for (int i = 0; i < 300; i++, name += "/d") ASSERT_EQ(mkdir(name.c_str(), 0755), 0) << i;
  EXPECT_EQ(ask("DELETE", "/d"), success(200));
  EXPECT_EQ(tree(), "");
}

TEST_F(Delete, LinksAreRemovedAndNotFollowed) {
  write("dir/a.txt", "kept");
  write("../beside/b.txt", "kept");
  std::filesystem::create_directory_symlink("dir", path("link"));
  std::filesystem::create_symlink("dir/a.txt", path("file_link"));
  EXPECT_EQ(ask("DELETE", "/link/"), success(200));
  EXPECT_EQ(ask("DELETE", "/file_link"), success(200));
  EXPECT_EQ(tree(), "dir/ dir/a.txt");
  std::filesystem::create_directory_symlink("../../beside", path("dir/out"));
  std::filesystem::create_symlink("nowhere", path("dir/dangling"));
  EXPECT_EQ(ask("DELETE", "/dir"), success(200));
  EXPECT_EQ(tree(), "");
  EXPECT_EQ(read("../beside/b.txt"), "kept");
}

TEST_F(Delete, NothingOutsideTheRootIsRemoved) {
  write("../beside/b.txt", "kept");
  std::filesystem::create_directory_symlink("../beside", path("door"));
  std::filesystem::create_symlink("../beside/b.txt", path("link"));
  for (const char *uri :
       {"/door", "/door/", "/door/.", "/door/b.txt", "/link", "/../beside", "/%2e%2e/beside/b.txt"}) {
    EXPECT_EQ(status("DELETE", uri), 404) << uri;
  }
  EXPECT_EQ(tree(), "door/ link");
  EXPECT_EQ(read("../beside/b.txt"), "kept");
}

TEST_F(Delete, RootItselfStays) {
  write("a.txt", "kept");
  write("../other/b.txt", "kept");
  set("url_rewrites", "/other=" + path("../other"));
  for (const char *uri : {"/", "/.", "/./", "//", "/other", "/other/"}) {
    EXPECT_EQ(ask("DELETE", uri), failure(403)) << uri;
  }
  EXPECT_EQ(tree(), "a.txt");
  EXPECT_EQ(read("../other/b.txt"), "kept");
}

TEST_F(Delete, DirectoryWithHiddenFilesStaysWhole) {
  write("dir/a.txt", "kept");
  write("dir/sub/.htpasswd", "kept");
  write("dir/z.txt", "kept");
  write("closed/.htpasswd", password_line(anna));
  EXPECT_EQ(ask("DELETE", "/dir"), failure(403, not_permitted));
  EXPECT_EQ(ask("DELETE", "/closed"), failure(403, not_permitted));
  EXPECT_EQ(ask("DELETE", "/closed/.htpasswd"), failure(404));
  EXPECT_EQ(tree(), "closed/ closed/.htpasswd dir/ dir/a.txt dir/sub/ dir/sub/.htpasswd dir/z.txt");
}

TEST_F(Delete, DirectoryIsNotRemovedInPart) {
  write("dir/a.txt", "kept");
  for (const char *depth : {"0", "1", "x"}) {
    EXPECT_EQ(ask("DELETE", "/dir", "", std::string("Depth: ") + depth + "\r\n"), failure(400)) << depth;
  }
  EXPECT_EQ(tree(), "dir/ dir/a.txt");
  EXPECT_EQ(ask("DELETE", "/dir/a.txt", "", "Depth: 0\r\n"), success(200)) << "a file has no depth";
}

TEST_F(Delete, WhatIsMissingIsNotFound) {
  write("a.txt", "kept");
  write("a.cgi", "kept");
  for (const char *uri : {"/none", "/none/x", "/a.txt/x", "/a.cgi/x"}) {
    EXPECT_EQ(ask("DELETE", uri), failure(404)) << uri;
  }
  EXPECT_EQ(tree(), "a.cgi a.txt");
}

TEST_F(Delete, PreconditionsAreHeeded) {
  write("a.txt", "kept");
  EXPECT_EQ(ask("DELETE", "/a.txt", "", "If-Match: \"x\"\r\n"), failure(412));
  EXPECT_EQ(ask("DELETE", "/a.txt", "", "If-None-Match: *\r\n"), failure(412));
  EXPECT_EQ(tree(), "a.txt");
  EXPECT_EQ(ask("DELETE", "/a.txt", "", "If-Match: *\r\n"), success(200));
}

TEST_F(Delete, NeedsADigestForTheFileOfWebDav) {
  write("a.txt", "kept");
  Client client(server.port());
  EXPECT_EQ(server.ask(client, "DELETE /a.txt HTTP/1.1\r\n\r\n").substr(0, 12), "HTTP/1.1 401");
  set("dav_auth_file", "");
  EXPECT_EQ(status("DELETE", "/a.txt"), 401);
  EXPECT_EQ(tree(), "a.txt");
}

/* --- Who may ------------------------------------------------------------------------------------------- */

TEST_F(DavTest, ThePasswordFileOfWebDavStandsForThatOfReaders) {
  write("dir/.htpasswd", "bert:mydomain.com:0123456789abcdef0123456789abcdef\n");
  EXPECT_EQ(ask("PUT", "/dir/a.txt", "text"), success(201));
  EXPECT_EQ(status("GET", "/dir/a.txt"), 401);
  set("global_auth_file", path("dir/.htpasswd"));
  EXPECT_EQ(ask("MKCOL", "/dir/b"), success(201));
  EXPECT_EQ(status("GET", "/dir/b/"), 401);
}
