/* Tests of the VLAN module: making VLANs behind the module's back, and the documents it answers with. */
#ifndef KESTREL_TESTS_MODULES_VLAN_FIXTURE_H
#define KESTREL_TESTS_MODULES_VLAN_FIXTURE_H

#include "modules/rest_module_vlan.h"
#include "platform/api/openapi_vlan.h"
#include "tests/support/platform_fixture.h"
#include "tests/support/result_data.h"
#include "tests/unit/modules/bent_platform.h"

struct vlan_member {
  unsigned position, ifNum;
  const char *mode;
  int tagging;
};

struct pending_vlan {
  unsigned vid;
  const char *type;
};

inline Answers expected_details(unsigned vid, const std::string &name,
                                const std::vector<vlan_member> &members, const std::string &type = "static") {
  std::vector<result_node> interfaces;
  for (const vlan_member &member : members) {
    interfaces.push_back(entry(member.position, "interface",
                               {number("ifNum", member.ifNum), text("participationMode", member.mode),
                                number("isTagging", member.tagging)}));
  }
  return expected_data({branch("vlan", {number("id", vid), text("name", name), text("type", type),
                                        branch("interfaces", interfaces)})});
}

inline Answers expected_list(const std::vector<unsigned> &vids) {
  std::vector<result_node> vlans;
  for (unsigned vid : vids)
    vlans.push_back(entry(static_cast<unsigned>(vlans.size()) + 1, "vlan", {number("id", vid)}));
  return expected_data({branch("vlans", vlans)});
}

inline Answers expected_pending(const std::vector<pending_vlan> &pending) {
  std::vector<result_node> vlans;
  for (const pending_vlan &vlan : pending) {
    vlans.push_back(entry(static_cast<unsigned>(vlans.size()) + 1, "vlan",
                          {number("id", vlan.vid), text("pending_type", vlan.type)}));
  }
  return expected_data({branch("pending_vlans", vlans)});
}

class VlanTest : public PlatformTest {
protected:
  void create(uint32_t vid) const { EXPECT_EQ(rpcclt_openapiVlanCreate(handle, vid), OPEN_E_NONE) << vid; }
  void include(uint32_t vid, uint32_t ifNum) const {
    EXPECT_EQ(rpcclt_openapiVlanIfParticipationSet(handle, vid, ifNum, OPEN_VLAN_PARTICIPATION_MODE_INCLUDE),
              OPEN_E_NONE);
  }
  Answers listed_vlans() const { return call(vlan_api_handler, "GET", "/vlans"); }
  Answers pending_vlans() const { return call(vlan_api_handler, "GET", "/vlans/pendingChanges"); }
};

#endif
