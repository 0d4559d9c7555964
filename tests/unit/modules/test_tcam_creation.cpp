/* The TCAM module: making policies, the variables of a request, and how a policy is shown. */
#include "tests/unit/modules/tcam_fixture.h"

TEST_F(TcamTest, PolicyIsMadeAndItsIdTold) {
  EXPECT_EQ(done("POST", "/tcam/policy"),
            "<result><rlt_code>0</rlt_code><rlt_mesg>Create a new policy successfully (Policy ID is 1)."
            "</rlt_mesg></result>\n");
  EXPECT_EQ(done("POST", "/tcam/policy", "", "json"),
            "{ \"result\": { \"rlt_code\": 0, \"rlt_mesg\": \"Create a new policy successfully (Policy ID is "
            "2).\" } }\n");
  EXPECT_EQ(get("/tcam/policy"), expected_policies({1, 2}));
  EXPECT_EQ(get("/tcam/policy/1"), expected_policy({}));
}

TEST_F(TcamTest, PolicyIsShownWithEverything) {
  make("");
  Answers answers = get("/tcam/policy/1");
  EXPECT_EQ(
      answers.xml,
      "<result><rlt_code>0</rlt_code><rlt_mesg>Get data successfully.</rlt_mesg><rlt_data><policy>"
      "<policy_id>1</policy_id><policy_priority>0</policy_priority><policy_type>OpenFlow policy</policy_type>"
      "<rule_num>0</rule_num><rule_priority>0</rule_priority><policy_header><version>0.1</version>"
      "<header_length>12</header_length></policy_header><classifiers><dst_mac>0:0:0:0:0:0</dst_mac>"
      "<dst_ip>0.0.0.0</dst_ip><dst_ip_mask>0.0.0.0</dst_ip_mask><dst_ipv6>::</dst_ipv6>"
      "<dst_ipv6_mask>::</dst_ipv6_mask><dst_port_icmp_code>0</dst_port_icmp_code>"
      "<dst_port_icmp_code_mask>0</dst_port_icmp_code_mask><src_mac>0:0:0:0:0:0</src_mac>"
      "<src_ip>0.0.0.0</src_ip><src_ip_mask>0.0.0.0</src_ip_mask><src_ipv6>::</src_ipv6>"
      "<src_ipv6_mask>::</src_ipv6_mask><src_port_icmp_code>0</src_port_icmp_code>"
      "<src_port_icmp_code_mask>0</src_port_icmp_code_mask><ip_dscp>0</ip_dscp><ip_dscp_mask>0</ip_dscp_mask>"
      "<ip_protocol>0</ip_protocol><ip_protocol_mask>0</ip_protocol_mask><vlan_id>0</vlan_id>"
      "<vlan_priority>0</vlan_priority><ether_type>0x0</ether_type></classifiers><action_type><drop>No</drop>"
      "<redirect_another_port>No</redirect_another_port><rewrite_outer_vlan>No</rewrite_outer_vlan>"
      "<rewrite_src_mac>No</rewrite_src_mac><rewrite_dst_mac>No</rewrite_dst_mac>"
      "<rewrite_priority>No</rewrite_priority><rewrite_outer_TPID>No</rewrite_outer_TPID>"
      "<redirect_cpu>No</redirect_cpu></action_type><action_value><dscp>0</dscp><ether_type>0x0</ether_type>"
      "<redirect_if_num>0</redirect_if_num><src_mac>0:0:0:0:0:0</src_mac><dst_mac>0:0:0:0:0:0</dst_mac>"
      "<vlan_id>0</vlan_id><vlan_priority>0</vlan_priority></action_value></policy></rlt_data></result>\n");
  EXPECT_EQ(
      answers.json,
      "{ \"result\": { \"rlt_code\": 0, \"rlt_mesg\": \"Get data successfully.\", \"rlt_data\": { "
      "\"policy\": "
      "{ \"policy_id\": 1, \"policy_priority\": 0, \"policy_type\": \"OpenFlow policy\", \"rule_num\": "
      "\"0\", "
      "\"rule_priority\": 0, \"policy_header\": { \"version\": \"0.1\", \"header_length\": 12 }, "
      "\"classifiers\": { \"dst_mac\": \"0:0:0:0:0:0\", \"dst_ip\": \"0.0.0.0\", \"dst_ip_mask\": "
      "\"0.0.0.0\", \"dst_ipv6\": \"::\", \"dst_ipv6_mask\": \"::\", \"dst_port_icmp_code\": 0, "
      "\"dst_port_icmp_code_mask\": 0, \"src_mac\": \"0:0:0:0:0:0\", \"src_ip\": \"0.0.0.0\", "
      "\"src_ip_mask\": \"0.0.0.0\", \"src_ipv6\": \"::\", \"src_ipv6_mask\": \"::\", "
      "\"src_port_icmp_code\": 0, \"src_port_icmp_code_mask\": 0, \"ip_dscp\": 0, \"ip_dscp_mask\": 0, "
      "\"ip_protocol\": 0, \"ip_protocol_mask\": 0, \"vlan_id\": 0, \"vlan_priority\": 0, \"ether_type\": "
      "\"0x0\" }, \"action_type\": { \"drop\": \"No\", \"redirect_another_port\": \"No\", "
      "\"rewrite_outer_vlan\": \"No\", \"rewrite_src_mac\": \"No\", \"rewrite_dst_mac\": \"No\", "
      "\"rewrite_priority\": \"No\", \"rewrite_outer_TPID.\": \"No\", \"redirect_cpu\": \"No\" }, "
      "\"action_value\": { \"dscp\": 0, \"ether_type\": \"0x0\", \"redirect_if_num\": 0, \"src_mac\": "
      "\"0:0:0:0:0:0\", \"dst_mac\": \"0:0:0:0:0:0\", \"vlan_id\": 0, \"vlan_priority\": 0 } } } } }\n");
}

/* Every variable alone, and what it makes of the policy. */
TEST_F(TcamTest, EachVariableHasItsPlaceInThePolicy) {
  const struct {
    const char *query;
    void (*change)(shown_policy *);
  } rows[] = {
      {"policyPrio=7", [](shown_policy *p) { p->priority = 7; }},
      {"policyType=1", [](shown_policy *) {}},
      {"policyType=2", [](shown_policy *p) { p->type = "Gen (IPv6) policy"; }},
      {"policyType=3", [](shown_policy *p) { p->type = "Egress policy"; }},
      {"policyType=0", [](shown_policy *) {}},
      {"policyType=", [](shown_policy *) {}},
      {"policyType=x", [](shown_policy *) {}},
      {"matchVlanId=4094", [](shown_policy *p) { p->vlan_id = 4094; }},
      {"matchVlanId=", [](shown_policy *) {}},
      {"matchVlanPrio=7", [](shown_policy *p) { p->vlan_priority = 7; }},
      {"matchDstMac=00:1a:2B:3c:4D:5e", [](shown_policy *p) { p->dst_mac = "0:1A:2B:3C:4D:5E"; }},
      {"matchDstMac=ffffffffffff", [](shown_policy *p) { p->dst_mac = "FF:FF:FF:FF:FF:FF"; }},
      {"matchSrcMac=1:2:3:4:5:6", [](shown_policy *p) { p->src_mac = "1:2:3:4:5:6"; }},
      {"matchSrcMac=zz:1g:00:00:00:10", [](shown_policy *p) { p->src_mac = "0:1:0:0:0:10"; }},
      {"matchDstIp=10.0.0.1", [](shown_policy *p) { p->dst_ip = "10.0.0.1"; }},
      {"matchDstIpMask=255.255.255.0", [](shown_policy *p) { p->dst_ip_mask = "255.255.255.0"; }},
      {"matchSrcIp=255.255.255.255", [](shown_policy *p) { p->src_ip = "255.255.255.255"; }},
      {"matchSrcIpMask=0.0.0.1", [](shown_policy *p) { p->src_ip_mask = "0.0.0.1"; }},
      {"actionDrop=1", [](shown_policy *p) { p->actions = 0x01; }},
      {"actionNewVlanPrio=7",
       [](shown_policy *p) {
         p->actions = 0x20;
         p->new_vlan_priority = 7;
       }},
      {"actionNewVlanPrio=0", [](shown_policy *p) { p->actions = 0x20; }},
      {"actionNewVlanPrio=x", [](shown_policy *p) { p->actions = 0x20; }},
      {"actionNewDstMac=02:00:00:00:00:0a",
       [](shown_policy *p) {
         p->actions = 0x10;
         p->new_dst_mac = "2:0:0:0:0:A";
       }},
      {"actionNewSrcMac=02:00:00:00:00:0b",
       [](shown_policy *p) {
         p->actions = 0x08;
         p->new_src_mac = "2:0:0:0:0:B";
       }},
      {"actionRedirPort=56",
       [](shown_policy *p) {
         p->actions = 0x02;
         p->redirect_if_num = 56;
       }},
      {"actionSendToCpuRule=0", [](shown_policy *p) { p->actions = 0x80; }},
  };
  for (const auto &row : rows) {
    shown_policy expected;
    row.change(&expected);
    make(row.query);
    EXPECT_EQ(get("/tcam/policy/1"), expected_policy(expected)) << row.query;
  }
}

TEST_F(TcamTest, PolicyThatOnlySendsToTheCpuReadsBackItsRule) {
  make("actionSendToCpuRule=5");
  shown_policy expected;
  expected.rule_num = "5";
  expected.actions = 0x80;
  EXPECT_EQ(get("/tcam/policy/1"), expected_policy(expected));
}

TEST_F(TcamTest, AllVariablesTogether) {
  make("policyPrio=9&policyType=3&matchVlanId=10&matchVlanPrio=5&matchDstMac=00:00:00:00:00:01"
       "&matchSrcMac=00:00:00:00:00:02&matchDstIp=10.0.0.1&matchDstIpMask=255.255.255.255&matchSrcIp=10.0.0.2"
       "&matchSrcIpMask=255.0.0.0&actionDrop=1&actionNewVlanPrio=3&actionNewDstMac=00:00:00:00:00:03"
       "&actionNewSrcMac=00:00:00:00:00:04&actionRedirPort=5&actionSendToCpuRule=6");
  shown_policy expected;
  expected.priority = 9;
  expected.type = "Egress policy";
  expected.rule_num = "6";
  expected.vlan_id = 10;
  expected.vlan_priority = 5;
  expected.dst_mac = "0:0:0:0:0:1";
  expected.src_mac = "0:0:0:0:0:2";
  expected.dst_ip = "10.0.0.1";
  expected.dst_ip_mask = "255.255.255.255";
  expected.src_ip = "10.0.0.2";
  expected.src_ip_mask = "255.0.0.0";
  expected.actions = 0x01 | 0x20 | 0x10 | 0x08 | 0x02 | 0x80;
  expected.new_vlan_priority = 3;
  expected.new_dst_mac = "0:0:0:0:0:3";
  expected.new_src_mac = "0:0:0:0:0:4";
  expected.redirect_if_num = 5;
  EXPECT_EQ(get("/tcam/policy/1"), expected_policy(expected));
}

TEST_F(TcamTest, WhatNoVariableSetsIsShownToo) {
  configure("tcam policy 3 ipv6 policy-priority 1 rule-number 2147483648 rule-priority 2 ethertype 34525 "
            "protocol 6 mask 255 dscp 46 mask 63 source-port 1024 mask 64512 destination-port 80 mask 65535 "
            "source-ipv6 2001:db8::1 mask ffff:ffff:: destination-ipv6 fe80::1 mask ffff::ff "
            "new-vlan 20 new-priority 6 new-dscp 34 new-tpid 34984\n");
  shown_policy expected;
  expected.id = 3;
  expected.priority = 1;
  expected.type = "Gen (IPv6) policy";
  expected.rule_num = "2147483648";
  expected.rule_priority = 2;
  expected.ether_type = "0x86dd";
  expected.protocol = 6;
  expected.protocol_mask = 255;
  expected.dscp = 46;
  expected.dscp_mask = 63;
  expected.src_port = 1024;
  expected.src_port_mask = 64512;
  expected.dst_port = 80;
  expected.dst_port_mask = 65535;
  expected.src_ipv6 = "2001:db8::1";
  expected.src_ipv6_mask = "ffff:ffff::";
  expected.dst_ipv6 = "fe80::1";
  expected.dst_ipv6_mask = "ffff::ff";
  expected.actions = 0x04 | 0x20 | 0x40;
  expected.new_vlan_id = 20;
  expected.new_vlan_priority = 6;
  expected.new_dscp = 34;
  expected.new_tpid = "0x88a8";
  EXPECT_EQ(get("/tcam/policy/3"), expected_policy(expected));
}

TEST_F(TcamTest, NumbersCountAsFarAsTheyGo) {
  shown_policy expected;
  make("policyPrio=12x&matchVlanId=%2010&matchVlanPrio=+3&actionDrop=1x");
  expected.priority = 12;
  expected.vlan_id = 10;
  expected.vlan_priority = 3; /* "+3" is " 3" decoded, and blanks before a number do not count */
  expected.actions = 0x01;
  EXPECT_EQ(get("/tcam/policy/1"), expected_policy(expected));
}

/* They never turn into another number that is good. */
TEST_F(TcamTest, NumbersThatDoNotFitTheirFieldAreOutOfRange) {
  for (const char *query :
       {"matchVlanId=65546", "matchVlanId=-65526", "matchVlanId=4294967306", "matchVlanPrio=257",
        "matchVlanPrio=-255", "actionNewVlanPrio=258", "actionNewVlanPrio=-254"})
    EXPECT_EQ(call(tcam_api_handler, "POST", "/tcam/policy", query), expected_platform_error(OPEN_E_PARAM))
        << query;
}

TEST_F(TcamTest, VariablesMayStandInTheBody) {
  FakeRequest request("POST", "/tcam/policy", "", "matchVlanId=10&actionDrop=1");
  EXPECT_EQ(tcam_api_handler(handle, request.conn()), 1);
  shown_policy expected;
  expected.vlan_id = 10;
  expected.actions = 0x01;
  EXPECT_EQ(get("/tcam/policy/1"), expected_policy(expected));
}

/* --- Refused variables ---------------------------------------------------------------------------------- */

/* With every variable that comes after it wrong as well: the first counts. */
TEST_F(TcamTest, EachRefusedVariableHasItsCode) {
  const struct {
    const char *name;
    std::vector<std::string> values;
  } rows[] = {
      {"matchDstMac", {"", "x", "00-1A-2B-3C-4D-5E", "00:1A:2B:3C:4D:5E:66", "00:1A:2B:3C:4D"}},
      {"matchSrcMac", {"", "x", "00:1A:2B:3C:4D:5E:66", "1234567890123"}},
      {"matchDstIp", {"", "x", "10.0.0", "10.0.0.256", "10.0.0.0/8", "10.0.0.1%20", "2001:db8::1"}},
      {"matchDstIpMask", {"", "x", "255.255.255", "24", "ffff::"}},
      {"matchSrcIp", {"", "x", "10.0.0.0.1", "2001:db8::g", "::ffff:10.0.0.1"}},
      {"matchSrcIpMask", {"", "x", "/24", std::string(48, '1'), std::string(255, '1'), "::"}},
      {"actionDrop", {"", "0", "2", "-1", "yes", "11"}},
      {"actionNewVlanPrio", {""}},
      {"actionNewDstMac", {"", "x", "00:1A:2B:3C:4D"}},
      {"actionNewSrcMac", {"", "x", "00.1A.2B.3C.4D.5E"}},
      {"actionRedirPort", {""}},
      {"actionSendToCpuRule", {""}},
  };
  int code = 0;
  std::string wrong_ones;
  for (auto row = std::rbegin(rows); row != std::rend(rows); ++row)
    wrong_ones = std::string("&") + row->name + "=" + wrong_ones;
  for (const auto &row : rows) {
    code++;
    std::string message = std::string("The value of parameter ") + row.name + " is invalid.";
    wrong_ones.erase(0, strlen(row.name) + 2);
    for (const std::string &value : row.values) {
      std::string query = std::string(row.name) + "=" + value;
      EXPECT_EQ(call(tcam_api_handler, "POST", "/tcam/policy", query), expected_answers(code, message))
          << query;
      EXPECT_EQ(call(tcam_api_handler, "POST", "/tcam/policy", query + wrong_ones),
                expected_answers(code, message))
          << query + wrong_ones;
    }
  }
  EXPECT_EQ(code, 12);
  EXPECT_EQ(get("/tcam/policy"), expected_policies({}));
}

TEST_F(TcamTest, ValueTooLongForTheQueryIsNotThereAndOneInTheBodyCountsAsFarAsItGoes) {
  const std::string too_long = "=" + std::string(256, '1');
  make("matchDstMac" + too_long + "&matchSrcIp" + too_long + "&actionDrop" + too_long + "&actionRedirPort" +
       too_long);
  EXPECT_EQ(get("/tcam/policy/1"), expected_policy({}));
  const struct {
    const char *name;
    int code;
  } rows[] = {{"matchDstMac", 1}, {"matchSrcIpMask", 6}, {"actionDrop", 7}, {"actionNewSrcMac", 10}};
  for (const auto &row : rows) {
    FakeRequest request("POST", "/tcam/policy", "", row.name + too_long);
    EXPECT_EQ(tcam_api_handler(handle, request.conn()), 0);
    EXPECT_EQ(
        answer_body(request, "xml"),
        expected_answers(row.code, std::string("The value of parameter ") + row.name + " is invalid.").xml);
  }
}

TEST_F(TcamTest, RefusalIsShownInBothFormats) {
  Answers answers = call(tcam_api_handler, "POST", "/tcam/policy", "actionDrop=0");
  EXPECT_EQ(answers.xml, "<result><rlt_code>7</rlt_code><rlt_mesg>The value of parameter actionDrop is "
                         "invalid.</rlt_mesg></result>\n");
  EXPECT_EQ(answers.json,
            "{ \"result\": { \"rlt_code\": 7, \"rlt_mesg\": \"The value of parameter actionDrop "
            "is invalid.\" } }\n");
  answers = call(tcam_api_handler, "POST", "/tcam/policy", "actionRedirPort=");
  EXPECT_EQ(answers.xml, "<result><rlt_code>11</rlt_code><rlt_mesg>The value of parameter actionRedirPort is "
                         "invalid.</rlt_mesg></result>\n");
  EXPECT_EQ(answers.json, "{ \"result\": { \"rlt_code\": 11, \"rlt_mesg\": \"The value of parameter "
                          "actionRedirPort is invalid.\" } }\n");
}

TEST_F(TcamTest, RefusedVariableKeepsThePlatformUnasked) {
  fault("rpcclt_openapiTcamPolicyCreate", OPEN_E_EXISTS);
  EXPECT_EQ(call(tcam_api_handler, "POST", "/tcam/policy", "actionSendToCpuRule="),
            expected_answers(12, "The value of parameter actionSendToCpuRule is invalid."));
  EXPECT_EQ(lab("fault list"), "rpcclt_openapiTcamPolicyCreate OPEN_E_EXISTS 1 0\n");
  lab("fault clear");
}

TEST_F(TcamTest, WhatThePlatformRefusesAnswers99) {
  for (const char *query : {"policyType=4", "policyType=5", "policyType=-1", "matchVlanId=4095",
                            "matchVlanId=-1", "matchVlanPrio=8", "matchVlanPrio=-1", "actionNewVlanPrio=8",
                            "actionNewVlanPrio=-1", "actionRedirPort=0", "actionRedirPort=x",
                            "actionRedirPort=55", "actionRedirPort=-1", "actionRedirPort=400"}) {
    EXPECT_EQ(call(tcam_api_handler, "POST", "/tcam/policy", query), expected_platform_error(OPEN_E_PARAM))
        << query;
  }
  EXPECT_EQ(get("/tcam/policy"), expected_policies({}));
}

TEST_F(TcamTest, FullStageAnswers99) {
  lower_limit("tcam-ingress-policies", 1);
  lower_limit("tcam-egress-policies", 0);
  make("");
  EXPECT_EQ(call(tcam_api_handler, "POST", "/tcam/policy"), expected_platform_error(OPEN_E_FULL));
  EXPECT_EQ(call(tcam_api_handler, "POST", "/tcam/policy", "policyType=3"),
            expected_platform_error(OPEN_E_FULL));
}
