/* Interfaces: numbers and walks, and what each interface is by itself: administrative state, link, speed,
 * duplex, auto-negotiation, MTU, description, MAC address, switchport mode. Ports, the CPU interface, LAGs,
 * VLAN routing interfaces and loopbacks share one number space counted from 1.
 *
 * Unless a function says otherwise: OPEN_E_PARAM for an interface number outside every range that the switch
 * numbers interfaces in, OPEN_E_NOT_FOUND for one inside that does not exist. What can be read can be read of
 * every interface that exists; a setting that an interface of this type does not have is refused with
 * OPEN_E_UNAVAIL. Every function that changes something answers OPEN_E_FAIL when the change cannot be stored;
 * nothing was changed then. */
#ifndef OPENAPI_IF_H
#define OPENAPI_IF_H

#include "platform/api/openapi_common.h"

#ifdef __cplusplus
extern "C" {
#endif

/* --- Numbers and walks ---------------------------------------------------------------------------------- */

/* Interface types, as the first selector of the walks takes them. */
typedef enum {
  OPEN_INTF_TYPE_PHY = 0,      /* physical ports */
  OPEN_INTF_TYPE_CPU = 1,      /* the CPU interface */
  OPEN_INTF_TYPE_LAG = 2,      /* link aggregation groups */
  OPEN_INTF_TYPE_VLAN_RTR = 3, /* VLAN routing interfaces */
  OPEN_INTF_TYPE_LOOPBACK = 4  /* loopbacks */
} OPEN_INTF_TYPE_t;

/* Link states, as the second selector of the walks takes them. */
enum { OPEN_INTF_STATE_ANY = 4 };

/* The highest interface number of this switch; numbers run from 1 to `max`. */
open_error_t openapiMaxInterfaceCountGet(openapiClientHandle_t *handle, uint32_t *max);

/* The interface number of the CPU. */
open_error_t rpcclt_openapiCpuIntfGet(openapiClientHandle_t *handle, uint32_t *ifNum);

/* First interface of a type.
 *   type    OPEN_INTF_TYPE_t
 *   state   OPEN_INTF_STATE_ANY
 * OPEN_E_PARAM   unknown type or state
 * OPEN_E_FAIL    there is no interface of that type */
open_error_t rpcclt_openapiIfFirstGet(openapiClientHandle_t *handle, uint32_t type, uint32_t state,
                                      uint32_t *ifNum);

/* The next interface of a type after `ifNum` (which need not exist).
 * OPEN_E_PARAM   unknown type or state
 * OPEN_E_FAIL    there is none: the walk is over */
open_error_t rpcclt_openapiIfNextGet(openapiClientHandle_t *handle, uint32_t type, uint32_t state,
                                     uint32_t ifNum, uint32_t *nextIfNum);

/* The next interface of any type after `ifNum` (0 begins; it need not exist) with a change that the data
 * plane has not taken yet.
 *   deletePending  1 when the pending change is its removal, else 0
 * OPEN_E_FAIL    there is none: the walk is over */
open_error_t openapiIfNextChangedGet(openapiClientHandle_t *handle, uint32_t ifNum, uint32_t *nextIfNum,
                                     uint32_t *deletePending);

/* Says whether an interface exists. */
open_error_t rpcclt_openapiIntfExistCheck(openapiClientHandle_t *handle, uint32_t ifNum);

/* The highest loopback id of this switch; ids count from 0. */
open_error_t rpcclt_openapiDot1LoopbackIdMaxGet(openapiClientHandle_t *handle, uint32_t *max);

/* The interface number of a loopback.
 * OPEN_E_PARAM   above the highest id
 * OPEN_E_NOT_FOUND  no such loopback */
open_error_t rpcclt_openapiLoopbackIfNumGet(openapiClientHandle_t *handle, uint32_t loopbackId,
                                            uint32_t *ifNum);

/* --- Names and addresses -------------------------------------------------------------------------------- */

/* Reads an interface's name ("0/1", "3/1", "cpu", "loopback0", "vlan10").
 * OPEN_E_PARAM   the buffer is too small */
open_error_t openapiIfNameGet(openapiClientHandle_t *handle, uint32_t ifNum, open_buffdesc *name);

/* Bytes that a buffer for an interface's name needs, the terminator included. */
open_error_t rpcclt_openapiIntfNameSizeGet(openapiClientHandle_t *handle, uint32_t *size);

/* Reads an interface's MAC address as text, "02:00:5E:10:00:01". Ports and LAGs have one each, counted on
 * from the switch's own; all others have the switch's.
 * OPEN_E_PARAM   the buffer is too small */
open_error_t rpcclt_openapiIfMacAddrGet(openapiClientHandle_t *handle, uint32_t ifNum, open_buffdesc *mac);

/* The most characters that a description may have. */
open_error_t rpcclt_openapiIfDescrSizeGet(openapiClientHandle_t *handle, uint32_t ifNum, uint32_t *max);

/* Reads an interface's description. Here alone `size` comes back with the terminator counted, so that an
 * empty description is told by a size below 2.
 * OPEN_E_PARAM   the buffer is too small */
open_error_t rpcclt_openapiIfDescrGet(openapiClientHandle_t *handle, uint32_t ifNum, open_buffdesc *text);
/* Sets an interface's description; empty removes it. Ports, LAGs and loopbacks have one.
 * OPEN_E_PARAM   too long, or a control character in it
 * OPEN_E_UNAVAIL this interface has none */
open_error_t rpcclt_openapiIfDescrSet(openapiClientHandle_t *handle, uint32_t ifNum, open_buffdesc *text);

/* --- States --------------------------------------------------------------------------------------------- */

/* Administrative state, OPEN_CONTROL_t. Ports, LAGs and loopbacks can be disabled.
 * OPEN_E_PARAM   neither 0 nor 1
 * OPEN_E_UNAVAIL (set) this interface is always enabled */
open_error_t openapiIfAdminStateGet(openapiClientHandle_t *handle, uint32_t ifNum, uint32_t *state);
open_error_t rpcclt_openapiIfAdminStateSet(openapiClientHandle_t *handle, uint32_t ifNum, uint32_t state);

/* Soft shutdown, OPEN_CONTROL_t: while it is on a port has no link, and its administrative state stays as it
 * is. Ports have it; it reads as 0 of all others.
 * OPEN_E_PARAM   neither 0 nor 1
 * OPEN_E_UNAVAIL (set) not a port */
open_error_t rpcclt_openapiIfSoftShutdownStateGet(openapiClientHandle_t *handle, uint32_t ifNum,
                                                  uint32_t *state);
open_error_t rpcclt_openapiIfSoftShutdownStateSet(openapiClientHandle_t *handle, uint32_t ifNum,
                                                  uint32_t state);

typedef enum { OPEN_LINK_UP = 0, OPEN_LINK_DOWN = 1 } OPEN_LINK_STATE_t;

/* Link state. A port's is what the data plane reports. A LAG is up when it is enabled and the link of one of
 * its members is, a VLAN routing interface when the link of a member of its VLAN is, a loopback when it is
 * enabled, and the CPU interface always. */
open_error_t openapiIfLinkStateGet(openapiClientHandle_t *handle, uint32_t ifNum, uint32_t *state);

/* --- Speed ---------------------------------------------------------------------------------------------- */

typedef enum {
  OPEN_PORT_AUTO_NEG = 1, /* as negotiated */
  OPEN_PORT_HALF_100TX = 2,
  OPEN_PORT_FULL_100TX = 3,
  OPEN_PORT_HALF_10T = 4,
  OPEN_PORT_FULL_10T = 5,
  OPEN_PORT_FULL_100FX = 6,
  OPEN_PORT_FULL_1000SX = 7,
  OPEN_PORT_FULL_10GSX = 8,
  OPEN_PORT_FULL_40GSX = 9,
  OPEN_PORT_FULL_25GSX = 10,
  OPEN_PORT_FULL_50GSX = 11,
  OPEN_PORT_FULL_100GSX = 12,
  OPEN_PORT_AAL5_155 = 13,
  OPEN_PORT_FULL_5FX = 14,
  OPEN_PORT_FULL_2P5FX = 128,
  OPEN_PORT_LAG = 129,
  OPEN_PORT_UNKNOWN = 130
} OPEN_IF_SPEED_t;

/* Speed (OPEN_IF_SPEED_t): of a port as set (OPEN_PORT_AUTO_NEG while auto-negotiation is on), of a LAG
 * OPEN_PORT_LAG, of all others OPEN_PORT_UNKNOWN. Setting a fixed speed ends auto-negotiation; setting
 * OPEN_PORT_AUTO_NEG begins it. Copper ports have 10 and 100 Mbit/s in both duplex modes and the full duplex
 * speeds from 1 Gbit/s up to their own; cages have their own speed, and those for 10 Gbit/s also 1 Gbit/s.
 * OPEN_E_PARAM   no such speed
 * OPEN_E_UNAVAIL (set) not a speed of this port, or not a port */
open_error_t openapiIfSpeedGet(openapiClientHandle_t *handle, uint32_t ifNum, uint32_t *speed);
open_error_t rpcclt_openapiIfSpeedSet(openapiClientHandle_t *handle, uint32_t ifNum, uint32_t speed);

typedef enum {
  OPEN_PORT_DUPLEX_HALF = 0,
  OPEN_PORT_DUPLEX_FULL = 1,
  OPEN_PORT_DUPLEX_UNKNOWN = 65535
} OPEN_PORT_DUPLEX_t;

/* Duplex mode: of a port that of its fixed speed, or while it negotiates full with a link and unknown
 * without; of a LAG full; of all others unknown. */
open_error_t openapiIfDuplexModeGet(openapiClientHandle_t *handle, uint32_t ifNum, uint32_t *mode);

typedef enum {
  OPEN_PORT_AUTO_NEGOTIATE_ENABLE = 0, /* mind: enabled is 0 */
  OPEN_PORT_AUTO_NEGOTIATE_DISABLE = 1,
  OPEN_PORT_AUTO_NEGOTIATE_UNKNOWN = 65535 /* not a port */
} OPEN_PORT_AUTO_NEG_t;

/* Auto-negotiation. Copper ports have it, and it is on in factory state; the speed without it is the one set
 * last, the port's own at first.
 * OPEN_E_PARAM   neither of the first two
 * OPEN_E_UNAVAIL (set) not a copper port */
open_error_t openapiIfAutoNegGet(openapiClientHandle_t *handle, uint32_t ifNum, uint32_t *mode);
open_error_t rpcclt_openapiIfAutoNegSet(openapiClientHandle_t *handle, uint32_t ifNum, uint32_t mode);

typedef enum {
  OPEN_CONNECTOR_NONE = 0,   /* not a port */
  OPEN_CONNECTOR_COPPER = 1, /* a fixed copper connector */
  OPEN_CONNECTOR_CAGE = 2    /* a cage for a transceiver */
} OPEN_CONNECTOR_TYPE_t;

/* Kind of connector. */
open_error_t rpcclt_openapiIfConnectorTypeGet(openapiClientHandle_t *handle, uint32_t ifNum, uint32_t *type);

/* --- Frames --------------------------------------------------------------------------------------------- */

/* Largest frame in bytes, without its frame check sequence: 1518..12270. Ports and LAGs can be set; it reads
 * as 1518 of all others.
 * OPEN_E_PARAM   out of range
 * OPEN_E_UNAVAIL (set) neither a port nor a LAG */
open_error_t openapiIfMtuSizeGet(openapiClientHandle_t *handle, uint32_t ifNum, uint32_t *size);
open_error_t rpcclt_openapiIfMtuSizeSet(openapiClientHandle_t *handle, uint32_t ifNum, uint32_t size);

/* How ports and LAGs take part in VLANs. Each mode has settings of its own, which stay when another mode is
 * in force and can be set at any time:
 * - general: participation, tagging and port VLAN id as the functions of openapi_vlan.h set them
 * - access:  an untagged member of the access VLAN and of no other; that is its port VLAN id too
 * - trunk:   an untagged member of the native VLAN, which is its port VLAN id too, and a tagged member of the
 *            VLANs in its list
 * The accepted frame types are those that were set, in every mode. */
typedef enum {
  OPEN_SWITCHPORT_MODE_GENERAL = 1,
  OPEN_SWITCHPORT_MODE_ACCESS = 2,
  OPEN_SWITCHPORT_MODE_TRUNK = 3
} OPEN_SWITCHPORT_MODE_t;

/* Switchport mode of a port or LAG.
 * OPEN_E_PARAM   no such mode
 * OPEN_E_NOT_FOUND  no such port or LAG */
open_error_t rpcclt_openapiIfSwitchportModeGet(openapiClientHandle_t *handle, uint32_t ifNum, uint32_t *mode);
open_error_t rpcclt_openapiIfSwitchportModeSet(openapiClientHandle_t *handle, uint32_t ifNum, uint32_t mode);

/* The access VLAN, and the native VLAN of the trunk (1..4094; VLAN 1 in factory state). When the VLAN is
 * deleted they fall back to VLAN 1.
 * OPEN_E_PARAM   outside 1..4094
 * OPEN_E_NOT_FOUND  no such VLAN, or no such port or LAG */
open_error_t rpcclt_openapiIfSwitchportAccessVlanSet(openapiClientHandle_t *handle, uint32_t ifNum,
                                                     uint32_t vlanId);
open_error_t rpcclt_openapiIfSwitchportTrunkNativeVlanSet(openapiClientHandle_t *handle, uint32_t ifNum,
                                                          uint32_t vlanId);

enum {
  OPEN_SWITCHPORT_TRUNK_VLAN_ADD = 1,   /* the VLANs join the list */
  OPEN_SWITCHPORT_TRUNK_VLAN_REMOVE = 3 /* the VLANs leave the list */
};

/* Changes the list of VLANs that a trunk carries tagged, empty in factory state. VLANs in the list need not
 * exist: the trunk is a member as soon and as long as they do.
 *   vlans   ids and ranges, separated by commas, without blanks: "10", "1-4094", "10-20,30". Decimal numbers
 *           1..4094 without leading zeros, ranges upwards; at most 16000 characters
 * TrunkVlanSet takes both modes; a VLAN that is in the list already, or is not, is no error. TrunkVlanCreate
 * takes OPEN_SWITCHPORT_TRUNK_VLAN_ADD alone and makes the list anew: the given VLANs and no others.
 * OPEN_E_PARAM   unknown mode, or the text is no such list
 * OPEN_E_NOT_FOUND  no such port or LAG */
open_error_t rpcclt_openapiIfSwitchportTrunkVlanSet(openapiClientHandle_t *handle, uint32_t ifNum,
                                                    uint32_t mode, open_buffdesc *vlans);
open_error_t rpcclt_openapiIfSwitchportTrunkVlanCreate(openapiClientHandle_t *handle, uint32_t ifNum,
                                                       uint32_t mode, open_buffdesc *vlans);

#ifdef __cplusplus
}
#endif
#endif
