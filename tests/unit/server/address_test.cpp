/* The address syntax of listeners and outbound connections. */
#include "server/ns_conn.h"

#include <arpa/inet.h>
#include <gtest/gtest.h>
#include <string>

struct Parsed {
  int consumed;
  std::string address;
  int port;
  int protocol;
  int use_ssl;
  std::string cert, ca;
};

static Parsed parse(const std::string &text) {
  socket_address sa;
  char cert[100], ca[100], ip[INET_ADDRSTRLEN];
  Parsed p = {};
  p.consumed = ns_parse_address(text.c_str(), &sa, &p.protocol, &p.use_ssl, cert, ca);
  p.address = inet_ntop(AF_INET, &sa.sin.sin_addr, ip, sizeof(ip));
  p.port = ntohs(sa.sin.sin_port);
  p.cert = cert;
  p.ca = ca;
  return p;
}

TEST(Address, GoodFormsAreTakenApart) {
  static const struct {
    const char *text, *address;
    int port, protocol, use_ssl;
    const char *cert, *ca;
  } cases[] = {
      {"8080", "0.0.0.0", 8080, SOCK_STREAM, 0, "", ""},
      {"0", "0.0.0.0", 0, SOCK_STREAM, 0, "", ""},
      {"65534", "0.0.0.0", 65534, SOCK_STREAM, 0, "", ""},
      {"127.0.0.1:80", "127.0.0.1", 80, SOCK_STREAM, 0, "", ""},
      {"tcp://10.1.2.3:81", "10.1.2.3", 81, SOCK_STREAM, 0, "", ""},
      {"udp://127.0.0.1:53", "127.0.0.1", 53, SOCK_DGRAM, 0, "", ""},
      {"127.1:8080", "127.0.0.1", 8080, SOCK_STREAM, 0, "", ""}, /* a name, which every machine can look up */
      {"ssl://8446", "0.0.0.0", 8446, SOCK_STREAM, 1, "", ""},
      {"ssl://8446:/mnt/kestrel/ssl.pem", "0.0.0.0", 8446, SOCK_STREAM, 1, "/mnt/kestrel/ssl.pem", ""},
      {"ssl://127.0.0.1:8446:a.pem:ca.pem", "127.0.0.1", 8446, SOCK_STREAM, 1, "a.pem", "ca.pem"},
  };
  for (const auto &c : cases) {
    const Parsed p = parse(c.text);
    EXPECT_EQ(p.consumed, static_cast<int>(strlen(c.text))) << c.text;
    EXPECT_EQ(p.address, c.address) << c.text;
    EXPECT_EQ(p.port, c.port) << c.text;
    EXPECT_EQ(p.protocol, c.protocol) << c.text;
    EXPECT_EQ(p.use_ssl, c.use_ssl) << c.text;
    EXPECT_EQ(p.cert, c.cert) << c.text;
    EXPECT_EQ(p.ca, c.ca) << c.text;
  }
}

TEST(Address, NearMissesAreRefused) {
  for (const char *text :
       {"", "65535", "65536", "4294967296000", "-1", "8080x", "8080 ", "x", ":80", "127.0.0.1",
        "127.0.0.1:", "1.2.3.4:80:cert.pem", "8080:cert.pem", "http://80",
        "ssl://8446:", "ssl://8446:a.pem:", "ssl://8446:a.pem:b.pem:c.pem", "SSL://8446:a.pem", "tcp:/80"}) {
    EXPECT_EQ(parse(text).consumed, 0) << "\"" << text << "\"";
  }
}

TEST(Address, NamesOf99CharactersFitAndLongerOnesAreRefused) {
  const std::string fits(99, 'c');
  EXPECT_EQ(parse("ssl://1:" + fits + ":" + fits).ca, fits);
  EXPECT_EQ(parse("ssl://1:" + fits + "c").consumed, 0);
  EXPECT_EQ(parse("ssl://1:" + fits + ":" + fits + "c").consumed, 0);
}

TEST(Address, HostNamesOfMoreThan199CharactersAreRefused) {
  EXPECT_EQ(parse(std::string(200, 'h') + ":80").consumed, 0);
}

TEST(Address, ResolveAnswersWithTheTextsLengthOrZero) {
  char buf[20];
  EXPECT_EQ(ns_resolve("127.0.0.1", buf, sizeof(buf)), 9);
  EXPECT_STREQ(buf, "127.0.0.1");
  char small[9];
  EXPECT_EQ(ns_resolve("127.0.0.1", small, sizeof(small)), 0);
  EXPECT_EQ(ns_resolve("no such host.invalid", buf, sizeof(buf)), 0);
}
