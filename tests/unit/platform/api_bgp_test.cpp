/* Tests of the BGP functions of the C interface: every result code of every function, and what they do. What
 * concerns peers is api_bgp_peer_test.cpp. */
#include "tests/unit/platform/bgp_test_support.h"

namespace {

class Bgp : public BgpSwitch {};

/* --- The speaker ---------------------------------------------------------------------------------------- */

using getter = open_error_t (*)(openapiClientHandle_t *, uint32_t *);
using setter = open_error_t (*)(openapiClientHandle_t *, uint32_t);

/* One setting of the speaker: its functions, its value in factory state, and what it can and cannot be. */
struct speaker_row {
  const char *line; /* what stands before the value */
  getter get;
  setter set;
  uint32_t factory;
  std::vector<uint32_t> good, bad;
};

const speaker_row speaker_rows[] = {
    {"bgp local-as ",
     rpcclt_openapiBgpLocalASGet,
     rpcclt_openapiBgpLocalASSet,
     0,
     {1, 65535, 65536, UINT32_MAX},
     {0}},
    {"bgp hold-time ",
     rpcclt_openapiBgpGlobalHoldTimeConfiguredGet,
     rpcclt_openapiBgpGlobalHoldTimeConfiguredSet,
     90,
     {0, 3, 4, 65535},
     {1, 2, 65536, UINT32_MAX}},
    {"bgp keepalive-time ",
     rpcclt_openapiBgpGlobalKeepAliveConfiguredGet,
     rpcclt_openapiBgpGlobalKeepAliveConfiguredSet,
     30,
     {0, 1, 2, 3, 65535},
     {65536, UINT32_MAX}},
    {"bgp local-preference ",
     rpcclt_openapiBgpLocalPrefGet,
     rpcclt_openapiBgpLocalPrefSet,
     100,
     {0, 1, 65536, UINT32_MAX},
     {}},
};

TEST_F(Bgp, FactorySwitchRunsNoSpeaker) {
  for (const speaker_row &row : speaker_rows) {
    uint32_t value = 4711;
    EXPECT_EQ(row.get(&handle, &value), OPEN_E_NONE) << row.line;
    EXPECT_EQ(value, row.factory) << row.line;
  }
  uint32_t id = 4711, log = 4711;
  EXPECT_EQ(rpcclt_openapiBgpLocalIdGet(&handle, &id), OPEN_E_NONE);
  EXPECT_EQ(id, 0u);
  EXPECT_EQ(rpcclt_openapiBgpLogNeighborChangesGet(&handle, &log), OPEN_E_NONE);
  EXPECT_EQ(log, uint32_t{OPEN_FALSE});
  EXPECT_EQ(softswitch::running_config(), "");
}

TEST_F(Bgp, NumberOfTheSpeakerIsKeptThroughARestart) {
  for (const speaker_row &row : speaker_rows) {
    for (uint32_t good : row.good) {
      uint32_t value = 4711;
      ASSERT_EQ(row.set(&handle, good), OPEN_E_NONE) << row.line << good;
      EXPECT_EQ(softswitch::running_config(), row.line + std::to_string(good) + "\n");
      restart();
      EXPECT_EQ(row.get(&handle, &value), OPEN_E_NONE);
      EXPECT_EQ(value, good) << row.line;
    }
    ASSERT_EQ(commit(std::string("no ") + row.line), OPEN_E_NONE);
    EXPECT_EQ(softswitch::running_config(), "");
  }
}

TEST_F(Bgp, NumberOutsideItsRangeIsRefused) {
  for (const speaker_row &row : speaker_rows) {
    for (uint32_t bad : row.bad) {
      uint32_t value = 4711;
      EXPECT_EQ(row.set(&handle, bad), OPEN_E_PARAM) << row.line << bad;
      ASSERT_EQ(row.get(&handle, &value), OPEN_E_NONE);
      EXPECT_EQ(value, row.factory) << row.line << bad;
    }
  }
}

TEST_F(Bgp, HoldAndKeepaliveTimeAreSetInAnyOrder) {
  EXPECT_EQ(rpcclt_openapiBgpGlobalHoldTimeConfiguredSet(&handle, 3), OPEN_E_NONE);
  EXPECT_EQ(rpcclt_openapiBgpGlobalKeepAliveConfiguredSet(&handle, 65535), OPEN_E_NONE);
  EXPECT_EQ(rpcclt_openapiBgpGlobalHoldTimeConfiguredSet(&handle, 0), OPEN_E_NONE);
  EXPECT_EQ(softswitch::running_config(), "bgp hold-time 0\nbgp keepalive-time 65535\n");
}

TEST_F(Bgp, RouterIdIsAnyAddressButZero) {
  const std::pair<uint32_t, const char *> rows[] = {
      {1, "0.0.0.1"}, {0x0a000001, "10.0.0.1"}, {0xe0000001, "224.0.0.1"}, {UINT32_MAX, "255.255.255.255"}};
  for (const auto &[id, text] : rows) {
    uint32_t found = 0;
    ASSERT_EQ(rpcclt_openapiBgpLocalIdSet(&handle, id), OPEN_E_NONE) << text;
    EXPECT_EQ(softswitch::running_config(), "bgp router-id " + std::string(text) + "\n");
    restart();
    EXPECT_EQ(rpcclt_openapiBgpLocalIdGet(&handle, &found), OPEN_E_NONE);
    EXPECT_EQ(found, id);
  }
  EXPECT_EQ(rpcclt_openapiBgpLocalIdSet(&handle, 0), OPEN_E_PARAM);
  ASSERT_EQ(commit("no bgp router-id"), OPEN_E_NONE);
  EXPECT_EQ(softswitch::running_config(), "");
}

TEST_F(Bgp, AnyValueButFalseTurnsLoggingOn) {
  for (uint32_t value : {1u, 0u, 2u, 0u, UINT32_MAX}) {
    uint32_t on = 99;
    ASSERT_EQ(rpcclt_openapiBgpLogNeighborChangesSet(&handle, value), OPEN_E_NONE);
    ASSERT_EQ(rpcclt_openapiBgpLogNeighborChangesGet(&handle, &on), OPEN_E_NONE);
    EXPECT_EQ(on, value == 0 ? uint32_t{OPEN_FALSE} : uint32_t{OPEN_TRUE}) << value;
  }
  EXPECT_EQ(softswitch::running_config(), "bgp log-neighbor-changes\n");
}

/* --- Originated networks -------------------------------------------------------------------------------- */

TEST_F(Bgp, NetworksAreKeptMaskedInOrder) {
  ASSERT_EQ(originate("2001:DB8:0:1::1", 64), OPEN_E_NONE);
  ASSERT_EQ(originate("10.1.2.3", 8), OPEN_E_NONE);
  ASSERT_EQ(originate("10.0.0.0", 16), OPEN_E_NONE);
  ASSERT_EQ(originate("0.0.0.0", 0), OPEN_E_NONE);
  ASSERT_EQ(originate("::", 0), OPEN_E_NONE);
  ASSERT_EQ(originate("192.0.2.1", 32, "to peers"), OPEN_E_NONE);
  const char *const config = "bgp network 0.0.0.0/0\n"
                             "bgp network 10.0.0.0/8\n"
                             "bgp network 10.0.0.0/16\n"
                             "bgp network ::/0\n"
                             "bgp network 2001:db8:0:1::/64\n"
                             "bgp network 192.0.2.1/32 route-map \"to peers\"\n";
  EXPECT_EQ(softswitch::running_config(), config);
  restart();
  EXPECT_EQ(softswitch::running_config(), config);
}

TEST_F(Bgp, AddingANetworkAgainSetsItsRouteMap) {
  ASSERT_EQ(originate("10.0.0.0", 8, "one"), OPEN_E_NONE);
  ASSERT_EQ(originate("10.9.9.9", 8, "two"), OPEN_E_NONE);
  EXPECT_EQ(softswitch::running_config(), "bgp network 10.0.0.0/8 route-map two\n");
  ASSERT_EQ(network("10.0.0.0", 8, OPEN_TRUE, OPEN_FALSE, "not looked at"), OPEN_E_NONE);
  EXPECT_EQ(softswitch::running_config(), "bgp network 10.0.0.0/8\n");
}

TEST_F(Bgp, DeletingANetworkLooksAtTheNetworkAlone) {
  ASSERT_EQ(originate("10.0.0.0", 8, "one"), OPEN_E_NONE);
  EXPECT_EQ(withdraw("10.0.0.0", 9), OPEN_E_NOT_FOUND);
  EXPECT_EQ(withdraw("11.0.0.0", 8), OPEN_E_NOT_FOUND);
  EXPECT_EQ(withdraw("a00::", 8), OPEN_E_NOT_FOUND);
  EXPECT_EQ(network("10.255.0.1", 8, OPEN_FALSE, OPEN_TRUE, std::string(40, 'x')), OPEN_E_NONE);
  EXPECT_EQ(withdraw("10.0.0.0", 8), OPEN_E_NOT_FOUND);
  EXPECT_EQ(softswitch::running_config(), "");
}

TEST_F(Bgp, WhatNoNetworkHasIsRefused) {
  const std::pair<const char *, uint32_t> rows[] = {
      {"127.0.0.0", 8},    {"127.1.2.3", 32},   {"224.0.0.0", 4},  {"239.255.255.255", 32},
      {"169.254.0.0", 16}, {"169.254.7.1", 24}, {"10.0.0.0", 33},  {"10.0.0.0", UINT32_MAX},
      {"::1", 128},        {"ff00::", 8},       {"ff02::1", 128},  {"fe80::", 10},
      {"febf::1", 64},     {"2001:db8::", 129}, {"::", UINT32_MAX}};
  for (const auto &[address, length] : rows) {
    EXPECT_EQ(originate(address, length), OPEN_E_PARAM) << address << '/' << length;
    EXPECT_EQ(originate(address, length, "map"), OPEN_E_PARAM) << address << '/' << length;
    EXPECT_EQ(withdraw(address, length), OPEN_E_PARAM) << address << '/' << length;
  }
  open_inet_addr_t none = {};
  char empty[1] = "";
  open_buffdesc name = {0, empty};
  for (uint32_t family : {uint32_t{OPEN_AF_NONE}, 3u, UINT32_MAX}) {
    none.family = family;
    EXPECT_EQ(rpcclt_openapiBgpNetworkAddDelete(&handle, OPEN_TRUE, &none, 0, OPEN_FALSE, &name),
              OPEN_E_PARAM);
  }
  EXPECT_EQ(softswitch::running_config(), "");
}

TEST_F(Bgp, NeighborsOfWhatNoNetworkHasAreGood) {
  const std::pair<const char *, uint32_t> rows[] = {
      {"126.0.0.0", 8},    {"128.0.0.0", 1},    {"127.0.0.1", 1}, {"223.255.255.0", 24}, {"240.0.0.0", 4},
      {"169.253.0.0", 16}, {"169.255.0.0", 16}, {"10.0.0.1", 32}, {"::1", 127},          {"::2", 128},
      {"fec0::", 10},      {"fe00::", 9},       {"fe7f::", 16},   {"2001:db8::1", 128}};
  for (const auto &[address, length] : rows) {
    EXPECT_EQ(originate(address, length), OPEN_E_NONE) << address << '/' << length;
    EXPECT_EQ(withdraw(address, length), OPEN_E_NONE) << address << '/' << length;
  }
}

const std::string bad_names[] = {"", std::string(32, 'x'), "a\nb", "tab\t", "\x7f", std::string(20000, 'x')};
const std::string good_names[] = {"a", std::string(31, 'x'), "a b", "\"quoted\\\"", "no", "!", "\xc3\xa4"};

TEST_F(Bgp, RouteMapNameIs1To31BytesWithoutControlCharacters) {
  for (const std::string &bad : bad_names) EXPECT_EQ(originate("10.0.0.0", 8, bad), OPEN_E_PARAM) << bad;
  EXPECT_EQ(softswitch::running_config(), "");
  for (const std::string &good : good_names) {
    EXPECT_EQ(originate("10.0.0.0", 8, good), OPEN_E_NONE) << good;
    restart_keeps_configuration();
  }
}

TEST_F(Bgp, RouteMapNameIsReadWithAndWithoutItsTerminatorCounted) {
  open_inet_addr_t address = softswitch::inet_ipv4(0x0a000000);
  char buffer[32] = "to-peers";
  for (uint32_t size : {8u, 9u, 32u}) {
    open_buffdesc name = {size, buffer};
    ASSERT_EQ(rpcclt_openapiBgpNetworkAddDelete(&handle, OPEN_TRUE, &address, 8, OPEN_TRUE, &name),
              OPEN_E_NONE);
    EXPECT_EQ(softswitch::running_config(), "bgp network 10.0.0.0/8 route-map to-peers\n") << size;
    ASSERT_EQ(withdraw("10.0.0.0", 8), OPEN_E_NONE);
  }
}

TEST_F(Bgp, FullTableOfNetworksRefusesOneMore) {
  for (uint32_t count = 0; count < 64; count++) {
    ASSERT_EQ(originate(("10.0." + std::to_string(count) + ".0").c_str(), 24), OPEN_E_NONE) << count;
  }
  EXPECT_EQ(originate("10.1.0.0", 24), OPEN_E_FULL);
  EXPECT_EQ(originate("10.0.63.0", 24, "map"), OPEN_E_NONE) << "what is there is not one more";
  ASSERT_EQ(withdraw("10.0.0.0", 24), OPEN_E_NONE);
  EXPECT_EQ(originate("10.1.0.0", 24), OPEN_E_NONE);
  EXPECT_FALSE(softswitch::set_limit("bgp-networks", 65));
  ASSERT_TRUE(softswitch::set_limit("bgp-networks", 0));
  EXPECT_EQ(originate("10.2.0.0", 24), OPEN_E_FULL);
}

/* --- Redistribution ------------------------------------------------------------------------------------- */

TEST_F(Bgp, EachSourceIsRedistributedInEachFamily) {
  for (uint32_t family : {OPEN_AF_INET, OPEN_AF_INET6}) {
    for (const char *source : {"rip", "ospf", "static", "connected"})
      ASSERT_EQ(redistribute({.source = source, .family = family}), OPEN_E_NONE) << source;
  }
  EXPECT_EQ(softswitch::running_config(), "bgp redistribute ipv4 connected\n"
                                          "bgp redistribute ipv4 static\n"
                                          "bgp redistribute ipv4 ospf\n"
                                          "bgp redistribute ipv4 rip\n"
                                          "bgp redistribute ipv6 connected\n"
                                          "bgp redistribute ipv6 static\n"
                                          "bgp redistribute ipv6 ospf\n"
                                          "bgp redistribute ipv6 rip\n");
  for (const char *source : {"connected", "static", "ospf", "rip"})
    ASSERT_EQ(redistribute({.add = OPEN_FALSE, .source = source, .family = OPEN_AF_INET}), OPEN_E_NONE);
  restart();
  ASSERT_EQ(redistribute({.add = OPEN_FALSE, .source = "ospf", .family = OPEN_AF_INET6}), OPEN_E_NONE);
  EXPECT_EQ(softswitch::running_config(), "bgp redistribute ipv6 connected\n"
                                          "bgp redistribute ipv6 static\n"
                                          "bgp redistribute ipv6 rip\n");
}

/* The words of a line for match bits. */
std::string match_words(uint32_t bits) {
  static const char *const words[] = {" match-internal", " match-external-1", " match-external-2",
                                      " match-nssa-external-1", " match-nssa-external-2"};
  std::string text;
  for (uint32_t bit = 0; bit < 5; bit++) {
    if ((bits >> bit & 1) != 0) text += words[bit];
  }
  return text;
}

TEST_F(Bgp, EveryCombinationOfFlagsSetsEverythingAnew) {
  for (uint32_t flags = 0; flags < 16; flags++) {
    bool match = (flags & 1) != 0, metric = (flags & 6) == 6, map = (flags & 8) != 0;
    for (uint32_t bits = 1; bits < 32; bits++) {
      ASSERT_EQ(redistribute({.match_set = flags & 1,
                              .match_bits = bits,
                              .metric_set = flags & 2,
                              .metric_value_set = flags & 4,
                              .metric = bits,
                              .route_map_set = flags & 8,
                              .route_map = "map"}),
                OPEN_E_NONE);
      ASSERT_EQ(softswitch::running_config(),
                "bgp redistribute ipv4 ospf" + (match ? match_words(bits) : "") +
                    (metric ? " metric " + std::to_string(bits) : "") + (map ? " route-map map" : "") + "\n");
    }
    restart_keeps_configuration();
  }
}

TEST_F(Bgp, ValueWhoseFlagIsUnsetIsNotLookedAt) {
  ASSERT_EQ(redistribute({.source = "rip",
                          .match_bits = UINT32_MAX,
                          .metric_set = OPEN_TRUE,
                          .metric = -1,
                          .route_map = std::string(40, 'x')}),
            OPEN_E_NONE);
  ASSERT_EQ(redistribute({.source = "static", .metric_value_set = OPEN_TRUE, .metric = int64_t{1} << 32}),
            OPEN_E_NONE);
  EXPECT_EQ(softswitch::running_config(), "bgp redistribute ipv4 static\nbgp redistribute ipv4 rip\n");
  EXPECT_EQ(redistribute({.add = OPEN_FALSE,
                          .source = "rip",
                          .match_set = OPEN_TRUE,
                          .match_bits = UINT32_MAX,
                          .metric_set = OPEN_TRUE,
                          .metric_value_set = OPEN_TRUE,
                          .metric = -1,
                          .route_map_set = OPEN_TRUE}),
            OPEN_E_NONE)
      << "ending looks at source and family alone";
  EXPECT_EQ(softswitch::running_config(), "bgp redistribute ipv4 static\n");
}

TEST_F(Bgp, MatchBitsAreKnownAndForOspfOnly) {
  for (uint32_t bits : {0u, 32u, 33u, 0x80000000u, UINT32_MAX})
    EXPECT_EQ(redistribute({.match_set = OPEN_TRUE, .match_bits = bits}), OPEN_E_PARAM) << bits;
  for (const char *source : {"connected", "static", "rip"})
    EXPECT_EQ(redistribute({.source = source, .match_set = OPEN_TRUE, .match_bits = 1}), OPEN_E_PARAM);
  EXPECT_EQ(softswitch::running_config(), "");
}

TEST_F(Bgp, MetricIsANumberOf32Bits) {
  redistribution_call call = {.source = "static", .metric_set = OPEN_TRUE, .metric_value_set = OPEN_TRUE};
  for (int64_t bad : {int64_t{-1}, INT64_MIN, int64_t{4294967296}, INT64_MAX}) {
    call.metric = bad;
    EXPECT_EQ(redistribute(call), OPEN_E_PARAM) << bad;
  }
  EXPECT_EQ(softswitch::running_config(), "");
  for (int64_t good : {int64_t{0}, int64_t{1}, int64_t{4294967295}}) {
    call.metric = good;
    EXPECT_EQ(redistribute(call), OPEN_E_NONE) << good;
    EXPECT_EQ(softswitch::running_config(),
              "bgp redistribute ipv4 static metric " + std::to_string(good) + "\n");
  }
}

TEST_F(Bgp, RouteMapOfARedistributionHasAName) {
  for (const std::string &bad : bad_names)
    EXPECT_EQ(redistribute({.route_map_set = OPEN_TRUE, .route_map = bad}), OPEN_E_PARAM) << bad;
  EXPECT_EQ(softswitch::running_config(), "");
  for (const std::string &good : good_names) {
    EXPECT_EQ(redistribute({.route_map_set = OPEN_TRUE, .route_map = good}), OPEN_E_NONE) << good;
    restart_keeps_configuration();
  }
}

TEST_F(Bgp, UnknownSourceAndFamilyAreRefused) {
  for (const char *source : {"", "OSPF", "ospf ", "osp", "ospff", "bgp", "connected|static", "static\n"}) {
    EXPECT_EQ(redistribute({.source = source}), OPEN_E_NOT_FOUND) << source;
    EXPECT_EQ(redistribute({.add = OPEN_FALSE, .source = source}), OPEN_E_NOT_FOUND) << source;
  }
  for (uint32_t family : {0u, 3u, UINT32_MAX}) {
    EXPECT_EQ(redistribute({.family = family}), OPEN_E_PARAM) << family;
    EXPECT_EQ(redistribute({.add = OPEN_FALSE, .family = family}), OPEN_E_PARAM) << family;
  }
  EXPECT_EQ(softswitch::running_config(), "");
}

TEST_F(Bgp, EndingNeedsARedistribution) {
  ASSERT_EQ(redistribute({.source = "ospf"}), OPEN_E_NONE);
  EXPECT_EQ(redistribute({.add = OPEN_FALSE, .source = "rip"}), OPEN_E_NOT_FOUND);
  EXPECT_EQ(redistribute({.add = OPEN_FALSE, .source = "ospf", .family = OPEN_AF_INET6}), OPEN_E_NOT_FOUND);
  EXPECT_EQ(redistribute({.add = OPEN_FALSE, .source = "ospf"}), OPEN_E_NONE);
  EXPECT_EQ(redistribute({.add = OPEN_FALSE, .source = "ospf"}), OPEN_E_NOT_FOUND);
}

TEST_F(Bgp, SourceIsReadWithAndWithoutItsTerminatorCounted) {
  char source[16] = "ospf", empty[1] = "";
  open_buffdesc none = {0, empty};
  for (uint32_t size : {4u, 5u, 16u}) {
    open_buffdesc name = {size, source};
    EXPECT_EQ(rpcclt_openapiBgpRedistributionSet(&handle, 1, &name, 0, 0, 0, 0, 0, 0, OPEN_AF_INET, &none),
              OPEN_E_NONE);
    EXPECT_EQ(rpcclt_openapiBgpRedistributionSet(&handle, 0, &name, 0, 0, 0, 0, 0, 0, OPEN_AF_INET, &none),
              OPEN_E_NONE)
        << size;
  }
}

/* --- The frame ------------------------------------------------------------------------------------------ */

TEST_F(Bgp, NullPointersAreRefused) {
  open_inet_addr_t address = softswitch::inet_ipv4(0x0a000000);
  char text[] = "ospf";
  open_buffdesc name = {4, text}, nowhere = {4, nullptr};
  for (const speaker_row &row : speaker_rows) {
    uint32_t value;
    EXPECT_EQ(row.get(&handle, nullptr), OPEN_E_PARAM) << row.line;
    EXPECT_EQ(row.get(nullptr, &value), OPEN_E_PARAM) << row.line;
    EXPECT_EQ(row.set(nullptr, 3), OPEN_E_PARAM) << row.line;
  }
  EXPECT_EQ(rpcclt_openapiBgpLocalIdGet(&handle, nullptr), OPEN_E_PARAM);
  EXPECT_EQ(rpcclt_openapiBgpLogNeighborChangesGet(&handle, nullptr), OPEN_E_PARAM);
  EXPECT_EQ(rpcclt_openapiBgpNetworkAddDelete(&handle, 1, nullptr, 8, 0, &name), OPEN_E_PARAM);
  for (open_buffdesc *bad : {static_cast<open_buffdesc *>(nullptr), &nowhere}) {
    EXPECT_EQ(rpcclt_openapiBgpNetworkAddDelete(&handle, 1, &address, 8, 0, bad), OPEN_E_PARAM);
    EXPECT_EQ(rpcclt_openapiBgpRedistributionSet(&handle, 1, bad, 0, 0, 0, 0, 0, 0, 1, &name), OPEN_E_PARAM);
    EXPECT_EQ(rpcclt_openapiBgpRedistributionSet(&handle, 1, &name, 0, 0, 0, 0, 0, 0, 1, bad), OPEN_E_PARAM);
  }
  EXPECT_EQ(softswitch::running_config(), "");
}

TEST_F(Bgp, TraceShowsAddressesAndTheMetric) {
  softswitch::stop();
  setenv("KESTREL_TRACE", "platform", 1);
  ASSERT_EQ(openapiClientRegister("tracer", &handle), OPEN_E_NONE);
  testing::internal::CaptureStderr();
  set_as({"fe80::1", 3}, 65001);
  as_of({"fe80::1", 3});
  originate("10.0.0.0", 8, "map");
  redistribute({.source = "rip",
                .metric_set = OPEN_TRUE,
                .metric_value_set = OPEN_TRUE,
                .metric = -4294967296,
                .route_map = "map"});
  std::string trace = testing::internal::GetCapturedStderr();
  unsetenv("KESTREL_TRACE");
  restart();
  EXPECT_EQ(trace, "platform: rpcclt_openapiBgpPeerRemoteASSet(fe80::1, 3, 65001) = 0\n"
                   "platform: rpcclt_openapiBgpPeerRemoteASGet(fe80::1, 3) = 0 -> 65001\n"
                   "platform: rpcclt_openapiBgpNetworkAddDelete(1, 10.0.0.0, 8, 1, \"map\") = 0\n"
                   "platform: rpcclt_openapiBgpRedistributionSet(1, \"rip\", 0, 0, 1, 1, -4294967296, 0, 1, "
                   "\"map\") = -22\n");
}

} // namespace
