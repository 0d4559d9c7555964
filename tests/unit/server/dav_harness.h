/* What the tests of WebDAV share: a server for a directory of its own, and anna, who may change what is in
 * it. */
#ifndef KESTREL_TESTS_UNIT_SERVER_DAV_HARNESS_H
#define KESTREL_TESTS_UNIT_SERVER_DAV_HARNESS_H

#include "tests/unit/server/digest_client.h"
#include "tests/unit/server/server_harness.h"

#include <gtest/gtest.h>

class DavTest : public testing::Test {
protected:
  DavTest(); /* document_root is www */

  void set(const char *option, const std::string &value);
  /* From now on the server has no handler, so that a request is served before its body has arrived. */
  void remove_handler() { server.server->event_handler = nullptr; }

  /* Files by their names under www ("../x" lies beside it). */
  std::string path(const std::string &name) const { return dir.file("www/" + name); }
  void write(const std::string &name, const std::string &text) const;
  std::string read(const std::string &name) const { return read_file(path(name)); }
  /* All that is in www, hidden or not, sorted: "a.txt dir/ dir/b.txt". */
  std::string tree() const;

  /* A request of anna's; with a body or for PUT it has a Content-Length, unless `lines` has one. */
  std::string request(const std::string &method, const std::string &uri, const std::string &body = "",
                      const std::string &lines = "") const;
  /* The whole answer to it, which ends with the connection. */
  std::string ask(const std::string &method, const std::string &uri, const std::string &body = "",
                  const std::string &lines = "");
  /* The status of the answer. */
  int status(const std::string &method, const std::string &uri, const std::string &body = "",
             const std::string &lines = "");

  TempDir dir;
  TestServer server;
  Account anna;
};

/* An answer that says that it worked, and one that says why not; the detail follows the first line. */
std::string success(int status);
std::string failure(int status, const std::string &detail = "");

#endif
