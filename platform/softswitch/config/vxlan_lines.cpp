/* Applying and printing the lines about VXLAN; see vxlan_lines.h. The rules are those of model/vxlan.h; here
 * they get their words. */
#include "platform/softswitch/config/vxlan_lines.h"

#include "platform/softswitch/config/vlan_lines.h"
#include "platform/softswitch/config/words.h"
#include "platform/softswitch/model/inet_address.h"

namespace softswitch {

static std::string tenant_words(uint32_t id) {
  return "VXLAN tenant " + std::to_string(id);
}

static uint32_t ipv4_of(const argument &given) {
  return given.prefix.ipAddr.addr.ipv4;
}

static std::string address_words(uint32_t address) {
  return inet_address_text(inet_ipv4(address));
}

static std::string room_words(uint32_t limit, const char *what) {
  return "there is room for " + std::to_string(limit) + " " + what + " only";
}

/* Whether a tenant exists, with the reason when it does not. */
static open_error_t check_tenant(const switch_model &model, uint32_t id, std::string *error) {
  open_error_t rc = vxlan_tenant_check(model, id);
  if (rc == OPEN_E_NOT_FOUND) *error = tenant_words(id) + " does not exist";
  if (rc == OPEN_E_PARAM) *error = range_words("VXLAN tenant id", 1, vxlan_tenant_id_max);
  return rc;
}

/* --- vxlan mode unicast|multicast ----------------------------------------------------------------------- */

static constexpr const char mode_words[][10] = {"off", "unicast", "multicast"};

static uint32_t number_of(vxlan_mode mode) {
  return static_cast<uint32_t>(mode);
}

open_error_t apply_vxlan_mode(switch_model &model, std::span<const argument> arguments, std::string *error) {
  open_error_t rc = vxlan_set_mode(model, static_cast<vxlan_mode>(arguments[0].number + 1));
  if (rc == OPEN_E_FAIL)
    *error =
        std::string("the VXLAN mode is ") + mode_words[number_of(model.vxlan->mode)] + ": turn it off first";
  return rc;
}

open_error_t apply_no_vxlan_mode(switch_model &model, std::span<const argument>, std::string *) {
  return vxlan_set_mode(model, vxlan_mode::off);
}

void print_vxlan_mode(const config_printer &print) {
  vxlan_mode mode = print.model.vxlan->mode;
  if (mode != vxlan_mode::off) print.line({number_of(mode) - 1});
}

/* --- vxlan udp-port <number> ---------------------------------------------------------------------------- */

open_error_t apply_vxlan_udp_port(switch_model &model, std::span<const argument> arguments,
                                  std::string *error) {
  open_error_t rc = vxlan_set_udp_port(model, arguments[0].number);
  if (rc == OPEN_E_PARAM) *error = range_words("UDP port", 1, udp_port_max);
  return rc;
}

open_error_t apply_no_vxlan_udp_port(switch_model &model, std::span<const argument>, std::string *) {
  return vxlan_set_udp_port(model, vxlan_factory_udp_port);
}

void print_vxlan_udp_port(const config_printer &print) {
  uint32_t port = print.model.vxlan->udp_port;
  if (port != vxlan_factory_udp_port) print.line({port});
}

/* --- vxlan source-interface <interface> ----------------------------------------------------------------- */

open_error_t apply_vxlan_source(switch_model &model, std::span<const argument> arguments,
                                std::string *error) {
  uint32_t interface = arguments[0].number;
  open_error_t rc = vxlan_set_source_interface(model, interface);
  if (rc == OPEN_E_UNAVAIL) *error = interface_name(model, interface) + " cannot have IP addresses";
  return rc;
}

open_error_t apply_no_vxlan_source(switch_model &model, std::span<const argument>, std::string *) {
  return vxlan_set_source_interface(model, 0);
}

void print_vxlan_source(const config_printer &print) {
  uint32_t interface = print.model.vxlan->source_interface;
  if (interface != 0) print.line({interface});
}

/* --- vxlan remote-vtep <ip> ----------------------------------------------------------------------------- */

open_error_t apply_remote_vtep(switch_model &model, std::span<const argument> arguments, std::string *error) {
  uint32_t address = ipv4_of(arguments[0]);
  open_error_t rc = vxlan_remote_vtep_add(model, address);
  if (rc == OPEN_E_PARAM) *error = address_words(address) + " is not the address of a host";
  if (rc == OPEN_E_FULL) *error = room_words(model.limits.remote_vteps, "remote VTEPs");
  return rc;
}

open_error_t apply_no_remote_vtep(switch_model &model, std::span<const argument> arguments,
                                  std::string *error) {
  uint32_t address = ipv4_of(arguments[0]);
  open_error_t rc = vxlan_remote_vtep_remove(model, address);
  if (rc == OPEN_E_NOT_FOUND) *error = address_words(address) + " is no remote VTEP";
  return rc;
}

void print_remote_vteps(const config_printer &print) {
  for (uint32_t address : print.model.vxlan->remote_vteps) print.line({inet_ipv4(address)});
}

/* --- vxlan multicast-group <ip> ------------------------------------------------------------------------- */

/* The address of no group, 0.0.0.0, is not the way to say that there is none. */
static open_error_t check_group(uint32_t group, std::string *error) {
  if (vxlan_group_valid(group)) return OPEN_E_NONE;
  *error = range_words("multicast group", address_words(vxlan_group_min), address_words(vxlan_group_max));
  return OPEN_E_PARAM;
}

open_error_t apply_default_group(switch_model &model, std::span<const argument> arguments,
                                 std::string *error) {
  uint32_t group = ipv4_of(arguments[0]);
  open_error_t rc = check_group(group, error);
  if (rc != OPEN_E_NONE) return rc;
  rc = vxlan_set_default_group(model, group);
  if (rc == OPEN_E_EXISTS)
    *error = address_words(group) + " is the multicast group of " +
             tenant_words(vxlan_tenant_of_group(model, group));
  return rc;
}

open_error_t apply_no_default_group(switch_model &model, std::span<const argument>, std::string *) {
  return vxlan_set_default_group(model, 0);
}

void print_default_group(const config_printer &print) {
  uint32_t group = print.model.vxlan->default_group;
  if (group != 0) print.line({inet_ipv4(group)});
}

/* --- vxlan tenant <number> ------------------------------------------------------------------------------ */

/* Says why a tenant was not made; passes the code on. */
static open_error_t explain_making(open_error_t rc, const switch_model &model, uint32_t id,
                                   std::string *error) {
  if (rc == OPEN_E_FULL) *error = room_words(model.limits.vxlan_tenants, "VXLAN tenants");
  if (rc == OPEN_E_PARAM) check_tenant(model, id, error);
  return rc;
}

/* A tenant that is there already stays as it is: the line says what shall be, not what shall be done. */
open_error_t apply_tenant(switch_model &model, std::span<const argument> arguments, std::string *error) {
  uint32_t id = arguments[0].number;
  open_error_t rc = vxlan_tenant_make(model, id);
  return rc == OPEN_E_EXISTS ? OPEN_E_NONE : explain_making(rc, model, id, error);
}

open_error_t apply_no_tenant(switch_model &model, std::span<const argument> arguments, std::string *error) {
  open_error_t rc = check_tenant(model, arguments[0].number, error);
  return rc == OPEN_E_NONE ? vxlan_tenant_remove(model, arguments[0].number) : rc;
}

void print_tenants(const config_printer &print) {
  for (const vxlan_tenant &tenant : print.model.vxlan->tenants) {
    if (tenant.vlan == 0 || !tenant.remote_vteps) print.line({tenant.id});
  }
}

/* --- vxlan tenant <number> vlan <vlan> ------------------------------------------------------------------ */

std::string tenant_binding_words(uint32_t vlan, uint32_t tenant) {
  return vlan_words(vlan) + " is bound to " + tenant_words(tenant);
}

open_error_t apply_tenant_vlan(switch_model &model, std::span<const argument> arguments, std::string *error) {
  uint32_t id = arguments[0].number, vlan = arguments[1].number;
  open_error_t rc = vxlan_tenant_bind(model, id, vlan);
  if (rc == OPEN_E_FAIL) {
    uint32_t other = vxlan_tenant_of_vlan(model, vlan);
    *error = other != 0 ? tenant_binding_words(vlan, other)
                        : tenant_binding_words(vxlan_tenant_find(model, id)->vlan, id);
  }
  return explain_vlan(explain_making(rc, model, id, error), vlan, error);
}

open_error_t apply_no_tenant_vlan(switch_model &model, std::span<const argument> arguments,
                                  std::string *error) {
  uint32_t id = arguments[0].number, vlan = arguments[1].number;
  open_error_t rc = check_tenant(model, id, error);
  if (rc != OPEN_E_NONE) return rc;
  rc = vxlan_tenant_unbind(model, id, vlan);
  if (rc == OPEN_E_NOT_FOUND) *error = vlan_words(vlan) + " is not bound to " + tenant_words(id);
  return rc;
}

void print_tenant_vlans(const config_printer &print) {
  for (const vxlan_tenant &tenant : print.model.vxlan->tenants) {
    if (tenant.vlan != 0) print.line({tenant.id, tenant.vlan});
  }
}

/* --- vxlan tenant <number> remote-vteps ----------------------------------------------------------------- */

static open_error_t set_remote_vteps(switch_model &model, uint32_t id, bool has, std::string *error) {
  open_error_t rc = check_tenant(model, id, error);
  return rc == OPEN_E_NONE ? vxlan_tenant_set_remote_vteps(model, id, has) : rc;
}

open_error_t apply_tenant_vteps(switch_model &model, std::span<const argument> arguments,
                                std::string *error) {
  return set_remote_vteps(model, arguments[0].number, true, error);
}

open_error_t apply_no_tenant_vteps(switch_model &model, std::span<const argument> arguments,
                                   std::string *error) {
  return set_remote_vteps(model, arguments[0].number, false, error);
}

void print_tenant_vteps(const config_printer &print) {
  for (const vxlan_tenant &tenant : print.model.vxlan->tenants) {
    if (tenant.vlan == 0 && tenant.remote_vteps) print.line({tenant.id});
  }
}

/* --- vxlan tenant <number> multicast-group <ip> --------------------------------------------------------- */

open_error_t apply_tenant_group(switch_model &model, std::span<const argument> arguments,
                                std::string *error) {
  uint32_t id = arguments[0].number, group = ipv4_of(arguments[1]);
  open_error_t rc = check_group(group, error);
  if (rc == OPEN_E_NONE) rc = check_tenant(model, id, error);
  if (rc != OPEN_E_NONE) return rc;
  rc = vxlan_tenant_set_group(model, id, group);
  if (rc == OPEN_E_EXISTS) *error = address_words(group) + " is the default multicast group";
  return rc;
}

open_error_t apply_no_tenant_group(switch_model &model, std::span<const argument> arguments,
                                   std::string *error) {
  open_error_t rc = check_tenant(model, arguments[0].number, error);
  return rc == OPEN_E_NONE ? vxlan_tenant_set_group(model, arguments[0].number, 0) : rc;
}

void print_tenant_groups(const config_printer &print) {
  for (const vxlan_tenant &tenant : print.model.vxlan->tenants) {
    if (tenant.group != 0) print.line({tenant.id, inet_ipv4(tenant.group)});
  }
}

} // namespace softswitch
