/* VXLAN (RFC 7348): layer-2 segments ("tenants") carried over the routed network between tunnel endpoints
 * (VTEPs). One instance; what of it is in force is said by the mode, and all else can be set whatever that
 * is. platform/api/openapi_vxlan.h has the words.
 *
 * Addresses are IPv4, numbers in host byte order. Unless a function says otherwise: OPEN_E_PARAM for a tenant
 * id outside 1..16777214 or a VLAN id outside 1..4094, OPEN_E_NOT_FOUND when there is no such tenant, VLAN or
 * interface. An operation that finds everything as wanted changes nothing. A tenant that is bound to a VLAN,
 * or no longer, makes the VLAN pending; all else belongs to no VLAN or interface. */
#ifndef KESTREL_SOFTSWITCH_MODEL_VXLAN_H
#define KESTREL_SOFTSWITCH_MODEL_VXLAN_H

#include "platform/api/openapi_common.h"
#include "platform/softswitch/model/limits.h"

#include <cstdint>
#include <set>
#include <vector>

namespace softswitch {

struct switch_model;

/* In the order of the words of the configuration language, `off` before them. */
enum class vxlan_mode : uint8_t { off, unicast, multicast };

struct vxlan_tenant {
  uint32_t id = 0;           /* VXLAN network identifier */
  uint32_t group = 0;        /* its own multicast group; 0: none */
  uint16_t vlan = 0;         /* that it is bound to; 0: none */
  bool remote_vteps = false; /* has all remote VTEPs; otherwise none of them */
};

struct vxlan_table {
  vxlan_mode mode = vxlan_mode::off;
  uint32_t udp_port = vxlan_factory_udp_port;
  uint32_t source_interface = 0; /* 0: none */
  uint32_t default_group = 0;    /* 0: none */
  std::set<uint32_t> remote_vteps;
  std::vector<vxlan_tenant> tenants; /* in order of id */
};

/* Returns everything to factory state. interfaces_reset() and vlans_reset() note the change. */
void vxlan_reset(switch_model &model);

/* --- The instance --------------------------------------------------------------------------------------- */

/* OPEN_E_FAIL: the other mode is in force. It must be turned off first. */
open_error_t vxlan_set_mode(switch_model &model, vxlan_mode mode);
/* OPEN_E_PARAM: outside 1..65535. */
open_error_t vxlan_set_udp_port(switch_model &model, uint32_t port);

/* 0 sets none; otherwise answers as interface_addressable_check(). */
open_error_t vxlan_set_source_interface(switch_model &model, uint32_t interface);
/* Whether it is the source interface, which cannot be removed. */
bool vxlan_uses_interface(const switch_model &model, uint32_t interface);

/* --- Tenants -------------------------------------------------------------------------------------------- */

bool vxlan_tenant_id_valid(uint32_t id);
/* nullptr when there is none. */
const vxlan_tenant *vxlan_tenant_find(const switch_model &model, uint32_t id);
/* The same as a result. */
open_error_t vxlan_tenant_check(const switch_model &model, uint32_t id);
/* The first tenant with an id above `after`, which may be any number; nullptr when there is none. */
const vxlan_tenant *vxlan_tenant_next(const switch_model &model, uint32_t after);
/* The id of the tenant that is bound to a VLAN; 0 when none is. */
uint32_t vxlan_tenant_of_vlan(const switch_model &model, uint32_t vlan);

/* Makes a tenant without VLAN, remote VTEPs and group. OPEN_E_EXISTS: it exists. OPEN_E_FULL: no room. */
open_error_t vxlan_tenant_make(switch_model &model, uint32_t id);
/* Deletes a tenant with all that it has. */
open_error_t vxlan_tenant_remove(switch_model &model, uint32_t id);

/* Binds a tenant to a VLAN; one that does not exist is made, with the remote VTEPs.
 * OPEN_E_FULL: no room for another. OPEN_E_FAIL: it is bound to another VLAN, or the VLAN to another tenant.
 */
open_error_t vxlan_tenant_bind(switch_model &model, uint32_t id, uint32_t vlan);
/* OPEN_E_NOT_FOUND also: it is bound to another VLAN. A tenant without VLAN is as wanted. */
open_error_t vxlan_tenant_unbind(switch_model &model, uint32_t id, uint32_t vlan);

/* --- Remote VTEPs --------------------------------------------------------------------------------------- */

/* Whether a VTEP can have this address: that of a host. */
bool vxlan_vtep_address_valid(uint32_t address);
/* Adds a remote VTEP; all tenants have the remote VTEPs from then on. One that is in the list changes
 * nothing. OPEN_E_PARAM: no host's address. OPEN_E_FULL: no room for another. */
open_error_t vxlan_remote_vtep_add(switch_model &model, uint32_t address);
/* OPEN_E_NOT_FOUND: it is not in the list. */
open_error_t vxlan_remote_vtep_remove(switch_model &model, uint32_t address);

/* Gives a tenant the remote VTEPs, later ones included, or takes them from it. */
open_error_t vxlan_tenant_set_remote_vteps(switch_model &model, uint32_t id, bool has);
/* The first remote VTEP of a tenant with an address above `after`; 0 when there is none. */
uint32_t vxlan_tenant_next_vtep(const switch_model &model, const vxlan_tenant &tenant, uint32_t after);

/* --- Multicast groups ----------------------------------------------------------------------------------- */

/* 224.0.1.0..239.255.255.255: those below are never forwarded (RFC 5771 section 4). */
bool vxlan_group_valid(uint32_t group);
/* The first tenant that has this group as its own; 0 when none has. */
uint32_t vxlan_tenant_of_group(const switch_model &model, uint32_t group);

/* 0 sets none. OPEN_E_PARAM: no such group. OPEN_E_EXISTS: a tenant has it as its own; for a tenant: it is
 * the default group. */
open_error_t vxlan_set_default_group(switch_model &model, uint32_t group);
open_error_t vxlan_tenant_set_group(switch_model &model, uint32_t id, uint32_t group);

} // namespace softswitch

#endif
