/* What the tests of VLANs, switchport modes and LAGs share: the C interface with values as results. */
#ifndef KESTREL_TESTS_MEMBERSHIP_TEST_SUPPORT_H
#define KESTREL_TESTS_MEMBERSHIP_TEST_SUPPORT_H

#include "platform/api/openapi_if.h"
#include "platform/api/openapi_lag.h"
#include "tests/unit/platform/softswitch_test_support.h"

#include <ostream>

inline constexpr uint32_t general = OPEN_SWITCHPORT_MODE_GENERAL, access_mode = OPEN_SWITCHPORT_MODE_ACCESS,
                          trunk = OPEN_SWITCHPORT_MODE_TRUNK;
inline constexpr uint32_t include = OPEN_VLAN_PARTICIPATION_MODE_INCLUDE,
                          autodetect = OPEN_VLAN_PARTICIPATION_MODE_AUTO,
                          exclude = OPEN_VLAN_PARTICIPATION_MODE_EXCLUDE;

/* All that can be read of an interface in a VLAN. */
struct part {
  uint32_t participation;
  uint32_t member;
  uint32_t tagged;
  bool operator==(const part &) const = default;
};

inline constexpr part untagged_member = {include, 1, 0}, tagged_member = {include, 1, 1},
                      excluded = {exclude, 0, 0}, stranger = {autodetect, 0, 0};

inline std::ostream &operator<<(std::ostream &out, const part &shown) {
  return out << "{participation " << shown.participation << ", member " << shown.member << ", tagged "
             << shown.tagged << "}";
}

class MembershipTest : public SoftSwitch {
protected:
  part part_in(uint32_t vlan, uint32_t interface) {
    part found = {99, 99, 99};
    EXPECT_EQ(rpcclt_openapiVlanIfParticipationGet(&handle, vlan, interface, &found.participation),
              OPEN_E_NONE);
    EXPECT_EQ(openapiVlanIfParticipationStatusGet(&handle, vlan, interface, &found.member), OPEN_E_NONE);
    EXPECT_EQ(openapiVlanIfTaggingGet(&handle, interface, vlan, &found.tagged), OPEN_E_NONE);
    return found;
  }

  uint32_t pvid(uint32_t interface) {
    uint32_t vlan = 99;
    EXPECT_EQ(openapiVlanIfPvidGet(&handle, interface, &vlan), OPEN_E_NONE);
    return vlan;
  }

  uint32_t accept_frames(uint32_t interface) {
    uint32_t type = 99;
    EXPECT_EQ(rpcclt_openapiVlanIfAcceptFrameTypeGet(&handle, interface, &type), OPEN_E_NONE);
    return type;
  }

  uint32_t mode(uint32_t interface) {
    uint32_t found = 99;
    EXPECT_EQ(rpcclt_openapiIfSwitchportModeGet(&handle, interface, &found), OPEN_E_NONE);
    return found;
  }

  open_error_t set_mode(uint32_t interface, uint32_t to) {
    return rpcclt_openapiIfSwitchportModeSet(&handle, interface, to);
  }
  open_error_t set_access(uint32_t interface, uint32_t vlan) {
    return rpcclt_openapiIfSwitchportAccessVlanSet(&handle, interface, vlan);
  }
  open_error_t set_native(uint32_t interface, uint32_t vlan) {
    return rpcclt_openapiIfSwitchportTrunkNativeVlanSet(&handle, interface, vlan);
  }

  /* Changes the list of a trunk: adds with 1, removes with 3. */
  open_error_t change_list(uint32_t interface, uint32_t how, std::string list) {
    open_buffdesc text = {static_cast<uint32_t>(list.size()), list.data()};
    return rpcclt_openapiIfSwitchportTrunkVlanSet(&handle, interface, how, &text);
  }
  open_error_t add_to_list(uint32_t interface, const std::string &list) {
    return change_list(interface, OPEN_SWITCHPORT_TRUNK_VLAN_ADD, list);
  }
  open_error_t remove_from_list(uint32_t interface, const std::string &list) {
    return change_list(interface, OPEN_SWITCHPORT_TRUNK_VLAN_REMOVE, list);
  }
  open_error_t replace_list(uint32_t interface, std::string list,
                            uint32_t how = OPEN_SWITCHPORT_TRUNK_VLAN_ADD) {
    open_buffdesc text = {static_cast<uint32_t>(list.size()), list.data()};
    return rpcclt_openapiIfSwitchportTrunkVlanCreate(&handle, interface, how, &text);
  }

  open_error_t add_port(uint32_t lag, uint32_t port) { return rpcclt_openapiLagPortAdd(&handle, lag, port); }
  open_error_t remove_port(uint32_t lag, uint32_t port) {
    return rpcclt_openapiLagPortDelete(&handle, lag, port);
  }
  std::vector<uint32_t> members(uint32_t lag) {
    std::vector<uint32_t> ports(54);
    uint32_t count = 54;
    EXPECT_EQ(rpcclt_openapiLagMembersGet(&handle, lag, &count, ports.data()), OPEN_E_NONE);
    ports.resize(count);
    return ports;
  }

  void create(uint32_t vlan) { ASSERT_EQ(rpcclt_openapiVlanCreate(&handle, vlan), OPEN_E_NONE); }
  void delete_vlan(uint32_t vlan) { ASSERT_EQ(rpcclt_openapiVlanDelete(&handle, vlan), OPEN_E_NONE); }

  /* Applies lines that must be accepted. */
  void configure(const std::string &text) {
    for (const std::string &line : lines_of(text)) ASSERT_EQ(commit(line), OPEN_E_NONE) << line;
  }

  std::string journal() const { return file_content(dir.path + "/journal-1"); }
};

#endif
