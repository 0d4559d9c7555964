/* The environment of a CGI program. */
#include "tests/unit/server/program_harness.h"

#include <algorithm>
#include <gtest/gtest.h>
#include <stdlib.h>
#include <string.h>
#include <unistd.h>

/* A request for a program, without a socket. */
struct CgiEnvironment : testing::Test {
  CgiEnvironment() {
    for (const char *name : {"PATH", "TEMP", "TMPDIR", "PERLLIB", "TIDEWELL_CGI", "LD_LIBRARY_PATH"}) {
      const char *value = getenv(name);
      if (value != nullptr) saved.push_back({name, value});
      unsetenv(name);
    }
    conn.server = &server;
    conn.ns_conn = &socket;
    set_option(AUTH_DOMAIN, "switch.example");
    set_option(DOCUMENT_ROOT, "/srv/www");
    strcpy(conn.mg_conn.remote_ip, "192.0.2.7");
    strcpy(conn.mg_conn.local_ip, "192.0.2.1");
    conn.mg_conn.remote_port = 40000;
    conn.mg_conn.request_method = "GET";
    conn.mg_conn.uri = "/cgi/env.cgi";
    strcpy(target.path, "/srv/www/cgi/env.cgi");
    strcpy(target.root, "/srv/www");
  }
  ~CgiEnvironment() override {
    for (const auto &[name, value] : saved) setenv(name.c_str(), value.c_str(), 1);
    for (char *value : server.config_options) free(value);
  }

  void set_option(enum mg_option option, const char *value) {
    free(server.config_options[option]);
    server.config_options[option] = value == nullptr ? nullptr : strdup(value);
  }
  void add_header(const char *name, const char *value) {
    conn.mg_conn.http_headers[conn.mg_conn.num_headers++] = {name, value};
  }
  /* The variables; the block's invariants are checked. */
  std::vector<std::string> variables() {
    EXPECT_EQ(prepare_cgi_environment(&conn, &target, &block), 0);
    EXPECT_EQ(block.conn, &conn);
    EXPECT_LT(block.nvars, CGI_ENV_VARS);
    EXPECT_LE(block.len, CGI_ENV_SIZE);
    EXPECT_EQ(block.vars[block.nvars], nullptr);
    std::vector<std::string> list;
    for (int i = 0; i < block.nvars; i++) list.push_back(block.vars[i]);
    return list;
  }
  /* NAME=value of a variable, "" when there is none. */
  std::string variable(const std::string &name) {
    for (const std::string &text : variables()) {
      if (text.compare(0, name.size() + 1, name + "=") == 0) return text;
    }
    return "";
  }
  int error() { return prepare_cgi_environment(&conn, &target, &block); }

  struct mg_server server = {};
  struct ns_connection socket = {};
  struct connection conn = {};
  struct file_target target = {};
  struct cgi_env_block block;
  std::vector<std::pair<std::string, std::string>> saved;
};

using Variables = std::vector<std::string>;

TEST_F(CgiEnvironment, OfAPlainRequest) {
  EXPECT_EQ(variables(), (Variables{
                             "SERVER_NAME=switch.example",
                             "SERVER_ROOT=/srv/www",
                             "DOCUMENT_ROOT=/srv/www",
                             "SERVER_SOFTWARE=Tidewell/0.1.0",
                             "GATEWAY_INTERFACE=CGI/1.1",
                             "SERVER_PROTOCOL=HTTP/1.1",
                             "REDIRECT_STATUS=200",
                             "REQUEST_METHOD=GET",
                             "REMOTE_ADDR=192.0.2.7",
                             "REMOTE_PORT=40000",
                             "REQUEST_URI=/cgi/env.cgi",
                             "SCRIPT_NAME=/cgi/env.cgi",
                             "SCRIPT_FILENAME=/srv/www/cgi/env.cgi",
                             "HTTPS=off",
                             "QUERY_STRING=",
                         }));
}

TEST_F(CgiEnvironment, OfARequestWithEverything) {
  setenv("PATH", "/usr/bin:/bin", 1);
  setenv("TEMP", "/temp", 1);
  setenv("TMPDIR", "/tmp", 1);
  setenv("PERLLIB", "/perl", 1);
  setenv("TIDEWELL_CGI", "own", 1);
  setenv("LD_LIBRARY_PATH", "/lib", 1);
  socket.ssl = reinterpret_cast<SSL *>(&socket); /* only looked at whether it is there */
  conn.mg_conn.request_method = "POST";
  conn.mg_conn.uri = "/cgi/env.cgi/a b/c";
  conn.mg_conn.query_string = "x=1&y=%20;`id`";
  char info[] = "/a b/c";
  conn.path_info = info;
  conn.cl = 12;
  add_header("Host", "somewhere.example");
  add_header("Content-Type", "text/plain");
  add_header("content-length", "12");
  add_header("X-Own-Header2", "$(id)");
  EXPECT_EQ(variables(), (Variables{
                             "SERVER_NAME=switch.example",
                             "SERVER_ROOT=/srv/www",
                             "DOCUMENT_ROOT=/srv/www",
                             "SERVER_SOFTWARE=Tidewell/0.1.0",
                             "GATEWAY_INTERFACE=CGI/1.1",
                             "SERVER_PROTOCOL=HTTP/1.1",
                             "REDIRECT_STATUS=200",
                             "PATH=/usr/bin:/bin",
                             "TEMP=/temp",
                             "TMPDIR=/tmp",
                             "PERLLIB=/perl",
                             "TIDEWELL_CGI=own",
                             "LD_LIBRARY_PATH=/lib",
                             "REQUEST_METHOD=POST",
                             "REMOTE_ADDR=192.0.2.7",
                             "REMOTE_PORT=40000",
                             "REQUEST_URI=/cgi/env.cgi/a%20b/c?x=1&y=%20;`id`",
                             "SCRIPT_NAME=/cgi/env.cgi",
                             "PATH_INFO=/a b/c",
                             "PATH_TRANSLATED=/srv/www/a b/c",
                             "SCRIPT_FILENAME=/srv/www/cgi/env.cgi",
                             "HTTPS=on",
                             "QUERY_STRING=x=1&y=%20;`id`",
                             "CONTENT_TYPE=text/plain",
                             "CONTENT_LENGTH=12",
                             "HTTP_HOST=somewhere.example",
                             "HTTP_CONTENT_TYPE=text/plain",
                             "HTTP_CONTENT_LENGTH=12",
                             "HTTP_X_OWN_HEADER2=$(id)",
                         }));
}

TEST_F(CgiEnvironment, OfADirectorysIndexProgram) {
  conn.mg_conn.uri = "/cgi/";
  EXPECT_EQ(variable("REQUEST_URI"), "REQUEST_URI=/cgi/");
  EXPECT_EQ(variable("SCRIPT_NAME"), "SCRIPT_NAME=/cgi/env.cgi");
}

TEST_F(CgiEnvironment, OfAProgramOutsideDocumentRoot) {
  set_option(DOCUMENT_ROOT, nullptr);
  set_option(AUTH_DOMAIN, nullptr);
  conn.mg_conn.uri = "/tools/env.cgi/info";
  char info[] = "/info";
  conn.path_info = info;
  strcpy(target.root, "/opt/tools");
  strcpy(target.path, "/opt/tools/env.cgi");
  EXPECT_EQ(variable("SERVER_NAME"), "SERVER_NAME=192.0.2.1");
  EXPECT_EQ(variable("DOCUMENT_ROOT"), "DOCUMENT_ROOT=/opt/tools");
  EXPECT_EQ(variable("SCRIPT_NAME"), "SCRIPT_NAME=/tools/env.cgi");
  EXPECT_EQ(variable("PATH_TRANSLATED"), "PATH_TRANSLATED=/opt/tools/info");
}

TEST_F(CgiEnvironment, PathsAreAbsolute) {
  char here[4096];
  ASSERT_NE(getcwd(here, sizeof(here)), nullptr);
  set_option(DOCUMENT_ROOT, "www");
  strcpy(target.path, "www/cgi/env.cgi");
  EXPECT_EQ(variable("DOCUMENT_ROOT"), std::string("DOCUMENT_ROOT=") + here + "/www");
  EXPECT_EQ(variable("SCRIPT_FILENAME"), std::string("SCRIPT_FILENAME=") + here + "/www/cgi/env.cgi");
}

/* --- Headers ------------------------------------------------------------------------------------------- */

/* The variables that headers have become. */
static Variables of_headers(const Variables &all) {
  Variables list;
  std::copy_if(all.begin(), all.end(), std::back_inserter(list),
               [](const std::string &text) { return text.compare(0, 5, "HTTP_") == 0; });
  return list;
}

TEST_F(CgiEnvironment, AProxyOfTheClientsChoiceIsNotPassedOn) {
  add_header("Proxy", "http://evil.example:8080");
  add_header("PROXY", "http://evil.example:8080");
  add_header("Proxy-Authorization", "x");
  EXPECT_EQ(of_headers(variables()), Variables{"HTTP_PROXY_AUTHORIZATION=x"});
}

TEST_F(CgiEnvironment, HeadersWithOddNamesAreNotPassedOn) {
  for (const char *name :
       {"X_Forwarded_For", "A=B", "A.B", "()", "A\tB", "", "\xc3\xa9", "A'", "A;B", "PATH=x"}) {
    add_header(name, "() { :; }; id");
  }
  add_header("X-Forwarded-For", "192.0.2.9");
  EXPECT_EQ(of_headers(variables()), Variables{"HTTP_X_FORWARDED_FOR=192.0.2.9"});
}

TEST_F(CgiEnvironment, HeadersOfTheSameNameBecomeOneVariable) {
  add_header("Accept", "a");
  add_header("Cookie", "x=1");
  add_header("ACCEPT", "b");
  add_header("cookie", "y=2");
  add_header("accept", "c");
  EXPECT_EQ(of_headers(variables()), (Variables{"HTTP_ACCEPT=a, b, c", "HTTP_COOKIE=x=1; y=2"}));
}

TEST_F(CgiEnvironment, WhatIsNotInTheRequestIsNotSet) {
  for (const char *name : {"CONTENT_TYPE", "CONTENT_LENGTH", "PATH_INFO", "PATH_TRANSLATED", "PATH"}) {
    EXPECT_EQ(variable(name), "") << name;
  }
}

TEST_F(CgiEnvironment, TheLengthIsTheNumberThatTheServerReads) {
  conn.cl = 7;
  add_header("Content-Length", "007abc");
  EXPECT_EQ(variable("CONTENT_LENGTH"), "CONTENT_LENGTH=7");
}

/* --- Bounds -------------------------------------------------------------------------------------------- */

TEST_F(CgiEnvironment, ThirtyHeadersOfFiveHundredBytesAreRefused) {
  const std::string value(500, 'x');
  for (int i = 0; i < MG_MAX_HEADERS; i++) add_header("X-Flood", value.c_str());
  EXPECT_EQ(error(), 431);
  conn.mg_conn.num_headers = 10;
  EXPECT_EQ(error(), 0);
}

TEST_F(CgiEnvironment, ThirtyDifferentHeadersHaveAPointerEach) {
  std::vector<std::string> names;
  for (int i = 0; i < MG_MAX_HEADERS; i++) names.push_back("X-" + std::to_string(i));
  for (const std::string &name : names) add_header(name.c_str(), "x");
  EXPECT_EQ(of_headers(variables()).size(), 30u);
}

/* Every size around the limit: the text either fits whole or the request is refused. */
TEST_F(CgiEnvironment, AHeaderFitsWholeOrIsRefused) {
  variables();
  const int room = CGI_ENV_SIZE - block.len - static_cast<int>(strlen("HTTP_A=")) - 1;
  const std::string longest(static_cast<size_t>(room), 'x'), longer(static_cast<size_t>(room) + 1, 'x');
  add_header("A", longest.c_str());
  EXPECT_EQ(variable("HTTP_A"), "HTTP_A=" + longest);
  EXPECT_EQ(block.len, CGI_ENV_SIZE);
  add_header("B", "");
  EXPECT_EQ(error(), 431);
  conn.mg_conn.num_headers = 0;
  add_header("A", longer.c_str());
  EXPECT_EQ(error(), 431);
  conn.mg_conn.num_headers = 0;
  const std::string half(longest, 0, longest.size() - 3);
  add_header("A", half.c_str());
  add_header("A", "x");
  EXPECT_EQ(variable("HTTP_A"), "HTTP_A=" + half + ", x");
  add_header("A", "");
  EXPECT_EQ(error(), 431);
}

TEST_F(CgiEnvironment, AQueryThatIsTooLongIsRefused) {
  const std::string query(CGI_ENV_SIZE / 2, 'x');
  conn.mg_conn.query_string = query.c_str(); /* it is in REQUEST_URI, too */
  EXPECT_EQ(error(), 414);
}

TEST_F(CgiEnvironment, AServerWhoseOwnVariablesDoNotFitFails) {
  setenv("PATH", std::string(CGI_ENV_SIZE, 'x').c_str(), 1);
  EXPECT_EQ(error(), 500);
}

TEST_F(CgiEnvironment, NoMoreVariablesThanPointers) {
  block = {};
  for (int i = 0; i < CGI_ENV_VARS - 1; i++) ASSERT_TRUE(add_variable(&block, "A%d=", i));
  const int len = block.len;
  EXPECT_FALSE(add_variable(&block, "B="));
  EXPECT_EQ(block.len, len);
  EXPECT_EQ(block.nvars, CGI_ENV_VARS - 1);
  EXPECT_EQ(block.vars[CGI_ENV_VARS - 1], nullptr);
}
