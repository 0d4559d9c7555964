/* The chassis profile as JSON; see profile.h. What a profile may hold is said by the member tables below: a
 * new member is a row in one of them, and a reading function where its kind is new. */
#include "platform/softswitch/services/profile.h"

#include "platform/softswitch/model/inet_address.h"
#include "platform/softswitch/model/mac_address.h"
#include "platform/softswitch/services/files.h"
#include "platform/softswitch/services/json_lines.h"

#include <algorithm>
#include <errno.h>
#include <fcntl.h>
#include <json-c/json.h>
#include <memory>
#include <span>
#include <string.h>

namespace softswitch {

static constexpr size_t ports_max = 54;
static constexpr size_t file_size_max = size_t{128} * 1024;
/* Texts go out through 256-byte buffers, terminator included. */
static constexpr size_t text_size_max = 255;
/* A profile is three levels deep; json-c recurses, so a hostile file must not choose the depth. */
static constexpr int json_depth_max = 8;

struct json_releaser {
  void operator()(json_object *object) const { json_object_put(object); }
  void operator()(json_tokener *tokener) const { json_tokener_free(tokener); }
};
using json_guard = std::unique_ptr<json_object, json_releaser>;
using tokener_guard = std::unique_ptr<json_tokener, json_releaser>;

/* --- Built in ------------------------------------------------------------------------------------------- */

chassis_profile built_in_profile() {
  chassis_profile profile;
  profile.model = "Kestrel-Softswitch-54";
  profile.serial = "KS0000000001";
  profile.mac = "02:00:5E:10:00:01";
  profile.description = "Kestrel software switch, 48 x 10G SFP+ and 6 x 40G QSFP";
  profile.os_version = "0.1.0";
  profile.storage = "flash";
  for (int number = 1; number <= 54; number++) {
    port_profile port;
    port.name = "0/" + std::to_string(number);
    port.speed_mbps = number <= 48 ? 10000 : 40000;
    profile.ports.push_back(port);
  }
  return profile;
}

/* --- Reading values ------------------------------------------------------------------------------------- */

/* A reading in progress: where lines are looked up and the first mistake is noted. */
struct profile_reader {
  const std::string &file;
  const json_line_index &index;
  std::string *error;
};

/* A value with its path in the file ("ports[2].name"). Null JSON values are null pointers. */
struct profile_value {
  json_object *object;
  std::string path;
};

/* Notes a mistake; false, so that callers can return it. */
static bool mistake(profile_reader &reader, const std::string &path, const std::string &reason) {
  auto line = reader.index.lines.find(path);
  *reader.error = reader.file + ":";
  if (line != reader.index.lines.end()) *reader.error += std::to_string(line->second) + ":";
  *reader.error += " " + (path.empty() ? "the profile" : path) + " " + reason;
  return false;
}

static bool read_bool(profile_reader &reader, const profile_value &value, bool *target) {
  if (!json_object_is_type(value.object, json_type_boolean))
    return mistake(reader, value.path, "must be true or false");
  *target = json_object_get_boolean(value.object);
  return true;
}

static bool read_text(profile_reader &reader, const profile_value &value, std::string *target) {
  bool good = json_object_is_type(value.object, json_type_string);
  std::string text;
  if (good) text.assign(json_object_get_string(value.object), json_object_get_string_len(value.object));
  good = good && !text.empty() && text.size() <= text_size_max;
  for (unsigned char c : text) good = good && c >= 0x20 && c != 0x7f;
  if (!good)
    return mistake(reader, value.path, "must be a text of 1 to 255 bytes without control characters");
  *target = text;
  return true;
}

static bool read_mac(profile_reader &reader, const profile_value &value, std::string *target) {
  std::string text;
  mac_address mac;
  if (!read_text(reader, value, &text)) return false;
  if (!station_mac_read(text, &mac))
    return mistake(reader, value.path, "must be a station's MAC address like \"02:00:5E:10:00:01\"");
  *target = mac_text(mac);
  return true;
}

static bool read_network_mask(profile_reader &reader, const profile_value &value, uint32_t *target) {
  std::string text;
  open_inet_addr_t mask;
  uint32_t length;
  if (!read_text(reader, value, &text)) return false;
  bool good = inet_address_read(text, &mask) && mask.family == OPEN_AF_INET &&
              ipv4_mask_length(mask.addr.ipv4, &length) && length > 0;
  if (!good) return mistake(reader, value.path, "must be a network mask like \"255.255.255.0\"");
  *target = mask.addr.ipv4;
  return true;
}

/* "0/" and a number without leading zeros: other units' numbers are LAGs and other interfaces without a
 * cable. */
static bool read_port_name(profile_reader &reader, const profile_value &value, std::string *target) {
  std::string text;
  if (!read_text(reader, value, &text)) return false;
  bool good = text.starts_with("0/") && text.size() >= 3 && text.size() <= 5 && text[2] != '0' &&
              text.find_first_not_of("0123456789", 2) == text.npos;
  if (!good) return mistake(reader, value.path, "must be \"0/1\" to \"0/999\"");
  *target = text;
  return true;
}

static bool read_speed(profile_reader &reader, const profile_value &value, uint32_t *target) {
  static const int64_t speeds[] = {100, 1000, 10000, 40000};
  bool good = json_object_is_type(value.object, json_type_int);
  int64_t speed = good ? json_object_get_int64(value.object) : 0;
  good = good && std::find(std::begin(speeds), std::end(speeds), speed) != std::end(speeds);
  if (!good) return mistake(reader, value.path, "must be 100, 1000, 10000 or 40000");
  *target = static_cast<uint32_t>(speed);
  return true;
}

/* --- Objects -------------------------------------------------------------------------------------------- */

/* One member that an object may have. */
template <class target_type> struct member_row {
  const char *name;
  bool (*read)(profile_reader &reader, const profile_value &value, target_type *target);
};

/* Reads every member of an object by its row. Members that are left out leave the target as it is. */
template <class target_type>
static bool read_object(profile_reader &reader, const profile_value &value,
                        std::span<const member_row<target_type>> rows, target_type *target) {
  if (!json_object_is_type(value.object, json_type_object))
    return mistake(reader, value.path, "must be an object");
  json_object_object_foreach(value.object, name, member) {
    profile_value inner = {member, value.path.empty() ? name : value.path + "." + name};
    auto row =
        std::find_if(rows.begin(), rows.end(), [&](const auto &r) { return strcmp(r.name, name) == 0; });
    if (row == rows.end()) return mistake(reader, inner.path, "is not known here");
    if (!row->read(reader, inner, target)) return false;
  }
  return true;
}

/* Reads a member of a JSON object into a field of the target: what most rows do. */
template <auto field, auto read_value, class target_type>
static bool read_field(profile_reader &reader, const profile_value &value, target_type *target) {
  return read_value(reader, value, &(target->*field));
}

static const member_row<port_profile> port_members[] = {
    {"name", read_field<&port_profile::name, read_port_name>},
    {"speed_mbps", read_field<&port_profile::speed_mbps, read_speed>},
    {"copper", read_field<&port_profile::copper, read_bool>},
    {"cabled", read_field<&port_profile::cabled, read_bool>},
};

/* The list replaces the built-in ports as a whole. */
static bool read_ports(profile_reader &reader, const profile_value &value,
                       std::vector<port_profile> *target) {
  bool is_list = json_object_is_type(value.object, json_type_array);
  size_t count = is_list ? json_object_array_length(value.object) : 0;
  if (count < 1 || count > ports_max) return mistake(reader, value.path, "must be a list of 1 to 54 ports");
  std::vector<port_profile> ports(count);
  for (size_t i = 0; i < count; i++) {
    profile_value entry = {json_object_array_get_idx(value.object, i),
                           value.path + "[" + std::to_string(i) + "]"};
    port_profile &port = ports[i];
    if (!read_object<port_profile>(reader, entry, port_members, &port)) return false;
    if (port.name.empty()) return mistake(reader, entry.path, "must have a name");
    bool taken = std::any_of(ports.begin(), ports.begin() + static_cast<long>(i),
                             [&](const port_profile &other) { return other.name == port.name; });
    if (taken) return mistake(reader, entry.path + ".name", "is \"" + port.name + "\", as another port's");
  }
  *target = std::move(ports);
  return true;
}

static const member_row<chassis_profile> chassis_members[] = {
    {"model", read_field<&chassis_profile::model, read_text>},
    {"serial", read_field<&chassis_profile::serial, read_text>},
    {"mac", read_field<&chassis_profile::mac, read_mac>},
    {"description", read_field<&chassis_profile::description, read_text>},
    {"os_version", read_field<&chassis_profile::os_version, read_text>},
    {"storage", read_field<&chassis_profile::storage, read_text>},
    {"service_port_mask", read_field<&chassis_profile::service_port_mask, read_network_mask>},
    {"ports", read_field<&chassis_profile::ports, read_ports>},
};

/* --- The file ------------------------------------------------------------------------------------------- */

/* Parses strictly. False with the reason when the text is no JSON. */
static bool parse_json(const std::string &text, const std::string &name, json_guard *root,
                       std::string *error) {
  tokener_guard tokener(json_tokener_new_ex(json_depth_max));
  if (!tokener) {
    *error = name + ": out of memory";
    return false;
  }
  json_tokener_set_flags(tokener.get(), JSON_TOKENER_STRICT | JSON_TOKENER_VALIDATE_UTF8);
  /* With its terminator, which tells the parser that nothing more comes. */
  root->reset(json_tokener_parse_ex(tokener.get(), text.c_str(), static_cast<int>(text.size() + 1)));
  enum json_tokener_error outcome = json_tokener_get_error(tokener.get());
  size_t end = std::min(json_tokener_get_parse_end(tokener.get()), text.size());
  if (outcome == json_tokener_success) {
    end = text.find_first_not_of(" \t\r\n", end);
    if (end == text.npos) return true;
  }
  const char *reason = outcome == json_tokener_success ? "unexpected text" : json_tokener_error_desc(outcome);
  *error = name + ":" + std::to_string(line_at(text, end)) + ": no JSON: " + reason;
  return false;
}

bool parse_profile(const std::string &text, const std::string &name, chassis_profile *profile,
                   std::string *error) {
  json_guard root;
  if (!parse_json(text, name, &root, error)) return false;
  json_line_index index = index_json_lines(text);
  profile_reader reader = {name, index, error};
  if (index.odd_name_line > 0) {
    *error = name + ":" + std::to_string(index.odd_name_line) +
             ": a member's name must stand in double quotes, not empty and without escapes";
    return false;
  }
  if (index.duplicate_line > 0) return mistake(reader, index.duplicate, "is given twice");
  chassis_profile read = built_in_profile();
  if (!read_object<chassis_profile>(reader, {root.get(), ""}, chassis_members, &read)) return false;
  *profile = std::move(read);
  return true;
}

bool load_profile(const std::string &path, chassis_profile *profile, std::string *error) {
  file_guard file(open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK));
  if (file.fd < 0) {
    *error = path + ": " + strerror(errno);
    return false;
  }
  std::string text;
  return read_file(file.fd, path, file_size_max, &text, error) && parse_profile(text, path, profile, error);
}

} // namespace softswitch
