/* What the tests of access control lists share: a switch with one list of each type and a rule in each, the C
 * interface with texts and addresses as strings, and a rule as one line of text by way of all that reads it.
 */
#ifndef KESTREL_TESTS_ACL_TEST_SUPPORT_H
#define KESTREL_TESTS_ACL_TEST_SUPPORT_H

#include "platform/api/openapi_acl.h"
#include "platform/api/openapi_lag.h"
#include "platform/softswitch/model/inet_address.h"
#include "tests/unit/platform/softswitch_test_support.h"

inline open_inet_addr_t address_of(const std::string &text) {
  open_inet_addr_t address;
  EXPECT_TRUE(softswitch::inet_address_read(text, &address)) << text;
  return address;
}

class AclSwitch : public SoftSwitch {
protected:
  void SetUp() override {
    SoftSwitch::SetUp();
    ip = make(OPEN_ACL_TYPE_IP, "ip-list");
    mac = make(OPEN_ACL_TYPE_MAC, "mac-list");
    ipv6 = make(OPEN_ACL_TYPE_IPV6, "ipv6-list");
    for (uint32_t acl : {ip, mac, ipv6}) add_rule(acl, 10);
  }

  /* --- Lists and rules --- */

  open_error_t create(uint32_t type, std::string text, uint32_t *id) {
    open_buffdesc name = {static_cast<uint32_t>(text.size()), text.data()};
    return rpcclt_openapiAclCreate(&handle, type, &name, id);
  }

  uint32_t make(uint32_t type, const std::string &text) {
    uint32_t id = 0;
    EXPECT_EQ(create(type, text, &id), OPEN_E_NONE) << text;
    return id;
  }

  /* The id of a list; the code in its place when there is none. */
  int find(uint32_t type, std::string text) {
    open_buffdesc name = {static_cast<uint32_t>(text.size()), text.data()};
    uint32_t id = 0;
    open_error_t rc = rpcclt_openapiAclGet(&handle, type, &name, &id);
    return rc == OPEN_E_NONE ? static_cast<int>(id) : rc;
  }

  std::string list_name(uint32_t acl) {
    char buffer[OPEN_ACL_NAME_SIZE];
    open_buffdesc name = {sizeof buffer, buffer};
    open_error_t rc = rpcclt_openapiAclNameGet(&handle, acl, &name);
    return rc == OPEN_E_NONE ? std::string(buffer, name.size) : std::to_string(rc);
  }

  /* Makes a rule; its number, or the code. */
  int add_rule(uint32_t acl, uint32_t number, uint32_t action = OPEN_ACL_ACTION_PERMIT) {
    open_error_t rc = rpcclt_openapiAclRuleActionAdd(&handle, acl, &number, action);
    return rc == OPEN_E_NONE ? static_cast<int>(number) : rc;
  }

  open_error_t delete_rule(uint32_t acl, uint32_t number) {
    return rpcclt_openapiAclRuleDelete(&handle, acl, number);
  }

  std::vector<uint32_t> rules(uint32_t acl) {
    std::vector<uint32_t> found;
    uint32_t number = 99;
    open_error_t rc = rpcclt_openapiAclRuleGetFirst(&handle, acl, &number);
    for (; rc == OPEN_E_NONE; rc = rpcclt_openapiAclRuleGetNext(&handle, acl, number, &number))
      found.push_back(number);
    EXPECT_EQ(rc, OPEN_E_FAIL);
    EXPECT_EQ(number, 0u) << "at the end of the walk";
    return found;
  }

  std::vector<uint32_t> lists(uint32_t type) {
    std::vector<uint32_t> found;
    uint32_t id;
    open_error_t rc = rpcclt_openapiAclGetFirst(&handle, type, &id);
    for (; rc == OPEN_E_NONE; rc = rpcclt_openapiAclGetNext(&handle, type, id, &id)) found.push_back(id);
    EXPECT_EQ(rc, OPEN_E_FAIL);
    return found;
  }

  uint32_t rule_count(uint32_t acl) {
    uint32_t count = 9999;
    EXPECT_EQ(rpcclt_openapiAclRuleCountGet(&handle, acl, &count), OPEN_E_NONE);
    return count;
  }

  open_error_t set_protocol(uint32_t acl, uint32_t number, uint32_t protocol) {
    return rpcclt_openapiAclRuleMatchProtocolAdd(&handle, acl, number, protocol);
  }

  /* --- A rule by way of all that reads it --- */

  /* "permit every 0 protocol 6 dscp 5 ...": what the rule has. */
  std::string describe(uint32_t acl, uint32_t number) {
    std::string text;
    uint32_t action = 9, every = 9;
    EXPECT_EQ(rpcclt_openapiAclRuleActionGet(&handle, acl, number, &action), OPEN_E_NONE);
    EXPECT_EQ(rpcclt_openapiAclRuleMatchEveryGet(&handle, acl, number, &every), OPEN_E_NONE);
    text = (action == OPEN_ACL_ACTION_DENY ? "deny every " : "permit every ") + std::to_string(every);
    describe_texts(acl, number, &text);
    describe_addresses(acl, number, &text);
    describe_numbers(acl, number, &text);
    return text;
  }

  /* All lists with their rules and bindings. */
  std::string describe_all() {
    std::string text;
    for (uint32_t type : {OPEN_ACL_TYPE_IP, OPEN_ACL_TYPE_MAC, OPEN_ACL_TYPE_IPV6}) {
      for (uint32_t acl : lists(type)) {
        text += std::to_string(acl) + " " + list_name(acl) + "\n";
        for (uint32_t number : rules(acl))
          text += std::to_string(number) + " " + describe(acl, number) + "\n";
        for (uint32_t direction : {0u, 1u}) text += bound_to(acl, direction) + "\n";
      }
    }
    return text;
  }

  /* --- Bindings --- */

  open_error_t bind(uint32_t interface, uint32_t direction, uint32_t acl, uint32_t sequence = 0) {
    return rpcclt_openapiAclIntfDirAdd(&handle, interface, direction, acl, sequence);
  }
  open_error_t unbind(uint32_t interface, uint32_t direction, uint32_t acl) {
    return rpcclt_openapiAclIntfDirDelete(&handle, interface, direction, acl);
  }
  open_error_t bind_vlan(uint32_t vlan, uint32_t direction, uint32_t acl, uint32_t sequence = 0) {
    return rpcclt_openapiAclVlanDirAdd(&handle, vlan, direction, acl, sequence);
  }
  open_error_t unbind_vlan(uint32_t vlan, uint32_t direction, uint32_t acl) {
    return rpcclt_openapiAclVlanDirDelete(&handle, vlan, direction, acl);
  }

  /* "1:type 2 acl 3, ..." by sequence number. */
  std::string bound_at(uint32_t interface, uint32_t direction) {
    static OPEN_ACL_INTF_DIR_LIST_t list;
    open_error_t rc = rpcclt_openapiAclIntfDirListGet(&handle, interface, direction, &list);
    return rc == OPEN_E_NONE ? bindings_text(list) : std::to_string(rc);
  }
  std::string bound_at_vlan(uint32_t vlan, uint32_t direction) {
    static OPEN_ACL_VLAN_DIR_LIST_t list;
    open_error_t rc = rpcclt_openapiAclVlanDirListGet(&handle, vlan, direction, &list);
    return rc == OPEN_E_NONE ? bindings_text(list) : std::to_string(rc);
  }

  /* "interfaces 1 56 vlans 10": where a list is bound. */
  std::string bound_to(uint32_t acl, uint32_t direction) {
    static OPEN_ACL_ASSIGNED_INTF_LIST_t interfaces;
    static OPEN_ACL_ASSIGNED_VLAN_LIST_t vlans;
    EXPECT_EQ(rpcclt_openapiAclAssignedIntfDirListGet(&handle, acl, direction, &interfaces), OPEN_E_NONE);
    EXPECT_EQ(rpcclt_openapiAclAssignedVlanDirListGet(&handle, acl, direction, &vlans), OPEN_E_NONE);
    std::string text = "interfaces";
    for (uint32_t at = 0; at < interfaces.count; at++) text += " " + std::to_string(interfaces.intf[at]);
    text += " vlans";
    for (uint32_t at = 0; at < vlans.count; at++) text += " " + std::to_string(vlans.vlan[at]);
    return text;
  }

  uint32_t ip = 0, mac = 0, ipv6 = 0;

private:
  template <typename Get>
  void describe_pair(Get get, const char *what, uint32_t acl, uint32_t number, std::string *text) {
    char one[64], other[64];
    open_buffdesc first = {sizeof one, one}, second = {sizeof other, other};
    if (get(&handle, acl, number, &first, &second) != OPEN_E_NONE) return;
    *text += std::string(what) + std::string(one, first.size) + "/" + std::string(other, second.size);
  }

  void describe_texts(uint32_t acl, uint32_t number, std::string *text) {
    describe_pair(rpcclt_openapiAclRuleMatchMacSrcMacGet, " source-mac ", acl, number, text);
    describe_pair(rpcclt_openapiAclRuleMatchMacDstMacGet, " destination-mac ", acl, number, text);
    describe_pair(rpcclt_openapiAclRuleMatchTosGet, " tos ", acl, number, text);
    char buffer[64];
    open_buffdesc name = {sizeof buffer, buffer};
    uint32_t state = 9;
    if (rpcclt_openapiAclRuleMatchTimeRangeGet(&handle, acl, number, &name) != OPEN_E_NONE) return;
    EXPECT_EQ(rpcclt_openapiAclRuleMatchTimeRangeStatusGet(&handle, acl, number, &state), OPEN_E_NONE);
    *text += " time-range " + std::string(buffer, name.size) + "/" + std::to_string(state);
  }

  void describe_addresses(uint32_t acl, uint32_t number, std::string *text) {
    using softswitch::inet_address_text;
    open_inet_addr_t one, other;
    uint32_t length;
    if (rpcclt_openapiAclRuleMatchIpSrcMaskGet(&handle, acl, number, &one, &other) == OPEN_E_NONE)
      *text += " source " + inet_address_text(one) + "/" + inet_address_text(other);
    if (rpcclt_openapiAclRuleMatchIpDstMaskGet(&handle, acl, number, &one, &other) == OPEN_E_NONE)
      *text += " destination " + inet_address_text(one) + "/" + inet_address_text(other);
    if (rpcclt_openapiAclRuleMatchIpv6SrcPfxGet(&handle, acl, number, &one, &length) == OPEN_E_NONE)
      *text += " source " + inet_address_text(one) + "/" + std::to_string(length);
    if (rpcclt_openapiAclRuleMatchIpv6DstPfxGet(&handle, acl, number, &one, &length) == OPEN_E_NONE)
      *text += " destination " + inet_address_text(one) + "/" + std::to_string(length);
  }

  void describe_numbers(uint32_t acl, uint32_t number, std::string *text) {
    using get_one = open_error_t (*)(openapiClientHandle_t *, uint32_t, uint32_t, uint32_t *);
    using get_two = open_error_t (*)(openapiClientHandle_t *, uint32_t, uint32_t, uint32_t *, uint32_t *);
    using get_three =
        open_error_t (*)(openapiClientHandle_t *, uint32_t, uint32_t, uint32_t *, uint32_t *, uint32_t *);
    static const std::pair<const char *, get_one> ones[] = {
        {" ethertype ", rpcclt_openapiAclRuleMatchMacEtherTypeGet},
        {" cos ", rpcclt_openapiAclRuleMatchMacCosGet},
        {" protocol ", rpcclt_openapiAclRuleMatchProtocolGet},
        {" dscp ", rpcclt_openapiAclRuleMatchDscpGet},
        {" precedence ", rpcclt_openapiAclRuleMatchPrecedenceGet},
        {" igmp ", rpcclt_openapiAclRuleMatchIgmpTypeGet},
        {" established ", rpcclt_openapiAclRuleMatchTcpEstablishedGet},
        {" fragments ", rpcclt_openapiAclRuleMatchFragmentsGet},
        {" routing ", rpcclt_openapiAclRuleMatchRoutingGet},
        {" flow-label ", rpcclt_openapiAclRuleMatchFlowLabelGet},
        {" log ", rpcclt_openapiAclRuleMatchLoggingGet},
        {" queue ", rpcclt_openapiAclRuleMatchAssignQueueGet},
        {" mirror ", rpcclt_openapiAclRuleMatchMirrorGet},
        {" redirect ", rpcclt_openapiAclRuleMatchRedirectGet}};
    static const std::pair<const char *, get_two> twos[] = {
        {" tcp-flags ", rpcclt_openapiAclRuleMatchTcpFlagsGet},
        {" rate ", rpcclt_openapiAclRuleMatchRateLimitGet}};
    static const std::pair<const char *, get_three> threes[] = {
        {" vlan ", rpcclt_openapiAclRuleMatchMacVlanGet},
        {" source-port ", rpcclt_openapiAclRuleMatchL4SrcPortGet},
        {" destination-port ", rpcclt_openapiAclRuleMatchL4DstPortGet}};
    uint32_t a, b, c;
    for (const auto &[what, get] : ones)
      if (get(&handle, acl, number, &a) == OPEN_E_NONE) *text += what + std::to_string(a);
    for (const auto &[what, get] : twos)
      if (get(&handle, acl, number, &a, &b) == OPEN_E_NONE)
        *text += what + std::to_string(a) + "/" + std::to_string(b);
    if (rpcclt_openapiAclRuleMatchIcmpTypeCodeGet(&handle, acl, number, 1, &a, &b) == OPEN_E_NONE)
      *text += " icmp " + std::to_string(a) + "/" + std::to_string(b);
    for (const auto &[what, get] : threes)
      if (get(&handle, acl, number, &a, &b, &c) == OPEN_E_NONE)
        *text += what + std::to_string(a) + "/" + std::to_string(b) + "/" + std::to_string(c);
  }

  static std::string bindings_text(const OPEN_ACL_INTF_DIR_LIST_t &list) {
    std::string text;
    for (uint32_t at = 0; at < list.count; at++) {
      const OPEN_ACL_DIR_LIST_ENTRY_t &entry = list.listEntry[at];
      text += (text.empty() ? "" : ", ") + std::to_string(entry.seqNum) + ":type " +
              std::to_string(entry.aclType) + " acl " + std::to_string(entry.aclId);
    }
    return text;
  }
};

#endif
