/* What the tests of interfaces by themselves share: every function of the C interface about them, as tables,
 * and a fixture that reads all that it says of one. */
#ifndef KESTREL_TESTS_INTERFACE_TEST_SUPPORT_H
#define KESTREL_TESTS_INTERFACE_TEST_SUPPORT_H

#include "platform/api/openapi_if.h"
#include "tests/unit/platform/mixed_ports.h"

#include <functional>
#include <string.h>

using handle_t = openapiClientHandle_t;
using read_function = open_error_t (*)(handle_t *, uint32_t, uint32_t *);
using text_function = open_error_t (*)(handle_t *, uint32_t, open_buffdesc *);

inline constexpr uint32_t copper_port = 2, cage = 8, cpu = 55, lag = 56, loopback = 120, vlan_routing = 226;
inline constexpr uint32_t one_of_each_type[] = {copper_port, cage, cpu, lag, loopback, vlan_routing};

inline char buffer[256];
inline open_buffdesc text;
inline uint32_t value, value2;

/* A text buffer to fill, or a text going in. */
inline open_buffdesc *with(const char *content = nullptr) {
  memset(buffer, 0, sizeof buffer);
  if (content) strcpy(buffer, content);
  text = {content ? static_cast<uint32_t>(strlen(content)) : static_cast<uint32_t>(sizeof buffer), buffer};
  return &text;
}

/* --- All functions -------------------------------------------------------------------------------------- */

struct function_row {
  const char *name;
  std::function<open_error_t(handle_t *, uint32_t interface)> call;
};

/* Functions that read something of one interface. */
inline const function_row reading[] = {
    {"openapiIfNameGet", [](auto *h, auto i) { return openapiIfNameGet(h, i, with()); }},
    {"rpcclt_openapiIfMacAddrGet", [](auto *h, auto i) { return rpcclt_openapiIfMacAddrGet(h, i, with()); }},
    {"rpcclt_openapiIfDescrSizeGet",
     [](auto *h, auto i) { return rpcclt_openapiIfDescrSizeGet(h, i, &value); }},
    {"rpcclt_openapiIfDescrGet", [](auto *h, auto i) { return rpcclt_openapiIfDescrGet(h, i, with()); }},
    {"openapiIfAdminStateGet", [](auto *h, auto i) { return openapiIfAdminStateGet(h, i, &value); }},
    {"rpcclt_openapiIfSoftShutdownStateGet",
     [](auto *h, auto i) { return rpcclt_openapiIfSoftShutdownStateGet(h, i, &value); }},
    {"openapiIfLinkStateGet", [](auto *h, auto i) { return openapiIfLinkStateGet(h, i, &value); }},
    {"openapiIfSpeedGet", [](auto *h, auto i) { return openapiIfSpeedGet(h, i, &value); }},
    {"openapiIfDuplexModeGet", [](auto *h, auto i) { return openapiIfDuplexModeGet(h, i, &value); }},
    {"openapiIfAutoNegGet", [](auto *h, auto i) { return openapiIfAutoNegGet(h, i, &value); }},
    {"rpcclt_openapiIfConnectorTypeGet",
     [](auto *h, auto i) { return rpcclt_openapiIfConnectorTypeGet(h, i, &value); }},
    {"openapiIfMtuSizeGet", [](auto *h, auto i) { return openapiIfMtuSizeGet(h, i, &value); }},
};

/* Functions that change something of one interface, with what a copper port can be set to. */
inline const function_row setting[] = {
    {"rpcclt_openapiIfDescrSet", [](auto *h, auto i) { return rpcclt_openapiIfDescrSet(h, i, with("x")); }},
    {"rpcclt_openapiIfAdminStateSet",
     [](auto *h, auto i) { return rpcclt_openapiIfAdminStateSet(h, i, OPEN_DISABLE); }},
    {"rpcclt_openapiIfSoftShutdownStateSet",
     [](auto *h, auto i) { return rpcclt_openapiIfSoftShutdownStateSet(h, i, OPEN_ENABLE); }},
    {"rpcclt_openapiIfSpeedSet",
     [](auto *h, auto i) { return rpcclt_openapiIfSpeedSet(h, i, OPEN_PORT_HALF_10T); }},
    {"rpcclt_openapiIfAutoNegSet",
     [](auto *h, auto i) { return rpcclt_openapiIfAutoNegSet(h, i, OPEN_PORT_AUTO_NEGOTIATE_DISABLE); }},
    {"rpcclt_openapiIfMtuSizeSet", [](auto *h, auto i) { return rpcclt_openapiIfMtuSizeSet(h, i, 9000); }},
};

/* --- Values --------------------------------------------------------------------------------------------- */

/* What the C interface says of an interface, in the order of the header. */
struct shown {
  std::string name, mac, description;
  uint32_t enabled, soft_shutdown, link, speed, duplex, auto_negotiation, connector, mtu;
  bool operator==(const shown &) const = default;
};

inline void PrintTo(const shown &s, std::ostream *out) {
  *out << s.name << ' ' << s.mac << " \"" << s.description << "\" enabled " << s.enabled << " soft "
       << s.soft_shutdown << " link " << s.link << " speed " << s.speed << " duplex " << s.duplex << " auto "
       << s.auto_negotiation << " connector " << s.connector << " mtu " << s.mtu;
}

class Interface : public MixedPorts {
protected:
  uint32_t read(read_function get, uint32_t interface) {
    uint32_t got = 99;
    EXPECT_EQ(get(&handle, interface, &got), OPEN_E_NONE) << interface;
    return got;
  }
  std::string read_text(text_function get, uint32_t interface) {
    EXPECT_EQ(get(&handle, interface, with()), OPEN_E_NONE) << interface;
    return buffer;
  }
  std::string description(uint32_t interface) { return read_text(rpcclt_openapiIfDescrGet, interface); }
  open_error_t describe(uint32_t interface, std::string words) {
    open_buffdesc in = {static_cast<uint32_t>(words.size()), words.data()};
    return rpcclt_openapiIfDescrSet(&handle, interface, &in);
  }
  bool up(uint32_t interface) { return read(openapiIfLinkStateGet, interface) == OPEN_LINK_UP; }
  void settle() { ASSERT_TRUE(softswitch::wait_applied(patience_ms)); }

  shown all_of(uint32_t interface) {
    return {read_text(openapiIfNameGet, interface),
            read_text(rpcclt_openapiIfMacAddrGet, interface),
            description(interface),
            read(openapiIfAdminStateGet, interface),
            read(rpcclt_openapiIfSoftShutdownStateGet, interface),
            read(openapiIfLinkStateGet, interface),
            read(openapiIfSpeedGet, interface),
            read(openapiIfDuplexModeGet, interface),
            read(openapiIfAutoNegGet, interface),
            read(rpcclt_openapiIfConnectorTypeGet, interface),
            read(openapiIfMtuSizeGet, interface)};
  }
};

#endif
