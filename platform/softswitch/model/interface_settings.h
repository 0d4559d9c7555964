/* What an interface is by itself: administrative state, link, speed, MTU, description, MAC address. Numbers,
 * names and walks are interface.h.
 *
 * The functions that read take an interface that exists. Those that set answer, unless they say otherwise,
 * what interface_check() does, then OPEN_E_PARAM for a value that no interface can have, then OPEN_E_UNAVAIL
 * when an interface of this kind cannot be set. One that finds everything as wanted changes nothing, so
 * nothing becomes pending. */
#ifndef KESTREL_SOFTSWITCH_MODEL_INTERFACE_SETTINGS_H
#define KESTREL_SOFTSWITCH_MODEL_INTERFACE_SETTINGS_H

#include "platform/api/openapi_if.h"

#include <cstdint>
#include <span>
#include <string>
#include <string_view>

namespace softswitch {

struct interface_entry;
struct port_profile;
struct switch_model;

/* --- Factory state -------------------------------------------------------------------------------------- */

/* Gives a port the settings that depend on what it is made of: its own speed; auto-negotiation for copper. */
void port_factory_settings(const port_profile &port, interface_entry *entry);

/* --- States --------------------------------------------------------------------------------------------- */

/* `state` is OPEN_CONTROL_t. Ports, LAGs and loopbacks can be disabled. */
open_error_t interface_set_enabled(switch_model &model, uint32_t number, uint32_t state);
/* `state` is OPEN_CONTROL_t, enabled for shut down. Ports have it. */
open_error_t interface_set_soft_shutdown(switch_model &model, uint32_t number, uint32_t state);

/* Whether the link is up: of a port as the data plane reports, of a LAG when it is enabled and a member has
 * link, of a VLAN routing interface when a member of its VLAN has, of a loopback when it is enabled, of the
 * CPU always. */
bool interface_has_link(const switch_model &model, uint32_t number);

/* --- Speed ---------------------------------------------------------------------------------------------- */

/* A speed that a port can be set to. */
struct port_speed {
  OPEN_IF_SPEED_t code;
  uint32_t mbps;
  OPEN_PORT_DUPLEX_t duplex;
  bool on_copper; /* copper ports have it, unless it is above their own */
  bool in_cages;  /* cages have it, when it is their own */
  std::string_view word;
};

/* All of them, in ascending order. */
std::span<const port_speed> port_speeds();
/* The speed with a code (OPEN_IF_SPEED_t) or a word; nullptr when there is none. */
const port_speed *port_speed_by_code(uint32_t code);
const port_speed *port_speed_by_word(std::string_view word);

/* Sets a port's fixed speed and ends auto-negotiation. OPEN_E_PARAM: not the code of a port's speed.
 * OPEN_E_UNAVAIL: not a port, or not a speed of this one. */
open_error_t interface_set_speed(switch_model &model, uint32_t number, uint32_t code);
/* Returns a port's fixed speed and auto-negotiation to factory state. OPEN_E_UNAVAIL: not a port. */
open_error_t interface_reset_speed(switch_model &model, uint32_t number);
/* `mode` is OPEN_PORT_AUTO_NEG_t without unknown. Copper ports have it. */
open_error_t interface_set_auto_negotiation(switch_model &model, uint32_t number, uint32_t mode);

bool interface_is_copper(const switch_model &model, uint32_t number);
/* The fixed speed that a port has in factory state, OPEN_IF_SPEED_t. */
uint32_t interface_factory_speed(const switch_model &model, uint32_t number);

/* OPEN_IF_SPEED_t, OPEN_PORT_DUPLEX_t, OPEN_PORT_AUTO_NEG_t and OPEN_CONNECTOR_TYPE_t of any interface, as
 * openapi_if.h says. */
uint32_t interface_speed(const switch_model &model, uint32_t number);
uint32_t interface_duplex(const switch_model &model, uint32_t number);
uint32_t interface_auto_negotiation(const switch_model &model, uint32_t number);
uint32_t interface_connector(const switch_model &model, uint32_t number);

/* --- Frames, description, address ----------------------------------------------------------------------- */

/* Ports and LAGs have an MTU of their own. OPEN_E_PARAM: outside 1518..12270. */
open_error_t interface_set_mtu(switch_model &model, uint32_t number, uint32_t mtu);

/* Ports, LAGs and loopbacks have a description; empty removes it. OPEN_E_PARAM: more than 64 bytes, or a
 * control character. */
open_error_t interface_set_description(switch_model &model, uint32_t number, std::string_view text);

/* "02:00:5E:10:00:01". Ports and LAGs have one each: the switch's own plus their number, counted in its last
 * three bytes, so that the maker's part stays. All others have the switch's own. */
std::string interface_mac(const switch_model &model, uint32_t number);

} // namespace softswitch

#endif
