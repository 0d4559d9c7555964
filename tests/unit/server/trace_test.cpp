/* The hex dump and the traffic trace. */
#include "tests/unit/server/server_harness.h"

#include <gtest/gtest.h>
#include <regex>

static std::string hexdump(const std::string &bytes, int size = 10000) {
  std::string dst(static_cast<size_t>(size), '#');
  const int n = ns_hexdump(bytes.data(), static_cast<int>(bytes.size()), dst.data(), size);
  EXPECT_EQ(dst[static_cast<size_t>(n)], '\0');
  return dst.substr(0, static_cast<size_t>(n));
}

TEST(Hexdump, HasRowsOfSixteenBytes) {
  EXPECT_EQ(hexdump(""), "");
  EXPECT_EQ(hexdump("A"), "0000  41" + std::string(15 * 3, ' ') + "  A\n\n");
  EXPECT_EQ(hexdump("0123456789abcdef"),
            "0000  30 31 32 33 34 35 36 37 38 39 61 62 63 64 65 66  0123456789abcdef\n\n");
  EXPECT_EQ(hexdump(std::string("0123456789abcdef\0\x1f ~\x7f\xff", 22)),
            "0000  30 31 32 33 34 35 36 37 38 39 61 62 63 64 65 66  0123456789abcdef\n"
            "0010  00 1f 20 7e 7f ff                                .. ~..\n\n");
}

TEST(Hexdump, IsCutToTheRoomThereIs) {
  EXPECT_EQ(hexdump("0123456789abcdef", 10), "0000  30 ");
  EXPECT_EQ(hexdump("0123456789abcdef", 1), "");
  EXPECT_EQ(ns_hexdump("x", 1, nullptr, 0), 0);
}

TEST(Hexdump, OfAnyLengthFitsTheTracesBuffer) {
  for (int n = 1; n < 300; n++)
    EXPECT_EQ(hexdump(std::string(static_cast<size_t>(n), 'x'), 5 * n + 100).substr(0, 6), "0000  ");
}

TEST(Trace, RecordsEveryEventWithItsBytes) {
  TempDir dir;
  TestServer server;
  server.on_event = answer_with("hello");
  mg_set_option(server.server, "hexdump_file", dir.file("trace").c_str());
  Client client(server.port());
  server.ask(client, "GET / HTTP/1.1\r\n\r\n");
  const std::string local = "127.0.0.1:" + std::to_string(server.port());
  const std::string remote = "127.0.0.1:" + std::to_string(client.local_port());
  client.close();
  ASSERT_TRUE(server.run_until([&] { return server.client_count() == 0; }));

  std::string trace = read_file(dir.file("trace"));
  trace = std::regex_replace(trace, std::regex("(^|\n)[0-9]{10} 0x[0-9a-f]+ "), "$1TIME RECORD ");
  trace = std::regex_replace(trace, std::regex("(^|\n)[0-9]{10} \\(nil\\) "), "$1TIME NONE ");
  const std::string reply = chunked_reply("hello");
  EXPECT_EQ(trace, "TIME NONE " + local + " <A " + remote + " 0\n" + "TIME RECORD " + local + " <- " +
                       remote + " 18\n" + hexdump("GET / HTTP/1.1\r\n\r\n") + "TIME RECORD " + local +
                       " -> " + remote + " " + std::to_string(reply.size()) + "\n" + hexdump(reply) +
                       "TIME RECORD " + local + " XX " + remote + " 0\n");
}

TEST(Trace, FileThatCannotBeOpenedDoesNoHarm) {
  TestServer server;
  server.on_event = answer_with("hello");
  mg_set_option(server.server, "hexdump_file", "/nonexistent/directory/trace");
  Client client(server.port());
  EXPECT_EQ(server.ask(client, "GET / HTTP/1.1\r\n\r\n"), chunked_reply("hello"));
}
