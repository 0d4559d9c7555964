/* BGP (RFC 4271) as configured: the speaker, the networks that it originates, its peers, and what it
 * redistributes from other protocols. No session runs: the settings are kept, checked and shown.
 *
 * Unless a function says otherwise: OPEN_E_PARAM for a value out of range; OPEN_E_NOT_FOUND when there is no
 * such peer, network or redistribution; OPEN_E_FULL for no room. An operation that finds everything as wanted
 * changes nothing. Nothing here makes an interface pending. */
#ifndef KESTREL_SOFTSWITCH_MODEL_BGP_H
#define KESTREL_SOFTSWITCH_MODEL_BGP_H

#include "platform/softswitch/model/inet_address.h"
#include "platform/softswitch/model/limits.h"

#include <array>
#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <string_view>

namespace softswitch {

struct switch_model;

/* --- What is configured --------------------------------------------------------------------------------- */

/* In factory state. */
struct bgp_speaker {
  uint32_t local_as = 0;        /* number of the own autonomous system; 0: none, the speaker does not run */
  uint32_t router_id = 0;       /* BGP identifier, an IPv4 address in host byte order; 0: none */
  uint32_t hold_time = 90;      /* seconds; 0: sessions are not watched */
  uint32_t keepalive_time = 30; /* seconds; 0: none are sent */
  uint32_t local_preference = 100;
  uint32_t log_neighbor_changes = OPEN_FALSE; /* OPEN_BOOL_t */
};
/* One of its settings. */
using bgp_setting = uint32_t bgp_speaker::*;

/* The name of a route map, which need not exist, that routes pass. */
using bgp_route_map = std::optional<std::string>;

/* What a peer is known by. */
struct bgp_peer_id {
  open_inet_addr_t address;
  uint32_t scope; /* number of the interface by which an IPv6 address is reached (RFC 4007), or 0 */
};

/* What is exchanged with a peer of the routes of one family. */
struct bgp_peer_family {
  bool active = false;
  bool next_hop_self = false; /* the switch names itself as their next hop */
};

struct bgp_peer {
  uint32_t remote_as = 0;
  uint32_t update_source = 0;                   /* interface whose address sessions come from; 0: any */
  std::array<bgp_peer_family, 2> families = {}; /* by bgp_family_index() */
};

/* The protocols that routes are redistributed from are known by their place in this list. */
inline constexpr std::array<std::string_view, 4> bgp_source_names = {"connected", "static", "ospf", "rip"};
inline constexpr uint32_t bgp_source_ospf = 2;

struct bgp_redistribution {
  uint32_t match = 0;             /* bits OPEN_OSPF_MATCH_...: these OSPF routes alone; 0: all routes */
  std::optional<uint32_t> metric; /* MULTI_EXIT_DISC that they are told with */
  bgp_route_map route_map;
  bool operator==(const bgp_redistribution &) const = default;
};

/* By family, address and prefix length; by family, address and scope. */
struct bgp_order {
  bool operator()(const open_inet_pfx_t &one, const open_inet_pfx_t &other) const;
  bool operator()(const bgp_peer_id &one, const bgp_peer_id &other) const;
};

struct bgp_table {
  bgp_speaker speaker;
  std::map<open_inet_pfx_t, bgp_route_map, bgp_order> networks; /* masked */
  std::map<bgp_peer_id, bgp_peer, bgp_order> peers;
  /* By bgp_family_index() and source. */
  std::array<std::array<std::optional<bgp_redistribution>, bgp_source_names.size()>, 2> redistributions;
};

/* Returns everything to factory state. interfaces_reset() notes the change. */
void bgp_reset(switch_model &model);

/* The place of IPv4 or IPv6 in tables by family, and among the words ipv4|ipv6. */
inline uint32_t bgp_family_index(uint32_t family) {
  return family - OPEN_AF_INET;
}

/* --- The speaker ---------------------------------------------------------------------------------------- */

/* Sets one of the speaker's settings. That there is no AS and no router id comes by bgp_restore() alone. */
open_error_t bgp_set(switch_model &model, bgp_setting setting, uint32_t value);
/* Returns one to factory state. */
void bgp_restore(switch_model &model, bgp_setting setting);

/* --- Networks ------------------------------------------------------------------------------------------- */

/* Whether the name of a route map is 1..31 bytes without control characters. */
bool bgp_route_map_name_valid(std::string_view name);
/* Whether this, masked, can be originated: no multicast, loopback or link-local address. Prefixes of length 0
 * can. */
bool bgp_network_valid(const open_inet_pfx_t &network);

/* Originates a network, with the route map in the place of the one before. Bits behind the prefix do not
 * count. OPEN_E_PARAM: what bgp_network_valid() or bgp_route_map_name_valid() refuses. */
open_error_t bgp_add_network(switch_model &model, const open_inet_pfx_t &network,
                             const bgp_route_map &route_map);
open_error_t bgp_remove_network(switch_model &model, const open_inet_pfx_t &network);

/* --- Peers ---------------------------------------------------------------------------------------------- */

/* Whether a peer can be known by this: a host's address, without a scope when it is IPv4 and with one when it
 * is link-local. The scope need not be an interface. */
bool bgp_peer_id_valid(const bgp_peer_id &id);
/* Whether there can be such a peer, now: OPEN_E_PARAM for what bgp_peer_id_valid() refuses, OPEN_E_NOT_FOUND
 * when the scope is no interface that can have addresses. */
open_error_t bgp_peer_id_check(const switch_model &model, const bgp_peer_id &id);
/* nullptr when there is none. */
const bgp_peer *bgp_peer_find(const switch_model &model, const bgp_peer_id &id);

/* Sets a peer's autonomous system; makes the peer when it is not there. Answers as bgp_peer_id_check(); then
 * OPEN_E_PARAM for AS 0. */
open_error_t bgp_set_remote_as(switch_model &model, const bgp_peer_id &id, uint32_t as);
/* Removes a peer with its settings. */
open_error_t bgp_remove_peer(switch_model &model, const bgp_peer_id &id);

/* Whether routes of a family are exchanged with a peer in factory state: IPv4 routes with IPv4 peers. */
bool bgp_factory_active(const bgp_peer_id &id, uint32_t family);
/* Turns something about a family, which is valid, on or off. */
open_error_t bgp_set_peer_family(switch_model &model, const bgp_peer_id &id, uint32_t family,
                                 bool bgp_peer_family::*what, bool on);
/* Sets the update source; 0 for none. Otherwise answers as interface_addressable_check(). */
open_error_t bgp_set_update_source(switch_model &model, const bgp_peer_id &id, uint32_t interface);

/* Whether this is the scope or update source of a peer, which keeps the interface from being removed. */
bool bgp_uses_interface(const switch_model &model, uint32_t interface);

/* --- Redistribution ------------------------------------------------------------------------------------- */

/* The source with this name; false when there is none. */
bool bgp_source_by_name(std::string_view name, uint32_t *source);

/* Whether routes from a source can be redistributed so: known bits, none for another source than OSPF, and a
 * route map that passes bgp_route_map_name_valid(). */
bool bgp_redistribution_valid(uint32_t source, const bgp_redistribution &wanted);
/* Redistributes the routes of a family, which is valid, from a source as this says, in the place of what was
 * said before. OPEN_E_PARAM: what bgp_redistribution_valid() refuses. */
open_error_t bgp_redistribute(switch_model &model, uint32_t family, uint32_t source,
                              const bgp_redistribution &wanted);
/* Ends that. */
open_error_t bgp_end_redistribution(switch_model &model, uint32_t family, uint32_t source);

} // namespace softswitch

#endif
