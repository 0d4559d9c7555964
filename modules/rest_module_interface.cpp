/* Interfaces. The module keeps no state: every operation asks the platform. */
#include "modules/rest_module_interface.h"

#include "engine/rest_request.h"
#include "engine/rest_route.h"
#include "modules/rest_interface_addresses.h"
#include "modules/rest_module_vlan.h"
#include "modules/rest_platform_walk.h"
#include "platform/api/openapi_stat.h"
#include "platform/api/openapi_vlan.h"

#include <string.h>

/* --- Names and words ------------------------------------------------------------------------------------ */

/* By counter id. */
static const char *const name_ary[OPEN_STAT_COUNTERS] = {"CTR_RESERVED",
                                                         "CTR_RX_TOTAL_BYTES",
                                                         "CTR_RX_64",
                                                         "CTR_RX_65_127",
                                                         "CTR_RX_128_255",
                                                         "CTR_RX_256_511",
                                                         "CTR_RX_512_1023",
                                                         "CTR_RX_1024_1518",
                                                         "CTR_RX_1519_1530",
                                                         "CTR_RX_GOOD_OVERSIZE",
                                                         "CTR_RX_ERROR_OVERSIZE",
                                                         "CTR_RX_GOOD_UNDERSIZE",
                                                         "CTR_RX_ERROR_UNDERSIZE",
                                                         "CTR_RX_UCAST_FRAMES",
                                                         "CTR_RX_MCAST_FRAMES",
                                                         "CTR_RX_BCAST_FRAMES",
                                                         "CTR_RX_ALIGN_ERRORS",
                                                         "CTR_RX_FCS_ERRORS",
                                                         "CTR_RX_OVERRUNS",
                                                         "CTR_RX_FRAME_TOO_LONG",
                                                         "CTR_TX_TOTAL_BYTES",
                                                         "CTR_TX_64",
                                                         "CTR_TX_65_127",
                                                         "CTR_TX_128_255",
                                                         "CTR_TX_256_511",
                                                         "CTR_TX_512_1023",
                                                         "CTR_TX_1024_1518",
                                                         "CTR_TX_1519_1530",
                                                         "CTR_TX_UCAST_FRAMES",
                                                         "CTR_TX_MCAST_FRAMES",
                                                         "CTR_TX_BCAST_FRAMES",
                                                         "CTR_TX_FCS_ERRORS",
                                                         "CTR_TX_OVERSIZED",
                                                         "CTR_TX_UNDERRUN_ERRORS",
                                                         "CTR_TX_ONE_COLLISION",
                                                         "CTR_TX_MULTIPLE_COLLISION",
                                                         "CTR_TX_EXCESSIVE_COLLISION",
                                                         "CTR_TX_LATE_COLLISION",
                                                         "CTR_TX_RX_64",
                                                         "CTR_TX_RX_65_127",
                                                         "CTR_TX_RX_128_255",
                                                         "CTR_TX_RX_256_511",
                                                         "CTR_TX_RX_512_1023",
                                                         "CTR_TX_RX_1024_1518",
                                                         "CTR_TX_RX_1519_1522",
                                                         "CTR_TX_RX_1523_2047",
                                                         "CTR_TX_RX_2048_4095",
                                                         "CTR_TX_RX_4096_9216",
                                                         "CTR_ETHER_STATS_DROP_EVENTS",
                                                         "CTR_SNMPIFOUTDISCARD_FRAMES",
                                                         "CTR_SNMPIFINDISCARD_FRAMES",
                                                         "CTR_RX_TOTAL_FRAMES",
                                                         "CTR_RX_TOTAL_ERROR_FRAMES",
                                                         "CTR_TX_TOTAL_FRAMES",
                                                         "CTR_TX_TOTAL_ERROR_FRAMES",
                                                         "CTR_TX_TOTAL_COLLISION_FRAMES",
                                                         "CTR_RX_CRC_ERRORS",
                                                         "CTR_RX_TOTAL_MAC_ERROR_FRAMES",
                                                         "CTR_RX_RATE_BITS",
                                                         "CTR_TX_RATE_BITS",
                                                         "CTR_RX_RATE_FRAMES",
                                                         "CTR_TX_RATE_FRAMES",
                                                         "CTR_ETHER_STATS_HOLD"};

static const enum_text speeds[] = {
    {OPEN_PORT_AUTO_NEG, "auto neg"},       {OPEN_PORT_HALF_100TX, "half 100tx"},
    {OPEN_PORT_FULL_100TX, "full 100tx"},   {OPEN_PORT_HALF_10T, "half 10t"},
    {OPEN_PORT_FULL_10T, "full 10t"},       {OPEN_PORT_FULL_100FX, "full 100fx"},
    {OPEN_PORT_FULL_1000SX, "full 1000sx"}, {OPEN_PORT_FULL_10GSX, "full 10gsx"},
    {OPEN_PORT_FULL_40GSX, "full 40gsx"},   {OPEN_PORT_FULL_25GSX, "full 25gsx"},
    {OPEN_PORT_FULL_50GSX, "full 50gsx"},   {OPEN_PORT_FULL_100GSX, "full 100gsx"},
    {OPEN_PORT_AAL5_155, "AAL5 155"},       {OPEN_PORT_FULL_5FX, "full 5fx"},
    {OPEN_PORT_FULL_2P5FX, "full 2P5fx"},   {OPEN_PORT_LAG, "LAG"},
    {OPEN_PORT_UNKNOWN, "unknown"},
};

static const enum_text admin_states[] = {{OPEN_ENABLE, "enable"}, {OPEN_DISABLE, "disable"}};

static const enum_text auto_neg_modes[] = {
    {OPEN_PORT_AUTO_NEGOTIATE_ENABLE, "enable"},
    {OPEN_PORT_AUTO_NEGOTIATE_DISABLE, "disable"},
    {OPEN_PORT_AUTO_NEGOTIATE_UNKNOWN, "unknown"},
};

static const enum_text duplex_modes[] = {
    {OPEN_PORT_DUPLEX_HALF, "half"},
    {OPEN_PORT_DUPLEX_FULL, "full"},
    {OPEN_PORT_DUPLEX_UNKNOWN, "unknown"},
};

static const enum_text link_states[] = {{OPEN_LINK_UP, "up"}, {OPEN_LINK_DOWN, "down"}};

static const enum_text accept_frame_types[] = {
    {OPEN_DOT1Q_ADMIT_ALL, "all"},
    {OPEN_DOT1Q_ADMIT_ONLY_VLAN_TAGGED, "tagged"},
    {OPEN_DOT1Q_ADMIT_ONLY_VLAN_UNTAGGED, "untagged"},
};

static const enum_text switchport_modes[] = {
    {OPEN_SWITCHPORT_MODE_GENERAL, "general"},
    {OPEN_SWITCHPORT_MODE_ACCESS, "access"},
    {OPEN_SWITCHPORT_MODE_TRUNK, "trunk"},
};

RC_t get_counter_name_by_id(uint32_t id, char *dst) {
  strcpy(dst, id < OPEN_STAT_COUNTERS ? name_ary[id] : "");
  return id < OPEN_STAT_COUNTERS ? RC_TRUE : RC_FALSE;
}

RC_t get_speed_string_by_eum(uint32_t speed, char *dst) {
  if (copy_text_by_enum(speeds, static_cast<int32_t>(speed), dst) != RC_TRUE) strcpy(dst, "-");
  return RC_TRUE;
}

/* --- Helpers -------------------------------------------------------------------------------------------- */

static bool ifNum_or_reply(mg_connection *conn, uint32_t *ifNum) {
  return uri_numbers_or_reply(conn, "/if/%[0-9]", {ifNum});
}

static bool ifNum_and_vlan_or_reply(mg_connection *conn, uint32_t *ifNum, uint32_t *vlanId) {
  return uri_numbers_or_reply(conn, "/if/%[0-9]/vlan/%[0-9]", {ifNum, vlanId});
}

typedef open_error_t (*number_setter_t)(openapiClientHandle_t *client_handle, uint32_t ifNum, uint32_t value);

/* The operations that set one number and leave its range to the platform. */
static int update_number(openapiClientHandle_t *client_handle, mg_connection *conn, number_setter_t set,
                         const char *what) {
  uint32_t ifNum = 0;
  int32_t value = 0;
  if (!ifNum_or_reply(conn, &ifNum) || !number_or_reply(conn, "value", &value)) return 0;

  open_error_t rc = set(client_handle, ifNum, static_cast<uint32_t>(value));
  if (rc != OPEN_E_NONE) return fail(conn, rc, nullptr);
  return succeed(conn, nullptr, "Update %s of Interface %d successfully.", what, ifNum);
}

/* Checks the number that the text begins with; of a list of VLANs that is the first. */
static bool vlan_in_range_or_reply(openapiClientHandle_t *client_handle, mg_connection *conn,
                                   const char *text) {
  uint32_t vlan_max = 0;
  open_error_t rc = rpcclt_openapiDot1VlanMaxGet(client_handle, &vlan_max);
  if (rc != OPEN_E_NONE) {
    fail(conn, rc, nullptr);
    return false;
  }
  int32_t vlanId = text_to_int(text);
  if (vlanId > 0 && static_cast<uint32_t>(vlanId) <= vlan_max) return true;
  refuse(conn, 2, "VLAN ID not valid.");
  return false;
}

/* The operations that set the one VLAN of a switchport mode. */
static int update_mode_vlan(openapiClientHandle_t *client_handle, mg_connection *conn, number_setter_t set,
                            const char *what) {
  uint32_t ifNum = 0;
  request_variable value;
  if (!ifNum_or_reply(conn, &ifNum) || !variable_or_reply(conn, "value", &value)) return 0;
  if (!vlan_in_range_or_reply(client_handle, conn, value.text)) return 0;

  open_error_t rc = set(client_handle, ifNum, static_cast<uint32_t>(text_to_int(value.text)));
  if (rc != OPEN_E_NONE) return fail(conn, rc, nullptr);
  return succeed(conn, nullptr, "Update %s of Interface %d successfully.", what, ifNum);
}

typedef open_error_t (*vlan_list_setter_t)(openapiClientHandle_t *client_handle, uint32_t ifNum,
                                           uint32_t mode, open_buffdesc *vlans);

/* The operations on the list of VLANs of a trunk. `verb` begins the message. */
static int change_trunk_vlans(openapiClientHandle_t *client_handle, mg_connection *conn,
                              vlan_list_setter_t set, uint32_t mode, const char *verb) {
  uint32_t ifNum = 0;
  request_variable value;
  if (!ifNum_or_reply(conn, &ifNum) || !variable_or_reply(conn, "value", &value)) return 0;
  if (!vlan_in_range_or_reply(client_handle, conn, value.text)) return 0;

  open_buffdesc vlans = describe_characters(value.text);
  open_error_t rc = set(client_handle, ifNum, mode, &vlans);
  if (rc != OPEN_E_NONE) return fail(conn, rc, nullptr);
  return succeed(conn, nullptr, "%s trunk mode vlan of Interface %d successfully.", verb, ifNum);
}

/* --- DELETE --------------------------------------------------------------------------------------------- */

int api_interface_delete_specified_num_from_vlan(openapiClientHandle_t *client_handle, mg_connection *conn) {
  uint32_t ifNum = 0, vlanId = 0, pvid = 0;
  if (!ifNum_and_vlan_or_reply(conn, &ifNum, &vlanId)) return 0;
  open_error_t rc = openapiVlanIfPvidGet(client_handle, ifNum, &pvid);
  if (rc != OPEN_E_NONE) return fail(conn, rc, nullptr);
  if (pvid == vlanId)
    return refuse(conn, 1, "Delete VLAN %d failed. VLAN %d is native vlan.", vlanId, vlanId);

  rc = rpcclt_openapiVlanIfParticipationSet(client_handle, vlanId, ifNum, OPEN_VLAN_PARTICIPATION_MODE_AUTO);
  if (rc != OPEN_E_NONE) return fail(conn, rc, nullptr);
  return succeed(conn, nullptr, "Delete Interface %d from VLAN %d successfully.", ifNum, vlanId);
}

int api_interface_delete_switchport_trunk_vlan(openapiClientHandle_t *client_handle, mg_connection *conn) {
  return change_trunk_vlans(client_handle, conn, rpcclt_openapiIfSwitchportTrunkVlanSet,
                            OPEN_SWITCHPORT_TRUNK_VLAN_REMOVE, "Delete");
}

/* --- PUT ------------------------------------------------------------------------------------------------ */

int api_interface_update_pvid(openapiClientHandle_t *client_handle, mg_connection *conn) {
  return update_number(client_handle, conn, rpcclt_openapiVlanIfPvidSet, "PVID");
}

int api_interface_update_accept_frame_type(openapiClientHandle_t *client_handle, mg_connection *conn) {
  return update_number(client_handle, conn, rpcclt_openapiVlanIfAcceptFrameTypeSet, "acceptFrameType");
}

int api_interface_update_admin_state(openapiClientHandle_t *client_handle, mg_connection *conn) {
  return update_number(client_handle, conn, rpcclt_openapiIfAdminStateSet, "administrative state");
}

int api_interface_update_auto_neg_mode(openapiClientHandle_t *client_handle, mg_connection *conn) {
  uint32_t ifNum = 0, connector = OPEN_CONNECTOR_NONE;
  request_variable value;
  int32_t enabled = 0;
  if (!ifNum_or_reply(conn, &ifNum) || !variable_or_reply(conn, "value", &value)) return 0;
  if (check_string_is_number_within_rest_control(value.text, &enabled) != RC_TRUE)
    return fail(conn, OPEN_E_PARAM, nullptr);

  open_error_t rc = rpcclt_openapiIfConnectorTypeGet(client_handle, ifNum, &connector);
  if (rc != OPEN_E_NONE) return fail(conn, rc, nullptr);
  if (connector != OPEN_CONNECTOR_COPPER)
    return refuse(conn, 1, "Unable to update auto-negotiation mode of Interface %d.", ifNum);

  rc = rpcclt_openapiIfAutoNegSet(client_handle, ifNum,
                                  enabled == 1 ? OPEN_PORT_AUTO_NEGOTIATE_ENABLE
                                               : OPEN_PORT_AUTO_NEGOTIATE_DISABLE);
  if (rc != OPEN_E_NONE) return fail(conn, rc, nullptr);
  return succeed(conn, nullptr, "Update auto-negotiation mode of Interface %d successfully.", ifNum);
}

int api_interface_update_description(openapiClientHandle_t *client_handle, mg_connection *conn) {
  uint32_t ifNum = 0, length_max = 0;
  if (!ifNum_or_reply(conn, &ifNum)) return 0;
  open_error_t rc = rpcclt_openapiIfDescrSizeGet(client_handle, ifNum, &length_max);
  if (rc != OPEN_E_NONE) return fail(conn, rc, nullptr);
  request_variable value = read_variable(conn, "value");
  if (value.length < 1 || static_cast<uint32_t>(value.length) > length_max)
    return refuse(conn, 1, "The value of parameter is invalid.");

  open_buffdesc description = describe_characters(value.text);
  rc = rpcclt_openapiIfDescrSet(client_handle, ifNum, &description);
  if (rc != OPEN_E_NONE) return fail(conn, rc, nullptr);
  return succeed(conn, nullptr, "Update description of Interface %d successfully.", ifNum);
}

int api_interface_update_mtu_size(openapiClientHandle_t *client_handle, mg_connection *conn) {
  return update_number(client_handle, conn, rpcclt_openapiIfMtuSizeSet, "MTU size");
}

int api_interface_update_speed(openapiClientHandle_t *client_handle, mg_connection *conn) {
  return update_number(client_handle, conn, rpcclt_openapiIfSpeedSet, "speed");
}

int api_interface_update_to_vlan_tagging_mode(openapiClientHandle_t *client_handle, mg_connection *conn) {
  uint32_t ifNum = 0, vlanId = 0;
  int32_t tagging = 0;
  if (!ifNum_and_vlan_or_reply(conn, &ifNum, &vlanId) || !number_or_reply(conn, "value", &tagging)) return 0;

  open_error_t rc =
      rpcclt_openapiVlanIfTaggingSet(client_handle, ifNum, vlanId, static_cast<uint32_t>(tagging));
  if (rc != OPEN_E_NONE) return fail(conn, rc, nullptr);
  return succeed(conn, nullptr, "Update tagging mode of Interface %d in VLAN %d successfully.", ifNum,
                 vlanId);
}

int api_interface_update_counters_reset(openapiClientHandle_t *client_handle, mg_connection *conn) {
  uint32_t ifNum = 0;
  int32_t counter = 0;
  if (!ifNum_or_reply(conn, &ifNum) || !number_or_reply(conn, "counter", &counter)) return 0;
  if (counter == -1) {
    open_error_t rc = rpcclt_openapiInterfaceStatsReset(client_handle, ifNum);
    if (rc != OPEN_E_NONE) return fail(conn, rc, nullptr);
    return succeed(conn, nullptr, "Reset all counters of Interface %d successfully.", ifNum);
  }

  uint32_t id = static_cast<uint32_t>(counter);
  open_error_t rc = rpcclt_openapiStatReset(client_handle, id, ifNum);
  if (rc != OPEN_E_NONE) return fail(conn, rc, nullptr);
  char name[32];
  get_counter_name_by_id(id, name);
  return succeed(conn, nullptr, "Reset the counter %s of Interface %d successfully.", name, ifNum);
}

int api_interface_update_switchport_mode(openapiClientHandle_t *client_handle, mg_connection *conn) {
  return update_number(client_handle, conn, rpcclt_openapiIfSwitchportModeSet, "switchport mode");
}

int api_interface_update_switchport_trunk_pvid(openapiClientHandle_t *client_handle, mg_connection *conn) {
  return update_mode_vlan(client_handle, conn, rpcclt_openapiIfSwitchportTrunkNativeVlanSet,
                          "trunk mode pvid");
}

int api_interface_update_switchport_access_vlan(openapiClientHandle_t *client_handle, mg_connection *conn) {
  return update_mode_vlan(client_handle, conn, rpcclt_openapiIfSwitchportAccessVlanSet, "access mode vlan");
}

/* On purpose: updating makes the list anew (TrunkVlanCreate), creating adds to it (TrunkVlanSet). */
int api_interface_update_switchport_trunk_vlan(openapiClientHandle_t *client_handle, mg_connection *conn) {
  return change_trunk_vlans(client_handle, conn, rpcclt_openapiIfSwitchportTrunkVlanCreate,
                            OPEN_SWITCHPORT_TRUNK_VLAN_ADD, "Update");
}

int api_interface_update_soft_shutdown_state(openapiClientHandle_t *client_handle, mg_connection *conn) {
  return update_number(client_handle, conn, rpcclt_openapiIfSoftShutdownStateSet, "soft-shutdown state");
}

/* --- GET ------------------------------------------------------------------------------------------------ */

/* All that the platform says of one interface but its IP addresses. */
struct interface_facts {
  uint32_t admin_state = 0, auto_neg = 0, duplex = 0, link = 0, mtu = 0, soft_shutdown = 0, speed = 0;
  uint32_t pvid = 0, accept_frames = 0;
  platform_text_256 description, mac, name;
};

/* An interface without a link may have no PVID; it is 0 then. */
static open_error_t read_pvid(openapiClientHandle_t *client_handle, uint32_t ifNum, interface_facts *facts) {
  open_error_t rc = openapiVlanIfPvidGet(client_handle, ifNum, &facts->pvid);
  if (rc == OPEN_E_NONE) return OPEN_E_NONE;
  facts->pvid = 0;
  return facts->link == OPEN_LINK_DOWN ? OPEN_E_NONE : rc;
}

/* Reads in a fixed order; the first failure ends it. */
static open_error_t read_facts(openapiClientHandle_t *client_handle, uint32_t ifNum, interface_facts *facts) {
  open_error_t rc = openapiIfAdminStateGet(client_handle, ifNum, &facts->admin_state);
  if (rc == OPEN_E_NONE) rc = openapiIfAutoNegGet(client_handle, ifNum, &facts->auto_neg);
  if (rc == OPEN_E_NONE) rc = rpcclt_openapiIfDescrGet(client_handle, ifNum, &facts->description.desc);
  if (rc == OPEN_E_NONE) rc = openapiIfDuplexModeGet(client_handle, ifNum, &facts->duplex);
  if (rc == OPEN_E_NONE) rc = openapiIfLinkStateGet(client_handle, ifNum, &facts->link);
  if (rc == OPEN_E_NONE) rc = rpcclt_openapiIfMacAddrGet(client_handle, ifNum, &facts->mac.desc);
  if (rc == OPEN_E_NONE) rc = openapiIfMtuSizeGet(client_handle, ifNum, &facts->mtu);
  if (rc == OPEN_E_NONE) rc = openapiIfNameGet(client_handle, ifNum, &facts->name.desc);
  /* Read, though the answer does not show it: its failure is one of the request. */
  if (rc == OPEN_E_NONE)
    rc = rpcclt_openapiIfSoftShutdownStateGet(client_handle, ifNum, &facts->soft_shutdown);
  if (rc == OPEN_E_NONE) rc = openapiIfSpeedGet(client_handle, ifNum, &facts->speed);
  if (rc == OPEN_E_NONE) rc = read_pvid(client_handle, ifNum, facts);
  if (rc == OPEN_E_NONE)
    rc = rpcclt_openapiVlanIfAcceptFrameTypeGet(client_handle, ifNum, &facts->accept_frames);
  return rc;
}

static void append_facts(node_t *tree, uint32_t ifNum, const interface_facts &facts) {
  char speed[16];
  get_speed_string_by_eum(facts.speed, speed);
  /* The platform counts the terminator here. */
  const char *description = facts.description.desc.size < 2 ? "-" : facts.description.text;
  append_tree_int(tree, "ifNum", "ifNum", static_cast<int>(ifNum));
  append_tree_string(tree, "interfaceName", "interfaceName", facts.name.text);
  append_tree_string(tree, "description", "description", description);
  append_tree_word(tree, "adminState", admin_states, facts.admin_state);
  append_tree_word(tree, "linkState", link_states, facts.link);
  append_tree_string(tree, "speed", "speed", speed);
  append_tree_int(tree, "pvid", "pvid", static_cast<int>(facts.pvid));
  append_tree_word(tree, "acceptFrameType", accept_frame_types, facts.accept_frames);
  append_tree_word(tree, "autoNegMode", auto_neg_modes, facts.auto_neg);
  append_tree_word(tree, "duplexMode", duplex_modes, facts.duplex);
  append_tree_string(tree, "MAC_address", "MAC_address", facts.mac.text);
  append_tree_int(tree, "MTU_size", "MTU_size", static_cast<int>(facts.mtu));
}

int api_interface_get_specified_num(openapiClientHandle_t *client_handle, mg_connection *conn) {
  uint32_t ifNum = 0;
  interface_facts facts;
  if (!ifNum_or_reply(conn, &ifNum)) return 0;
  open_error_t rc = read_facts(client_handle, ifNum, &facts);
  if (rc != OPEN_E_NONE) return fail(conn, rc, nullptr);

  node_t *tree = new_tree();
  node_t *interface = append_branch(tree, "interface");
  append_facts(interface, ifNum, facts);
  append_primary_ipv4(client_handle, ifNum, interface, "primary_ip_address");
  append_secondary_ipv4(client_handle, ifNum, interface, "secondary_ip_addresses");
  append_ipv6(client_handle, ifNum, interface);
  return succeed(conn, tree, "Get data successfully.");
}

int api_interface_get_list(openapiClientHandle_t *client_handle, mg_connection *conn) {
  node_t *tree = new_tree();
  node_t *interfaces = append_branch(tree, "interfaces");
  auto append = [&](uint32_t ifNum, uint32_t position) {
    append_tree_int(append_entry(interfaces, position, "interface"), "ifNum", "ifNum",
                    static_cast<int>(ifNum));
    return OPEN_E_NONE;
  };
  open_error_t rc = each_interface(client_handle, OPEN_INTF_TYPE_PHY, append);
  if (rc != OPEN_E_NONE) return fail(conn, rc, tree);
  return succeed(conn, tree, "Get data successfully.");
}

int api_interface_get_list_pending(openapiClientHandle_t *client_handle, mg_connection *conn) {
  uint32_t first = 0;
  open_error_t rc = rpcclt_openapiIfFirstGet(client_handle, OPEN_INTF_TYPE_PHY, OPEN_INTF_STATE_ANY, &first);
  if (rc != OPEN_E_NONE) return fail(conn, rc, nullptr);

  node_t *tree = new_tree();
  node_t *interfaces = append_branch(tree, "pending_interfaces");
  /* The walk begins before the first interface and is over all types. */
  rc = append_pending(client_handle, openapiIfNextChangedGet, 0, interfaces, "interface", "ifNum");
  if (rc != OPEN_E_NONE) return fail(conn, rc, tree);
  return succeed(conn, tree, "Get data successfully.");
}

int api_interface_get_to_vlan(openapiClientHandle_t *client_handle, mg_connection *conn) {
  uint32_t ifNum = 0, vlanId = 0, mode = 0, tagging = 0;
  if (!ifNum_and_vlan_or_reply(conn, &ifNum, &vlanId)) return 0;
  open_error_t rc = rpcclt_openapiVlanIfParticipationGet(client_handle, vlanId, ifNum, &mode);
  if (rc == OPEN_E_NONE) rc = openapiVlanIfTaggingGet(client_handle, ifNum, vlanId, &tagging);
  if (rc != OPEN_E_NONE) return fail(conn, rc, nullptr);

  node_t *tree = new_tree();
  node_t *participation = append_branch(tree, "participation");
  append_tree_int(participation, "ifNum", "ifNum", static_cast<int>(ifNum));
  append_tree_int(participation, "vlanId", "vlanId", static_cast<int>(vlanId));
  append_tree_word(participation, "participationMode", participation_modes, mode);
  append_tree_int(participation, "isTagging", "isTagging", static_cast<int>(tagging));
  return succeed(conn, tree, "Get data successfully.");
}

/* Every VLAN visited counts, so the positions have gaps; here alone they begin at 0. */
static open_error_t append_participations(openapiClientHandle_t *client_handle, uint32_t ifNum,
                                          node_t *participations) {
  return each_vlan(client_handle, [&](uint32_t vlanId, uint32_t position) {
    uint32_t is_member = 0;
    open_error_t rc = openapiVlanIfParticipationStatusGet(client_handle, vlanId, ifNum, &is_member);
    if (rc == OPEN_E_NONE && is_member == 1) {
      append_tree_int(append_entry(participations, position, "participation"), "vlanId", "vlanId",
                      static_cast<int>(vlanId));
    }
    return rc;
  });
}

int api_interface_get_to_vlan_list(openapiClientHandle_t *client_handle, mg_connection *conn) {
  uint32_t ifNum = 0;
  if (!ifNum_or_reply(conn, &ifNum)) return 0;
  node_t *tree = new_tree();
  open_error_t rc = append_participations(client_handle, ifNum, append_branch(tree, "participations"));
  if (rc != OPEN_E_NONE) return fail(conn, rc, tree);
  return succeed(conn, tree, "Get data successfully.");
}

static void append_counter(node_t *counters, uint32_t position, uint32_t id, uint32_t low, uint32_t high) {
  char name[32];
  get_counter_name_by_id(id, name);
  node_t *entry = append_entry(counters, position, "counter");
  append_tree_int(entry, "counterId", "counterId", static_cast<int>(id));
  append_tree_string(entry, "counterName", "counterName", name);
  append_tree_uint(entry, "counterValueL", "counterValueL", low);
  append_tree_uint(entry, "counterValueH", "counterValueH", high);
}

int api_interface_get_counters(openapiClientHandle_t *client_handle, mg_connection *conn) {
  uint32_t ifNum = 0, position = 1;
  if (!ifNum_or_reply(conn, &ifNum)) return 0;
  node_t *tree = new_tree();
  node_t *counters = append_branch(tree, "counters");
  for (uint32_t id = 0; id < OPEN_STAT_COUNTERS; id++) {
    uint32_t low = 0, high = 0;
    open_error_t rc = rpcclt_openapiStatHighLowGet(client_handle, id, ifNum, &low, &high);
    if (rc == OPEN_E_NOT_FOUND) continue; /* this interface does not have that counter */
    if (rc != OPEN_E_NONE) return fail(conn, rc, tree);
    append_counter(counters, position++, id, low, high);
  }
  return succeed(conn, tree, "Get data successfully.");
}

int api_interface_get_switchport_mode(openapiClientHandle_t *client_handle, mg_connection *conn) {
  uint32_t ifNum = 0, mode = 0;
  if (!ifNum_or_reply(conn, &ifNum)) return 0;
  open_error_t rc = rpcclt_openapiIfSwitchportModeGet(client_handle, ifNum, &mode);
  if (rc != OPEN_E_NONE) return fail(conn, rc, nullptr);
  node_t *tree = new_tree();
  append_tree_word(tree, "mode", switchport_modes, mode);
  return succeed(conn, tree, "Get data successfully.");
}

/* --- POST ----------------------------------------------------------------------------------------------- */

int api_interface_create_specified_num_to_vlan(openapiClientHandle_t *client_handle, mg_connection *conn) {
  uint32_t ifNum = 0, vlanId = 0;
  if (!ifNum_and_vlan_or_reply(conn, &ifNum, &vlanId)) return 0;
  open_error_t rc = rpcclt_openapiVlanIfParticipationSet(client_handle, vlanId, ifNum,
                                                         OPEN_VLAN_PARTICIPATION_MODE_INCLUDE);
  if (rc != OPEN_E_NONE) return fail(conn, rc, nullptr);
  return succeed(conn, nullptr, "Configure Interface %d to VLAN %d successfully.", ifNum, vlanId);
}

int api_interface_create_switchport_trunk_vlan(openapiClientHandle_t *client_handle, mg_connection *conn) {
  return change_trunk_vlans(client_handle, conn, rpcclt_openapiIfSwitchportTrunkVlanSet,
                            OPEN_SWITCHPORT_TRUNK_VLAN_ADD, "Update");
}

/* --- Routes --------------------------------------------------------------------------------------------- */

static const rest_route routes[] = {
    {REQUEST_METHOD_DELETE, "/if/%[0-9]/vlan/%[0-9]%s", 2, nullptr,
     api_interface_delete_specified_num_from_vlan},
    {REQUEST_METHOD_DELETE, "/if/%[0-9]/trunk/%4[vlan]%s", 2, "vlan",
     api_interface_delete_switchport_trunk_vlan},
    {REQUEST_METHOD_PUT, "/if/%[0-9]/%4[pvid]%s", 2, "pvid", api_interface_update_pvid},
    {REQUEST_METHOD_PUT, "/if/%[0-9]/%15[acceptFrameType]%s", 2, "acceptFrameType",
     api_interface_update_accept_frame_type},
    {REQUEST_METHOD_PUT, "/if/%[0-9]/%10[adminState]%s", 2, "adminState", api_interface_update_admin_state},
    {REQUEST_METHOD_PUT, "/if/%[0-9]/%11[autoNegMode]%s", 2, "autoNegMode",
     api_interface_update_auto_neg_mode},
    {REQUEST_METHOD_PUT, "/if/%[0-9]/%11[description]%s", 2, "description", api_interface_update_description},
    {REQUEST_METHOD_PUT, "/if/%[0-9]/%7[mtuSize]%s", 2, "mtuSize", api_interface_update_mtu_size},
    {REQUEST_METHOD_PUT, "/if/%[0-9]/%5[speed]%s", 2, "speed", api_interface_update_speed},
    {REQUEST_METHOD_PUT, "/if/%[0-9]/vlan/%[0-9]/%11[taggingMode]%s", 3, "taggingMode",
     api_interface_update_to_vlan_tagging_mode},
    {REQUEST_METHOD_PUT, "/if/%[0-9]/counters/%5[reset]%s", 2, "reset", api_interface_update_counters_reset},
    {REQUEST_METHOD_PUT, "/if/%[0-9]/%14[switchportMode]%s", 2, "switchportMode",
     api_interface_update_switchport_mode},
    {REQUEST_METHOD_PUT, "/if/%[0-9]/trunk/%4[pvid]%s", 2, "pvid",
     api_interface_update_switchport_trunk_pvid},
    {REQUEST_METHOD_PUT, "/if/%[0-9]/access/%4[vlan]%s", 2, "vlan",
     api_interface_update_switchport_access_vlan},
    {REQUEST_METHOD_PUT, "/if/%[0-9]/trunk/%4[vlan]%s", 2, "vlan",
     api_interface_update_switchport_trunk_vlan},
    {REQUEST_METHOD_GET, "/if/%[0-9]%s", 1, nullptr, api_interface_get_specified_num},
    {REQUEST_METHOD_GET, "/if%s", ROUTE_EXACT, nullptr, api_interface_get_list},
    {REQUEST_METHOD_GET, "/if/pendingChanges%s", ROUTE_EXACT, nullptr, api_interface_get_list_pending},
    {REQUEST_METHOD_GET, "/if/%[0-9]/vlan/%[0-9]%s", 2, nullptr, api_interface_get_to_vlan},
    {REQUEST_METHOD_GET, "/if/%[0-9]/%4[vlan]%s", 2, "vlan", api_interface_get_to_vlan_list},
    {REQUEST_METHOD_GET, "/if/%[0-9]/%8[counters]%s", 2, "counters", api_interface_get_counters},
    {REQUEST_METHOD_GET, "/if/%[0-9]/%14[switchportMode]%s", 2, "switchportMode",
     api_interface_get_switchport_mode},
    {REQUEST_METHOD_POST, "/if/%[0-9]/vlan/%[0-9]%s", 2, nullptr, api_interface_create_specified_num_to_vlan},
    {REQUEST_METHOD_POST, "/if/%[0-9]/trunk/%4[vlan]%s", 2, "vlan",
     api_interface_create_switchport_trunk_vlan},
};

int interface_api_handler(openapiClientHandle_t *client_handle, mg_connection *conn) {
  return handle_by_routes(routes, client_handle, conn);
}

std::span<const rest_route> interface_api_routes(void) {
  return routes;
}
