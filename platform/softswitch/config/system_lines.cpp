/* Applying and printing the lines about the switch as a whole; see system_lines.h. The rules are those of
 * model/system.h; here they get their words. */
#include "platform/softswitch/config/system_lines.h"

#include "platform/softswitch/config/words.h"
#include "platform/softswitch/model/inet_address.h"

namespace softswitch {

/* --- hostname <text>, prompt <text> --------------------------------------------------------------------- */

open_error_t apply_hostname(switch_model &model, std::span<const argument> arguments, std::string *error) {
  open_error_t rc = system_set_hostname(model, arguments[0].text);
  if (rc == OPEN_E_PARAM)
    *error =
        "a host name is 1 to 64 letters, digits, \"-\", \"_\" and \".\" and begins with a letter or digit";
  return rc;
}

open_error_t apply_no_hostname(switch_model &model, std::span<const argument>, std::string *) {
  return system_set_hostname(model, factory_hostname);
}

void print_hostname(const config_printer &print) {
  std::string_view name = print.model.system->hostname;
  if (name != factory_hostname) print.line({name});
}

open_error_t apply_prompt(switch_model &model, std::span<const argument> arguments, std::string *error) {
  open_error_t rc = system_set_prompt(model, arguments[0].text);
  if (rc == OPEN_E_PARAM) *error = "a prompt is 1 to 64 printable ASCII characters";
  return rc;
}

open_error_t apply_no_prompt(switch_model &model, std::span<const argument>, std::string *) {
  system_remove_prompt(model);
  return OPEN_E_NONE;
}

void print_prompt(const config_printer &print) {
  std::string_view prompt = print.model.system->prompt;
  if (!prompt.empty()) print.line({prompt});
}

/* --- serial timeout <number>, telnet server ------------------------------------------------------------- */

open_error_t apply_serial_timeout(switch_model &model, std::span<const argument> arguments,
                                  std::string *error) {
  open_error_t rc = system_set_serial_timeout(model, arguments[0].number);
  if (rc == OPEN_E_PARAM) *error = range_words("serial timeout", 0, idle_minutes_max);
  return rc;
}

open_error_t apply_no_serial_timeout(switch_model &model, std::span<const argument>, std::string *) {
  return system_set_serial_timeout(model, factory_idle_minutes);
}

void print_serial_timeout(const config_printer &print) {
  uint32_t minutes = print.model.system->serial_timeout;
  if (minutes != factory_idle_minutes) print.line({minutes});
}

open_error_t apply_telnet_server(switch_model &model, std::span<const argument>, std::string *) {
  system_set_telnet(model, true);
  return OPEN_E_NONE;
}

open_error_t apply_no_telnet_server(switch_model &model, std::span<const argument>, std::string *) {
  system_set_telnet(model, false);
  return OPEN_E_NONE;
}

void print_telnet_server(const config_printer &print) {
  if (print.model.system->telnet) print.line({});
}

/* --- network-port ip address <ip-prefix> ---------------------------------------------------------------- */

/* Why the network port was refused an address. */
static std::string refusal(open_error_t rc, const open_inet_pfx_t &address, uint32_t gateway) {
  if (rc == OPEN_E_FAIL) return "the network port obtains its address by a protocol";
  if (address.pfxLen >= ipv4_bits) return range_words("prefix length", 1, ipv4_bits - 1);
  if (!network_port_address_valid(address))
    return inet_prefix_text(address) + " is not the address of a host";
  return inet_address_text(inet_ipv4(gateway)) + " is not a host of the network of " +
         inet_prefix_text(address);
}

static open_error_t set_address(switch_model &model, const open_inet_pfx_t &address, uint32_t gateway,
                                std::string *error) {
  open_error_t rc = network_port_set_address(model, address, gateway);
  if (rc != OPEN_E_NONE) *error = refusal(rc, address, gateway);
  return rc;
}

open_error_t apply_network_port_address(switch_model &model, std::span<const argument> arguments,
                                        std::string *error) {
  return set_address(model, arguments[0].prefix, 0, error);
}

open_error_t apply_network_port_gateway(switch_model &model, std::span<const argument> arguments,
                                        std::string *error) {
  return set_address(model, arguments[0].prefix, arguments[1].prefix.ipAddr.addr.ipv4, error);
}

open_error_t apply_no_network_port_address(switch_model &model, std::span<const argument>, std::string *) {
  network_port_remove_address(model);
  return OPEN_E_NONE;
}

void print_network_port_address(const config_printer &print) {
  const network_port &port = print.model.system->network_port;
  if (port.address.ipAddr.family != OPEN_AF_NONE && port.gateway == 0) print.line({port.address});
}

void print_network_port_gateway(const config_printer &print) {
  const network_port &port = print.model.system->network_port;
  if (port.gateway != 0) print.line({port.address, inet_ipv4(port.gateway)});
}

/* --- network-port protocol bootp|dhcp ------------------------------------------------------------------- */

open_error_t apply_network_port_protocol(switch_model &model, std::span<const argument> arguments,
                                         std::string *) {
  network_port_set_protocol(model, OPEN_NETWORK_PROTOCOL_BOOTP + arguments[0].number);
  return OPEN_E_NONE;
}

open_error_t apply_no_network_port_protocol(switch_model &model, std::span<const argument>, std::string *) {
  network_port_set_protocol(model, OPEN_NETWORK_PROTOCOL_NONE);
  return OPEN_E_NONE;
}

void print_network_port_protocol(const config_printer &print) {
  OPEN_NETWORK_PROTOCOL_t protocol = print.model.system->network_port.protocol;
  if (protocol != OPEN_NETWORK_PROTOCOL_NONE) print.line({protocol - OPEN_NETWORK_PROTOCOL_BOOTP});
}

} // namespace softswitch
