/* Applying and printing the lines about BGP; see bgp_lines.h. The rules are those of model/bgp.h; here they
 * get their words. Families are printed by their place among ipv4|ipv6, sources among
 * connected|static|ospf|rip. */
#include "platform/softswitch/config/bgp_lines.h"

#include "platform/api/openapi_bgp.h"
#include "platform/softswitch/config/clauses.h"

namespace softswitch {

/* --- Words ---------------------------------------------------------------------------------------------- */

static const char *const route_map_words = "the name of a route map is 1 to 31 bytes";

static std::string room_words(uint32_t limit, const char *what) {
  return "there is room for " + std::to_string(limit) + " BGP " + what + " only";
}

static const char *family_word(uint32_t family) {
  return family == OPEN_AF_INET ? "ipv4" : "ipv6";
}

static uint32_t family_of(const argument &choice) {
  return choice.number + OPEN_AF_INET;
}

/* --- bgp local-as <number>, and other settings of the speaker ------------------------------------------- */

static std::string range_words(bgp_setting setting) {
  if (setting == &bgp_speaker::hold_time) return "the hold time is 0 or 3..65535";
  if (setting == &bgp_speaker::keepalive_time) return "keepalive time out of range 0..65535";
  return "AS number out of range 1..4294967295";
}

open_error_t set_bgp_number(switch_model &model, bgp_setting setting, uint32_t value, std::string *error) {
  open_error_t rc = bgp_set(model, setting, value);
  if (rc == OPEN_E_PARAM) *error = range_words(setting);
  return rc;
}

void print_bgp_number(const config_printer &print, bgp_setting setting) {
  uint32_t value = print.model.bgp->speaker.*setting;
  if (value != bgp_speaker().*setting) print.line({value});
}

open_error_t apply_bgp_router_id(switch_model &model, std::span<const argument> arguments,
                                 std::string *error) {
  open_error_t rc = bgp_set(model, &bgp_speaker::router_id, arguments[0].prefix.ipAddr.addr.ipv4);
  if (rc == OPEN_E_PARAM) *error = "the router id is not 0.0.0.0";
  return rc;
}

void print_bgp_router_id(const config_printer &print) {
  uint32_t id = print.model.bgp->speaker.router_id;
  if (id != 0) print.line({inet_ipv4(id)});
}

open_error_t apply_bgp_log_neighbor_changes(switch_model &model, std::span<const argument>, std::string *) {
  return bgp_set(model, &bgp_speaker::log_neighbor_changes, OPEN_TRUE);
}

void print_bgp_log_neighbor_changes(const config_printer &print) {
  if (print.model.bgp->speaker.log_neighbor_changes != OPEN_FALSE) print.line({});
}

/* --- bgp network <network> ------------------------------------------------------------------------------ */

static open_error_t add_network(switch_model &model, const open_inet_pfx_t &network,
                                const bgp_route_map &route_map, std::string *error) {
  open_error_t rc = bgp_add_network(model, network, route_map);
  if (rc == OPEN_E_FULL) *error = room_words(model.limits.bgp_networks, "networks");
  if (rc != OPEN_E_PARAM) return rc;
  *error = route_map_words;
  if (!bgp_network_valid(network)) *error = inet_prefix_text(network) + " is not the address of a network";
  return rc;
}

/* The line says all of a network: without a route map, it has none. */
open_error_t apply_bgp_network(switch_model &model, std::span<const argument> arguments, std::string *error) {
  return add_network(model, arguments[0].prefix, std::nullopt, error);
}

open_error_t apply_bgp_network_with_route_map(switch_model &model, std::span<const argument> arguments,
                                              std::string *error) {
  return add_network(model, arguments[0].prefix, arguments[1].text, error);
}

open_error_t apply_no_bgp_network(switch_model &model, std::span<const argument> arguments,
                                  std::string *error) {
  open_error_t rc = bgp_remove_network(model, arguments[0].prefix);
  if (rc != OPEN_E_NONE) *error = "there is no BGP network " + inet_prefix_text(arguments[0].prefix);
  return rc;
}

void print_bgp_networks(const config_printer &print) {
  for (const auto &[network, route_map] : print.model.bgp->networks) {
    if (!route_map) print.line({network});
  }
}

void print_bgp_networks_with_route_map(const config_printer &print) {
  for (const auto &[network, route_map] : print.model.bgp->networks) {
    if (route_map) print.line({network, std::string_view(*route_map)});
  }
}

/* --- bgp neighbor <neighbor> remote-as <number> --------------------------------------------------------- */

static bgp_peer_id peer_of(std::span<const argument> arguments) {
  return {arguments[0].prefix.ipAddr, arguments[0].number};
}

static std::string neighbor_words(const switch_model &model, const bgp_peer_id &id) {
  std::string words = "BGP neighbor " + inet_address_text(id.address);
  return id.scope == 0 ? words : words + '%' + interface_name(model, id.scope);
}

/* Says which peer there is not; passes the code on. */
static open_error_t explain_absence(open_error_t rc, const switch_model &model, const bgp_peer_id &id,
                                    std::string *error) {
  if (rc == OPEN_E_NOT_FOUND) *error = "there is no " + neighbor_words(model, id);
  return rc;
}

/* Why an address that no peer is known by is none of a peer. */
static std::string address_words(const bgp_peer_id &id) {
  std::string address = inet_address_text(id.address);
  if (id.address.family == OPEN_AF_INET && id.scope != 0)
    return address + " is an IPv4 address: no interface stands behind it";
  if (id.scope == 0 && inet_link_local(id.address))
    return address + " is link-local: the interface stands behind it, as in " + address + "%0/1";
  return address + " is not the address of a host";
}

open_error_t apply_bgp_remote_as(switch_model &model, std::span<const argument> arguments,
                                 std::string *error) {
  bgp_peer_id id = peer_of(arguments);
  open_error_t rc = bgp_set_remote_as(model, id, arguments[1].number);
  if (rc == OPEN_E_NOT_FOUND) *error = interface_name(model, id.scope) + " cannot have IP addresses";
  if (rc == OPEN_E_FULL) *error = room_words(model.limits.bgp_peers, "neighbors");
  if (rc == OPEN_E_PARAM)
    *error = bgp_peer_id_valid(id) ? range_words(&bgp_speaker::local_as) : address_words(id);
  return rc;
}

open_error_t apply_no_bgp_neighbor(switch_model &model, std::span<const argument> arguments,
                                   std::string *error) {
  bgp_peer_id id = peer_of(arguments);
  return explain_absence(bgp_remove_peer(model, id), model, id, error);
}

void print_bgp_remote_as(const config_printer &print) {
  for (const auto &[id, peer] : print.model.bgp->peers) print.line({id, peer.remote_as});
}

/* --- bgp neighbor <neighbor> activate ipv4|ipv6, likewise next-hop-self --------------------------------- */

static open_error_t set_family(switch_model &model, std::span<const argument> arguments,
                               bool bgp_peer_family::*what, bool on, std::string *error) {
  bgp_peer_id id = peer_of(arguments);
  open_error_t rc = bgp_set_peer_family(model, id, family_of(arguments[1]), what, on);
  return explain_absence(rc, model, id, error);
}

/* Prints the families of peers for which `wanted` holds. */
template <typename Wanted> static void print_families(const config_printer &print, Wanted wanted) {
  for (const auto &[id, peer] : print.model.bgp->peers) {
    for (uint32_t family : {OPEN_AF_INET, OPEN_AF_INET6}) {
      if (wanted(peer.families[bgp_family_index(family)], bgp_factory_active(id, family)))
        print.line({id, bgp_family_index(family)});
    }
  }
}

open_error_t apply_bgp_activate(switch_model &model, std::span<const argument> arguments,
                                std::string *error) {
  return set_family(model, arguments, &bgp_peer_family::active, true, error);
}

open_error_t apply_no_bgp_activate(switch_model &model, std::span<const argument> arguments,
                                   std::string *error) {
  return set_family(model, arguments, &bgp_peer_family::active, false, error);
}

void print_bgp_activated(const config_printer &print) {
  print_families(print,
                 [](const bgp_peer_family &family, bool factory) { return family.active && !factory; });
}

void print_bgp_deactivated(const config_printer &print) {
  print_families(print,
                 [](const bgp_peer_family &family, bool factory) { return !family.active && factory; });
}

open_error_t apply_bgp_next_hop_self(switch_model &model, std::span<const argument> arguments,
                                     std::string *error) {
  return set_family(model, arguments, &bgp_peer_family::next_hop_self, true, error);
}

open_error_t apply_no_bgp_next_hop_self(switch_model &model, std::span<const argument> arguments,
                                        std::string *error) {
  return set_family(model, arguments, &bgp_peer_family::next_hop_self, false, error);
}

void print_bgp_next_hop_self(const config_printer &print) {
  print_families(print, [](const bgp_peer_family &family, bool) { return family.next_hop_self; });
}

/* --- bgp neighbor <neighbor> update-source <interface> -------------------------------------------------- */

static open_error_t set_update_source(switch_model &model, const bgp_peer_id &id, uint32_t interface,
                                      std::string *error) {
  open_error_t rc = bgp_set_update_source(model, id, interface);
  if (rc == OPEN_E_UNAVAIL) *error = interface_name(model, interface) + " cannot have IP addresses";
  return explain_absence(rc, model, id, error);
}

open_error_t apply_bgp_update_source(switch_model &model, std::span<const argument> arguments,
                                     std::string *error) {
  return set_update_source(model, peer_of(arguments), arguments[1].number, error);
}

open_error_t apply_no_bgp_update_source(switch_model &model, std::span<const argument> arguments,
                                        std::string *error) {
  return set_update_source(model, peer_of(arguments), 0, error);
}

void print_bgp_update_sources(const config_printer &print) {
  for (const auto &[id, peer] : print.model.bgp->peers) {
    if (peer.update_source != 0) print.line({id, peer.update_source});
  }
}

/* --- bgp redistribute ipv4|ipv6 connected|static|ospf|rip ... ------------------------------------------- */

using values = std::span<const argument>;
using value_list = std::vector<argument>;

template <uint32_t Bit> static void set_match(bgp_redistribution *wanted, values) {
  wanted->match |= Bit;
}

template <uint32_t Bit> static bool get_match(const bgp_redistribution &from, value_list *) {
  return (from.match & Bit) != 0;
}

static void set_metric(bgp_redistribution *wanted, values given) {
  wanted->metric = given[0].number;
}

static bool get_metric(const bgp_redistribution &from, value_list *list) {
  if (from.metric) list->emplace_back(*from.metric);
  return from.metric.has_value();
}

static void set_route_map(bgp_redistribution *wanted, values given) {
  wanted->route_map = given[0].text;
}

static bool get_route_map(const bgp_redistribution &from, value_list *list) {
  if (from.route_map) list->emplace_back(std::string_view(*from.route_map));
  return from.route_map.has_value();
}

static constexpr clause<bgp_redistribution> clauses[] = {
    {"match-internal", set_match<OPEN_OSPF_MATCH_INTERNAL>, get_match<OPEN_OSPF_MATCH_INTERNAL>},
    {"match-external-1", set_match<OPEN_OSPF_MATCH_EXTERNAL_1>, get_match<OPEN_OSPF_MATCH_EXTERNAL_1>},
    {"match-external-2", set_match<OPEN_OSPF_MATCH_EXTERNAL_2>, get_match<OPEN_OSPF_MATCH_EXTERNAL_2>},
    {"match-nssa-external-1", set_match<OPEN_OSPF_MATCH_NSSA_EXTERNAL_1>,
     get_match<OPEN_OSPF_MATCH_NSSA_EXTERNAL_1>},
    {"match-nssa-external-2", set_match<OPEN_OSPF_MATCH_NSSA_EXTERNAL_2>,
     get_match<OPEN_OSPF_MATCH_NSSA_EXTERNAL_2>},
    {"metric <number>", set_metric, get_metric},
    {"route-map <text>", set_route_map, get_route_map},
};

/* The line says all of a redistribution: what it does not name is as in factory state. */
open_error_t apply_bgp_redistribute(switch_model &model, std::span<const argument> arguments,
                                    std::string *error) {
  bgp_redistribution wanted;
  if (!read_clauses<bgp_redistribution>(model, clauses, arguments[2].words, &wanted, error))
    return OPEN_E_PARAM;
  open_error_t rc = bgp_redistribute(model, family_of(arguments[0]), arguments[1].number, wanted);
  bool foreign_match = wanted.match != 0 && arguments[1].number != bgp_source_ospf;
  if (rc == OPEN_E_PARAM) *error = foreign_match ? "only OSPF routes can be matched" : route_map_words;
  return rc;
}

open_error_t apply_no_bgp_redistribute(switch_model &model, std::span<const argument> arguments,
                                       std::string *error) {
  uint32_t family = family_of(arguments[0]), source = arguments[1].number;
  open_error_t rc = bgp_end_redistribution(model, family, source);
  if (rc == OPEN_E_NOT_FOUND)
    *error = std::string(family_word(family)) + " routes from " + std::string(bgp_source_names[source]) +
             " are not redistributed";
  return rc;
}

std::vector<argument> bgp_redistribution_arguments(const switch_model &model, uint32_t family,
                                                   uint32_t source, const bgp_redistribution &wanted) {
  std::string words = print_clauses<bgp_redistribution>(model, clauses, wanted);
  return {bgp_family_index(family), source, std::string_view(words)};
}

void print_bgp_redistributions(const config_printer &print) {
  for (uint32_t family : {OPEN_AF_INET, OPEN_AF_INET6}) {
    const auto &sources = print.model.bgp->redistributions[bgp_family_index(family)];
    for (uint32_t source = 0; source < sources.size(); source++) {
      if (sources[source])
        print.line(bgp_redistribution_arguments(print.model, family, source, *sources[source]));
    }
  }
}

} // namespace softswitch
