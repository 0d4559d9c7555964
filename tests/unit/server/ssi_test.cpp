/* Server-side includes: each form of a directive, each failure, and what a page may not do. */
#include "server/mg_child.h"
#include "tests/unit/server/program_harness.h"

#include <errno.h>
#include <filesystem>
#include <gtest/gtest.h>
#include <string.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

/* A server that serves the files of a directory. */
struct Ssi : testing::Test {
  Ssi() {
    dir.path = std::filesystem::canonical(dir.path);
    std::filesystem::create_directories(root() + "/sub/deep");
    mg_set_option(server.server, "document_root", root().c_str());
    server.on_event = [](mg_connection *, mg_event event) -> int {
      return event == MG_AUTH ? MG_TRUE : MG_FALSE;
    };
  }
  ~Ssi() override {
    server.on_event = nullptr;
    mg_destroy_server(&server.server); /* before its children, as it ends them */
    EXPECT_TRUE(all_children_end());
  }

  std::string root() const { return dir.file("root"); }
  std::string file(const std::string &name) const { return root() + "/" + name; }
  void write(const std::string &name, const std::string &content) const { write_file(file(name), content); }
  std::string ask(const std::string &request) {
    Client client(server.port());
    client.send(request);
    EXPECT_TRUE(server.run_until([&] { return client.closed; }, {&client}));
    return client.take();
  }
  std::string get(const std::string &uri) { return ask("GET " + uri + " HTTP/1.1\r\n\r\n"); }
  /* The body of a page. */
  std::string page(const std::string &uri) {
    const std::string reply = get(uri);
    const size_t end = reply.find("\r\n\r\n");
    const std::string body = end == std::string::npos ? "" : reply.substr(end + 4);
    EXPECT_EQ(reply, page_reply(body)) << uri;
    return body;
  }
  /* The body of a page with this text. */
  std::string expanded(const std::string &text) {
    write("page.shtml", text);
    return page("/page.shtml");
  }
  static std::string page_reply(const std::string &body) {
    return "HTTP/1.1 200 OK\r\nContent-Type: text/html\r\nContent-Length: " + std::to_string(body.size()) +
           "\r\nConnection: close\r\n\r\n" + body;
  }
  static std::string error(int code, const std::string &reason, const std::string &detail) {
    const std::string body = std::to_string(code) + " " + reason + "\n" + detail;
    return "HTTP/1.1 " + std::to_string(code) + " " + reason +
           "\r\nContent-Length: " + std::to_string(body.size()) + "\r\nContent-Type: text/plain\r\n\r\n" +
           body;
  }
  std::string cannot_open(const std::string &arguments, const std::string &path, int number) const {
    return "Cannot open SSI #include: [" + arguments + "]: fopen(" + path + "): " + strerror(number);
  }

  TempDir dir;
  TestServer server;
};

static const std::string too_large = Ssi::error(500, "Internal Server Error", "SSI page is too large");

/* --- Pages --------------------------------------------------------------------------------------------- */

TEST_F(Ssi, TextWithoutDirectivesIsCopied) {
  for (const std::string &text :
       {std::string(), std::string("plain"), std::string("<!-- no directive -->"),
        std::string("<!-#<!--<!- -->"), std::string("a\0b\xff", 4), std::string(200000, 'x')}) {
    EXPECT_EQ(expanded(text), text);
  }
}

TEST_F(Ssi, HeadRequestsHaveNoBody) {
  write("page.shtml", "12345");
  EXPECT_EQ(ask("HEAD /page.shtml HTTP/1.1\r\n\r\n"),
            page_reply("12345").substr(0, page_reply("12345").size() - 5));
}

TEST_F(Ssi, FilesThatDoNotMatchThePatternAreNotProcessed) {
  write("page.html", "<!--#exec \"echo hello\" -->");
  EXPECT_NE(get("/page.html HTTP/1.0\r\n\r\n").find("<!--#exec \"echo hello\" -->"), std::string::npos);
  mg_set_option(server.server, "ssi_pattern", "**.html$");
  EXPECT_EQ(page("/page.html"), "hello\n");
}

TEST_F(Ssi, PagesThatCannotBeReadAreErrors) {
  EXPECT_EQ(get("/none.shtml HTTP/1.0\r\n\r\n"), error(404, "Not Found", ""));
  if (geteuid() == 0) return; /* who may read everything */
  write("page.shtml", "x");
  chmod(file("page.shtml").c_str(), 0);
  EXPECT_EQ(get("/page.shtml"),
            error(500, "Internal Server Error", "open(" + file("page.shtml") + "): Permission denied"));
}

/* --- include ------------------------------------------------------------------------------------------- */

TEST_F(Ssi, FormsOfInclude) {
  write("a.html", "A");
  write("sub/b.html", "B");
  write_file(dir.file("outside"), "C");
  EXPECT_EQ(expanded("[<!--#include virtual=\"/a.html\" -->]"), "[A]");
  EXPECT_EQ(expanded("[<!--#include virtual=\"sub/b.html\"-->]"), "[B]");
  EXPECT_EQ(expanded("[<!--#include file=\"a.html\" -->]"), "[A]");
  EXPECT_EQ(expanded("[<!--#include \"a.html\"-->]"), "[A]");
  EXPECT_EQ(expanded("[<!--#include \t\r\n \"sub/b.html\"\n -->]"), "[B]");
  EXPECT_EQ(expanded("[<!--#include\"a.html\"-->]"), "[A]");
  EXPECT_EQ(expanded("[<!--# include \"a.html\"-->]"), "[A]");
  EXPECT_EQ(expanded("<!--#include abspath=\"" + dir.file("outside") + "\" -->"), "C");
  EXPECT_EQ(expanded("<!--#include \"a.html\"--><!--#include \"sub/b.html\"-->"), "AB");
}

TEST_F(Ssi, NamesAreRelativeToTheFileTheyStandIn) {
  write("sub/inner.shtml",
        "<!--#include \"deep/x\"--><!--#include file=\"../top\"--><!--#include virtual=\"top\"-->");
  write("sub/deep/x", "X");
  write("top", "T");
  EXPECT_EQ(expanded("<!--#include \"sub/inner.shtml\"-->"), "XTT");
}

TEST_F(Ssi, IncludedFilesAreProcessedWhenTheyMatchThePattern) {
  write("in.shtml", "1<!--#include \"raw.html\"-->2");
  write("raw.html", "<!--#include \"in.shtml\"-->");
  EXPECT_EQ(expanded("(<!--#include \"in.shtml\"-->)"), "(1<!--#include \"in.shtml\"-->2)");
}

TEST_F(Ssi, TenFilesMayBeIncludedWithinEachOther) {
  const std::string last = file("11.shtml");
  for (int i = 1; i <= 10; i++) {
    const std::string next = std::to_string(i + 1) + ".shtml";
    write(std::to_string(i) + ".shtml", "<" + std::to_string(i) + "<!--#include \"" + next + "\"-->>");
  }
  write("11.shtml", "too deep");
  EXPECT_EQ(expanded("<!--#include \"1.shtml\"-->"),
            "<1<2<3<4<5<6<7<8<9<10SSI #include level is too deep (" + last + ")>>>>>>>>>>");
}

TEST_F(Ssi, APageThatIncludesItselfEnds) {
  std::string text = "SSI #include level is too deep (" + file("page.shtml") + ")";
  for (int i = 0; i <= 10; i++) text = "(" + text + ")";
  EXPECT_EQ(expanded("(<!--#include \"page.shtml\"-->)"), text);
}

TEST_F(Ssi, MalformedIncludes) {
  for (const std::string &arguments :
       {std::string(""), std::string("\"\""), std::string("name"), std::string("virtual="),
        std::string("virtual=\"\""), std::string("virtual=a"), std::string("virtual=\"a"),
        std::string("virtual =\"a\""), std::string("\"a"), std::string("a\""), std::string("\"a\" x"),
        std::string("\"a\" \"b\""), std::string("VIRTUAL=\"a\""), std::string("abspath=\"relative\""),
        std::string("url=\"a\""), std::string("'a'"), "\"" + std::string(4096, 'x') + "\""}) {
    EXPECT_EQ(expanded("[<!--#include " + arguments + " -->]"), "[Bad SSI #include: [" + arguments + "]]");
  }
  EXPECT_EQ(expanded(std::string("<!--#include \"a\0b\"-->", 21)), "Bad SSI #include: [\"a]")
      << "no name with a NUL";
}

TEST_F(Ssi, FilesThatCannotBeOpened) {
  write("sub/file", "x");
  EXPECT_EQ(expanded("<!--#include \"none\"-->."), cannot_open("\"none\"", file("none"), ENOENT) + ".");
  EXPECT_EQ(expanded("<!--#include virtual=\"/none\"-->"),
            cannot_open("virtual=\"/none\"", root() + "//none", ENOENT));
  EXPECT_EQ(expanded("<!--#include abspath=\"/none\"-->"), cannot_open("abspath=\"/none\"", "/none", ENOENT));
  EXPECT_EQ(expanded("<!--#include \"sub/file/x\"-->"),
            cannot_open("\"sub/file/x\"", file("sub/file/x"), ENOTDIR));
  EXPECT_EQ(expanded("<!--#include \"sub\"-->"), cannot_open("\"sub\"", file("sub"), EISDIR));
  const std::string long_name = std::string(300, 'x');
  EXPECT_EQ(expanded("<!--#include \"" + long_name + "\"-->"),
            cannot_open("\"" + long_name + "\"", file(long_name), ENAMETOOLONG));
}

TEST_F(Ssi, OnlyRegularFilesAreIncluded) {
  ASSERT_EQ(mkfifo(file("fifo").c_str(), 0666), 0);
  EXPECT_EQ(expanded("<!--#include \"fifo\"-->"), cannot_open("\"fifo\"", file("fifo"), EACCES));
  EXPECT_EQ(expanded("<!--#include abspath=\"/dev/zero\"-->"),
            cannot_open("abspath=\"/dev/zero\"", "/dev/zero", EACCES));
}

TEST_F(Ssi, OnlyAbspathLeavesTheDocumentRoot) {
  write_file(dir.file("secret"), "secret");
  std::filesystem::create_symlink(dir.file("secret"), file("link"));
  std::filesystem::create_symlink(dir.path, file("dirlink"));
  for (const std::string name :
       {"../secret", "sub/../../secret", "link", "dirlink/secret", "../root/../secret"}) {
    const std::string quoted = "\"" + name + "\"";
    EXPECT_EQ(expanded("<!--#include " + quoted + "-->"), cannot_open(quoted, file(name), ENOENT));
    EXPECT_EQ(expanded("<!--#include file=" + quoted + "-->"),
              cannot_open("file=" + quoted, file(name), ENOENT));
    EXPECT_EQ(expanded("<!--#include virtual=" + quoted + "-->"),
              cannot_open("virtual=" + quoted, file(name), ENOENT));
    EXPECT_EQ(expanded("<!--#include abspath=\"" + file(name) + "\"-->"), "secret");
  }
}

TEST_F(Ssi, FilesNextToAnAbsoluteOneMayBeIncludedByIt) {
  write_file(dir.file("outer.shtml"), "<!--#include \"secret\"-->");
  write_file(dir.file("secret"), "secret");
  EXPECT_EQ(expanded("<!--#include abspath=\"" + dir.file("outer.shtml") + "\"-->"), "secret");
}

TEST_F(Ssi, HiddenFilesStayHidden) {
  mg_set_option(server.server, "hide_files_patterns", "**.secret$");
  write("a.secret", "secret");
  write("sub/.htpasswd", "user:realm:hash");
  std::filesystem::create_symlink(file("a.secret"), file("link"));
  for (const std::string name : {"a.secret", "link"}) {
    const std::string quoted = "\"" + name + "\"";
    EXPECT_EQ(expanded("<!--#include " + quoted + "-->"), cannot_open(quoted, file(name), ENOENT));
    EXPECT_EQ(expanded("<!--#include abspath=\"" + file(name) + "\"-->"),
              cannot_open("abspath=\"" + file(name) + "\"", file(name), ENOENT));
  }
  EXPECT_EQ(expanded("<!--#include \"sub/.htpasswd\"-->"),
            cannot_open("\"sub/.htpasswd\"", file("sub/.htpasswd"), ENOENT));
}

/* --- exec ---------------------------------------------------------------------------------------------- */

TEST_F(Ssi, ExecInsertsWhatTheCommandWrites) {
  EXPECT_EQ(expanded("[<!--#exec \"echo one; echo 'two > <three>'\" -->]"), "[one\ntwo > <three>\n]");
  EXPECT_EQ(expanded("<!--#exec \"printf a\"--><!--#exec \"printf b\"--><!--#exec \"true\"-->c"), "abc");
  EXPECT_EQ(expanded("<!--#exec \"head -c 300000 /dev/zero\"-->").size(), 300000u);
  EXPECT_EQ(expanded("<!--#exec \"echo '<!--#exec'\"-->"), "<!--#exec\n");
}

TEST_F(Ssi, CommandsOfIncludedFilesRunInTheirPlace) {
  write("in.shtml", "(<!--#exec \"echo inner\"-->)");
  EXPECT_EQ(expanded("1<!--#include \"in.shtml\"-->2<!--#exec \"echo outer\"-->3"), "1(inner\n)2outer\n3");
}

TEST_F(Ssi, ACommandHasNoInput) {
  write("page.shtml", "<!--#exec \"cat; echo end\"-->");
  EXPECT_EQ(ask("POST /page.shtml HTTP/1.1\r\nContent-Length: 5\r\n\r\nhello"), page_reply("end\n"));
}

TEST_F(Ssi, MalformedExecs) {
  for (const char *arguments : {"", "\"\"", "ls", "cmd=\"ls\"", "\"ls", "\"ls\" x", "\"a\"b\""}) {
    EXPECT_EQ(expanded(std::string("<!--#exec ") + arguments + "-->"),
              std::string("Bad SSI #exec: [") + arguments + "]");
  }
}

/* With one free descriptor files can be read, but there is no pipe to a command. */
TEST_F(Ssi, CommandsThatCannotBeStarted) {
  write("page.shtml", "a<!--#exec \"ls\" -->b");
  Client client(server.port());
  ASSERT_TRUE(server.run_until([&] { return server.client_count() == 1; }));
  const int next_free = dup(STDERR_FILENO);
  close(next_free);
  struct rlimit before;
  getrlimit(RLIMIT_NOFILE, &before);
  const struct rlimit tight = {static_cast<rlim_t>(next_free) + 1, before.rlim_max};
  ASSERT_EQ(setrlimit(RLIMIT_NOFILE, &tight), 0);
  client.send("GET /page.shtml HTTP/1.1\r\n\r\n");
  EXPECT_TRUE(server.run_until([&] { return client.closed; }, {&client}));
  setrlimit(RLIMIT_NOFILE, &before);
  EXPECT_EQ(client.take(), page_reply("aCannot SSI #exec: [\"ls\"]: Too many open filesb"));
}

TEST_F(Ssi, OthersAreServedWhileACommandRuns) {
  write("hang.shtml", "<!--#exec \"sleep 1000\"-->");
  Client hanging(server.port());
  hanging.send("GET /hang.shtml HTTP/1.1\r\n\r\n");
  EXPECT_TRUE(server.run_until([&] { return running_children() == 1; }));
  EXPECT_EQ(expanded("<!--#exec \"echo hello\"-->"), "hello\n");
  hanging.close();
  EXPECT_TRUE(server.run_until([&] { return running_children() == 0; })) << "it ends with its client";
}

TEST_F(Ssi, APageEndsWithItsCommandsThoughABackgroundProcessHoldsTheirOutput) {
  const std::string pid_file = dir.file("pid");
  EXPECT_EQ(expanded("<!--#exec \"sleep 1000 & echo $! > " + pid_file + "; echo hello\"-->."), "hello\n.");
  kill(atoi(read_file(pid_file).c_str()), SIGKILL);
}

TEST_F(Ssi, AServerThatEndsEndsACommandAndStartsNoOther) {
  write("page.shtml", "<!--#exec \"sleep 1000\"--><!--#exec \"sleep 1000\"-->");
  Client client(server.port());
  client.send("GET /page.shtml HTTP/1.1\r\n\r\n");
  EXPECT_TRUE(server.run_until([&] { return running_children() == 1; }));
}

/* --- Other directives ---------------------------------------------------------------------------------- */

TEST_F(Ssi, UnknownDirectives) {
  const std::string prefix = file("page.shtml") + ": unknown SSI command: ";
  EXPECT_EQ(expanded("a<!--#echo var=\"X\" -->b"), "a" + prefix + "\"echo var=\"X\"\"b");
  EXPECT_EQ(expanded("<!--#-->"), prefix + "\"\"");
  EXPECT_EQ(expanded("<!--#INCLUDE \"x\"-->"), prefix + "\"INCLUDE \"x\"\"");
  EXPECT_EQ(expanded("<!--#includes \"x\"-->"), prefix + "\"includes \"x\"\"");
}

TEST_F(Ssi, DirectivesWithoutEndAndThoseThatAreTooLarge) {
  const std::string complaint = file("page.shtml") + ": SSI tag is too large";
  EXPECT_EQ(expanded("a<!--#exec \"echo secret\""), "a" + complaint);
  EXPECT_EQ(expanded("a<!--#"), "a" + complaint);
  EXPECT_EQ(expanded("a<!--#" + std::string(100000, 'x')), "a" + complaint);
  EXPECT_EQ(expanded("a<!--#" + std::string(8193, 'x') + "-->b"), "a" + complaint + "b");
  const std::string longest(8192, 'x');
  EXPECT_EQ(expanded("a<!--#" + longest + "-->b"),
            "a" + file("page.shtml") + ": unknown SSI command: \"" + longest + "\"b");
}

/* Directives at every place around the sizes in which files are read. */
TEST_F(Ssi, ADirectiveMayStandAnywhere) {
  write("x", "X");
  for (const size_t size : {8180, 8192, 65505, 65520, 65530, 65536}) {
    const std::string text(size, '.');
    EXPECT_EQ(expanded(text + "<!--#include \"x\"-->" + text), text + "X" + text);
  }
}

/* --- Bounds -------------------------------------------------------------------------------------------- */

TEST_F(Ssi, APageOfEightMegabytesIsWhole) {
  const std::string most((8 << 20), 'x');
  EXPECT_EQ(expanded(most), most);
  write("page.shtml", most + "x");
  EXPECT_EQ(get("/page.shtml"), too_large);
}

TEST_F(Ssi, LargeFilesIncludedOftenAreTooMuch) {
  write("large", std::string(1 << 20, 'x'));
  std::string text;
  for (int i = 0; i < 8; i++) text += "<!--#include \"large\"-->";
  write("page.shtml", text);
  EXPECT_EQ(get("/page.shtml"), too_large);
}

TEST_F(Ssi, ManyDirectivesThatYieldNothingAreTooMuch) {
  write("empty", "");
  std::string text;
  for (int i = 0; i < 1000; i++) text += "<!--#include \"empty\"-->";
  EXPECT_EQ(expanded(text), "");
  write("page.shtml", text + "<!--#include \"empty\"-->");
  EXPECT_EQ(get("/page.shtml"), too_large);
}

TEST_F(Ssi, APageThatIncludesItselfManyTimesEnds) {
  std::string text;
  for (int i = 0; i < 100; i++) text += "<!--#include \"page.shtml\"-->";
  write("page.shtml", text);
  EXPECT_EQ(get("/page.shtml"), too_large);
}

TEST_F(Ssi, ACommandThatFloodsIsEnded) {
  write("page.shtml", "<!--#exec \"cat /dev/zero\"-->");
  EXPECT_EQ(get("/page.shtml"), too_large);
  EXPECT_TRUE(server.run_until([&] { return running_children() == 0; }));
}
