/* The words of access control lists for the platform's values, and the composed values of their rules. The
 * ICMP messages, ports and TCP flags stand in the second half. */
#include "modules/rest_module_acl_names.h"

#include <gtest/gtest.h>
#include <string.h>
#include <string>
#include <vector>

struct word_row {
  const char *word;
  uint32_t value;
};

typedef open_error_t (*word_reader_t)(uint32_t *value, const char *word);
typedef open_error_t (*word_writer_t)(uint32_t value, char *word);

static constexpr uint32_t UNTOUCHED = 4711;

static void expect_refused(word_reader_t read, const std::string &word) {
  uint32_t value = UNTOUCHED;
  EXPECT_EQ(read(&value, word.c_str()), OPEN_E_PARAM) << word;
  EXPECT_EQ(value, UNTOUCHED) << word;
}

static bool is_among(const std::vector<word_row> &rows, const std::string &word) {
  for (const word_row &row : rows) {
    if (word == row.word) return true;
  }
  return false;
}

/* What a word is easily mistaken for: other case, blanks, one character more or less. */
static std::vector<std::string> near_misses(const std::string &word) {
  std::string capital = word, capitals = word;
  capital[0] = static_cast<char>(toupper(capital[0]));
  for (char &c : capitals) c = static_cast<char>(toupper(c));
  return {capital,     capitals,    " " + word,         word + " ",
          word + "\n", word + word, word + "x",         word + "s",
          "x" + word,  word + "/",  word + "\t" + word, word.substr(0, word.size() - 1)};
}

/* Every word of the table has its value and nothing else is a word. */
static void expect_words(word_reader_t read, const std::vector<word_row> &rows) {
  for (const word_row &row : rows) {
    uint32_t value = UNTOUCHED;
    EXPECT_EQ(read(&value, row.word), OPEN_E_NONE) << row.word;
    EXPECT_EQ(value, row.value) << row.word;
    EXPECT_EQ(read(nullptr, row.word), OPEN_E_PARAM) << row.word;
    for (const std::string &miss : near_misses(row.word)) {
      if (!is_among(rows, miss)) expect_refused(read, miss);
    }
    expect_refused(read, std::to_string(row.value));
  }
  for (const std::string &word :
       {std::string(), std::string("any"), std::string("%s"), std::string(300, 'm')})
    expect_refused(read, word);
  uint32_t value = UNTOUCHED;
  EXPECT_EQ(read(&value, nullptr), OPEN_E_PARAM);
  EXPECT_EQ(value, UNTOUCHED);
  EXPECT_EQ(read(nullptr, nullptr), OPEN_E_PARAM);
}

/* Every value of the table has its word and these other values have none. */
static void expect_texts(word_writer_t write, const std::vector<word_row> &rows,
                         const std::vector<uint32_t> &unknown) {
  for (const word_row &row : rows) {
    char text[256] = "before";
    EXPECT_EQ(write(row.value, text), OPEN_E_NONE) << row.value;
    EXPECT_STREQ(text, row.word);
    EXPECT_EQ(write(row.value, nullptr), OPEN_E_PARAM) << row.value;
  }
  for (uint32_t value : unknown) {
    char text[256] = "before";
    EXPECT_EQ(write(value, text), OPEN_E_PARAM) << value;
    EXPECT_STREQ(text, "before") << value;
    EXPECT_EQ(write(value, nullptr), OPEN_E_PARAM) << value;
  }
}

/* --- Types, directions, actions, statuses -----------------------------------------------------------------
 */

TEST(AclNames, TypesOfRequests) {
  expect_words(get_acl_type_eum_by_string, {{"ip", 1}, {"mac", 2}, {"ipv6", 3}});
}

TEST(AclNames, TypesOfAnswers) {
  expect_texts(get_acl_type_string_by_eum, {{"IPv4", 1}, {"MAC", 2}, {"IPv6", 3}},
               {0, 4, 5, 255, 256, 257, 2147483647, 2147483648, 4294967295});
}

TEST(AclNames, Directions) {
  expect_words(get_acl_direction_eum_by_string, {{"in", 0}, {"out", 1}});
  for (const char *word : {"inbound", "outbound", "both", "ingress", "i", "o"})
    expect_refused(get_acl_direction_eum_by_string, word);
}

TEST(AclNames, ActionsOfRequests) {
  expect_words(get_acl_rule_action_eum_by_string, {{"permit", 0}, {"deny", 1}});
  for (const char *word : {"allow", "drop", "Permit", "Deny"})
    expect_refused(get_acl_rule_action_eum_by_string, word);
}

TEST(AclNames, ActionsOfAnswers) {
  expect_texts(get_acl_rule_action_string_by_eum, {{"Permit", 0}, {"Deny", 1}},
               {2, 3, 256, 257, 2147483648, 4294967295});
}

TEST(AclNames, StatusesOfTimeRanges) {
  expect_texts(get_acl_rule_time_range_status_string_by_eum,
               {{"No State", 0}, {"Inactive", 1}, {"Active", 2}}, {3, 4, 256, 258, 2147483648, 4294967295});
}

/* --- Protocols and ethertypes ----------------------------------------------------------------------------
 */

static open_error_t read_ipv4_protocol(uint32_t *protocol, const char *word) {
  return get_acl_rule_protocol_value_by_string(true, protocol, word);
}

static open_error_t read_ipv6_protocol(uint32_t *protocol, const char *word) {
  return get_acl_rule_protocol_value_by_string(false, protocol, word);
}

TEST(AclNames, ProtocolsOfIpv4Rules) {
  expect_words(read_ipv4_protocol, {{"eigrp", 88},
                                    {"gre", 47},
                                    {"icmp", 1},
                                    {"igmp", 2},
                                    {"ip", 255},
                                    {"ipinip", 94},
                                    {"ospf", 89},
                                    {"pim", 103},
                                    {"tcp", 6},
                                    {"udp", 17},
                                    {"every", 256}});
  for (const char *word : {"ipv6", "icmpv6", "ipv4", "sctp"}) expect_refused(read_ipv4_protocol, word);
}

TEST(AclNames, ProtocolsOfIpv6Rules) {
  expect_words(read_ipv6_protocol, {{"ipv6", 255}, {"icmpv6", 58}, {"tcp", 6}, {"udp", 17}, {"every", 256}});
  for (const char *word : {"eigrp", "gre", "icmp", "igmp", "ip", "ipinip", "ospf", "pim"})
    expect_refused(read_ipv6_protocol, word);
}

TEST(AclNames, ProtocolsOfAnswersHaveTheirNumberAndTheNameWhereThereIsOne) {
  const std::vector<word_row> named = {
      {"1(ICMP)", 1},     {"2(IGMP)", 2},     {"6(TCP)", 6},     {"17(UDP)", 17},
      {"47(GRE)", 47},    {"58(ICMPv6)", 58}, {"88(EIGRP)", 88}, {"89(OSPF)", 89},
      {"94(IPINIP)", 94}, {"103(PIM)", 103},  {"255(IP)", 255},
  };
  expect_texts(get_acl_rule_protocol_string_by_value, named, {});
  for (uint32_t protocol = 0; protocol <= 300; protocol++) {
    bool has_name = false;
    for (const word_row &row : named) has_name = has_name || row.value == protocol;
    char text[256] = "before";
    EXPECT_EQ(get_acl_rule_protocol_string_by_value(protocol, text), OPEN_E_NONE);
    if (has_name) continue;
    EXPECT_EQ(text, std::to_string(protocol));
  }
  expect_texts(get_acl_rule_protocol_string_by_value, {{"2147483647", 2147483647}}, {});
}

TEST(AclNames, Ethertypes) {
  expect_words(get_acl_rule_ethertype_by_string, {{"appletalk", 0x809B},
                                                  {"arp", 0x0806},
                                                  {"ibmsna", 0x80D5},
                                                  {"ipv4", 0x0800},
                                                  {"ipv6", 0x86DD},
                                                  {"ipx", 0x8037},
                                                  {"mplsmcast", 0x8848},
                                                  {"mplsucast", 0x8847},
                                                  {"netbios", 0x8191},
                                                  {"novell", 0x8137},
                                                  {"novell2", 0x8138},
                                                  {"pppoe", 0x8863},
                                                  {"pppoe2", 0x8864},
                                                  {"rarp", 0x8035}});
  for (const char *word : {"ip", "0x0806", "novell1", "pppoe1", "mpls"})
    expect_refused(get_acl_rule_ethertype_by_string, word);
}

/* --- ICMP messages ---------------------------------------------------------------------------------------
 */

static constexpr int NO_CODE = -1;

struct icmp_row {
  const char *keyword;
  uint32_t type;
  int code;
};

typedef open_error_t (*icmp_reader_t)(const char *keyword, uint32_t *type, uint32_t *code, bool *has_code);

/* A refused keyword leaves numbers alone; the flag says then that a code belongs to the type. */
static void expect_no_message(icmp_reader_t read, const char *keyword) {
  uint32_t type = UNTOUCHED, code = UNTOUCHED;
  bool has_code = false;
  EXPECT_EQ(read(keyword, &type, &code, &has_code), OPEN_E_PARAM) << keyword;
  EXPECT_EQ(type, UNTOUCHED) << keyword;
  EXPECT_EQ(code, UNTOUCHED) << keyword;
  EXPECT_TRUE(has_code) << keyword;
}

static void expect_message(icmp_reader_t read, const icmp_row &row) {
  for (bool before : {false, true}) {
    uint32_t type = UNTOUCHED, code = UNTOUCHED;
    bool has_code = before;
    EXPECT_EQ(read(row.keyword, &type, &code, &has_code), OPEN_E_NONE) << row.keyword;
    EXPECT_EQ(type, row.type) << row.keyword;
    EXPECT_EQ(has_code, row.code != NO_CODE) << row.keyword;
    EXPECT_EQ(code, row.code == NO_CODE ? UNTOUCHED : static_cast<uint32_t>(row.code)) << row.keyword;
  }
}

static void expect_messages(icmp_reader_t read, const std::vector<icmp_row> &rows) {
  for (const icmp_row &row : rows) {
    expect_message(read, row);
    for (const std::string &miss : near_misses(row.keyword)) expect_no_message(read, miss.c_str());
    uint32_t type = UNTOUCHED, code = UNTOUCHED;
    bool has_code;
    EXPECT_EQ(read(row.keyword, nullptr, &code, &has_code), OPEN_E_PARAM);
    EXPECT_EQ(read(row.keyword, &type, nullptr, &has_code), OPEN_E_PARAM);
    EXPECT_EQ(read(row.keyword, &type, &code, nullptr), OPEN_E_PARAM);
    EXPECT_EQ(read(nullptr, &type, &code, &has_code), OPEN_E_PARAM);
    EXPECT_EQ(type, UNTOUCHED);
    EXPECT_EQ(code, UNTOUCHED);
  }
  for (const char *keyword : {"", "8", "0", "ping", "%s"}) expect_no_message(read, keyword);
}

TEST(AclNames, MessagesOfIcmp) {
  icmp_reader_t read = get_acl_icmpv4_type_and_code_from_icmp_msg;
  expect_messages(read, {{"echo", 8, 0},
                         {"echo-reply", 0, 0},
                         {"host-redirect", 5, 1},
                         {"mobile-redirect", 32, 0},
                         {"net-redirect", 5, 0},
                         {"net-unreachable", 3, 0},
                         {"redirect", 5, NO_CODE},
                         {"packet-too-big", 3, 4},
                         {"port-unreachable", 3, 3},
                         {"source-quench", 4, 0},
                         {"router-solicitation", 10, 0},
                         {"router-advertisement", 9, NO_CODE},
                         {"ttl-exceeded", 11, 0},
                         {"time-exceeded", 11, NO_CODE},
                         {"unreachable", 3, NO_CODE}});
  for (const char *keyword : {"echo-request", "destination-unreachable", "no-route", "nd-na", "hop-limit"})
    expect_no_message(read, keyword);
}

TEST(AclNames, MessagesOfIcmpv6) {
  icmp_reader_t read = get_acl_icmpv6_type_and_code_from_icmp_msg;
  expect_messages(read, {{"echo-reply", 129, 0},
                         {"echo-request", 128, 0},
                         {"unreachable", 1, NO_CODE},
                         {"destination-unreachable", 1, NO_CODE},
                         {"time-exceeded", 3, NO_CODE},
                         {"port-unreachable", 1, 4},
                         {"packet-too-big", 2, 0},
                         {"router-solicitation", 133, 0},
                         {"router-advertisement", 134, 0},
                         {"no-route", 1, 0},
                         {"router-renumbering", 138, NO_CODE},
                         {"no-admin", 1, 1},
                         {"next-header", 4, 1},
                         {"header", 4, 0},
                         {"hop-limit", 3, 0},
                         {"mld-query", 130, 0},
                         {"mld-reduction", 132, 0},
                         {"mld-report", 131, 0},
                         {"nd-na", 136, 0},
                         {"nd-ns", 135, 0}});
  for (const char *keyword : {"echo", "redirect", "source-quench", "ttl-exceeded", "net-unreachable"})
    expect_no_message(read, keyword);
}

/* --- Ports -----------------------------------------------------------------------------------------------
 */

TEST(AclNames, PortsOfAnswers) {
  struct {
    uint32_t oper, first, last;
    const char *text;
  } rows[] = {
      {0, 80, 0, "equal to 80"},
      {0, 0, 7, "equal to 0"},
      {1, 22, 0, "not equal to 22"},
      {2, 1024, 0, "less than 1024"},
      {3, 1023, 0, "greater than 1023"},
      {4, 1000, 2000, "1000..2000"},
      {4, 0, 65535, "0..65535"},
      {4, 7, 7, "7..7"},
      {0, 2147483647, 0, "equal to 2147483647"},
  };
  for (const auto &row : rows) {
    char text[256] = "before";
    EXPECT_EQ(get_acl_rule_l4_port_string_by_oper_value(row.oper, row.first, row.last, text), OPEN_E_NONE);
    EXPECT_STREQ(text, row.text);
    EXPECT_EQ(get_acl_rule_l4_port_string_by_oper_value(row.oper, row.first, row.last, nullptr),
              OPEN_E_PARAM);
  }
  for (uint32_t oper : {5u, 6u, 256u, 2147483648u, 4294967295u}) {
    char text[256] = "before";
    EXPECT_EQ(get_acl_rule_l4_port_string_by_oper_value(oper, 1, 2, text), OPEN_E_PARAM) << oper;
    EXPECT_STREQ(text, "before");
  }
}

TEST(AclNames, PortsOfRequests) {
  struct {
    const char *text;
    uint32_t oper, first, last;
  } rows[] = {
      {"eq:80", 0, 80, 0},
      {"gt:1023", 3, 1023, 0},
      {"lt:1024", 2, 1024, 0},
      {"neq:22", 1, 22, 0},
      {"range:1000:2000", 4, 1000, 2000},
      {"range:2000:1000", 4, 2000, 1000}, /* whether that is a range is the platform's to say */
      {"eq:0", 0, 0, 0},
      {"eq:65536", 0, 65536, 0},
      {"eq:4294967295", 0, 4294967295, 0},
      {"range:4294967295:4294967295", 4, 4294967295, 4294967295},
      {"eq:0000000080", 0, 80, 0},
      {"range:0:0", 4, 0, 0},
      /* As scanning with %s has it: blanks before the second port, and all from a blank on, are passed over.
       */
      {"range:1: 2", 4, 1, 2},
      {"range:1:2 3", 4, 1, 2},
      /* No digits at all are the number 0. */
      {"eq:", 0, 0, 0},
      {"neq:", 1, 0, 0},
  };
  for (const auto &row : rows) {
    uint32_t oper = UNTOUCHED, first = UNTOUCHED, last = UNTOUCHED;
    EXPECT_EQ(parse_acl_rule_l4_port_and_oper(&oper, &first, &last, row.text), OPEN_E_NONE) << row.text;
    EXPECT_EQ(oper, row.oper) << row.text;
    EXPECT_EQ(first, row.first) << row.text;
    EXPECT_EQ(last, row.last) << row.text;
  }
}

static void expect_no_port(const std::string &text) {
  uint32_t oper = UNTOUCHED, first = UNTOUCHED, last = UNTOUCHED;
  EXPECT_EQ(parse_acl_rule_l4_port_and_oper(&oper, &first, &last, text.c_str()), OPEN_E_PARAM) << text;
  EXPECT_EQ(oper, UNTOUCHED) << text;
  EXPECT_EQ(first, UNTOUCHED) << text;
  EXPECT_EQ(last, UNTOUCHED) << text;
}

TEST(AclNames, TextsThatAreNoPorts) {
  for (const char *text : {"",
                           "80",
                           "e",
                           "eq",
                           "eq80",
                           "eq 80",
                           "eq :80",
                           " eq:80",
                           "EQ:80",
                           "Eq:80",
                           "=:80",
                           "ge:80",
                           "le:80",
                           "eq:-80",
                           "eq:+80",
                           "eq: 80",
                           "eq:80 ",
                           "eq:8 0",
                           "eq:http",
                           "eq:0x50",
                           "eq:80:",
                           "eq:80:90",
                           "eq:4294967296",
                           "eq:5000000000",
                           "eq:00000000080",
                           "gt:x",
                           "lt:-1",
                           "neq:1.5",
                           "n:1",
                           "ne:1",
                           "neq80",
                           "range",
                           "range:",
                           "range::",
                           "range:1000",
                           "range:1000:",
                           "range:1000: ",
                           "range::2000",
                           "range:1000-2000",
                           "range:1000,2000",
                           "range:1:2:3",
                           "range:a:2",
                           "range:1:b",
                           "range:-1:2",
                           "range:1:-2",
                           "range: 1:2",
                           "range:1 :2",
                           "range:4294967296:1",
                           "range:1:4294967296",
                           "Range:1:2",
                           "range1:2",
                           ":80",
                           "%s:%n"}) {
    expect_no_port(text);
  }
}

TEST(AclNames, PortsOfAnyLengthDoNoHarm) {
  for (size_t length : {11u, 22u, 23u, 24u, 25u, 26u, 255u, 5000u}) {
    for (char digit : {'0', '9', ':', 'x'}) {
      std::string digits(length, digit);
      for (const char *prefix : {"eq:", "gt:", "lt:", "neq:", "range:"}) expect_no_port(prefix + digits);
      expect_no_port("range:" + digits + ":2");
      expect_no_port("range:1:" + digits);
      expect_no_port("range:" + digits + ":" + digits);
    }
  }
}

TEST(AclNames, PortsNeedAllTheirArguments) {
  uint32_t oper, first, last;
  EXPECT_EQ(parse_acl_rule_l4_port_and_oper(nullptr, &first, &last, "eq:80"), OPEN_E_PARAM);
  EXPECT_EQ(parse_acl_rule_l4_port_and_oper(&oper, nullptr, &last, "eq:80"), OPEN_E_PARAM);
  EXPECT_EQ(parse_acl_rule_l4_port_and_oper(&oper, &first, nullptr, "eq:80"), OPEN_E_PARAM);
  EXPECT_EQ(parse_acl_rule_l4_port_and_oper(&oper, &first, &last, nullptr), OPEN_E_PARAM);
}

/* --- TCP flags -------------------------------------------------------------------------------------------
 */

static constexpr uint32_t TCP = 6;

TEST(AclNames, FlagIsZeroOrOne) {
  struct {
    const char *text;
    uint8_t value;
  } rows[] = {{"0", 0}, {"1", 1}, {"00", 0}, {"01", 1}, {"0000000001", 1}, {"", 0}};
  for (const auto &row : rows) {
    uint8_t value = 47;
    EXPECT_EQ(get_acl_tcp_flags_by_string(row.text, &value), OPEN_E_NONE) << row.text;
    EXPECT_EQ(value, row.value) << row.text;
  }
  for (const char *text : {"2", "10", "11", "256", "257", "4294967296", "4294967297", "00000000001", "-1",
                           "-0", "+1", " 1", "1 ", "1x", "x", "true", "set"}) {
    uint8_t value = 47;
    EXPECT_EQ(get_acl_tcp_flags_by_string(text, &value), OPEN_E_PARAM) << text;
    EXPECT_EQ(value, 47) << text;
  }
  uint8_t value = 47;
  EXPECT_EQ(get_acl_tcp_flags_by_string(nullptr, &value), OPEN_E_PARAM);
  EXPECT_EQ(get_acl_tcp_flags_by_string("1", nullptr), OPEN_E_PARAM);
}

TEST(AclNames, FlagsAreGathered) {
  for (uint8_t bit = 0; bit < 8; bit++) {
    uint8_t flags = 0, mask = 0;
    EXPECT_EQ(parse_acl_tcp_flags("1", &flags, &mask, bit, TCP), OPEN_E_NONE);
    EXPECT_EQ(flags, 1 << bit);
    EXPECT_EQ(mask, 1 << bit);
    flags = mask = 0;
    EXPECT_EQ(parse_acl_tcp_flags("0", &flags, &mask, bit, TCP), OPEN_E_NONE);
    EXPECT_EQ(flags, 0);
    EXPECT_EQ(mask, 1 << bit);
  }
  uint8_t flags = 0, mask = 0;
  EXPECT_EQ(parse_acl_tcp_flags("1", &flags, &mask, 1, TCP), OPEN_E_NONE);
  EXPECT_EQ(parse_acl_tcp_flags("0", &flags, &mask, 4, TCP), OPEN_E_NONE);
  EXPECT_EQ(parse_acl_tcp_flags("1", &flags, &mask, 5, TCP), OPEN_E_NONE);
  EXPECT_EQ(flags, 0x22);
  EXPECT_EQ(mask, 0x32);
}

TEST(AclNames, FlagsAreThoseOfTcpOnly) {
  for (uint32_t protocol : {0u, 1u, 5u, 7u, 17u, 58u, 255u, 256u, 262u, 4294967295u}) {
    uint8_t flags = 0x08, mask = 0x18;
    EXPECT_EQ(parse_acl_tcp_flags("1", &flags, &mask, 0, protocol), OPEN_E_PARAM) << protocol;
    EXPECT_EQ(flags, 0x08);
    EXPECT_EQ(mask, 0x18);
  }
}

TEST(AclNames, RefusedFlagChangesNothing) {
  for (const char *text : {"2", "x", "-1", "4294967297"}) {
    uint8_t flags = 0x08, mask = 0x18;
    EXPECT_EQ(parse_acl_tcp_flags(text, &flags, &mask, 0, TCP), OPEN_E_PARAM) << text;
    EXPECT_EQ(flags, 0x08);
    EXPECT_EQ(mask, 0x18);
  }
  uint8_t flags = 0x08, mask = 0x18;
  EXPECT_EQ(parse_acl_tcp_flags(nullptr, &flags, &mask, 0, TCP), OPEN_E_PARAM);
  EXPECT_EQ(parse_acl_tcp_flags("1", nullptr, &mask, 0, TCP), OPEN_E_PARAM);
  EXPECT_EQ(parse_acl_tcp_flags("1", &flags, nullptr, 0, TCP), OPEN_E_PARAM);
  EXPECT_EQ(flags, 0x08);
  EXPECT_EQ(mask, 0x18);
}
