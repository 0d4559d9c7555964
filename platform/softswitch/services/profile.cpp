/* The chassis profile as JSON; see profile.h. What a profile may hold is said by the member tables below and
 * by those of chassis_fields.h: a new member is a row in one of them. The built-in profile is
 * profile_built_in.cpp. */
#include "platform/softswitch/services/profile.h"

#include "platform/softswitch/model/chassis_fields.h"
#include "platform/softswitch/model/inet_address.h"
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
/* A profile is three levels deep; json-c recurses, so a hostile file must not choose the depth. */
static constexpr int json_depth_max = 8;

struct json_releaser {
  void operator()(json_object *object) const { json_object_put(object); }
  void operator()(json_tokener *tokener) const { json_tokener_free(tokener); }
};
using json_guard = std::unique_ptr<json_object, json_releaser>;
using tokener_guard = std::unique_ptr<json_tokener, json_releaser>;

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

static std::string_view json_text(json_object *text) {
  return {json_object_get_string(text), static_cast<size_t>(json_object_get_string_len(text))};
}

static bool read_network_mask(profile_reader &reader, const profile_value &value, uint32_t *target) {
  open_inet_addr_t mask;
  uint32_t length;
  bool good = json_object_is_type(value.object, json_type_string) &&
              inet_address_read(std::string(json_text(value.object)), &mask) && mask.family == OPEN_AF_INET &&
              ipv4_mask_length(mask.addr.ipv4, &length) && length > 0;
  if (!good) return mistake(reader, value.path, "must be a network mask like \"255.255.255.0\"");
  *target = mask.addr.ipv4;
  return true;
}

/* "0/" and a number without leading zeros: other units' numbers are LAGs and other interfaces without a
 * cable. */
static bool read_port_name(profile_reader &reader, const profile_value &value, std::string *target) {
  bool good = json_object_is_type(value.object, json_type_string);
  std::string_view text = good ? json_text(value.object) : "";
  good = text.starts_with("0/") && text.size() >= 3 && text.size() <= 5 && text[2] != '0' &&
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
  std::string_view name;
  bool (*read)(profile_reader &reader, const profile_value &value, target_type *target);
};

/* Calls `read_member` for every member of an object, with its name, until one is a mistake. */
template <class read_function>
static bool each_member(profile_reader &reader, const profile_value &value, read_function read_member) {
  if (!json_object_is_type(value.object, json_type_object))
    return mistake(reader, value.path, "must be an object");
  json_object_object_foreach(value.object, name, member) {
    profile_value inner = {member, value.path.empty() ? name : value.path + "." + name};
    if (!read_member(std::string_view(name), inner)) return false;
  }
  return true;
}

/* Reads a member by its field among `fields`. */
template <class item>
static bool read_by_field(profile_reader &reader, std::string_view name, const profile_value &value,
                          std::span<const chassis_field<item>> fields, item *target) {
  auto field = std::find_if(fields.begin(), fields.end(), [&](const auto &f) { return f.name == name; });
  if (field == fields.end()) return mistake(reader, value.path, "is not known here");
  bool good = false;
  if (json_object_is_type(value.object, json_type_int))
    good = field_set_number(*field, json_object_get_int64(value.object), target);
  if (json_object_is_type(value.object, json_type_string))
    good = field_set_text(*field, json_text(value.object), target);
  return good || mistake(reader, value.path, rule_reason(field->rule));
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

static bool read_port(profile_reader &reader, const profile_value &value, port_profile *port) {
  bool good = each_member(reader, value, [&](std::string_view name, const profile_value &member) {
    auto row = std::find_if(std::begin(port_members), std::end(port_members),
                            [&](const auto &r) { return r.name == name; });
    if (row == std::end(port_members)) return mistake(reader, member.path, "is not known here");
    return row->read(reader, member, port);
  });
  if (good && port->name.empty()) return mistake(reader, value.path, "must have a name");
  return good;
}

/* Reads an object that has nothing but fields. */
template <const auto &fields, class item>
static bool read_item(profile_reader &reader, const profile_value &value, item *target) {
  return each_member(reader, value, [&](std::string_view name, const profile_value &member) {
    return read_by_field(reader, name, member, fields, target);
  });
}

static bool read_temperature_sensor(profile_reader &reader, const profile_value &value,
                                    temperature_sensor *target) {
  bool good = read_item<temperature_sensor_fields>(reader, value, target);
  if (good && !sensor_thresholds_rise(*target)) return mistake(reader, value.path, thresholds_rule);
  return good;
}

static bool read_transceiver(profile_reader &reader, const profile_value &value,
                             transceiver_profile *target) {
  bool good = each_member(reader, value, [&](std::string_view name, const profile_value &member) {
    if (name == "port") return read_port_name(reader, member, &target->port);
    return read_by_field(reader, name, member, transceiver_fields, &target->fitted);
  });
  if (good && target->port.empty()) return mistake(reader, value.path, "must have a port");
  return good;
}

/* --- Lists ---------------------------------------------------------------------------------------------- */

/* How long a list may be, and how that is said. */
struct list_length {
  size_t min, max;
  const char *reason;
};
static constexpr list_length port_list = {1, ports_max, "must be a list of 1 to 54 ports"};
static constexpr list_length fan_list = {0, fans_max, "must be a list of at most 32 fans"};
static constexpr list_length power_supply_list = {0, power_supplies_max,
                                                  "must be a list of at most 8 power supplies"};
static constexpr list_length temperature_sensor_list = {0, temperature_sensors_max,
                                                        "must be a list of at most 32 temperature sensors"};
static constexpr list_length transceiver_list = {0, ports_max, "must be a list of at most 54 transceivers"};

static std::string entry_path(const std::string &list, size_t index) {
  return list + "[" + std::to_string(index) + "]";
}

/* Reads a list into a field of the profile, in the place of what is built in. */
template <auto field, auto read_entry, const list_length &length>
static bool read_list(profile_reader &reader, const profile_value &value, chassis_profile *profile) {
  bool is_list = json_object_is_type(value.object, json_type_array);
  size_t count = is_list ? json_object_array_length(value.object) : 0;
  if (!is_list || count < length.min || count > length.max) return mistake(reader, value.path, length.reason);
  auto &list = profile->*field;
  list.clear();
  list.resize(count);
  for (size_t i = 0; i < count; i++) {
    profile_value entry = {json_object_array_get_idx(value.object, i), entry_path(value.path, i)};
    if (!read_entry(reader, entry, &list[i])) return false;
  }
  return true;
}

static const member_row<chassis_profile> chassis_members[] = {
    {"service_port_mask", read_field<&chassis_profile::service_port_mask, read_network_mask>},
    {"ports", read_list<&chassis_profile::ports, read_port, port_list>},
    {"fans", read_list<&chassis_profile::fans, read_item<fan_fields, fan>, fan_list>},
    {"power_supplies", read_list<&chassis_profile::power_supplies,
                                 read_item<power_supply_fields, power_supply>, power_supply_list>},
    {"temperature_sensors",
     read_list<&chassis_profile::temperature_sensors, read_temperature_sensor, temperature_sensor_list>},
    {"transceivers", read_list<&chassis_profile::transceivers, read_transceiver, transceiver_list>},
};

/* --- What the members say together ---------------------------------------------------------------------- */

/* Refuses a name that stands twice in a list: the later one is the mistake. */
template <class item>
static bool check_names(profile_reader &reader, const char *list_name, const char *member, const char *noun,
                        const std::vector<item> &list, std::string item::*name) {
  for (size_t i = 0; i < list.size(); i++) {
    auto same = [&](const item &other) { return other.*name == list[i].*name; };
    auto here = list.begin() + static_cast<long>(i);
    if (std::find_if(list.begin(), here, same) == here) continue;
    return mistake(reader, entry_path(list_name, i) + "." + member,
                   "is \"" + list[i].*name + "\", as another " + noun + "'s");
  }
  return true;
}

static const port_profile *find_port(const chassis_profile &profile, const std::string &name) {
  auto found = std::find_if(profile.ports.begin(), profile.ports.end(),
                            [&](const port_profile &port) { return port.name == name; });
  return found == profile.ports.end() ? nullptr : &*found;
}

static bool check_transceivers(profile_reader &reader, const chassis_profile &profile) {
  for (size_t i = 0; i < profile.transceivers.size(); i++) {
    const std::string &name = profile.transceivers[i].port;
    const port_profile *port = find_port(profile, name);
    if (port && !port->copper) continue;
    return mistake(reader, entry_path("transceivers", i) + ".port",
                   "is \"" + name + "\", which is no transceiver cage");
  }
  return check_names(reader, "transceivers", "port", "transceiver", profile.transceivers,
                     &transceiver_profile::port);
}

/* Leaves out the built-in transceivers of ports that are missing, copper or of another speed. */
static void keep_fitting_transceivers(const chassis_profile &built_in, chassis_profile *profile) {
  std::erase_if(profile->transceivers, [&](const transceiver_profile &kept) {
    const port_profile *port = find_port(*profile, kept.port);
    return !port || port->copper || port->speed_mbps != find_port(built_in, kept.port)->speed_mbps;
  });
}

/* Reads a whole profile over the built-in one. */
static bool read_profile(profile_reader &reader, json_object *root, chassis_profile *profile) {
  const chassis_profile built_in = *profile;
  bool good = each_member(reader, {root, ""}, [&](std::string_view name, const profile_value &member) {
    auto row = std::find_if(std::begin(chassis_members), std::end(chassis_members),
                            [&](const auto &r) { return r.name == name; });
    if (row != std::end(chassis_members)) return row->read(reader, member, profile);
    return read_by_field(reader, name, member, identity_fields, profile);
  });
  if (!good || !check_names(reader, "ports", "name", "port", profile->ports, &port_profile::name))
    return false;
  if (json_object_object_get_ex(root, "transceivers", nullptr)) return check_transceivers(reader, *profile);
  keep_fitting_transceivers(built_in, profile);
  return true;
}

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
  if (!read_profile(reader, root.get(), &read)) return false;
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
