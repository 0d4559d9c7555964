/* Tests of the port MAC locking module: the documents it answers with. */
#ifndef KESTREL_TESTS_MODULES_PML_FIXTURE_H
#define KESTREL_TESTS_MODULES_PML_FIXTURE_H

#include "modules/rest_module_pml.h"
#include "platform/api/openapi_pml.h"
#include "platform/api/openapi_vlan.h"
#include "tests/support/platform_fixture.h"
#include "tests/support/result_data.h"
#include "tests/unit/modules/bent_platform.h"

struct static_mac {
  std::string address;
  unsigned vlanId;
  const char *sticky;
};

/* GET /pml/if/{ifNum}/mac. */
inline Answers expected_macs(const std::vector<static_mac> &macs) {
  std::vector<result_node> entries;
  for (const static_mac &mac : macs) {
    entries.push_back(
        entry(static_cast<unsigned>(entries.size()) + 1, "mac",
              {text("macAddr", mac.address), number("vlan", mac.vlanId), text("sticky", mac.sticky)}));
  }
  return expected_data({branch("interface", entries)}, "Get interface static mac successfully.");
}

/* GET /pml/if/{ifNum}/sticky. */
inline Answers expected_sticky(const std::string &sticky) {
  return expected_data({text("sticky", sticky)}, "Get interface sticky mode successfully.");
}

class PmlTest : public PlatformTest {
protected:
  PmlTest() {
    lower_limit("static-macs", 20);
    EXPECT_EQ(rpcclt_openapiVlanCreate(handle, 10), OPEN_E_NONE);
  }

  Answers get(const std::string &uri) const { return call(pml_api_handler, "GET", uri); }
  /* One request that succeeds: the operation returns 1. Its answer. */
  std::string done(const char *method, const std::string &uri, const std::string &query,
                   const char *format = "xml") const {
    FakeRequest request(method, uri, with_format(query, format));
    EXPECT_EQ(pml_api_handler(handle, request.conn()), 1) << method << " " << uri << " " << query;
    return answer_body(request, format);
  }
  void lock(uint32_t ifNum, std::string mac, uint32_t vlanId, uint32_t sticky = 0) const {
    open_buffdesc text = {static_cast<uint32_t>(mac.size()), mac.data()};
    EXPECT_EQ(rpcclt_openapiPmlIntfStaticEntryAdd(handle, ifNum, &text, vlanId, sticky), OPEN_E_NONE) << mac;
  }
};

#endif
