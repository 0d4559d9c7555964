/* VXLAN (RFC 7348): layer-2 segments ("tenants") carried over the routed network between tunnel endpoints
 * (VTEPs). The switch has one VXLAN instance, number 1.
 *
 * A tenant's id is its VXLAN network identifier, 1..16777214. It is bound to one VLAN at most, and a VLAN to
 * one tenant at most. In unicast mode its traffic goes to the remote VTEPs, the same for all tenants; in
 * multicast mode to its multicast group, the default group when it has none of its own. All of this can be
 * set whatever the mode, and stays when the mode changes; the mode says what is in force.
 *
 * IPv4 addresses are numbers in host byte order.
 *
 * Some calls exist twice: the form that ends in ZYL, which names the instance, does the same to the same
 * setting. Unless a function says otherwise: OPEN_E_PARAM for another instance than 1, another tunnel type
 * than OPEN_L2OL3_TUNNEL_VXLAN, or a tenant id out of range; OPEN_E_NOT_FOUND for no such tenant. Every
 * function that changes something answers OPEN_E_FAIL when the change cannot be stored; nothing was changed
 * then. */
#ifndef OPENAPI_VXLAN_H
#define OPENAPI_VXLAN_H

#include "platform/api/openapi_common.h"

#ifdef __cplusplus
extern "C" {
#endif

enum { OPEN_L2OL3_TUNNEL_VXLAN = 2 };

/* --- The instance --------------------------------------------------------------------------------------- */

/* Whether tunnels to unicast VTEPs, or to multicast groups, are in force: 1 or 0, both 0 in factory state. At
 * most one of them is 1.
 * OPEN_E_PARAM   also: (set) neither 0 nor 1
 * OPEN_E_FAIL    (set to 1) the other is; (unicast set to 0) it is 0. Setting multicast to 0 always succeeds,
 *                and does nothing when it is 0 */
open_error_t rpcclt_openapiL2oL3SwitchTunnelModeGet(openapiClientHandle_t *handle, uint32_t tunnelType,
                                                    uint32_t *mode);
open_error_t rpcclt_openapiL2oL3SwitchTunnelModeSet(openapiClientHandle_t *handle, uint32_t tunnelType,
                                                    uint32_t mode);
open_error_t rpcclt_openapiL2oL3SwitchTunnelMultiModeGet(openapiClientHandle_t *handle, uint32_t tunnelType,
                                                         uint32_t *mode);
open_error_t rpcclt_openapiL2oL3SwitchTunnelMultiModeSet(openapiClientHandle_t *handle, uint32_t tunnelType,
                                                         uint32_t mode);

/* The UDP port that packets between VTEPs are sent to, 1..65535; 4789 in factory state.
 * OPEN_E_PARAM   also: out of range */
open_error_t rpcclt_openapiL2oL3SwitchVxlanUdpDestPortGet(openapiClientHandle_t *handle, uint32_t *port);
open_error_t rpcclt_openapiL2oL3SwitchVxlanUdpDestPortSet(openapiClientHandle_t *handle, uint32_t port);
open_error_t rpcclt_openapiL2oL3SwitchVxlanUdpDstPortGetZYL(openapiClientHandle_t *handle, uint32_t vxlanId,
                                                            uint32_t *port);
open_error_t rpcclt_openapiL2oL3SwitchVxlanUdpDstPortSetZYL(openapiClientHandle_t *handle, uint32_t vxlanId,
                                                            uint32_t port);

/* The interface whose address is the VTEP's own; 0, also in factory state: none. Interfaces that can have
 * addresses can be it; a LAG or VLAN routing interface that is cannot be deleted.
 * OPEN_E_PARAM   also: an interface number outside every range
 * OPEN_E_NOT_FOUND  no such interface
 * OPEN_E_UNAVAIL the CPU interface */
open_error_t rpcclt_openapiL2oL3VxlanSourcePortGet(openapiClientHandle_t *handle, uint32_t *ifNum);
open_error_t rpcclt_openapiL2oL3VxlanSourcePortSet(openapiClientHandle_t *handle, uint32_t ifNum);
open_error_t rpcclt_openapiL2oL3VxlanSourcePortGetZYL(openapiClientHandle_t *handle, uint32_t vxlanId,
                                                      uint32_t *ifNum);
open_error_t rpcclt_openapiL2oL3VxlanSourcePortSetZYL(openapiClientHandle_t *handle, uint32_t vxlanId,
                                                      uint32_t ifNum);

/* --- Tenants -------------------------------------------------------------------------------------------- */

typedef struct {
  uint32_t tunnelType;  /* OPEN_L2OL3_TUNNEL_VXLAN */
  uint32_t vlanId;      /* 0: none. Only read: TenantCreate wants 0 */
  uint32_t reserved[6]; /* 0 */
} open_l2oL3TenantConfig_t;

/* Makes a tenant that has no VLAN and no remote VTEPs yet.
 * OPEN_E_PARAM   also: the record is not as its comments say
 * OPEN_E_EXISTS  it exists
 * OPEN_E_FULL    there are as many as there may be */
open_error_t rpcclt_openapiL2oL3TenantCreate(openapiClientHandle_t *handle, uint32_t vxlanId,
                                             uint32_t tenantId, const open_l2oL3TenantConfig_t *config);
/* Deletes a tenant with its binding to a VLAN, its part in the remote VTEPs and its multicast group. The list
 * of remote VTEPs stays, even after the last tenant. */
open_error_t rpcclt_openapiL2oL3TenantDelete(openapiClientHandle_t *handle, uint32_t tenantId);

/* Makes a tenant bound to a VLAN, with all remote VTEPs, or deletes it: the whole of it in one call.
 *   on  1 makes it, or binds the tenant, which has no VLAN, to this one; 0 deletes the tenant, which must
 *       not be bound to another VLAN
 * OPEN_E_PARAM   also: neither 0 nor 1, or a VLAN id outside 1..4094
 * OPEN_E_NOT_FOUND  also: (on) no such VLAN; (off) it is bound to another VLAN
 * OPEN_E_EXISTS  (on) it is bound to this VLAN already
 * OPEN_E_FULL    there are as many tenants as there may be
 * OPEN_E_FAIL    (on) it is bound to another VLAN, or the VLAN to another tenant */
open_error_t rpcclt_openapiL2oL3TenantSet(openapiClientHandle_t *handle, uint32_t vxlanId, uint32_t tenantId,
                                          uint32_t vlanId, uint32_t on);

/* Binds a tenant to a VLAN, or ends that. A VLAN that is bound cannot be deleted. Removing from a tenant that
 * has no VLAN is no error: so a deletion that was cut short after this call can be repeated.
 * OPEN_E_PARAM   also: a VLAN id outside 1..4094
 * OPEN_E_NOT_FOUND  also: (add) no such VLAN; (remove) it is bound to another VLAN
 * OPEN_E_EXISTS  (add) it is bound to this VLAN already
 * OPEN_E_FAIL    (add) it is bound to another VLAN, or the VLAN to another tenant */
open_error_t rpcclt_openapiL2oL3TenantVlanAdd(openapiClientHandle_t *handle, uint32_t tenantId,
                                              uint32_t tunnelType, uint32_t vlanId);
open_error_t rpcclt_openapiL2oL3TenantVlanRemove(openapiClientHandle_t *handle, uint32_t tenantId,
                                                 uint32_t tunnelType, uint32_t vlanId);

open_error_t rpcclt_openapiL2oL3TenantGet(openapiClientHandle_t *handle, uint32_t tenantId,
                                          open_l2oL3TenantConfig_t *config);
/* Walks over the tenants in ascending order. FirstGet gives the first, NextGetZYL the one after `tenantId`,
 * NextGet the one after `tenantId` (0 begins). The one to go on after need not exist; any number is good.
 * OPEN_E_FAIL    there is none: the walk is over */
open_error_t rpcclt_openapiL2oL3TenantFirstGet(openapiClientHandle_t *handle, uint32_t vxlanId,
                                               uint32_t *tenantId, open_l2oL3TenantConfig_t *config);
open_error_t rpcclt_openapiL2oL3TenantNextGetZYL(openapiClientHandle_t *handle, uint32_t vxlanId,
                                                 uint32_t *tenantId, open_l2oL3TenantConfig_t *config);
open_error_t rpcclt_openapiL2oL3TenantNextGet(openapiClientHandle_t *handle, uint32_t tenantId,
                                              uint32_t *nextTenantId, open_l2oL3TenantConfig_t *nextConfig);

/* --- Remote VTEPs --------------------------------------------------------------------------------------- */

/* Adds a remote VTEP to the list. All tenants have the whole list from then on.
 * OPEN_E_PARAM   no host's address
 * OPEN_E_EXISTS  it is in the list
 * OPEN_E_FULL    there are as many as there may be */
open_error_t rpcclt_openapiL2oL3RemoteVtepAddAllTenant(openapiClientHandle_t *handle, uint32_t address);
/* Takes a remote VTEP out of the list, and so from all tenants.
 * OPEN_E_NOT_FOUND  it is not in the list */
open_error_t rpcclt_openapiL2oL3RemoteVtepRemoveAllTenant(openapiClientHandle_t *handle, uint32_t address);

/* Gives a tenant all remote VTEPs of the list, later ones included, or none of them. It is no error when
 * that is so already. */
open_error_t rpcclt_openapiL2oL3TenantAddAllVtep(openapiClientHandle_t *handle, uint32_t tenantId);
open_error_t rpcclt_openapiL2oL3TenantRemoveAllVtep(openapiClientHandle_t *handle, uint32_t tenantId);

/* A tunnel of a tenant to a remote VTEP. */
typedef struct {
  uint32_t tunnelId;      /* not 0 */
  uint32_t remoteAddress; /* of the VTEP */
} open_l2oL3TunnelInfo_t;

/* Walks over the tunnels of a tenant, by the VTEPs' addresses: the one after `tunnelId`, which need not be
 * there; 0 begins.
 * OPEN_E_FAIL    there is none: the walk is over */
open_error_t rpcclt_openapiL2oL3TunnelGetNextTenant(openapiClientHandle_t *handle, uint32_t tenantId,
                                                    uint32_t tunnelId,
                                                    open_l2oL3TunnelInfo_t *nextTunnelInfo);

/* --- Multicast groups ----------------------------------------------------------------------------------- */

/* A group is 224.0.1.0..239.255.255.255: those below are never forwarded (RFC 5771 section 4). 0: none, also
 * in factory state. Tenants may share a group of their own; none of them is the default group.
 * OPEN_E_PARAM   also: no such group
 * OPEN_E_EXISTS  (set) a group that is the default one already for a tenant, or the other way round */
open_error_t rpcclt_openapiL2oL3DefaultIPMCGetZYL(openapiClientHandle_t *handle, uint32_t vxlanId,
                                                  uint32_t *address);
open_error_t rpcclt_openapiL2oL3DefaultIPMCSetZYL(openapiClientHandle_t *handle, uint32_t vxlanId,
                                                  uint32_t address);
open_error_t rpcclt_openapiL2oL3IPMCGet(openapiClientHandle_t *handle, uint32_t vxlanId, uint32_t tenantId,
                                        uint32_t *address);
open_error_t rpcclt_openapiL2oL3IPMCSet(openapiClientHandle_t *handle, uint32_t vxlanId, uint32_t tenantId,
                                        uint32_t address);

/* Says whether a group is some tenant's own. Any number is good.
 *   isSpecific  OPEN_TRUE or OPEN_FALSE */
open_error_t rpcclt_openapiL2oL3IsVNISpecificIPMC(openapiClientHandle_t *handle, uint32_t vxlanId,
                                                  uint32_t address, OPEN_BOOL_t *isSpecific);

#ifdef __cplusplus
}
#endif
#endif
