/* Placeholders of the configuration language; see placeholders.h. */
#include "platform/softswitch/config/placeholders.h"

#include "platform/softswitch/model/interface_settings.h"
#include "platform/softswitch/model/text.h"

#include <algorithm>

namespace softswitch {

/* A printed list has at most this many ranges ("4000-4094," is 10 bytes), which keeps lines readable. */
static constexpr size_t ranges_per_line = 8;

/* --- Numbers -------------------------------------------------------------------------------------------- */

static bool read_vlan_id(std::string_view text, uint32_t *id, std::string *error) {
  if (!decimal_read(text, id)) {
    *error = "\"" + std::string(text) + "\" is not a VLAN id";
    return false;
  }
  if (vlan_id_valid(*id)) return true;
  *error = "VLAN id out of range 1..4094";
  return false;
}

static std::string print_number(const switch_model &, const argument &from) {
  return std::to_string(from.number);
}

static bool read_vlan(const switch_model &, const token &from, argument *into, std::string *error) {
  return read_vlan_id(from.text, &into->number, error);
}

/* Any number of 32 bits; which are good is for the setting to say. */
static bool read_plain_number(const switch_model &, const token &from, argument *into, std::string *error) {
  if (!decimal_read(from.text, &into->number)) {
    *error = "\"" + from.text + "\" is not a number";
    return false;
  }
  if (std::to_string(into->number) == from.text) return true;
  *error = "the number " + from.text + " is too large";
  return false;
}

/* --- Lists ---------------------------------------------------------------------------------------------- */

static bool read_range(std::string_view text, vlan_set *ids, std::string *error) {
  size_t dash = text.find('-');
  uint32_t first, last;
  if (!read_vlan_id(text.substr(0, dash), &first, error)) return false;
  if (dash == std::string_view::npos) {
    last = first;
  } else if (!read_vlan_id(text.substr(dash + 1), &last, error)) {
    return false;
  }
  if (first > last) {
    *error = "the range " + std::string(text) + " runs backwards";
    return false;
  }
  for (uint32_t id = first; id <= last; id++) ids->set(id);
  return true;
}

bool read_vlan_list(std::string_view text, id_list *ids, std::string *error) {
  vlan_set found;
  for (;;) {
    size_t comma = text.find(',');
    if (!read_range(text.substr(0, comma), &found, error)) return false;
    if (comma == std::string_view::npos) break;
    text.remove_prefix(comma + 1);
  }
  for (uint32_t id = vlan_id_min; id <= vlan_id_max; id++) {
    if (found[id]) ids->push_back(id);
  }
  return true;
}

static bool read_list(const switch_model &, const token &from, argument *into, std::string *error) {
  return read_vlan_list(from.text, &into->list, error);
}

/* The index of the last id of the range that begins at `first`. */
static size_t range_end(const id_list &list, size_t first) {
  size_t last = first;
  while (last + 1 < list.size() && list[last + 1] == list[last] + 1) last++;
  return last;
}

static std::string print_list(const switch_model &model, const argument &from) {
  if (from.list.empty()) return print_number(model, from);
  std::string folded;
  for (size_t first = 0, last; first < from.list.size(); first = last + 1) {
    last = range_end(from.list, first);
    if (!folded.empty()) folded += ',';
    folded += std::to_string(from.list[first]);
    if (last > first) folded += '-' + std::to_string(from.list[last]);
  }
  return folded;
}

std::vector<id_list> split_list(const id_list &list) {
  std::vector<id_list> parts;
  size_t ranges = 0;
  for (size_t first = 0, last; first < list.size(); first = last + 1) {
    last = range_end(list, first);
    if (ranges++ % ranges_per_line == 0) parts.emplace_back();
    parts.back().insert(parts.back().end(), list.begin() + static_cast<std::ptrdiff_t>(first),
                        list.begin() + static_cast<std::ptrdiff_t>(last + 1));
  }
  return parts;
}

/* --- Interfaces and texts ------------------------------------------------------------------------------- */

static bool read_interface(const switch_model &model, const token &from, argument *into, std::string *error) {
  into->number = interface_by_name(model, from.text);
  if (into->number != 0) return true;
  *error = "there is no interface \"" + from.text + "\"";
  return false;
}

static bool read_port(const switch_model &model, const token &from, argument *into, std::string *error) {
  into->number = interface_by_name(model, from.text);
  if (interface_switches(model, into->number)) return true;
  *error = "there is no port or LAG \"" + from.text + "\"";
  return false;
}

static std::string print_interface(const switch_model &model, const argument &from) {
  return quote_token(interface_name(model, from.number));
}

static bool read_port_channel(const switch_model &, const token &from, argument *into, std::string *error) {
  if (!decimal_read(from.text, &into->number)) {
    *error = "\"" + from.text + "\" is not a port-channel id";
    return false;
  }
  if (lag_of_port_channel(into->number) != 0) return true;
  *error = "port-channel id out of range 1.." + std::to_string(port_channel_max);
  return false;
}

static bool read_text(const switch_model &, const token &from, argument *into, std::string *) {
  into->text = from.text;
  return true;
}

static std::string print_text(const switch_model &, const argument &from) {
  return quote_token(from.text);
}

/* --- Addresses ------------------------------------------------------------------------------------------ */

static bool read_mac(const switch_model &, const token &from, argument *into, std::string *error) {
  if (station_mac_read(from.text, &into->mac)) return true;
  *error = "\"" + from.text + "\" is not the MAC address of a station";
  return false;
}

static bool read_any_mac(const switch_model &, const token &from, argument *into, std::string *error) {
  if (mac_read(from.text, &into->mac)) return true;
  *error = "\"" + from.text + "\" is not a MAC address";
  return false;
}

static std::string print_mac(const switch_model &, const argument &from) {
  return mac_text(from.mac);
}

static bool read_hex_byte(const switch_model &, const token &from, argument *into, std::string *error) {
  if (hex_byte_read(from.text, &into->number)) return true;
  *error = "\"" + from.text + "\" is not two hexadecimal digits";
  return false;
}

static std::string print_hex_byte(const switch_model &, const argument &from) {
  return hex_byte_text(from.number);
}

/* Reads an address of a family; any address, as it may be a mask. */
static bool read_address(const std::string &text, OPEN_AF_t family, open_inet_addr_t *address,
                         std::string *error) {
  if (inet_address_read(text, address) && address->family == family) return true;
  *error = "\"" + text + "\" is not an " + (family == OPEN_AF_INET ? "IPv4" : "IPv6") + " address";
  return false;
}

static bool read_ip(const switch_model &, const token &from, argument *into, std::string *error) {
  return read_address(from.text, OPEN_AF_INET, &into->prefix.ipAddr, error);
}

static bool read_ipv6(const switch_model &, const token &from, argument *into, std::string *error) {
  return read_address(from.text, OPEN_AF_INET6, &into->prefix.ipAddr, error);
}

static std::string print_address(const switch_model &, const argument &from) {
  return inet_address_text(from.prefix.ipAddr);
}

static bool check_prefix_length(uint32_t length, uint32_t shortest, uint32_t bits, std::string *error) {
  if (length >= shortest && length <= bits) return true;
  *error = "prefix length out of range " + std::to_string(shortest) + ".." + std::to_string(bits);
  return false;
}

/* Reads an address of a family with a prefix of 1 to `bits` bits. */
static bool read_prefix(const std::string &text, OPEN_AF_t family, uint32_t bits, open_inet_pfx_t *prefix,
                        std::string *error) {
  if (inet_prefix_read(text, prefix) && prefix->ipAddr.family == family)
    return check_prefix_length(prefix->pfxLen, 1, bits, error);
  const char *kind = family == OPEN_AF_INET ? "IPv4" : "IPv6";
  *error = "\"" + text + "\" is not an " + kind + " address with a prefix length";
  return false;
}

static bool read_ip_prefix(const switch_model &, const token &from, argument *into, std::string *error) {
  return read_prefix(from.text, OPEN_AF_INET, ipv4_bits, &into->prefix, error);
}

static bool read_ipv6_prefix(const switch_model &, const token &from, argument *into, std::string *error) {
  return read_prefix(from.text, OPEN_AF_INET6, ipv6_bits, &into->prefix, error);
}

static std::string print_prefix(const switch_model &, const argument &from) {
  return inet_prefix_text(from.prefix);
}

/* --- Networks and neighbors ----------------------------------------------------------------------------- */

static bool read_network(const switch_model &, const token &from, argument *into, std::string *error) {
  open_inet_pfx_t network = {};
  if (!inet_prefix_read(from.text, &network)) {
    *error = "\"" + from.text + "\" is not an IP address with a prefix length";
    return false;
  }
  uint32_t bits = network.ipAddr.family == OPEN_AF_INET ? ipv4_bits : ipv6_bits;
  if (!check_prefix_length(network.pfxLen, 0, bits, error)) return false;
  into->prefix = inet_masked(network);
  return true;
}

static std::string print_network(const switch_model &, const argument &from) {
  return inet_prefix_text(inet_masked(from.prefix));
}

/* Reads an address with, maybe, the interface by which it is reached (RFC 4007 section 11): "fe80::1%0/3". */
static bool read_neighbor(const switch_model &model, const token &from, argument *into, std::string *error) {
  size_t percent = from.text.find('%');
  if (!inet_address_read(from.text.substr(0, percent), &into->prefix.ipAddr)) {
    *error = "\"" + from.text + "\" is not an IP address";
    return false;
  }
  if (percent == std::string::npos) return true;
  return read_interface(model, {from.text.substr(percent + 1)}, into, error);
}

static std::string print_neighbor(const switch_model &model, const argument &from) {
  std::string text = inet_address_text(from.prefix.ipAddr);
  return from.number == 0 ? text : quote_token(text + '%' + interface_name(model, from.number));
}

/* --- Speeds --------------------------------------------------------------------------------------------- */

static bool read_speed(const switch_model &, const token &from, argument *into, std::string *error) {
  const port_speed *speed = port_speed_by_word(from.text);
  if (speed) {
    into->number = speed->code;
    return true;
  }
  *error = "\"" + from.text + "\" is no speed; there are";
  for (const port_speed &known : port_speeds()) *error += " " + std::string(known.word);
  return false;
}

/* Empty for a code that is no speed of ports. */
static std::string print_speed(const switch_model &, const argument &from) {
  const port_speed *speed = port_speed_by_code(from.number);
  return speed ? std::string(speed->word) : "";
}

/* --- One of several words ------------------------------------------------------------------------------- */

/* Takes the next word off the front of "a|b|c". */
static std::string_view take_word(std::string_view *words) {
  size_t bar = words->find('|');
  std::string_view word = words->substr(0, bar);
  words->remove_prefix(bar == std::string_view::npos ? words->size() : bar + 1);
  return word;
}

static bool read_choice(std::string_view words, const token &from, argument *into, std::string *error) {
  std::string_view rest = words;
  for (into->number = 0; !rest.empty(); into->number++) {
    if (take_word(&rest) == from.text && !from.quoted) return true;
  }
  *error = "\"" + from.text + "\" is none of " + std::string(words);
  return false;
}

/* Empty for a number that stands for no word. */
static std::string print_choice(std::string_view words, uint32_t number) {
  std::string_view rest = words;
  for (uint32_t skip = number; skip > 0 && !rest.empty(); skip--) take_word(&rest);
  return std::string(take_word(&rest));
}

/* --- The kinds ------------------------------------------------------------------------------------------ */

struct placeholder {
  std::string_view word;
  bool (*read)(const switch_model &, const token &from, argument *into, std::string *error);
  std::string (*print)(const switch_model &, const argument &from);
};

static constexpr placeholder placeholders[] = {
    {"<vlan>", read_vlan, print_number},
    {"<vlan-list>", read_list, print_list},
    {"<interface>", read_interface, print_interface},
    {"<port>", read_port, print_interface},
    {"<port-channel>", read_port_channel, print_number},
    {"<mac>", read_mac, print_mac},
    {"<any-mac>", read_any_mac, print_mac},
    {"<ip>", read_ip, print_address},
    {"<ipv6>", read_ipv6, print_address},
    {"<hex-byte>", read_hex_byte, print_hex_byte},
    {"<ip-prefix>", read_ip_prefix, print_prefix},
    {"<ipv6-prefix>", read_ipv6_prefix, print_prefix},
    {"<network>", read_network, print_network},
    {"<neighbor>", read_neighbor, print_neighbor},
    {"<text>", read_text, print_text},
    {"<number>", read_plain_number, print_number},
    {"<speed>", read_speed, print_speed},
};

static const placeholder *find_placeholder(std::string_view word) {
  auto row = std::find_if(std::begin(placeholders), std::end(placeholders),
                          [&](const placeholder &candidate) { return candidate.word == word; });
  return row == std::end(placeholders) ? nullptr : row;
}

static bool is_choice(std::string_view word) {
  return word.find('|') != std::string_view::npos;
}

bool is_placeholder(std::string_view word) {
  return is_choice(word) || find_placeholder(word);
}

bool read_placeholder(std::string_view word, const switch_model &model, const token &from, argument *into,
                      std::string *error) {
  if (is_choice(word)) return read_choice(word, from, into, error);
  return find_placeholder(word)->read(model, from, into, error);
}

std::string print_placeholder(std::string_view word, const switch_model &model, const argument &from) {
  if (is_choice(word)) return print_choice(word, from.number);
  return find_placeholder(word)->print(model, from);
}

} // namespace softswitch
