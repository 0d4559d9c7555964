/* Making rules when the platform fails: every call with every result. Whatever fails, no rule is left behind
 * and the first failure is answered. */
#include "tests/support/full_disk.h"
#include "tests/unit/modules/acl_creation_fixture.h"
#include "tests/unit/modules/failing_calls.h"

#include <algorithm>
#include <filesystem>
#include <stdlib.h>

static const std::string ADD = "rpcclt_openapiAclRuleMatch";

/* A request and the matches and attributes that it adds, in their order: names of platform functions without
 * "rpcclt_openapiAclRuleMatch" and "Add". */
struct rule_request {
  const rule_list &list;
  std::string query;
  std::vector<std::string> adds;
};

static std::string function_of(const std::string &add) {
  return ADD + add + "Add";
}

static const std::string ATTRIBUTES =
    "&log=1&assign_queue=5&mirror_intf=7&redirect_intf=56&time_range=work&rate_limit=1000&burst_size=64";
static const std::vector<std::string> ATTRIBUTE_ADDS = {"Logging",  "AssignQueue", "Mirror",
                                                        "Redirect", "TimeRange",   "RateLimit"};

static std::vector<std::string> with_attributes(std::vector<std::string> adds) {
  adds.insert(adds.end(), ATTRIBUTE_ADDS.begin(), ATTRIBUTE_ADDS.end());
  return adds;
}

static const std::string IPV4_ENDS =
    "&src_ip=10.0.0.0&src_mask=255.0.0.0&dest_ip=10.0.0.1&dest_mask=255.0.0.0";
static const std::string IPV6_ENDS =
    "&src_prefix=2001::&src_prefix_length=16&dest_prefix=2002::&dest_prefix_length=16";

/* Requests in which every match and attribute occurs. */
static const std::vector<rule_request> &rule_requests() {
  static const std::vector<rule_request> requests = {
      {mac_list(),
       "action=permit&src_mac=02:00:00:00:00:01&src_mask=FF:FF:FF:FF:FF:FF&dest_mac=02:00:00:00:00:02"
       "&dest_mask=FF:FF:FF:FF:FF:FF&ethertype=arp&vlan=5&cos=3" +
           ATTRIBUTES,
       with_attributes({"MacSrcMac", "MacDstMac", "MacEtherType", "MacVlan", "MacCos", "Every"})},
      {mac_list(), "action=deny&src_mac=any&dest_mac=any", {"Every"}},
      {mac_list(), "action=deny&src_mac=any&dest_mac=bpdu", {"MacDstMac", "Every"}},
      {ipv4_list(),
       "action=permit&protocol=tcp&dscp=1&precedence=2&tos=a0&fragments=0&src_l4_port=eq:80&dest_l4_port=eq:"
       "81"
       "&tcp_syn=1&tcp_established=0" +
           IPV4_ENDS + ATTRIBUTES,
       with_attributes({"IpSrcMask", "IpDstMask", "Dscp", "Precedence", "Tos", "Fragments", "Protocol",
                        "L4SrcPort", "L4DstPort", "TcpFlags", "TcpEstablished"})},
      {ipv4_list(),
       "action=permit&protocol=igmp&src_ip=any&dest_ip=any&igmp_type=22",
       {"Protocol", "IgmpType"}},
      {ipv4_list(),
       "action=permit&protocol=icmp&src_ip=any&dest_ip=any&icmp_message=echo",
       {"Protocol", "IcmpTypeCode"}},
      {ipv4_list(),
       "action=permit&protocol=icmp&src_ip=any&dest_ip=any&icmp_type=8",
       {"Protocol", "IcmpTypeCode"}},
      {ipv4_list(), "action=permit&protocol=ip&src_ip=any&dest_ip=any" + ATTRIBUTES,
       with_attributes({"Every"})},
      {ipv4_list(), "action=permit&protocol=ip&src_ip=any&dest_ip=any&dscp=1", {"Dscp", "Protocol"}},
      {ipv4_list(), "action=permit&protocol=every&dscp=1" + IPV4_ENDS, {"Every"}},
      {ipv6_list(),
       "action=permit&protocol=tcp&dscp=1&precedence=2&tos=a0&fragments=0&routing=1&flow_lable=5"
       "&src_l4_port=eq:80&dest_l4_port=eq:81&tcp_syn=1&tcp_established=0" +
           IPV6_ENDS + ATTRIBUTES,
       with_attributes({"Ipv6SrcPfx", "Ipv6DstPfx", "Dscp", "Precedence", "Tos", "Fragments", "Routing",
                        "FlowLabel", "Protocol", "L4SrcPort", "L4DstPort", "TcpFlags", "TcpEstablished"})},
      {ipv6_list(),
       "action=permit&protocol=icmpv6&src_prefix=any&dest_prefix=any&icmp_message=echo-reply",
       {"Protocol", "IcmpTypeCode"}},
      {ipv6_list(),
       "action=permit&protocol=icmpv6&src_prefix=any&dest_prefix=any&icmp_type=8",
       {"Protocol", "IcmpTypeCode"}},
      {ipv6_list(), "action=permit&protocol=ipv6&src_prefix=any&dest_prefix=any", {"Every"}},
      {ipv6_list(), "action=permit&protocol=every", {"Every"}},
  };
  return requests;
}

/* A failed protocol is a bad one, whatever the platform says. */
static Answers answer_to(const std::string &add, open_error_t rc) {
  return expected_platform_error(add == "Protocol" ? OPEN_E_PARAM : rc);
}

class AclRuleFailureTest : public AclCreationTest {
protected:
  AclRuleFailureTest() {
    for (uint32_t aclId : {1u, 2u, 3u}) add_rule(aclId, OPEN_ACL_ACTION_DENY, 1);
  }
  /* The other rule of the list is still its only one. */
  void expect_no_rule_left(const rule_list &list) const {
    uint32_t ruleId = 0;
    EXPECT_EQ(rule_count(list.id), 1u);
    EXPECT_EQ(rpcclt_openapiAclRuleGetFirst(handle, list.id, &ruleId), OPEN_E_NONE);
    EXPECT_EQ(ruleId, 1u);
  }
  /* The call of a function fails with each error. */
  template <typename Expected>
  void expect_failures(const rule_request &request, const std::string &function, Expected expected) const {
    for (open_error_t rc : all_platform_errors()) {
      for (const char *format : {"xml", "json"}) {
        fault(function, rc);
        Answers answers = expected(rc);
        EXPECT_EQ(failed("POST", request.list.uri(), request.query, format),
                  *format == 'x' ? answers.xml : answers.json)
            << function << " " << rc;
        expect_no_rule_left(request.list);
      }
    }
  }
};

TEST_F(AclRuleFailureTest, MatchOrAttributeThatFailsIsAnsweredAndLeavesNoRule) {
  for (const rule_request &request : rule_requests()) {
    SCOPED_TRACE(request.query);
    for (const std::string &add : request.adds)
      expect_failures(request, function_of(add), [&](open_error_t rc) { return answer_to(add, rc); });
  }
}

TEST_F(AclRuleFailureTest, LookupAndCreationThatFailAreAnswered) {
  for (const rule_request &request : rule_requests()) {
    SCOPED_TRACE(request.query);
    expect_failures(request, "rpcclt_openapiAclGet", [&](open_error_t rc) {
      if (rc != OPEN_E_NOT_FOUND) return expected_platform_error(rc);
      return expected_with_data(1, "There is no ACL configured with the name.",
                                {text("acl_type", request.list.type), text("acl_name", request.list.name)});
    });
    expect_failures(request, "rpcclt_openapiAclRuleActionAdd", [&](open_error_t rc) {
      return rc == OPEN_E_FULL ? refused_as_full(request.list) : expected_platform_error(rc);
    });
  }
}

TEST_F(AclRuleFailureTest, SequenceNumberThatCannotBeCheckedIsNotAvailable) {
  for (const rule_request &request : rule_requests()) {
    rule_request numbered = {request.list, request.query + "&sequence=7", request.adds};
    expect_failures(numbered, "rpcclt_openapiAclRuleNumCheckValid",
                    [&](open_error_t) { return refused_as_full(request.list); });
  }
}

TEST_F(AclRuleFailureTest, CallsAreMadeInOrderAndNoneAfterAFailure) {
  for (const rule_request &request : rule_requests()) {
    operation_calls operation = {"POST", "", "", {"rpcclt_openapiAclGet", "rpcclt_openapiAclRuleActionAdd"}};
    const std::string uri = request.list.uri();
    operation.uri = uri.c_str();
    operation.query = request.query.c_str();
    for (const std::string &add : request.adds) operation.functions.push_back(function_of(add));
    operation.later = {"rpcclt_openapiAclRuleDuplicateCheck"};
    expect_calls_end_at_a_failure(acl_api_handler, handle, operation, OPEN_E_PARAM);
    expect_no_rule_left(request.list);
  }
}

static const std::vector<std::string> &all_adds() {
  static const std::vector<std::string> adds = {
      "AssignQueue", "Dscp",           "Every",      "FlowLabel",  "Fragments",    "IcmpTypeCode",
      "IgmpType",    "IpDstMask",      "IpSrcMask",  "Ipv6DstPfx", "Ipv6SrcPfx",   "L4DstPort",
      "L4SrcPort",   "Logging",        "MacCos",     "MacDstMac",  "MacEtherType", "MacSrcMac",
      "MacVlan",     "Mirror",         "Precedence", "Protocol",   "RateLimit",    "Redirect",
      "Routing",     "TcpEstablished", "TcpFlags",   "TimeRange",  "Tos"};
  return adds;
}

TEST_F(AclRuleFailureTest, NothingElseIsAdded) {
  for (const rule_request &request : rule_requests()) {
    std::string others;
    for (const std::string &add : all_adds()) {
      if (std::find(request.adds.begin(), request.adds.end(), add) != request.adds.end()) continue;
      fault(function_of(add), OPEN_E_FAIL);
      others += function_of(add) + " OPEN_E_FAIL 1 0\n";
    }
    done("POST", request.list.uri(), request.query);
    EXPECT_EQ(lab("fault list"), others) << request.query;
    lab("fault clear");
    delete_rule(request.list.id, 10);
  }
}

TEST_F(AclRuleFailureTest, EveryMatchAndAttributeOccurs) {
  for (const std::string &add : all_adds()) {
    bool occurs = false;
    for (const rule_request &request : rule_requests())
      occurs = occurs || std::find(request.adds.begin(), request.adds.end(), add) != request.adds.end();
    EXPECT_TRUE(occurs) << add;
  }
}

/* --- Deleting the half-built rule ------------------------------------------------------------------------
 */

TEST_F(AclRuleFailureTest, FirstFailureIsAnsweredThoughTheRuleCannotBeDeleted) {
  for (const rule_request &request : rule_requests()) {
    for (const std::string &add : request.adds) {
      fault(function_of(add), OPEN_E_EXISTS);
      fault("rpcclt_openapiAclRuleDelete", OPEN_E_TIMEOUT);
      EXPECT_EQ(failed("POST", request.list.uri(), request.query), answer_to(add, OPEN_E_EXISTS).xml)
          << request.query << add;
      EXPECT_EQ(lab("fault list"), "");
      EXPECT_EQ(rule_count(request.list.id), 2u);
      delete_rule(request.list.id, 10);
    }
  }
}

TEST_F(AclRuleFailureTest, BadValueIsAnsweredThoughTheRuleCannotBeDeleted) {
  for (const rule_list &list : {mac_list(), ipv4_list(), ipv6_list()}) {
    for (open_error_t rc : all_platform_errors()) {
      fault("rpcclt_openapiAclRuleDelete", rc);
      EXPECT_EQ(failed("POST", list.uri(), std::string(list.plain) + "&log=2"), refused().xml) << rc;
      delete_rule(list.id, 10);
    }
  }
}

TEST_F(AclRuleFailureTest, DuplicateIsAnsweredThoughItCannotBeDeleted) {
  for (const rule_list &list : {mac_list(), ipv4_list(), ipv6_list()}) {
    done("POST", list.uri(), list.plain);
    fault("rpcclt_openapiAclRuleDelete", OPEN_E_TIMEOUT);
    EXPECT_EQ(failed("POST", list.uri(), list.plain), refused_as_duplicate(list).xml);
    EXPECT_EQ(rule_count(list.id), 3u);
  }
}

TEST_F(AclRuleFailureTest, NothingIsDeletedBeforeARuleIsMadeOrAfterSuccess) {
  for (const rule_list &list : {mac_list(), ipv4_list(), ipv6_list()}) {
    const std::string untouched = "rpcclt_openapiAclRuleDelete OPEN_E_TIMEOUT 1 0\n";
    fault("rpcclt_openapiAclRuleDelete", OPEN_E_TIMEOUT);
    failed("POST", list.uri(), "action=x");
    failed("POST", list.uri(), std::string(list.plain) + "&sequence=1");
    done("POST", list.uri(), list.plain);
    fault("rpcclt_openapiAclRuleActionAdd", OPEN_E_FAIL);
    failed("POST", list.uri(), list.conditions);
    EXPECT_EQ(lab("fault list"), untouched);
    lab("fault clear");
    EXPECT_EQ(rule_count(list.id), 2u);
  }
}

/* --- Addresses -------------------------------------------------------------------------------------------
 */

/* A text that cannot be parsed is a bad one, whatever the platform says. */
TEST_F(AclRuleFailureTest, AddressThatCannotBeParsedIsRefused) {
  struct {
    const rule_list &list;
    std::string query;
    unsigned addresses;
  } rows[] = {{ipv4_list(), "action=permit&protocol=ip" + IPV4_ENDS, 4},
              {ipv6_list(), "action=permit&protocol=ipv6" + IPV6_ENDS, 2}};
  for (const auto &row : rows) {
    for (unsigned skip = 0; skip < row.addresses; skip++) {
      for (open_error_t rc : all_platform_errors()) {
        fault("rpcclt_openapiInetAddrGet", rc, 1, skip);
        EXPECT_EQ(failed("POST", row.list.uri(), row.query), refused().xml) << rc;
        expect_no_rule_left(row.list);
      }
    }
  }
}

TEST_F(AclRuleFailureTest, PlatformIsNotAskedAboutAMissingAddress) {
  struct {
    const rule_list &list;
    const char *query;
  } rows[] = {{ipv4_list(), "action=permit&protocol=ip&src_mask=255.0.0.0&dest_ip=any"},
              {ipv4_list(), "action=permit&protocol=ip&src_ip=&src_mask=255.0.0.0&dest_ip=any"},
              {ipv4_list(), "action=permit&protocol=ip&src_ip=any&dest_mask=255.0.0.0"},
              {ipv6_list(), "action=permit&protocol=ipv6&src_prefix_length=64&dest_prefix=any"},
              {ipv6_list(), "action=permit&protocol=ipv6&src_prefix=any&dest_prefix=&dest_prefix_length=64"}};
  for (const auto &row : rows) {
    fault("rpcclt_openapiInetAddrGet", OPEN_E_EXISTS);
    EXPECT_EQ(failed("POST", row.list.uri(), row.query), refused().xml) << row.query;
    EXPECT_EQ(lab("fault list"), "rpcclt_openapiInetAddrGet OPEN_E_EXISTS 1 0\n") << row.query;
    lab("fault clear");
    expect_no_rule_left(row.list);
  }
}

/* --- What the platform is asked --------------------------------------------------------------------------
 */

/* A value given to a rule, and what it would be added with. */
struct value_row {
  const rule_list &list;
  std::string query;
  const char *add;
};

static const std::string IPV4_TCP = "action=permit&protocol=tcp&src_ip=any&dest_ip=any&";
static const std::string IPV6_TCP = "action=permit&protocol=tcp&src_prefix=any&dest_prefix=any&";
static const std::string MAC_ANY = "action=permit&src_mac=any&dest_mac=any&";
static const std::string ICMP = "action=permit&protocol=icmp&src_ip=any&dest_ip=any&";
static const std::string LONG_MAC(18, 'F'), TOO_LONG_MAC(19, 'F');

TEST_F(AclRuleFailureTest, ValueThatCannotBeReadIsNotHandedOn) {
  const value_row rows[] = {
      {mac_list(), "action=permit&dest_mac=any&src_mask=x&src_mac=" + TOO_LONG_MAC, "MacSrcMac"},
      {mac_list(), "action=permit&dest_mac=any&src_mac=x&src_mask=" + TOO_LONG_MAC, "MacSrcMac"},
      {mac_list(), "action=permit&src_mac=any&dest_mask=x&dest_mac=" + TOO_LONG_MAC, "MacDstMac"},
      {mac_list(), "action=permit&src_mac=any&dest_mac=x&dest_mask=" + TOO_LONG_MAC, "MacDstMac"},
      {mac_list(), "action=permit&dest_mac=any", "MacSrcMac"},
      {mac_list(), MAC_ANY + "ethertype=0x0806", "MacEtherType"},
      {mac_list(), MAC_ANY + "vlan=x", "MacVlan"},
      {mac_list(), MAC_ANY + "cos=4294967296", "MacCos"},
      {ipv4_list(), "action=permit&protocol=tcp&dest_ip=any&src_mask=255.0.0.0&src_ip=x", "IpSrcMask"},
      {ipv4_list(), "action=permit&protocol=tcp&dest_ip=any&src_mask=255.0.0.0&src_ip=::1", "IpSrcMask"},
      {ipv4_list(), "action=permit&protocol=tcp&src_ip=any&dest_mask=x&dest_ip=10.0.0.1", "IpDstMask"},
      {ipv4_list(), IPV4_TCP + "dscp=x", "Dscp"},
      {ipv4_list(), IPV4_TCP + "precedence=x", "Precedence"},
      {ipv4_list(), IPV4_TCP + "fragments=2", "Fragments"},
      {ipv4_list(), IPV4_TCP + "src_l4_port=range:1", "L4SrcPort"},
      {ipv4_list(), ICMP + "dest_l4_port=eq:80", "L4DstPort"},
      {ipv4_list(), ICMP + "igmp_type=1", "IgmpType"},
      {ipv4_list(), ICMP + "icmp_message=x", "IcmpTypeCode"},
      {ipv4_list(), ICMP + "icmp_type=x", "IcmpTypeCode"},
      {ipv4_list(), ICMP + "icmp_type=8&icmp_code=x", "IcmpTypeCode"},
      {ipv4_list(), IPV4_TCP + "icmp_type=8", "IcmpTypeCode"},
      {ipv4_list(), IPV4_TCP + "tcp_fin=1&tcp_syn=2", "TcpFlags"},
      {ipv4_list(), ICMP + "tcp_syn=1", "TcpFlags"},
      {ipv4_list(), IPV4_TCP + "tcp_established=2", "TcpEstablished"},
      {ipv4_list(), ICMP + "tcp_established=1", "TcpEstablished"},
      {ipv4_list(), IPV4_TCP + "tcp_established=1&tcp_rst=0", "TcpEstablished"},
      {ipv6_list(), "action=permit&protocol=tcp&dest_prefix=any&src_prefix_length=64&src_prefix=x",
       "Ipv6SrcPfx"},
      {ipv6_list(), "action=permit&protocol=tcp&src_prefix=any&dest_prefix=::&dest_prefix_length=x",
       "Ipv6DstPfx"},
      {ipv6_list(), IPV6_TCP + "routing=2", "Routing"},
      {ipv6_list(), IPV6_TCP + "flow_lable=x", "FlowLabel"},
      {mac_list(), MAC_ANY + "log=2", "Logging"},
      {mac_list(), MAC_ANY + "assign_queue=x", "AssignQueue"},
      {mac_list(), MAC_ANY + "mirror_intf=x", "Mirror"},
      {mac_list(), MAC_ANY + "redirect_intf=x", "Redirect"},
      {mac_list(), MAC_ANY + "rate_limit=1000", "RateLimit"},
      {mac_list(), MAC_ANY + "rate_limit=1000&burst_size=x", "RateLimit"},
  };
  for (const value_row &row : rows) {
    fault(function_of(row.add), OPEN_E_EXISTS);
    EXPECT_EQ(failed("POST", row.list.uri(), row.query), refused().xml) << row.query;
    EXPECT_EQ(lab("fault list"), function_of(row.add) + " OPEN_E_EXISTS 1 0\n") << row.query;
    lab("fault clear");
    expect_no_rule_left(row.list);
  }
}

TEST_F(AclRuleFailureTest, RangesAndFormsAreThePlatformsToCheck) {
  const value_row rows[] = {
      {mac_list(), "action=permit&dest_mac=any&src_mask=x&src_mac=" + LONG_MAC, "MacSrcMac"},
      {mac_list(), "action=permit&dest_mac=any&src_mac=x&src_mask=" + LONG_MAC, "MacSrcMac"},
      {mac_list(), "action=permit&src_mac=any&dest_mask=x&dest_mac=" + LONG_MAC, "MacDstMac"},
      {mac_list(), "action=permit&src_mac=any&dest_mac=x&dest_mask=" + LONG_MAC, "MacDstMac"},
      {mac_list(), MAC_ANY + "ethertype=4294967295", "MacEtherType"},
      {mac_list(), MAC_ANY + "vlan=4294967295", "MacVlan"},
      {mac_list(), MAC_ANY + "cos=8", "MacCos"},
      {ipv4_list(), IPV4_TCP + "dscp=64", "Dscp"},
      {ipv4_list(), IPV4_TCP + "precedence=8", "Precedence"},
      {ipv4_list(), IPV4_TCP + "tos=" + std::string(255, 'x'), "Tos"},
      {ipv4_list(), IPV4_TCP + "tos=a0&tos_mask=x", "Tos"},
      {ipv4_list(), IPV4_TCP + "src_l4_port=eq:65536", "L4SrcPort"},
      {ipv4_list(), IPV4_TCP + "dest_l4_port=range:2:1", "L4DstPort"},
      {ipv4_list(), "action=permit&protocol=igmp&src_ip=any&dest_ip=any&igmp_type=256", "IgmpType"},
      {ipv4_list(), ICMP + "icmp_type=256", "IcmpTypeCode"},
      {ipv4_list(), ICMP + "icmp_type=8&icmp_code=256", "IcmpTypeCode"},
      {ipv6_list(),
       "action=permit&protocol=tcp&dest_prefix=any&src_prefix_length=129&src_prefix=::", "Ipv6SrcPfx"},
      {ipv6_list(), IPV6_TCP + "flow_lable=1048576", "FlowLabel"},
      {mac_list(), MAC_ANY + "assign_queue=8", "AssignQueue"},
      {mac_list(), MAC_ANY + "mirror_intf=0", "Mirror"},
      {mac_list(), MAC_ANY + "redirect_intf=4294967295", "Redirect"},
      {mac_list(), MAC_ANY + "time_range=" + std::string(255, 'x'), "TimeRange"},
      {mac_list(), MAC_ANY + "rate_limit=0&burst_size=129", "RateLimit"},
  };
  for (const value_row &row : rows) {
    fault(function_of(row.add), OPEN_E_EXISTS);
    EXPECT_EQ(failed("POST", row.list.uri(), row.query), expected_platform_error(OPEN_E_EXISTS).xml)
        << row.query;
    expect_no_rule_left(row.list);
  }
}

/* Bytes of the journal of the switch's changes. */
static rlim_t journal_size() {
  for (const auto &file : std::filesystem::directory_iterator(getenv("KESTREL_STATE_DIR"))) {
    if (file.path().filename().string().compare(0, 8, "journal-") == 0) return file.file_size();
  }
  ADD_FAILURE() << "there is no journal";
  return 0;
}

/* The disk is full at each point of the making in turn. */
TEST_F(AclRuleFailureTest, ARuleThatTheDiskHasNoRoomForIsTakenBack) {
  const std::string query = IPV4_TCP + "dscp=46&src_l4_port=gt:1023&tcp_syn=1&log=1&assign_queue=3";
  const uint32_t before = rule_count(ipv4_list().id);
  unsigned refusals = 0;
  for (rlim_t room = 0; rule_count(ipv4_list().id) == before; room += 16) {
    ASSERT_LT(room, 10000u);
    std::string answer;
    {
      full_disk full(journal_size() + room);
      answer = call_xml(acl_api_handler, "POST", ipv4_list().uri(), query);
    }
    if (answer == created(ipv4_list(), 10).xml) continue;
    refusals++;
    /* A protocol that cannot be added is answered as one that the platform does not know. */
    bool told = answer == expected_platform_error(OPEN_E_FAIL).xml || answer == refused().xml;
    ASSERT_TRUE(told) << answer;
    ASSERT_EQ(rule_count(ipv4_list().id), before) << room;
  }
  EXPECT_GT(refusals, 50u);
}
