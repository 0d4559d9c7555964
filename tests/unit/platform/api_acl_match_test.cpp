/* Tests of the functions of the C interface that give rules of access control lists their matches and
 * attributes: what is read back, ranges, and what goes together. */
#include "tests/unit/platform/acl_test_support.h"

namespace {

class AclMatches : public AclSwitch {
protected:
  /* Gives a rule what it needs for a match of its protocol. */
  void prepare(uint32_t acl, uint32_t protocol) {
    if (protocol == 0) return;
    ASSERT_EQ(set_protocol(acl, 10, protocol), OPEN_E_NONE);
  }

  template <typename Add> open_error_t with_texts(Add add, uint32_t acl, std::string one, std::string other) {
    open_buffdesc first = {static_cast<uint32_t>(one.size()), one.data()};
    open_buffdesc second = {static_cast<uint32_t>(other.size()), other.data()};
    return add(&handle, acl, 10, &first, &second);
  }

  open_error_t set_time_range(const std::string &text) {
    std::string copy = text;
    open_buffdesc name = {static_cast<uint32_t>(copy.size()), copy.data()};
    return rpcclt_openapiAclRuleMatchTimeRangeAdd(&handle, ip, 10, &name);
  }

  const std::vector<uint32_t> with_ip = {1, 3};
};

/* --- Numbers -------------------------------------------------------------------------------------------- */

using add_number = open_error_t (*)(openapiClientHandle_t *, uint32_t, uint32_t, uint32_t);
using get_number = open_error_t (*)(openapiClientHandle_t *, uint32_t, uint32_t, uint32_t *);

/* A match or attribute that is one number. */
struct number_part {
  const char *name;
  add_number add;
  get_number get;
  uint32_t min, max;
  std::vector<uint32_t> types;
  uint32_t protocol; /* that it needs, or 0 */
};

#define NUMBER(name) #name, rpcclt_openapiAclRuleMatch##name##Add, rpcclt_openapiAclRuleMatch##name##Get
const number_part number_parts[] = {
    {NUMBER(MacEtherType), 0x0600, 0xffff, {2}, 0},
    {NUMBER(MacCos), 0, 7, {2}, 0},
    {NUMBER(Protocol), 0, 254, {1, 3}, 0},
    {NUMBER(Dscp), 0, 63, {1, 3}, 0},
    {NUMBER(Precedence), 0, 7, {1, 3}, 0},
    {NUMBER(IgmpType), 0, 255, {1}, 2},
    {NUMBER(TcpEstablished), 0, 1, {1, 3}, 6},
    {NUMBER(Fragments), 0, 1, {1, 3}, 0},
    {NUMBER(Routing), 0, 1, {3}, 0},
    {NUMBER(FlowLabel), 0, 1048575, {3}, 0},
    {NUMBER(Logging), 0, 1, {1, 2, 3}, 0},
    {NUMBER(AssignQueue), 0, 7, {1, 2, 3}, 0},
};
#undef NUMBER

bool has_type(const number_part &part, uint32_t type) {
  return std::find(part.types.begin(), part.types.end(), type) != part.types.end();
}

/* The lists' ids are in the order of ip, mac, ipv6, which is that of their types. */
TEST_F(AclMatches, NumbersAreReadBackFromBothEndsOfTheirRange) {
  for (const number_part &part : number_parts) {
    for (uint32_t acl : part.types) {
      prepare(acl, part.protocol);
      for (uint32_t value : {part.min, part.max}) {
        uint32_t read = 77;
        EXPECT_EQ(part.add(&handle, acl, 10, value), OPEN_E_NONE) << part.name << " " << value;
        EXPECT_EQ(part.get(&handle, acl, 10, &read), OPEN_E_NONE) << part.name;
        EXPECT_EQ(read, value) << part.name;
      }
      ASSERT_EQ(delete_rule(acl, 10), OPEN_E_NONE);
      ASSERT_EQ(add_rule(acl, 10), 10);
    }
  }
}

TEST_F(AclMatches, NumbersBeyondTheirRangeAreRefused) {
  for (const number_part &part : number_parts) {
    for (uint32_t acl : part.types) {
      prepare(acl, part.protocol);
      std::string before = describe(acl, 10);
      std::vector<uint32_t> beyond = {part.max + (part.max == 254 ? 2 : 1), UINT32_MAX};
      if (part.min > 0) beyond.insert(beyond.end(), {0, part.min - 1});
      for (uint32_t value : beyond) {
        EXPECT_EQ(part.add(&handle, acl, 10, value), OPEN_E_PARAM) << part.name << " " << value;
        EXPECT_EQ(describe(acl, 10), before) << part.name << " " << value;
      }
    }
  }
}

TEST_F(AclMatches, NumbersThatListsOfAnotherTypeHaveAreUnavailable) {
  for (const number_part &part : number_parts) {
    for (uint32_t acl : {1u, 2u, 3u}) {
      if (has_type(part, acl)) continue;
      uint32_t read;
      for (uint32_t value : {part.min, UINT32_MAX})
        EXPECT_EQ(part.add(&handle, acl, 10, value), OPEN_E_UNAVAIL) << part.name << " in list " << acl;
      EXPECT_EQ(part.get(&handle, acl, 10, &read), OPEN_E_UNAVAIL) << part.name << " in list " << acl;
    }
  }
}

TEST_F(AclMatches, NumbersThatARuleDoesNotHaveAreNotFound) {
  for (const number_part &part : number_parts) {
    for (uint32_t acl : part.types) {
      uint32_t read = 77;
      bool protocol = part.add == rpcclt_openapiAclRuleMatchProtocolAdd;
      EXPECT_EQ(part.get(&handle, acl, 10, &read), protocol ? OPEN_E_NONE : OPEN_E_NOT_FOUND) << part.name;
      EXPECT_EQ(read, protocol ? 255u : 77u) << part.name;
    }
  }
}

TEST_F(AclMatches, MatchesThatNeedAProtocolAreRefusedWithoutIt) {
  for (const number_part &part : number_parts) {
    if (part.protocol == 0) continue;
    for (uint32_t acl : part.types) {
      for (uint32_t protocol : {0u, 1u, 17u, 255u}) {
        ASSERT_EQ(set_protocol(acl, 10, protocol), OPEN_E_NONE);
        EXPECT_EQ(part.add(&handle, acl, 10, part.min), OPEN_E_PARAM) << part.name << " " << protocol;
      }
    }
  }
}

/* --- MAC addresses, VLANs ------------------------------------------------------------------------------- */

TEST_F(AclMatches, MacAddressesAreReadBackInUpperCaseWithTheirMasks) {
  EXPECT_EQ(with_texts(rpcclt_openapiAclRuleMatchMacSrcMacAdd, mac, "00:1a:2b:3c:4d:5e", "ff:ff:ff:00:00:00"),
            OPEN_E_NONE);
  EXPECT_EQ(with_texts(rpcclt_openapiAclRuleMatchMacDstMacAdd, mac, "01:80:C2:00:00:00", "00:00:00:00:00:00"),
            OPEN_E_NONE);
  EXPECT_EQ(describe(mac, 10), "permit every 0 source-mac 00:1A:2B:3C:4D:5E/FF:FF:FF:00:00:00"
                               " destination-mac 01:80:C2:00:00:00/00:00:00:00:00:00");
  EXPECT_EQ(with_texts(rpcclt_openapiAclRuleMatchMacSrcMacAdd, mac, "00:00:00:00:00:00", "FF:FF:FF:FF:FF:FF"),
            OPEN_E_NONE);
  EXPECT_EQ(describe(mac, 10), "permit every 0 source-mac 00:00:00:00:00:00/FF:FF:FF:FF:FF:FF"
                               " destination-mac 01:80:C2:00:00:00/00:00:00:00:00:00");
}

TEST_F(AclMatches, WhatIsNoMacAddressOrMaskIsRefused) {
  const std::string good = "00:11:22:33:44:55";
  for (const char *bad :
       {"", "any", "00:11:22:33:44", "00:11:22:33:44:5", "00:11:22:33:44:555", "00-11-22-33-44-55",
        "0011.2233.4455", "001122334455", "00:11:22:33:44:5g", " 00:11:22:33:44:55"}) {
    for (auto add : {rpcclt_openapiAclRuleMatchMacSrcMacAdd, rpcclt_openapiAclRuleMatchMacDstMacAdd}) {
      EXPECT_EQ(with_texts(add, mac, bad, good), OPEN_E_PARAM) << bad;
      EXPECT_EQ(with_texts(add, mac, good, bad), OPEN_E_PARAM) << bad;
      EXPECT_EQ(with_texts(add, ip, bad, good), OPEN_E_UNAVAIL) << bad;
    }
  }
  EXPECT_EQ(describe(mac, 10), "permit every 0");
}

TEST_F(AclMatches, TextsNeedRoomForTheirTerminators) {
  ASSERT_EQ(with_texts(rpcclt_openapiAclRuleMatchMacSrcMacAdd, mac, "00:1a:2b:3c:4d:5e", "ff:ff:ff:00:00:00"),
            OPEN_E_NONE);
  ASSERT_EQ(with_texts(rpcclt_openapiAclRuleMatchTosAdd, ip, "00", "ff"), OPEN_E_NONE);
  ASSERT_EQ(set_time_range("office"), OPEN_E_NONE);
  char one[18], other[18];
  for (const auto &[first, second] : {std::pair(17u, 18u), std::pair(18u, 17u)}) {
    open_buffdesc address = {first, one}, mask = {second, other};
    EXPECT_EQ(rpcclt_openapiAclRuleMatchMacSrcMacGet(&handle, mac, 10, &address, &mask), OPEN_E_PARAM);
  }
  open_buffdesc two = {2, one}, three = {3, other}, six = {6, one};
  EXPECT_EQ(rpcclt_openapiAclRuleMatchTosGet(&handle, ip, 10, &two, &three), OPEN_E_PARAM);
  EXPECT_EQ(rpcclt_openapiAclRuleMatchTosGet(&handle, ip, 10, &three, &two), OPEN_E_PARAM);
  EXPECT_EQ(rpcclt_openapiAclRuleMatchTimeRangeGet(&handle, ip, 10, &six), OPEN_E_PARAM);
}

TEST_F(AclMatches, VlanIsOneOrARange) {
  const struct {
    uint32_t oper, first, last;
    const char *read;
  } good[] = {{0, 1, 0, " vlan 0/1/0"},          {0, 4094, 7, " vlan 0/4094/0"},
              {0, 5, UINT32_MAX, " vlan 0/5/0"}, {1, 1, 4094, " vlan 1/1/4094"},
              {1, 77, 77, " vlan 1/77/77"},      {2, 3, 4, " vlan 1/3/4"},
              {UINT32_MAX, 8, 9, " vlan 1/8/9"}};
  for (const auto &row : good) {
    EXPECT_EQ(rpcclt_openapiAclRuleMatchMacVlanAdd(&handle, mac, 10, row.oper, row.first, row.last),
              OPEN_E_NONE);
    EXPECT_EQ(describe(mac, 10), std::string("permit every 0") + row.read);
  }
  const uint32_t bad[][3] = {{0, 0, 0}, {0, 4095, 0}, {0, UINT32_MAX, 0}, {1, 0, 5},         {1, 5, 0},
                             {1, 5, 4}, {1, 5, 4095}, {1, 4095, 4095},    {1, 1, UINT32_MAX}};
  for (const auto &row : bad)
    EXPECT_EQ(rpcclt_openapiAclRuleMatchMacVlanAdd(&handle, mac, 10, row[0], row[1], row[2]), OPEN_E_PARAM)
        << row[0] << " " << row[1] << " " << row[2];
  EXPECT_EQ(describe(mac, 10), "permit every 0 vlan 1/8/9");
}

/* --- IP addresses, ports, flags ------------------------------------------------------------------------- */

TEST_F(AclMatches, Ipv4AddressesAreReadBackWithTheirMasks) {
  EXPECT_EQ(rpcclt_openapiAclRuleMatchIpSrcMaskAdd(&handle, ip, 10, address_of("10.1.2.3"),
                                                   address_of("255.0.255.0")),
            OPEN_E_NONE);
  EXPECT_EQ(rpcclt_openapiAclRuleMatchIpDstMaskAdd(&handle, ip, 10, address_of("0.0.0.0"),
                                                   address_of("255.255.255.255")),
            OPEN_E_NONE);
  EXPECT_EQ(describe(ip, 10),
            "permit every 0 source 10.1.2.3/255.0.255.0 destination 0.0.0.0/255.255.255.255 protocol 255");
  for (const auto &[address, mask] : {std::pair("::", "255.0.0.0"), std::pair("1.2.3.4", "::")}) {
    for (auto add : {rpcclt_openapiAclRuleMatchIpSrcMaskAdd, rpcclt_openapiAclRuleMatchIpDstMaskAdd}) {
      EXPECT_EQ(add(&handle, ip, 10, address_of(address), address_of(mask)), OPEN_E_PARAM);
      EXPECT_EQ(add(&handle, ipv6, 10, address_of(address), address_of(mask)), OPEN_E_UNAVAIL);
    }
  }
  EXPECT_EQ(describe(ip, 10),
            "permit every 0 source 10.1.2.3/255.0.255.0 destination 0.0.0.0/255.255.255.255 protocol 255");
}

TEST_F(AclMatches, Ipv6PrefixesAreReadBackAsTheyWereGiven) {
  EXPECT_EQ(rpcclt_openapiAclRuleMatchIpv6SrcPfxAdd(&handle, ipv6, 10, address_of("2001:db8::1"), 1),
            OPEN_E_NONE);
  EXPECT_EQ(rpcclt_openapiAclRuleMatchIpv6DstPfxAdd(&handle, ipv6, 10, address_of("::ffff:1.2.3.4"), 128),
            OPEN_E_NONE);
  EXPECT_EQ(describe(ipv6, 10),
            "permit every 0 source 2001:db8::1/1 destination ::ffff:1.2.3.4/128 protocol 255");
  for (auto add : {rpcclt_openapiAclRuleMatchIpv6SrcPfxAdd, rpcclt_openapiAclRuleMatchIpv6DstPfxAdd}) {
    for (uint32_t length : {0u, 129u, UINT32_MAX})
      EXPECT_EQ(add(&handle, ipv6, 10, address_of("2001:db8::"), length), OPEN_E_PARAM) << length;
    EXPECT_EQ(add(&handle, ipv6, 10, address_of("10.0.0.0"), 8), OPEN_E_PARAM);
    EXPECT_EQ(add(&handle, ip, 10, address_of("2001:db8::"), 32), OPEN_E_UNAVAIL);
  }
  EXPECT_EQ(describe(ipv6, 10),
            "permit every 0 source 2001:db8::1/1 destination ::ffff:1.2.3.4/128 protocol 255");
}

TEST_F(AclMatches, PortsAreOneNumberWithAnOperatorOrARange) {
  const struct {
    uint32_t oper, port, port2;
    const char *read;
  } good[] = {{0, 0, 9, "0/0/0"},     {1, 65535, 0, "1/65535/0"}, {2, 80, 70000, "2/80/0"},
              {3, 443, 1, "3/443/0"}, {4, 0, 65535, "4/0/65535"}, {4, 22, 22, "4/22/22"}};
  const uint32_t bad[][3] = {{0, 65536, 0},     {3, UINT32_MAX, 0}, {4, 80, 79},         {4, 1, 65536},
                             {4, 65536, 65536}, {5, 80, 80},        {UINT32_MAX, 80, 80}};
  for (uint32_t acl : with_ip) {
    for (uint32_t protocol : {6u, 17u}) {
      prepare(acl, protocol);
      std::string head = "permit every 0 protocol " + std::to_string(protocol);
      for (const auto &row : good) {
        EXPECT_EQ(rpcclt_openapiAclRuleMatchL4SrcPortAdd(&handle, acl, 10, row.oper, row.port, row.port2),
                  OPEN_E_NONE);
        EXPECT_EQ(rpcclt_openapiAclRuleMatchL4DstPortAdd(&handle, acl, 10, row.oper, row.port, row.port2),
                  OPEN_E_NONE);
        EXPECT_EQ(describe(acl, 10), head + " source-port " + row.read + " destination-port " + row.read);
      }
      for (const auto &row : bad) {
        EXPECT_EQ(rpcclt_openapiAclRuleMatchL4SrcPortAdd(&handle, acl, 10, row[0], row[1], row[2]),
                  OPEN_E_PARAM);
        EXPECT_EQ(rpcclt_openapiAclRuleMatchL4DstPortAdd(&handle, acl, 10, row[0], row[1], row[2]),
                  OPEN_E_PARAM);
      }
      EXPECT_EQ(describe(acl, 10), head + " source-port 4/22/22 destination-port 4/22/22");
    }
  }
}

TEST_F(AclMatches, PortsNeedTcpOrUdp) {
  for (uint32_t acl : with_ip) {
    for (uint32_t protocol : {255u, 0u, 1u, 58u, 254u}) {
      ASSERT_EQ(set_protocol(acl, 10, protocol), OPEN_E_NONE);
      EXPECT_EQ(rpcclt_openapiAclRuleMatchL4SrcPortAdd(&handle, acl, 10, 0, 80, 0), OPEN_E_PARAM);
      EXPECT_EQ(rpcclt_openapiAclRuleMatchL4DstPortAdd(&handle, acl, 10, 0, 80, 0), OPEN_E_PARAM);
    }
    prepare(acl, 6);
    ASSERT_EQ(rpcclt_openapiAclRuleMatchL4DstPortAdd(&handle, acl, 10, 0, 80, 0), OPEN_E_NONE);
    for (uint32_t protocol : {1u, 255u}) EXPECT_EQ(set_protocol(acl, 10, protocol), OPEN_E_PARAM) << protocol;
    EXPECT_EQ(set_protocol(acl, 10, 17), OPEN_E_NONE);
  }
}

TEST_F(AclMatches, TypeOfServiceIsTwoHexadecimalDigits) {
  for (uint32_t acl : with_ip) {
    EXPECT_EQ(with_texts(rpcclt_openapiAclRuleMatchTosAdd, acl, "B8", "fC"), OPEN_E_NONE);
    EXPECT_EQ(describe(acl, 10), "permit every 0 tos b8/fc protocol 255");
    EXPECT_EQ(with_texts(rpcclt_openapiAclRuleMatchTosAdd, acl, "ff", "00"), OPEN_E_NONE);
    EXPECT_EQ(with_texts(rpcclt_openapiAclRuleMatchTosAdd, acl, std::string("0a\0", 3), "Ff"), OPEN_E_NONE);
    for (const char *bad : {"", "0", "000", "0x", "g0", "0g", "-1", "+1", " 1", "1 "}) {
      EXPECT_EQ(with_texts(rpcclt_openapiAclRuleMatchTosAdd, acl, bad, "ff"), OPEN_E_PARAM) << bad;
      EXPECT_EQ(with_texts(rpcclt_openapiAclRuleMatchTosAdd, acl, "ff", bad), OPEN_E_PARAM) << bad;
    }
    EXPECT_EQ(describe(acl, 10), "permit every 0 tos 0a/ff protocol 255");
  }
}

TEST_F(AclMatches, IcmpTypeIsReadBackWithItsCodeOrWithAny) {
  for (const auto &[acl, protocol] : {std::pair(ip, 1u), std::pair(ipv6, 58u)}) {
    prepare(acl, protocol);
    std::string head = "permit every 0 protocol " + std::to_string(protocol);
    EXPECT_EQ(rpcclt_openapiAclRuleMatchIcmpTypeCodeAdd(&handle, acl, 10, 1, 255, 255), OPEN_E_NONE);
    EXPECT_EQ(describe(acl, 10), head + " icmp 255/255");
    EXPECT_EQ(rpcclt_openapiAclRuleMatchIcmpTypeCodeAdd(&handle, acl, 10, 1, 0, 0), OPEN_E_NONE);
    EXPECT_EQ(describe(acl, 10), head + " icmp 0/0");
    EXPECT_EQ(rpcclt_openapiAclRuleMatchIcmpTypeCodeAdd(&handle, acl, 10, 0, 8, 999), OPEN_E_NONE);
    EXPECT_EQ(describe(acl, 10), head + " icmp 8/256");
    const uint32_t bad[][3] = {{1, 256, 0}, {1, 0, 256}, {0, 256, 0}, {2, 8, 0}, {UINT32_MAX, 8, 0}};
    for (const auto &row : bad)
      EXPECT_EQ(rpcclt_openapiAclRuleMatchIcmpTypeCodeAdd(&handle, acl, 10, row[0], row[1], row[2]),
                OPEN_E_PARAM);
    EXPECT_EQ(describe(acl, 10), head + " icmp 8/256");
    uint32_t type, code;
    for (uint32_t family : {0u, 1u, 2u})
      EXPECT_EQ(rpcclt_openapiAclRuleMatchIcmpTypeCodeGet(&handle, acl, 10, family, &type, &code),
                OPEN_E_NONE);
  }
}

TEST_F(AclMatches, IcmpTypeNeedsTheIcmpOfTheList) {
  for (const auto &[acl, wrong] :
       {std::pair(ip, 58u), std::pair(ipv6, 1u), std::pair(ip, 6u), std::pair(ip, 255u)}) {
    ASSERT_EQ(set_protocol(acl, 10, wrong), OPEN_E_NONE);
    EXPECT_EQ(rpcclt_openapiAclRuleMatchIcmpTypeCodeAdd(&handle, acl, 10, 1, 8, 0), OPEN_E_PARAM);
  }
  uint32_t type, code;
  EXPECT_EQ(rpcclt_openapiAclRuleMatchIcmpTypeCodeAdd(&handle, mac, 10, 1, 8, 0), OPEN_E_UNAVAIL);
  EXPECT_EQ(rpcclt_openapiAclRuleMatchIcmpTypeCodeGet(&handle, mac, 10, 1, &type, &code), OPEN_E_UNAVAIL);
  EXPECT_EQ(rpcclt_openapiAclRuleMatchIcmpTypeCodeGet(&handle, ip, 10, 1, &type, &code), OPEN_E_NOT_FOUND);
}

TEST_F(AclMatches, TcpFlagsStayWithinTheirMaskAndNeedTcp) {
  for (uint32_t acl : with_ip) {
    EXPECT_EQ(rpcclt_openapiAclRuleMatchTcpFlagsAdd(&handle, acl, 10, 2, 2), OPEN_E_PARAM) << "no protocol";
    prepare(acl, 17);
    EXPECT_EQ(rpcclt_openapiAclRuleMatchTcpFlagsAdd(&handle, acl, 10, 2, 2), OPEN_E_PARAM) << "UDP";
    prepare(acl, 6);
    for (const auto &[flags, mask] : {std::pair(0u, 1u), std::pair(63u, 63u), std::pair(2u, 18u)}) {
      EXPECT_EQ(rpcclt_openapiAclRuleMatchTcpFlagsAdd(&handle, acl, 10, flags, mask), OPEN_E_NONE);
      EXPECT_EQ(describe(acl, 10),
                "permit every 0 protocol 6 tcp-flags " + std::to_string(flags) + "/" + std::to_string(mask));
    }
    for (const auto &[flags, mask] : {std::pair(1u, 2u), std::pair(3u, 2u), std::pair(0u, 64u),
                                      std::pair(64u, 64u), std::pair(0u, UINT32_MAX)})
      EXPECT_EQ(rpcclt_openapiAclRuleMatchTcpFlagsAdd(&handle, acl, 10, flags, mask), OPEN_E_PARAM);
    EXPECT_EQ(set_protocol(acl, 10, 17), OPEN_E_PARAM) << "the flags need TCP";
  }
}

/* --- Every packet --------------------------------------------------------------------------------------- */

TEST_F(AclMatches, RuleForEveryPacketHasNoOtherCondition) {
  for (uint32_t acl : {ip, mac, ipv6}) {
    EXPECT_EQ(rpcclt_openapiAclRuleMatchEveryAdd(&handle, acl, 10, 1), OPEN_E_NONE);
    for (uint32_t bad : {2u, UINT32_MAX})
      EXPECT_EQ(rpcclt_openapiAclRuleMatchEveryAdd(&handle, acl, 10, bad), OPEN_E_PARAM);
    std::string before = describe(acl, 10);
    for (const number_part &part : number_parts) {
      if (!has_type(part, acl)) continue;
      bool attribute = has_type(part, 1) && has_type(part, 2);
      EXPECT_EQ(part.add(&handle, acl, 10, part.min), attribute ? OPEN_E_NONE : OPEN_E_PARAM) << part.name;
    }
    EXPECT_EQ(describe(acl, 10), before + " log 0 queue 0");
  }
  EXPECT_EQ(set_protocol(ip, 10, 255), OPEN_E_NONE) << "any protocol is no condition";
  EXPECT_EQ(rpcclt_openapiAclRuleMatchIpSrcMaskAdd(&handle, ip, 10, address_of("10.0.0.0"),
                                                   address_of("255.0.0.0")),
            OPEN_E_PARAM);
  EXPECT_EQ(rpcclt_openapiAclRuleMatchMacVlanAdd(&handle, mac, 10, 0, 5, 0), OPEN_E_PARAM);
  EXPECT_EQ(rpcclt_openapiAclRuleMatchEveryAdd(&handle, mac, 10, 0), OPEN_E_NONE);
  EXPECT_EQ(rpcclt_openapiAclRuleMatchMacVlanAdd(&handle, mac, 10, 0, 5, 0), OPEN_E_NONE);
  EXPECT_EQ(rpcclt_openapiAclRuleMatchEveryAdd(&handle, mac, 10, 1), OPEN_E_PARAM);
  EXPECT_EQ(rpcclt_openapiAclRuleMatchEveryAdd(&handle, mac, 10, 0), OPEN_E_NONE);
}

/* --- Attributes ----------------------------------------------------------------------------------------- */

TEST_F(AclMatches, MirrorAndRedirectGoToPortsAndLags) {
  for (auto add : {rpcclt_openapiAclRuleMatchMirrorAdd, rpcclt_openapiAclRuleMatchRedirectAdd}) {
    for (const auto &[interface, result] : not_switching)
      EXPECT_EQ(add(&handle, mac, 10, interface), result) << interface;
    for (uint32_t interface : {1u, 54u, 56u, 119u}) EXPECT_EQ(add(&handle, mac, 10, interface), OPEN_E_NONE);
  }
  EXPECT_EQ(describe(mac, 10), "permit every 0 mirror 119 redirect 119");
  ASSERT_EQ(rpcclt_openapiLagDeleteZYL(&handle, 118), OPEN_E_NONE);
  EXPECT_EQ(rpcclt_openapiAclRuleMatchMirrorAdd(&handle, mac, 10, 118), OPEN_E_NOT_FOUND);
}

TEST_F(AclMatches, RateLimitIsReadBackWithItsBurst) {
  const uint32_t good[][2] = {{1, 1}, {UINT32_MAX, 128}, {1000, 64}};
  const uint32_t bad[][2] = {{0, 1}, {1, 0}, {1, 129}, {0, 0}, {1, UINT32_MAX}};
  for (uint32_t acl : {ip, mac, ipv6}) {
    for (const auto &row : good) {
      uint32_t rate, burst;
      EXPECT_EQ(rpcclt_openapiAclRuleMatchRateLimitAdd(&handle, acl, 10, row[0], row[1]), OPEN_E_NONE);
      EXPECT_EQ(rpcclt_openapiAclRuleMatchRateLimitGet(&handle, acl, 10, &rate, &burst), OPEN_E_NONE);
      EXPECT_EQ(rate, row[0]);
      EXPECT_EQ(burst, row[1]);
    }
    for (const auto &row : bad)
      EXPECT_EQ(rpcclt_openapiAclRuleMatchRateLimitAdd(&handle, acl, 10, row[0], row[1]), OPEN_E_PARAM);
    EXPECT_TRUE(describe(acl, 10).ends_with(" rate 1000/64")) << describe(acl, 10);
  }
}

TEST_F(AclMatches, TimeRangeIsANameAndHasTheStateThatItIsSaidToHave) {
  uint32_t state = 9;
  EXPECT_EQ(rpcclt_openapiAclRuleMatchTimeRangeStatusGet(&handle, ip, 10, &state), OPEN_E_NOT_FOUND);
  for (const std::string &bad :
       {std::string(""), std::string("a b"), std::string("a/b"), std::string(32, 'n')})
    EXPECT_EQ(set_time_range(bad), OPEN_E_PARAM) << bad;
  ASSERT_EQ(set_time_range(std::string(31, 'n')), OPEN_E_NONE);
  ASSERT_EQ(set_time_range("office-\"hours\""), OPEN_E_NONE);
  EXPECT_EQ(describe(ip, 10), "permit every 0 time-range office-\"hours\"/0 protocol 255");
  ASSERT_TRUE(softswitch::set_time_range("office-\"hours\"", OPEN_ACL_RULE_STATUS_ACTIVE));
  EXPECT_EQ(describe(ip, 10), "permit every 0 time-range office-\"hours\"/2 protocol 255");
  ASSERT_TRUE(softswitch::set_time_range("office-\"hours\"", OPEN_ACL_RULE_STATUS_INACTIVE));
  EXPECT_EQ(describe(ip, 10), "permit every 0 time-range office-\"hours\"/1 protocol 255");
  restart();
  EXPECT_EQ(describe(ip, 10), "permit every 0 time-range office-\"hours\"/0 protocol 255")
      << "the state is no configuration";
}

/* --- Everything at once --------------------------------------------------------------------------------- */

TEST_F(AclMatches, RuleWithEverythingIsKeptByJournalAndSnapshot) {
  for (const char *line :
       {"vlan 10",
        "acl mac mac-list rule 20 deny source-mac 00:00:00:00:00:01 mask FF:FF:FF:FF:FF:FF destination-mac "
        "01:00:00:00:00:02 mask 01:00:00:00:00:00 ethertype 2048 vlan-range 2 9 cos 3 log off queue 7 mirror "
        "0/7 "
        "redirect 3/9 time-range night rate-limit 4294967295 burst 128",
        "acl ip ip-list rule 20 deny protocol 6 source 10.0.0.1 mask 255.0.0.0 destination 11.0.0.1 mask "
        "0.0.0.0 "
        "source-port not-equal 5 destination-port-range 7 8 dscp 63 precedence 7 tos 0a mask ff tcp-flags 18 "
        "mask 63 "
        "established on fragments off log on queue 0 mirror 0/7 redirect 3/9 time-range night rate-limit 1 "
        "burst 1",
        "acl ip ip-list rule 30 permit protocol 2 igmp-type 17", "acl ip ip-list rule 40 permit every",
        "acl ip ip-list rule 50 permit protocol 1 icmp-type 3 icmp-code 4",
        "acl ipv6 ipv6-list rule 20 permit protocol 58 source-prefix 2001:db8::1/32 destination-prefix ::/1 "
        "dscp 0 "
        "icmp-type 128 fragments on routing off flow-label 1048575",
        "interface 0/1 acl in ip ip-list sequence 3", "vlan 10 acl out mac mac-list sequence 4"})
    ASSERT_EQ(commit(line), OPEN_E_NONE) << line;
  const std::string expected =
      "1 ip-list\n"
      "10 permit every 0 protocol 255\n"
      "20 deny every 0 tos 0a/ff time-range night/0 source 10.0.0.1/255.0.0.0 destination 11.0.0.1/0.0.0.0 "
      "protocol 6 dscp 63 precedence 7 established 1 fragments 0 log 1 queue 0 mirror 7 redirect 64 "
      "tcp-flags 18/63 rate 1/1 source-port 1/5/0 destination-port 4/7/8\n"
      "30 permit every 0 protocol 2 igmp 17\n"
      "40 permit every 1 protocol 255\n"
      "50 permit every 0 protocol 1 icmp 3/4\n"
      "interfaces 1 vlans\n"
      "interfaces vlans\n"
      "2 mac-list\n"
      "10 permit every 0\n"
      "20 deny every 0 source-mac 00:00:00:00:00:01/FF:FF:FF:FF:FF:FF "
      "destination-mac 01:00:00:00:00:02/01:00:00:00:00:00 time-range night/0 ethertype 2048 cos 3 log 0 "
      "queue 7 "
      "mirror 7 redirect 64 rate 4294967295/128 vlan 1/2/9\n"
      "interfaces vlans\n"
      "interfaces vlans 10\n"
      "3 ipv6-list\n"
      "10 permit every 0 protocol 255\n"
      "20 permit every 0 source 2001:db8::1/32 destination ::/1 protocol 58 dscp 0 fragments 1 routing 0 "
      "flow-label 1048575 icmp 128/256\n"
      "interfaces vlans\n"
      "interfaces vlans\n";
  EXPECT_EQ(describe_all(), expected);
  restart(); /* reads the journal, and leaves a snapshot */
  EXPECT_EQ(describe_all(), expected);
  restart(); /* reads the snapshot */
  EXPECT_EQ(describe_all(), expected);
}

} // namespace
