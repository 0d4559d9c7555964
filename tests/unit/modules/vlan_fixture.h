/* Tests of the VLAN module: making VLANs behind the module's back, and the documents it answers with. */
#ifndef KESTREL_TESTS_MODULES_VLAN_FIXTURE_H
#define KESTREL_TESTS_MODULES_VLAN_FIXTURE_H

#include "modules/rest_module_vlan.h"
#include "platform/api/openapi_vlan.h"
#include "tests/support/platform_fixture.h"
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
                                const std::vector<vlan_member> &members, const char *type = "static") {
  std::string id = std::to_string(vid), xml, json;
  for (const vlan_member &member : members) {
    std::string ifNum = std::to_string(member.ifNum), tagging = std::to_string(member.tagging);
    xml += "<interface><ifNum>" + ifNum + "</ifNum><participationMode>" + member.mode +
           "</participationMode><isTagging>" + tagging + "</isTagging></interface>";
    json += (json.empty() ? "\"" : ", \"") + std::to_string(member.position) + "\": { \"ifNum\": " + ifNum +
            ", \"participationMode\": \"" + member.mode + "\", \"isTagging\": " + tagging + " }";
  }
  return expected_answers(0, "Get data successfully.",
                          "<vlan><id>" + id + "</id><name>" + name + "</name><type>" + type +
                              "</type><interfaces>" + xml + "</interfaces></vlan>",
                          "\"vlan\": { \"id\": " + id + ", \"name\": \"" + name + "\", \"type\": \"" + type +
                              "\", \"interfaces\": { " + json + (json.empty() ? "}" : " }") + " }");
}

inline Answers expected_list(const std::vector<unsigned> &vids) {
  std::string xml, json;
  for (size_t i = 0; i < vids.size(); i++) {
    std::string id = std::to_string(vids[i]);
    xml += "<vlan><id>" + id + "</id></vlan>";
    json += (i == 0 ? "\"" : ", \"") + std::to_string(i + 1) + "\": { \"id\": " + id + " }";
  }
  return expected_answers(0, "Get data successfully.", "<vlans>" + xml + "</vlans>",
                          "\"vlans\": { " + json + " }");
}

inline Answers expected_pending(const std::vector<pending_vlan> &vlans) {
  std::string xml, json;
  for (size_t i = 0; i < vlans.size(); i++) {
    std::string id = std::to_string(vlans[i].vid), type = vlans[i].type;
    xml += "<vlan><id>" + id + "</id><pending_type>" + type + "</pending_type></vlan>";
    json += (i == 0 ? "\"" : ", \"") + std::to_string(i + 1) + "\": { \"id\": " + id +
            ", \"pending_type\": \"" + type + "\" }";
  }
  return expected_answers(0, "Get data successfully.", "<pending_vlans>" + xml + "</pending_vlans>",
                          "\"pending_vlans\": { " + json + (json.empty() ? "}" : " }"));
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
