/* What an interface is by itself; see interface_settings.h. */
#include "platform/softswitch/model/interface_settings.h"

#include "platform/softswitch/model/switch.h"
#include "platform/softswitch/model/text.h"

#include <stdio.h>

namespace softswitch {

static const interface_entry &entry_of(const switch_model &model, uint32_t number) {
  return model.interfaces->at[number];
}

static const port_profile &profile_of(const switch_model &model, uint32_t port) {
  return model.profile->ports[port - port_first];
}

/* --- Which interface can be set how --------------------------------------------------------------------- */

/* Ports, LAGs and loopbacks: what can be disabled, and described. */
static bool is_administered(const switch_model &, uint32_t number) {
  OPEN_INTF_TYPE_t type = interface_type(number);
  return type == OPEN_INTF_TYPE_PHY || type == OPEN_INTF_TYPE_LAG || type == OPEN_INTF_TYPE_LOOPBACK;
}

/* The checks of a setting in their order: the interface, the value, whether that kind of interface has it. */
static open_error_t check_setting(const switch_model &model, uint32_t number, bool value_is_good,
                                  bool (*has_setting)(const switch_model &, uint32_t number)) {
  open_error_t rc = interface_check(model, number);
  if (rc != OPEN_E_NONE) return rc;
  if (!value_is_good) return OPEN_E_PARAM;
  return has_setting(model, number) ? OPEN_E_NONE : OPEN_E_UNAVAIL;
}

/* --- States --------------------------------------------------------------------------------------------- */

open_error_t interface_set_enabled(switch_model &model, uint32_t number, uint32_t state) {
  open_error_t rc = check_setting(model, number, state <= OPEN_ENABLE, is_administered);
  if (rc != OPEN_E_NONE) return rc;
  bool enabled = state == OPEN_ENABLE;
  if (entry_of(model, number).enabled != enabled) interface_edit(model, number)->enabled = enabled;
  return OPEN_E_NONE;
}

open_error_t interface_set_soft_shutdown(switch_model &model, uint32_t number, uint32_t state) {
  open_error_t rc = check_setting(model, number, state <= OPEN_ENABLE, interface_is_port);
  if (rc != OPEN_E_NONE) return rc;
  bool shut = state == OPEN_ENABLE;
  if (entry_of(model, number).soft_shutdown != shut) interface_edit(model, number)->soft_shutdown = shut;
  return OPEN_E_NONE;
}

static bool lag_has_link(const switch_model &model, uint32_t lag) {
  if (!entry_of(model, lag).enabled) return false;
  for (uint32_t port = port_first; port <= port_last; port++) {
    const interface_entry &entry = entry_of(model, port);
    if (entry.exists && entry.lag == lag && entry.link_up) return true;
  }
  return false;
}

static bool vlan_has_link(const switch_model &model, uint32_t id) {
  const vlan_entry *vlan = vlan_find(model, id);
  if (!vlan) return false;
  for (uint32_t number = port_first; number <= lag_last; number++) {
    bool member = interface_switches(model, number) && vlan_has_member(model, *vlan, number);
    if (member && interface_has_link(model, number)) return true;
  }
  return false;
}

bool interface_has_link(const switch_model &model, uint32_t number) {
  switch (interface_type(number)) {
  case OPEN_INTF_TYPE_PHY:
    return entry_of(model, number).link_up;
  case OPEN_INTF_TYPE_CPU:
    return true;
  case OPEN_INTF_TYPE_LAG:
    return lag_has_link(model, number);
  case OPEN_INTF_TYPE_VLAN_RTR:
    return vlan_has_link(model, entry_of(model, number).routed_vlan);
  case OPEN_INTF_TYPE_LOOPBACK:
    return entry_of(model, number).enabled;
  }
  return false;
}

/* --- Speed ---------------------------------------------------------------------------------------------- */

static constexpr port_speed speeds[] = {
    {OPEN_PORT_HALF_10T, 10, OPEN_PORT_DUPLEX_HALF, true, false, "10-half"},
    {OPEN_PORT_FULL_10T, 10, OPEN_PORT_DUPLEX_FULL, true, false, "10-full"},
    {OPEN_PORT_HALF_100TX, 100, OPEN_PORT_DUPLEX_HALF, true, false, "100-half"},
    {OPEN_PORT_FULL_100TX, 100, OPEN_PORT_DUPLEX_FULL, true, false, "100-full"},
    {OPEN_PORT_FULL_100FX, 100, OPEN_PORT_DUPLEX_FULL, false, true, "100-fx"},
    {OPEN_PORT_FULL_1000SX, 1000, OPEN_PORT_DUPLEX_FULL, true, true, "1000"},
    {OPEN_PORT_FULL_2P5FX, 2500, OPEN_PORT_DUPLEX_FULL, true, true, "2500"},
    {OPEN_PORT_FULL_5FX, 5000, OPEN_PORT_DUPLEX_FULL, true, true, "5000"},
    {OPEN_PORT_FULL_10GSX, 10000, OPEN_PORT_DUPLEX_FULL, true, true, "10000"},
    {OPEN_PORT_FULL_25GSX, 25000, OPEN_PORT_DUPLEX_FULL, true, true, "25000"},
    {OPEN_PORT_FULL_40GSX, 40000, OPEN_PORT_DUPLEX_FULL, true, true, "40000"},
    {OPEN_PORT_FULL_50GSX, 50000, OPEN_PORT_DUPLEX_FULL, true, true, "50000"},
    {OPEN_PORT_FULL_100GSX, 100000, OPEN_PORT_DUPLEX_FULL, true, true, "100000"},
};

std::span<const port_speed> port_speeds() {
  return speeds;
}

const port_speed *port_speed_by_code(uint32_t code) {
  for (const port_speed &speed : speeds) {
    if (speed.code == code) return &speed;
  }
  return nullptr;
}

const port_speed *port_speed_by_word(std::string_view word) {
  for (const port_speed &speed : speeds) {
    if (speed.word == word) return &speed;
  }
  return nullptr;
}

/* A port's own speed, the fastest that it has. */
static OPEN_IF_SPEED_t own_speed(const port_profile &port) {
  for (const port_speed &speed : speeds) {
    bool medium = port.copper ? speed.on_copper : speed.in_cages;
    if (medium && speed.mbps == port.speed_mbps && speed.duplex == OPEN_PORT_DUPLEX_FULL) return speed.code;
  }
  return OPEN_PORT_UNKNOWN;
}

static bool has_speed(const port_profile &port, const port_speed &speed) {
  if (port.copper) return speed.on_copper && speed.mbps <= port.speed_mbps;
  bool slower_module = port.speed_mbps == 10000 && speed.mbps == 1000;
  return speed.in_cages && (speed.mbps == port.speed_mbps || slower_module);
}

void port_factory_settings(const port_profile &port, interface_entry *entry) {
  entry->speed = static_cast<uint8_t>(own_speed(port));
  entry->auto_negotiation = port.copper;
}

static void set_speed_state(switch_model &model, uint32_t number, uint32_t code, bool negotiates) {
  const interface_entry &entry = entry_of(model, number);
  if (entry.speed == code && entry.auto_negotiation == negotiates) return;
  interface_entry *changed = interface_edit(model, number);
  changed->speed = static_cast<uint8_t>(code);
  changed->auto_negotiation = negotiates;
}

open_error_t interface_set_speed(switch_model &model, uint32_t number, uint32_t code) {
  const port_speed *speed = port_speed_by_code(code);
  open_error_t rc = check_setting(model, number, speed, interface_is_port);
  if (rc != OPEN_E_NONE) return rc;
  if (!has_speed(profile_of(model, number), *speed)) return OPEN_E_UNAVAIL;
  set_speed_state(model, number, code, false);
  return OPEN_E_NONE;
}

open_error_t interface_reset_speed(switch_model &model, uint32_t number) {
  open_error_t rc = check_setting(model, number, true, interface_is_port);
  if (rc != OPEN_E_NONE) return rc;
  set_speed_state(model, number, interface_factory_speed(model, number), interface_is_copper(model, number));
  return OPEN_E_NONE;
}

open_error_t interface_set_auto_negotiation(switch_model &model, uint32_t number, uint32_t mode) {
  bool known = mode <= OPEN_PORT_AUTO_NEGOTIATE_DISABLE;
  open_error_t rc = check_setting(model, number, known, interface_is_copper);
  if (rc != OPEN_E_NONE) return rc;
  set_speed_state(model, number, entry_of(model, number).speed, mode == OPEN_PORT_AUTO_NEGOTIATE_ENABLE);
  return OPEN_E_NONE;
}

bool interface_is_copper(const switch_model &model, uint32_t number) {
  return interface_is_port(model, number) && profile_of(model, number).copper;
}

uint32_t interface_factory_speed(const switch_model &model, uint32_t number) {
  return own_speed(profile_of(model, number));
}

uint32_t interface_speed(const switch_model &model, uint32_t number) {
  if (interface_type(number) == OPEN_INTF_TYPE_LAG) return OPEN_PORT_LAG;
  if (!interface_is_port(model, number)) return OPEN_PORT_UNKNOWN;
  const interface_entry &entry = entry_of(model, number);
  return entry.auto_negotiation ? uint32_t{OPEN_PORT_AUTO_NEG} : entry.speed;
}

uint32_t interface_duplex(const switch_model &model, uint32_t number) {
  if (interface_type(number) == OPEN_INTF_TYPE_LAG) return OPEN_PORT_DUPLEX_FULL;
  if (!interface_is_port(model, number)) return OPEN_PORT_DUPLEX_UNKNOWN;
  const interface_entry &entry = entry_of(model, number);
  if (entry.auto_negotiation) return entry.link_up ? OPEN_PORT_DUPLEX_FULL : OPEN_PORT_DUPLEX_UNKNOWN;
  const port_speed *speed = port_speed_by_code(entry.speed);
  return speed ? speed->duplex : OPEN_PORT_DUPLEX_UNKNOWN;
}

uint32_t interface_auto_negotiation(const switch_model &model, uint32_t number) {
  if (!interface_is_port(model, number)) return OPEN_PORT_AUTO_NEGOTIATE_UNKNOWN;
  bool negotiates = entry_of(model, number).auto_negotiation;
  return negotiates ? OPEN_PORT_AUTO_NEGOTIATE_ENABLE : OPEN_PORT_AUTO_NEGOTIATE_DISABLE;
}

uint32_t interface_connector(const switch_model &model, uint32_t number) {
  if (!interface_is_port(model, number)) return OPEN_CONNECTOR_NONE;
  return interface_is_copper(model, number) ? OPEN_CONNECTOR_COPPER : OPEN_CONNECTOR_CAGE;
}

/* --- Frames, description, address ----------------------------------------------------------------------- */

open_error_t interface_set_mtu(switch_model &model, uint32_t number, uint32_t mtu) {
  bool in_range = mtu >= mtu_min && mtu <= mtu_max;
  open_error_t rc = check_setting(model, number, in_range, interface_switches);
  if (rc != OPEN_E_NONE) return rc;
  if (entry_of(model, number).mtu != mtu) interface_edit(model, number)->mtu = static_cast<uint16_t>(mtu);
  return OPEN_E_NONE;
}

open_error_t interface_set_description(switch_model &model, uint32_t number, std::string_view text) {
  bool good = text.size() <= description_max && !has_control_character(text);
  open_error_t rc = check_setting(model, number, good, is_administered);
  if (rc != OPEN_E_NONE) return rc;
  if (entry_of(model, number).description != text) interface_edit(model, number)->description = text;
  return OPEN_E_NONE;
}

std::string interface_mac(const switch_model &model, uint32_t number) {
  const std::string &own = model.profile->mac;
  if (!interface_switches(model, number)) return own;
  const size_t maker_part = sizeof "02:00:5E" - 1;
  unsigned bytes[3] = {0, 0, 0};
  sscanf(own.c_str() + maker_part, ":%2x:%2x:%2x", &bytes[0], &bytes[1], &bytes[2]);
  uint32_t counted = (bytes[0] << 16 | bytes[1] << 8 | bytes[2]) + number;
  char tail[sizeof ":10:00:01"];
  snprintf(tail, sizeof tail, ":%02X:%02X:%02X", counted >> 16 & 0xff, counted >> 8 & 0xff, counted & 0xff);
  return own.substr(0, maker_part) + tail;
}

} // namespace softswitch
