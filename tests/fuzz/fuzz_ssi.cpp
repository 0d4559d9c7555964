/* Fuzzes pages with server-side includes: the input is a page that may include itself and two others. The
 * reply must be whole, text without directives unchanged, and nothing may come from outside the document
 * root. No command runs, as the server's manager says that it is closing down. */
#include "server/http_conn.h"

#include <stdio.h>
#include <stdlib.h>
#include <string>
#include <string_view>
#include <sys/stat.h>
#include <unistd.h>

static const std::string_view secret = "what stands outside the document root";

static void require(bool condition) {
  if (!condition) abort();
}

static void write_file(const std::string &path, std::string_view content) {
  FILE *file = fopen(path.c_str(), "w");
  require(file != nullptr);
  fwrite(content.data(), 1, content.size(), file);
  fclose(file);
}

/* A directory with the document root and a file beside it; removed at the end. */
struct Site {
  Site() {
    path = std::string(access("/dev/shm", W_OK) == 0 ? "/dev/shm" : "/tmp") + "/fuzz_ssi_XXXXXX";
    require(mkdtemp(path.data()) != nullptr);
    root = path + "/root";
    mkdir(root.c_str(), 0755);
    write_file(path + "/secret", secret);
    write_file(root + "/a", "raw <!--#include \"a\"-->");
    write_file(root + "/in.shtml", "(<!--#include \"p.shtml\"-->)");
    page = root + "/p.shtml";
  }
  ~Site() {
    for (const std::string &name : {path + "/secret", root + "/a", root + "/in.shtml", page})
      unlink(name.c_str());
    rmdir(root.c_str());
    rmdir(path.c_str());
  }
  std::string path, root, page;
};

static std::string reply_to_page(Site &site) {
  char pattern[] = "**.shtml$";
  struct mg_server server = {};
  server.ns_mgr.ctl[0] = server.ns_mgr.ctl[1] = -1;
  server.config_options[DOCUMENT_ROOT] = site.root.data();
  server.config_options[SSI_PATTERN] = pattern;
  struct ns_connection socket = {};
  socket.mgr = &server.ns_mgr;
  socket.sock = -1;
  struct connection conn = {};
  conn.ns_conn = &socket;
  conn.server = &server;
  conn.mg_conn.request_method = "GET";
  conn.mg_conn.uri = "/p.shtml";
  conn.mg_conn.http_version = "1.1";

  struct file_target target = {};
  snprintf(target.path, sizeof(target.path), "%s", site.page.c_str());
  snprintf(target.root, sizeof(target.root), "%s", site.root.c_str());
  send_ssi_file(&conn, &target);
  require(conn.ssi == nullptr && (socket.flags & CONN_FINISHED_SENDING));
  std::string reply(socket.send_iobuf.buf, socket.send_iobuf.len);
  iobuf_free(&socket.send_iobuf);
  return reply;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
  static Site site;
  const std::string_view page(reinterpret_cast<const char *>(data), size);
  write_file(site.page, page);
  const std::string reply = reply_to_page(site);

  const size_t head_end = reply.find("\r\n\r\n");
  require(head_end != std::string::npos);
  const std::string_view body = std::string_view(reply).substr(head_end + 4);
  const std::string length = "\r\nContent-Length: " + std::to_string(body.size()) + "\r\n";
  require(reply.find(length) < head_end);
  if (!reply.starts_with("HTTP/1.1 200 OK\r\n")) {
    require(body == "500 Internal Server Error\nSSI page is too large");
    return 0;
  }
  if (page.find("<!--#") == std::string_view::npos) require(body == page);
  const bool may_hold_secret =
      page.find(secret) != std::string_view::npos || page.find("abspath") != std::string_view::npos;
  require(may_hold_secret || body.find(secret) == std::string_view::npos);
  return 0;
}
