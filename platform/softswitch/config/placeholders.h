/* What may stand in a line of the configuration language besides keywords: VLAN ids, lists, ports, addresses,
 * texts, one of several words. Each kind is one row that reads it and prints it. */
#ifndef KESTREL_SOFTSWITCH_CONFIG_PLACEHOLDERS_H
#define KESTREL_SOFTSWITCH_CONFIG_PLACEHOLDERS_H

#include "platform/softswitch/config/tokens.h"
#include "platform/softswitch/model/switch.h"

#include <string>
#include <string_view>
#include <vector>

namespace softswitch {

/* Numbers in ascending order, each once. */
using id_list = std::vector<uint32_t>;

/* What a placeholder stands for. Which member holds it is said by the kind:
 *   <vlan>        number
 *   <vlan-list>   list; for printing a single VLAN may be given as number
 *   <interface>   number
 *   <port>        number: a port or LAG
 *   <port-channel> number: a port-channel id; its LAG need not exist
 *   <mac>         mac
 *   <any-mac>     mac: also zero, a group address, a mask
 *   <ip>, <ipv6>  prefix: its address, of the family
 *   <hex-byte>    number
 *   <ip-prefix>, <ipv6-prefix>  prefix, of the family
 *   <network>     prefix: of either family, masked
 *   <neighbor>    prefix: its address, of either family; number: the interface behind "%", or 0
 *   <text>        text
 *   <number>      number
 *   <speed>       number: OPEN_IF_SPEED_t
 *   a|b|c         number: 0 for a, 1 for b, ...
 *   ...           words: all that follow, maybe none (config/clauses.h); for printing text */
struct argument {
  argument() = default;
  argument(uint32_t value) : number(value) {}
  argument(std::string_view value) : text(value) {}
  argument(id_list value) : list(std::move(value)) {}
  argument(const mac_address &value) : mac(value) {}
  argument(const open_inet_pfx_t &value) : prefix(value) {}
  argument(const open_inet_addr_t &value) : prefix{value, 0, 0} {}
  argument(const bgp_peer_id &value) : number(value.scope), prefix{value.address, 0, 0} {}

  uint32_t number = 0;
  std::string text;
  id_list list;
  mac_address mac = {};
  open_inet_pfx_t prefix = {};
  std::vector<token> words;
};

/* Reads VLAN ids as they stand for <vlan-list>; false with the reason for any other text. */
bool read_vlan_list(std::string_view text, id_list *ids, std::string *error);

/* Says whether a word of a pattern is a placeholder and not a keyword. */
bool is_placeholder(std::string_view word);
/* Reads a token as the placeholder; false with the reason when it is none. */
bool read_placeholder(std::string_view word, const switch_model &model, const token &from, argument *into,
                      std::string *error);
/* The token for an argument. */
std::string print_placeholder(std::string_view word, const switch_model &model, const argument &from);

/* Cuts a list into parts that each print as a token of reasonable length; no part for an empty list. */
std::vector<id_list> split_list(const id_list &list);

} // namespace softswitch

#endif
