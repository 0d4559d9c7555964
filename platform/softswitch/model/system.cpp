/* Settings of the switch as a whole; see system.h. */
#include "platform/softswitch/model/system.h"

#include "platform/softswitch/model/switch.h"
#include "platform/softswitch/model/text.h"

#include <algorithm>

namespace softswitch {

void system_reset(switch_model &model) {
  *model.system.edit() = system_table();
}

/* --- Names ---------------------------------------------------------------------------------------------- */

/* In ASCII, whatever the locale. */
static bool is_letter_or_digit(char byte) {
  return (byte >= 'a' && byte <= 'z') || (byte >= 'A' && byte <= 'Z') || (byte >= '0' && byte <= '9');
}

static bool hostname_valid(std::string_view name) {
  auto allowed = [](char byte) {
    return is_letter_or_digit(byte) || byte == '-' || byte == '_' || byte == '.';
  };
  return !name.empty() && name.size() <= hostname_max && is_letter_or_digit(name[0]) &&
         std::all_of(name.begin(), name.end(), allowed);
}

open_error_t system_set_hostname(switch_model &model, std::string_view name) {
  if (!hostname_valid(name)) return OPEN_E_PARAM;
  set_member(model, &switch_model::system, &system_table::hostname, std::string(name));
  return OPEN_E_NONE;
}

static bool is_printable_ascii(char byte) {
  return byte >= ' ' && byte <= '~';
}

open_error_t system_set_prompt(switch_model &model, std::string_view prompt) {
  bool valid = !prompt.empty() && prompt.size() <= prompt_max &&
               std::all_of(prompt.begin(), prompt.end(), is_printable_ascii);
  if (!valid) return OPEN_E_PARAM;
  set_member(model, &switch_model::system, &system_table::prompt, std::string(prompt));
  return OPEN_E_NONE;
}

void system_remove_prompt(switch_model &model) {
  set_member(model, &switch_model::system, &system_table::prompt, std::string());
}

/* --- Consoles ------------------------------------------------------------------------------------------- */

open_error_t system_set_serial_timeout(switch_model &model, uint32_t minutes) {
  if (minutes > idle_minutes_max) return OPEN_E_PARAM;
  set_member(model, &switch_model::system, &system_table::serial_timeout, minutes);
  return OPEN_E_NONE;
}

void system_set_telnet(switch_model &model, bool on) {
  set_member(model, &switch_model::system, &system_table::telnet, on);
}

/* --- The network port ----------------------------------------------------------------------------------- */

bool network_port_address_valid(const open_inet_pfx_t &address) {
  return address.ipAddr.family == OPEN_AF_INET && address.pfxLen < ipv4_bits && inet_is_host(address);
}

bool network_port_gateway_valid(const open_inet_pfx_t &address, uint32_t gateway) {
  open_inet_pfx_t wanted = {inet_ipv4(gateway), address.pfxLen, 0};
  return gateway == 0 || (inet_is_host(wanted) && inet_overlap(address, wanted));
}

/* Gives the network port other settings, as a change when they are other ones. */
static void set_network_port(switch_model &model, const network_port &wanted) {
  const network_port &present = model.system->network_port;
  bool same = present.protocol == wanted.protocol && present.gateway == wanted.gateway &&
              inet_same_prefix(present.address, wanted.address);
  if (same) return;
  next_change(model);
  model.system.edit()->network_port = wanted;
}

open_error_t network_port_set_address(switch_model &model, const open_inet_pfx_t &address, uint32_t gateway) {
  if (!network_port_address_valid(address) || !network_port_gateway_valid(address, gateway))
    return OPEN_E_PARAM;
  if (model.system->network_port.protocol != OPEN_NETWORK_PROTOCOL_NONE) return OPEN_E_FAIL;
  set_network_port(model, {OPEN_NETWORK_PROTOCOL_NONE, address, gateway});
  return OPEN_E_NONE;
}

void network_port_remove_address(switch_model &model) {
  set_network_port(model, {model.system->network_port.protocol, {}, 0});
}

void network_port_set_protocol(switch_model &model, OPEN_NETWORK_PROTOCOL_t protocol) {
  if (model.system->network_port.protocol != protocol) set_network_port(model, {protocol, {}, 0});
}

} // namespace softswitch
