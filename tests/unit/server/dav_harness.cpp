/* See dav_harness.h. */
#include "tests/unit/server/dav_harness.h"

#include <algorithm>
#include <filesystem>
#include <fstream>

DavTest::DavTest() {
  std::filesystem::create_directory(dir.file("www"));
  std::ofstream(dir.file("users")) << password_line(anna);
  set("document_root", dir.file("www"));
  set("dav_auth_file", dir.file("users"));
}

void DavTest::set(const char *option, const std::string &value) {
  EXPECT_STREQ(mg_set_option(server.server, option, value.c_str()), nullptr);
}

void DavTest::write(const std::string &name, const std::string &text) const {
  const std::filesystem::path file = path(name);
  std::filesystem::create_directories(file.parent_path());
  std::ofstream(file, std::ios::binary) << text;
}

std::string DavTest::tree() const {
  const std::filesystem::path root = dir.file("www");
  std::vector<std::string> names;
  for (const auto &entry : std::filesystem::recursive_directory_iterator(root)) {
    names.push_back(entry.path().lexically_relative(root).string() + (entry.is_directory() ? "/" : ""));
  }
  std::sort(names.begin(), names.end());
  std::string text;
  for (const std::string &name : names) text += (text.empty() ? "" : " ") + name;
  return text;
}

std::string DavTest::request(const std::string &method, const std::string &uri, const std::string &body,
                             const std::string &lines) const {
  const bool tells_length = lines.find("Content-Length") != std::string::npos;
  const bool has_body = method == "PUT" || !body.empty();
  const std::string length = "Content-Length: " + std::to_string(body.size()) + "\r\n";
  return method + " " + uri + " HTTP/1.1\r\n" + digest_line(anna, method, uri) + lines +
         (has_body && !tells_length ? length : "") + "\r\n" + body;
}

std::string DavTest::ask(const std::string &method, const std::string &uri, const std::string &body,
                         const std::string &lines) {
  Client client(server.port());
  client.send(request(method, uri, body, lines));
  EXPECT_TRUE(server.run_until([&] { return client.closed; }, {&client})) << client.received;
  return client.take();
}

int DavTest::status(const std::string &method, const std::string &uri, const std::string &body,
                    const std::string &lines) {
  const std::string reply = ask(method, uri, body, lines);
  return reply.size() < 12 ? 0 : atoi(reply.c_str() + 9);
}

std::string success(int status) {
  return "HTTP/1.1 " + std::to_string(status) + " OK\r\nContent-Length: 0\r\n\r\n";
}

std::string failure(int status, const std::string &detail) {
  const std::string line = std::to_string(status) + " " + status_code_to_str(status);
  const std::string body = (line + "\n" + detail).substr(0, 200);
  return "HTTP/1.1 " + line + "\r\nContent-Length: " + std::to_string(body.size()) +
         "\r\nContent-Type: text/plain\r\n\r\n" + body;
}
