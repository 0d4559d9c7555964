/* What the client makes of servers that answer oddly, byte for byte. Certificates are the system tests'. */
#include "tests/support/tiny_server.h"
#include "tools/kestrelctl/http_client.h"

#include <gtest/gtest.h>

static const http_message LIST = {"GET", "/vlans?format=json", ""};

/* The reply to a request of a server that answers each connection with a text and closes. */
static http_reply reply_to(const http_message &request, const std::string &answer,
                           std::string *seen = nullptr) {
  std::string head;
  http_reply reply;
  {
    const tiny_server server([&](const tiny_connection &connection) {
      head = connection.receive_head();
      connection.send(answer);
    });
    reply = send_request({server.url(""), "", "", 20}, request);
  }
  if (seen != nullptr) *seen = head;
  return reply;
}

TEST(KestrelctlHttp, RequestIsPlainAndTheBodyComesBack) {
  std::string head;
  const http_reply reply = reply_to(LIST, http_answer("{}\n"), &head);
  EXPECT_EQ(reply.outcome, http_outcome::REPLIED) << reply.error;
  EXPECT_EQ(reply.body, "{}\n");
  EXPECT_EQ(head.substr(0, head.find("Host:")), "GET /vlans?format=json HTTP/1.1\r\n");
  EXPECT_EQ(head.substr(head.find("User-Agent")), "User-Agent: kestrelctl\r\nAccept: */*\r\n\r\n");
}

TEST(KestrelctlHttp, BodyIsSentFormEncoded) {
  std::string head;
  const http_reply reply = reply_to({"POST", "/login", "user=a&password=b%20c"}, http_answer("{}"), &head);
  EXPECT_EQ(reply.outcome, http_outcome::REPLIED) << reply.error;
  EXPECT_EQ(head.substr(head.find("Content-Length")),
            "Content-Length: 21\r\n"
            "Content-Type: application/x-www-form-urlencoded\r\n\r\n"
            "user=a&password=b%20c");
}

TEST(KestrelctlHttp, DotsInAPathStay) {
  std::string head;
  reply_to({"DELETE", "/acl/ip/name/../rule", ""}, http_answer("{}"), &head);
  EXPECT_EQ(head.substr(0, head.find("Host:")), "DELETE /acl/ip/name/../rule HTTP/1.1\r\n");
}

TEST(KestrelctlHttp, ChunksAndNulBytesArePutTogether) {
  const std::string head = "HTTP/1.1 200 OK\r\nTransfer-Encoding: chunked\r\n\r\n";
  const std::string answer = head + "3\r\na" + std::string(1, '\0') + "b\r\n2\r\ncd\r\n0\r\n\r\n";
  const http_reply reply = reply_to(LIST, answer);
  EXPECT_EQ(reply.outcome, http_outcome::REPLIED) << reply.error;
  EXPECT_EQ(reply.body, std::string("a\0bcd", 5));
}

TEST(KestrelctlHttp, LargeAnswerIsTaken) {
  const std::string body(50 * 1024 * 1024, 'x');
  const http_reply reply = reply_to(LIST, http_answer(body));
  EXPECT_EQ(reply.outcome, http_outcome::REPLIED) << reply.error;
  EXPECT_TRUE(reply.body == body);
}

TEST(KestrelctlHttp, RedirectIsNotFollowed) {
  const http_reply reply = reply_to(LIST, http_answer("", "302 Found", "Location: /elsewhere\r\n"));
  EXPECT_EQ(reply.outcome, http_outcome::BAD_REPLY);
  EXPECT_EQ(reply.error, "the server answers with HTTP status 302");
}

TEST(KestrelctlHttp, OtherStatusIsNoAnswer) {
  const http_reply reply = reply_to(LIST, http_answer("x", "404 Not Found"));
  EXPECT_EQ(reply.outcome, http_outcome::BAD_REPLY);
  EXPECT_EQ(reply.body, "");
  EXPECT_EQ(reply.error, "the server answers with HTTP status 404");
}

TEST(KestrelctlHttp, BrokenAnswersAreNone) {
  for (const char *answer : {"", "SSH-2.0-x\r\n", "HTTP/1.1 200 OK\r\nContent-Length: 10\r\n\r\nabc",
                             "HTTP/1.1 200 OK\r\nTransfer-Encoding: chunked\r\n\r\n5\r\nab",
                             "HTTP/1.1 200 OK\r\nTransfer-Encoding: chunked\r\n\r\nzz\r\nab\r\n"}) {
    const http_reply reply = reply_to(LIST, answer);
    EXPECT_EQ(reply.outcome, http_outcome::BAD_REPLY) << answer << reply.error;
    EXPECT_NE(reply.error, "") << answer;
    EXPECT_EQ(reply.body, "") << answer;
  }
}

TEST(KestrelctlHttp, SilentServerIsGivenUp) {
  const tiny_server server([](const tiny_connection &connection) { connection.wait_for_end(); });
  const http_reply reply = send_request({server.url(""), "", "", 1}, LIST);
  EXPECT_EQ(reply.outcome, http_outcome::NOT_REACHED);
  EXPECT_EQ(reply.error.substr(0, 26), "no answer within 1 seconds");
}

TEST(KestrelctlHttp, NobodyThereIsSaid) {
  int port;
  {
    port = tiny_server([](const tiny_connection &) {}).port;
  }
  const http_reply reply = send_request({"http://127.0.0.1:" + std::to_string(port), "", "", 5}, LIST);
  EXPECT_EQ(reply.outcome, http_outcome::NOT_REACHED);
  EXPECT_NE(reply.error.find("Couldn't connect to server"), std::string::npos) << reply.error;
}

TEST(KestrelctlHttp, ServerWithoutTlsGetsNothingOfARequestByHttps) {
  std::string head;
  http_reply reply;
  {
    const tiny_server server([&](const tiny_connection &connection) {
      head = connection.receive();
      connection.send(http_answer("{}"));
    });
    reply = send_request({"https://" + server.authority(), "", "", 20}, LIST);
  }
  EXPECT_EQ(reply.outcome, http_outcome::NOT_REACHED);
  EXPECT_EQ(head.find("vlans"), std::string::npos);
}
