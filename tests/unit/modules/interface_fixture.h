/* Tests of the interface module: the documents it answers with, and what the world outside does to ports. */
#ifndef KESTREL_TESTS_MODULES_INTERFACE_FIXTURE_H
#define KESTREL_TESTS_MODULES_INTERFACE_FIXTURE_H

#include "modules/rest_module_interface.h"
#include "platform/api/openapi_if.h"
#include "platform/api/openapi_stat.h"
#include "platform/api/openapi_vlan.h"
#include "tests/support/platform_fixture.h"
#include "tests/support/result_data.h"
#include "tests/unit/modules/bent_platform.h"

/* What GET /if/{ifNum} tells; the defaults are those of a port for 10 Gbit/s in factory state. */
struct interface_details {
  unsigned ifNum;
  std::string name, mac;
  std::string description = "-", admin = "enable", link = "up", speed = "full 10gsx";
  unsigned pvid = 1;
  std::string accept_frames = "all", auto_neg = "disable", duplex = "full";
  unsigned mtu = 1518;
  std::vector<result_node> addresses = {};
};

/* A port of the test switch (platform_fixture.h) in factory state. */
inline interface_details port_details(unsigned port) {
  char mac[18];
  snprintf(mac, sizeof mac, "02:00:5E:00:00:%02X", 0x42 + port);
  interface_details details = {port, "0/" + std::to_string(port), mac};
  if (port > 48) details.speed = "full 40gsx";
  if (port == 47 || port == 48) {
    details.speed = "auto neg";
    details.auto_neg = "enable";
  }
  return details;
}

inline Answers expected_details(const interface_details &details) {
  std::vector<result_node> nodes = {
      number("ifNum", details.ifNum),
      text("interfaceName", details.name),
      text("description", details.description),
      text("adminState", details.admin),
      text("linkState", details.link),
      text("speed", details.speed),
      number("pvid", details.pvid),
      text("acceptFrameType", details.accept_frames),
      text("autoNegMode", details.auto_neg),
      text("duplexMode", details.duplex),
      text("MAC_address", details.mac),
      number("MTU_size", details.mtu),
  };
  nodes.insert(nodes.end(), details.addresses.begin(), details.addresses.end());
  return expected_data({branch("interface", nodes)});
}

struct pending_interface {
  unsigned ifNum;
  const char *type;
};

inline Answers expected_pending_interfaces(const std::vector<pending_interface> &interfaces) {
  std::vector<result_node> entries;
  for (const pending_interface &pending : interfaces) {
    entries.push_back(entry(static_cast<unsigned>(entries.size()) + 1, "interface",
                            {number("ifNum", pending.ifNum), text("pending_type", pending.type)}));
  }
  return expected_data({branch("pending_interfaces", entries)});
}

/* GET /if/{ifNum}/vlan/{vlanId}. */
inline Answers expected_participation(unsigned ifNum, unsigned vlanId, const std::string &mode,
                                      unsigned tagging) {
  return expected_data(
      {branch("participation", {number("ifNum", ifNum), number("vlanId", vlanId),
                                text("participationMode", mode), number("isTagging", tagging)})});
}

struct listed_participation {
  unsigned position, vlanId;
};

/* GET /if/{ifNum}/vlan. */
inline Answers expected_participations(const std::vector<listed_participation> &vlans) {
  std::vector<result_node> entries;
  for (const listed_participation &vlan : vlans)
    entries.push_back(entry(vlan.position, "participation", {number("vlanId", vlan.vlanId)}));
  return expected_data({branch("participations", entries)});
}

/* What an unusable value comes to, for most operations. */
inline Answers expected_parameter_error() {
  return expected_platform_error(OPEN_E_PARAM);
}

class InterfaceTest : public PlatformTest {
protected:
  ~InterfaceTest() override {
    for (const std::string &port : pulled) lab("cable in " + port);
  }

  Answers get(const std::string &uri) const { return call(interface_api_handler, "GET", uri); }
  Answers put(const std::string &uri, const std::string &query) const {
    return call(interface_api_handler, "PUT", uri, query);
  }
  /* The request is answered with success and this message, and the operation returns 1, as often as it is
   * made. */
  void expect_done(const char *method, const std::string &uri, const std::string &query,
                   const std::string &message) const {
    for (const char *format : {"xml", "json"}) {
      FakeRequest request(method, uri, with_format(query, format));
      EXPECT_EQ(interface_api_handler(handle, request.conn()), 1) << method << " " << uri << " " << query;
      Answers expected = expected_answers(0, message);
      EXPECT_EQ(answer_body(request, format), *format == 'x' ? expected.xml : expected.json);
    }
  }

  void pull_cable(const std::string &port) {
    lab("cable out " + port);
    pulled.push_back(port);
  }
  void create_vlans(const std::vector<uint32_t> &vlans) const {
    for (uint32_t vlan : vlans) EXPECT_EQ(rpcclt_openapiVlanCreate(handle, vlan), OPEN_E_NONE) << vlan;
  }

  std::vector<std::string> pulled;
};

#endif
