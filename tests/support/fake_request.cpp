/* A request without a socket: see fake_request.h. */
#include "tests/support/fake_request.h"

#include <stdlib.h>

FakeRequest::FakeRequest(std::string method, std::string uri, std::string query_string, std::string body)
    : server{}, socket{}, record{}, method_(std::move(method)), uri_(std::move(uri)),
      query_(std::move(query_string)), body_(std::move(body)) {
  server.ns_mgr.ctl[0] = server.ns_mgr.ctl[1] = -1;
  server.ns_mgr.poller = -1;
  socket.mgr = &server.ns_mgr;
  socket.sock = -1;
  socket.user_data = &record;
  record.ns_conn = &socket;
  record.server = &server;
  record.endpoint_type = EP_USER;
  record.cl = static_cast<int64_t>(body_.size());

  mg_connection *c = conn();
  c->request_method = method_.c_str();
  c->uri = uri_.c_str();
  c->http_version = "1.1";
  c->query_string = query_.empty() ? nullptr : query_.c_str();
  c->content = body_.empty() ? nullptr : body_.data();
  c->content_len = body_.size();
  set_remote("127.0.0.1", 40000);
}

FakeRequest::~FakeRequest() {
  iobuf_free(&socket.send_iobuf);
}

void FakeRequest::set_remote(const std::string &ip, unsigned short port) {
  mg_connection *c = conn();
  c->remote_ip[ip.copy(c->remote_ip, sizeof(c->remote_ip) - 1)] = '\0';
  c->remote_port = port;
}

void FakeRequest::add_header(const std::string &name, const std::string &value) {
  mg_connection *c = conn();
  if (c->num_headers == MG_MAX_HEADERS) abort();
  std::string *texts = &header_texts_[2 * c->num_headers];
  texts[0] = name;
  texts[1] = value;
  c->http_headers[c->num_headers++] = {texts[0].c_str(), texts[1].c_str()};
}

void FakeRequest::detach_body() {
  conn()->content = nullptr;
}

std::string FakeRequest::bytes() const {
  const iobuf &out = socket.send_iobuf;
  return out.len == 0 ? std::string() : std::string(out.buf, out.len);
}

void FakeRequest::clear_reply() {
  iobuf_free(&socket.send_iobuf);
  socket.flags = 0;
  record.mg_conn.status_code = 0;
}

/* Appends one chunk of `bytes` at `pos` to the body. Returns where the next one starts, npos when this is not
 * a whole chunk. */
static size_t take_chunk(const std::string &bytes, size_t pos, FakeReply *reply) {
  const size_t line_end = bytes.find("\r\n", pos);
  if (line_end == std::string::npos || line_end == pos) return std::string::npos;
  if (bytes.find_first_not_of("0123456789ABCDEF", pos) != line_end) return std::string::npos;
  const size_t size = strtoul(bytes.c_str() + pos, nullptr, 16);
  const size_t data = line_end + 2;
  if (size > bytes.size() || data + size + 2 > bytes.size()) return std::string::npos;
  if (bytes.compare(data + size, 2, "\r\n") != 0) return std::string::npos;
  reply->body.append(bytes, data, size);
  reply->terminated = size == 0;
  return data + size + 2;
}

FakeReply split_reply(const std::string &bytes) {
  FakeReply reply = {};
  const size_t head_end = bytes.find("\r\n\r\n");
  if (head_end == std::string::npos) return reply;
  reply.head = bytes.substr(0, head_end + 4);
  if (reply.head.find("\r\nTransfer-Encoding: chunked\r\n") == std::string::npos) {
    reply.body = bytes.substr(head_end + 4);
    reply.well_formed = true;
    return reply;
  }
  size_t pos = head_end + 4;
  while (pos < bytes.size() && !reply.terminated) {
    pos = take_chunk(bytes, pos, &reply);
    if (pos == std::string::npos) return reply;
  }
  reply.well_formed = pos == bytes.size();
  return reply;
}
