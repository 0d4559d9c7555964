/* Settings of the switch as a whole: its name, its consoles, and the network port by which it is managed
 * in-band. None of them belongs to a VLAN or interface.
 *
 * IPv4 addresses are numbers in host byte order. An operation that finds everything as wanted changes
 * nothing. */
#ifndef KESTREL_SOFTSWITCH_MODEL_SYSTEM_H
#define KESTREL_SOFTSWITCH_MODEL_SYSTEM_H

#include "platform/api/openapi_system.h"
#include "platform/softswitch/model/inet_address.h"
#include "platform/softswitch/model/limits.h"

#include <cstdint>
#include <string>
#include <string_view>

namespace softswitch {

struct switch_model;

inline constexpr std::string_view factory_hostname = "kestrel";

struct network_port {
  OPEN_NETWORK_PROTOCOL_t protocol = OPEN_NETWORK_PROTOCOL_NONE; /* by which it obtains its address */
  open_inet_pfx_t address = {};                                  /* family OPEN_AF_NONE: none */
  uint32_t gateway = 0;                                          /* 0: none */
};

struct system_table {
  std::string hostname{factory_hostname};
  std::string prompt; /* empty: none of its own */
  uint32_t serial_timeout = factory_idle_minutes;
  bool telnet = false;
  struct network_port network_port;
};

/* Returns everything to factory state. interfaces_reset() notes the change. */
void system_reset(switch_model &model);

/* OPEN_E_PARAM: not 1..64 letters, digits, "-", "_" and ".", the first of them a letter or digit. */
open_error_t system_set_hostname(switch_model &model, std::string_view name);
/* OPEN_E_PARAM: not 1..64 printable ASCII characters. */
open_error_t system_set_prompt(switch_model &model, std::string_view prompt);
void system_remove_prompt(switch_model &model);
/* In minutes. OPEN_E_PARAM: above idle_minutes_max. */
open_error_t system_set_serial_timeout(switch_model &model, uint32_t minutes);
void system_set_telnet(switch_model &model, bool on);

/* Whether the network port can have an address: a host's in IPv4, with a prefix of 1..31 bits. */
bool network_port_address_valid(const open_inet_pfx_t &address);
/* Whether this can be the gateway of a network port with an address that is valid: none (0), or a host of the
 * same network. */
bool network_port_gateway_valid(const open_inet_pfx_t &address, uint32_t gateway);
/* Gives the network port address and gateway. OPEN_E_PARAM: not valid. OPEN_E_FAIL: a protocol is set. */
open_error_t network_port_set_address(switch_model &model, const open_inet_pfx_t &address, uint32_t gateway);
/* Removes both. */
void network_port_remove_address(switch_model &model);
/* Sets the protocol, which is valid; any but OPEN_NETWORK_PROTOCOL_NONE removes address and gateway. */
void network_port_set_protocol(switch_model &model, OPEN_NETWORK_PROTOCOL_t protocol);

} // namespace softswitch

#endif
