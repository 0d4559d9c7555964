/* The lines of the configuration language about VXLAN: what the rows of commands.cpp point to. Their order
 * there lets every state be printed: remote VTEPs come before the tenants, which all have them from the
 * moment that one is added; tenants that differ from what binding makes come before the bindings. */
#ifndef KESTREL_SOFTSWITCH_CONFIG_VXLAN_LINES_H
#define KESTREL_SOFTSWITCH_CONFIG_VXLAN_LINES_H

#include "platform/softswitch/config/language.h"

namespace softswitch {

open_error_t apply_vxlan_mode(switch_model &, std::span<const argument>, std::string *error);
open_error_t apply_no_vxlan_mode(switch_model &, std::span<const argument>, std::string *error);
void print_vxlan_mode(const config_printer &);

open_error_t apply_vxlan_udp_port(switch_model &, std::span<const argument>, std::string *error);
open_error_t apply_no_vxlan_udp_port(switch_model &, std::span<const argument>, std::string *error);
void print_vxlan_udp_port(const config_printer &);

open_error_t apply_vxlan_source(switch_model &, std::span<const argument>, std::string *error);
open_error_t apply_no_vxlan_source(switch_model &, std::span<const argument>, std::string *error);
void print_vxlan_source(const config_printer &);

open_error_t apply_remote_vtep(switch_model &, std::span<const argument>, std::string *error);
open_error_t apply_no_remote_vtep(switch_model &, std::span<const argument>, std::string *error);
void print_remote_vteps(const config_printer &);

open_error_t apply_default_group(switch_model &, std::span<const argument>, std::string *error);
open_error_t apply_no_default_group(switch_model &, std::span<const argument>, std::string *error);
void print_default_group(const config_printer &);

open_error_t apply_tenant(switch_model &, std::span<const argument>, std::string *error);
open_error_t apply_no_tenant(switch_model &, std::span<const argument>, std::string *error);
/* Prints the tenants that binding alone does not make. */
void print_tenants(const config_printer &);

/* Says that a VLAN is bound to a tenant. */
std::string tenant_binding_words(uint32_t vlan, uint32_t tenant);
open_error_t apply_tenant_vlan(switch_model &, std::span<const argument>, std::string *error);
open_error_t apply_no_tenant_vlan(switch_model &, std::span<const argument>, std::string *error);
void print_tenant_vlans(const config_printer &);

open_error_t apply_tenant_vteps(switch_model &, std::span<const argument>, std::string *error);
open_error_t apply_no_tenant_vteps(switch_model &, std::span<const argument>, std::string *error);
/* Prints the tenants that have the remote VTEPs without being bound. */
void print_tenant_vteps(const config_printer &);

open_error_t apply_tenant_group(switch_model &, std::span<const argument>, std::string *error);
open_error_t apply_no_tenant_group(switch_model &, std::span<const argument>, std::string *error);
void print_tenant_groups(const config_printer &);

} // namespace softswitch

#endif
