/* BGP as configured; see bgp.h. */
#include "platform/softswitch/model/bgp.h"

#include "platform/api/openapi_bgp.h"
#include "platform/softswitch/model/switch.h"
#include "platform/softswitch/model/text.h"

#include <algorithm>
#include <tuple>

namespace softswitch {

static constexpr uint32_t known_matches = OPEN_OSPF_MATCH_INTERNAL | OPEN_OSPF_MATCH_EXTERNAL_1 |
                                          OPEN_OSPF_MATCH_EXTERNAL_2 | OPEN_OSPF_MATCH_NSSA_EXTERNAL_1 |
                                          OPEN_OSPF_MATCH_NSSA_EXTERNAL_2;

static auto sort_key(const open_inet_addr_t &address, uint32_t number) {
  return std::tuple(address.family, inet_bytes(address), number);
}

bool bgp_order::operator()(const open_inet_pfx_t &one, const open_inet_pfx_t &other) const {
  return sort_key(one.ipAddr, one.pfxLen) < sort_key(other.ipAddr, other.pfxLen);
}

bool bgp_order::operator()(const bgp_peer_id &one, const bgp_peer_id &other) const {
  return sort_key(one.address, one.scope) < sort_key(other.address, other.scope);
}

/* The table for changing, its change noted. */
static bgp_table *edit(switch_model &model) {
  next_change(model);
  return model.bgp.edit();
}

void bgp_reset(switch_model &model) {
  *model.bgp.edit() = bgp_table();
}

/* --- The speaker ---------------------------------------------------------------------------------------- */

static bool is_good(bgp_setting setting, uint32_t value) {
  if (setting == &bgp_speaker::local_as || setting == &bgp_speaker::router_id) return value != 0;
  if (setting == &bgp_speaker::keepalive_time) return value <= bgp_seconds_max;
  if (setting == &bgp_speaker::hold_time)
    return value == 0 || (value >= bgp_hold_time_min && value <= bgp_seconds_max);
  return true;
}

static void put(switch_model &model, bgp_setting setting, uint32_t value) {
  if (model.bgp->speaker.*setting != value) edit(model)->speaker.*setting = value;
}

open_error_t bgp_set(switch_model &model, bgp_setting setting, uint32_t value) {
  if (!is_good(setting, value)) return OPEN_E_PARAM;
  put(model, setting, value);
  return OPEN_E_NONE;
}

void bgp_restore(switch_model &model, bgp_setting setting) {
  put(model, setting, bgp_speaker().*setting);
}

/* --- Networks ------------------------------------------------------------------------------------------- */

bool bgp_route_map_name_valid(std::string_view name) {
  return !name.empty() && name.size() <= route_map_name_max && !has_control_character(name);
}

static bool is_ipv4_network(uint32_t address) {
  bool loopback = address >> 24 == 127;
  bool multicast = address >> 28 == 0xe;
  bool link_local = address >> 16 == 0xa9fe; /* RFC 3927: 169.254.0.0/16 */
  return !loopback && !multicast && !link_local;
}

static bool is_ipv6_network(const open_inet_addr_t &address) {
  const uint8_t *bytes = address.addr.ipv6.addr8, *last = bytes + 15;
  bool loopback = *last == 1 && std::all_of(bytes, last, [](uint8_t byte) { return byte == 0; });
  bool multicast = bytes[0] == 0xff;
  return !loopback && !multicast && !inet_link_local(address);
}

bool bgp_network_valid(const open_inet_pfx_t &network) {
  if (!inet_family_valid(network.ipAddr.family)) return false;
  bool ipv4 = network.ipAddr.family == OPEN_AF_INET;
  if (network.pfxLen > (ipv4 ? ipv4_bits : ipv6_bits)) return false;
  open_inet_addr_t address = inet_masked(network).ipAddr;
  return ipv4 ? is_ipv4_network(address.addr.ipv4) : is_ipv6_network(address);
}

open_error_t bgp_add_network(switch_model &model, const open_inet_pfx_t &network,
                             const bgp_route_map &route_map) {
  if (!bgp_network_valid(network)) return OPEN_E_PARAM;
  if (route_map && !bgp_route_map_name_valid(*route_map)) return OPEN_E_PARAM;
  open_inet_pfx_t masked = inet_masked(network);
  const auto &networks = model.bgp->networks;
  auto present = networks.find(masked);
  if (present != networks.end() && present->second == route_map) return OPEN_E_NONE;
  if (present == networks.end() && networks.size() >= model.limits.bgp_networks) return OPEN_E_FULL;
  edit(model)->networks[masked] = route_map;
  return OPEN_E_NONE;
}

open_error_t bgp_remove_network(switch_model &model, const open_inet_pfx_t &network) {
  if (!bgp_network_valid(network)) return OPEN_E_PARAM;
  open_inet_pfx_t masked = inet_masked(network);
  if (!model.bgp->networks.count(masked)) return OPEN_E_NOT_FOUND;
  edit(model)->networks.erase(masked);
  return OPEN_E_NONE;
}

/* --- Peers ---------------------------------------------------------------------------------------------- */

bool bgp_peer_id_valid(const bgp_peer_id &id) {
  if (id.address.family == OPEN_AF_INET) return id.scope == 0 && inet_is_host({id.address, ipv4_bits, 0});
  bool scope_missing = id.scope == 0 && inet_link_local(id.address);
  return !scope_missing && inet_is_host({id.address, ipv6_bits, 0});
}

open_error_t bgp_peer_id_check(const switch_model &model, const bgp_peer_id &id) {
  if (!bgp_peer_id_valid(id)) return OPEN_E_PARAM;
  bool reachable = id.scope == 0 || interface_addressable_check(model, id.scope) == OPEN_E_NONE;
  return reachable ? OPEN_E_NONE : OPEN_E_NOT_FOUND;
}

const bgp_peer *bgp_peer_find(const switch_model &model, const bgp_peer_id &id) {
  auto found = model.bgp->peers.find(id);
  return found == model.bgp->peers.end() ? nullptr : &found->second;
}

bool bgp_factory_active(const bgp_peer_id &id, uint32_t family) {
  return id.address.family == OPEN_AF_INET && family == OPEN_AF_INET;
}

open_error_t bgp_set_remote_as(switch_model &model, const bgp_peer_id &id, uint32_t as) {
  open_error_t rc = bgp_peer_id_check(model, id);
  if (rc != OPEN_E_NONE) return rc;
  if (as == 0) return OPEN_E_PARAM;
  const bgp_peer *present = bgp_peer_find(model, id);
  if (present && present->remote_as == as) return OPEN_E_NONE;
  if (!present && model.bgp->peers.size() >= model.limits.bgp_peers) return OPEN_E_FULL;
  bgp_peer wanted = present ? *present : bgp_peer();
  if (!present) wanted.families[bgp_family_index(OPEN_AF_INET)].active = bgp_factory_active(id, OPEN_AF_INET);
  wanted.remote_as = as;
  edit(model)->peers[id] = wanted;
  return OPEN_E_NONE;
}

open_error_t bgp_remove_peer(switch_model &model, const bgp_peer_id &id) {
  if (!bgp_peer_find(model, id)) return OPEN_E_NOT_FOUND;
  edit(model)->peers.erase(id);
  return OPEN_E_NONE;
}

open_error_t bgp_set_peer_family(switch_model &model, const bgp_peer_id &id, uint32_t family,
                                 bool bgp_peer_family::*what, bool on) {
  const bgp_peer *peer = bgp_peer_find(model, id);
  if (!peer) return OPEN_E_NOT_FOUND;
  uint32_t index = bgp_family_index(family);
  if (peer->families[index].*what != on) edit(model)->peers[id].families[index].*what = on;
  return OPEN_E_NONE;
}

open_error_t bgp_set_update_source(switch_model &model, const bgp_peer_id &id, uint32_t interface) {
  const bgp_peer *peer = bgp_peer_find(model, id);
  if (!peer) return OPEN_E_NOT_FOUND;
  open_error_t rc = interface == 0 ? OPEN_E_NONE : interface_addressable_check(model, interface);
  if (rc != OPEN_E_NONE || peer->update_source == interface) return rc;
  edit(model)->peers[id].update_source = interface;
  return OPEN_E_NONE;
}

bool bgp_uses_interface(const switch_model &model, uint32_t interface) {
  const auto &peers = model.bgp->peers;
  return std::any_of(peers.begin(), peers.end(), [&](const auto &entry) {
    return entry.first.scope == interface || entry.second.update_source == interface;
  });
}

/* --- Redistribution ------------------------------------------------------------------------------------- */

bool bgp_source_by_name(std::string_view name, uint32_t *source) {
  auto found = std::find(bgp_source_names.begin(), bgp_source_names.end(), name);
  *source = static_cast<uint32_t>(found - bgp_source_names.begin());
  return found != bgp_source_names.end();
}

/* Where the redistribution of a family's routes from a source is kept. */
template <typename Table> static auto &place_of(Table &table, uint32_t family, uint32_t source) {
  return table.redistributions[bgp_family_index(family)][source];
}

bool bgp_redistribution_valid(uint32_t source, const bgp_redistribution &wanted) {
  uint32_t matches = source == bgp_source_ospf ? known_matches : 0;
  if ((wanted.match & ~matches) != 0) return false;
  return !wanted.route_map || bgp_route_map_name_valid(*wanted.route_map);
}

open_error_t bgp_redistribute(switch_model &model, uint32_t family, uint32_t source,
                              const bgp_redistribution &wanted) {
  if (!bgp_redistribution_valid(source, wanted)) return OPEN_E_PARAM;
  if (place_of(*model.bgp, family, source) != wanted) place_of(*edit(model), family, source) = wanted;
  return OPEN_E_NONE;
}

open_error_t bgp_end_redistribution(switch_model &model, uint32_t family, uint32_t source) {
  if (!place_of(*model.bgp, family, source)) return OPEN_E_NOT_FOUND;
  place_of(*edit(model), family, source).reset();
  return OPEN_E_NONE;
}

} // namespace softswitch
