/* Applying and printing the lines about what an interface is by itself; see interface_lines.h. The rules are
 * those of model/interface_settings.h; here they get their words. Interfaces exist: the line was read. */
#include "platform/softswitch/config/interface_lines.h"

#include "platform/softswitch/model/interface_settings.h"
#include "platform/softswitch/model/text.h"

namespace softswitch {

/* Says why a setting was refused: a bad value, or an interface without it, whose name comes before. Passes
 * the code on. */
static open_error_t explain(open_error_t rc, const switch_model &model, uint32_t interface,
                            std::string_view bad_value, std::string_view without, std::string *error) {
  if (rc == OPEN_E_PARAM) *error = bad_value;
  if (rc == OPEN_E_UNAVAIL) *error = interface_name(model, interface) + std::string(without);
  return rc;
}

/* Calls `print` with number and entry of each interface for which `differs` holds. */
template <typename Differs, typename Print>
static void each_interface(const switch_model &model, Differs differs, Print print) {
  for (uint32_t number = port_first; number <= interface_last; number++) {
    const interface_entry &entry = model.interfaces->at[number];
    if (entry.exists && differs(number, entry)) print(number, entry);
  }
}

std::string interface_use_words(const switch_model &model, uint32_t number) {
  if (acl_with_target(model, number)) return " is the target of an access list's rule";
  uint32_t policy = tcam_policy_redirecting_to(model, number);
  if (policy != 0) return " is the target of TCAM policy " + std::to_string(policy);
  if (vxlan_uses_interface(model, number)) return " is the VXLAN source interface";
  return " is the scope or update source of a BGP neighbor";
}

/* --- interface <interface> shutdown --------------------------------------------------------------------- */

static open_error_t set_shutdown(switch_model &model, std::span<const argument> arguments, uint32_t state,
                                 std::string *error) {
  uint32_t interface = arguments[0].number;
  open_error_t rc = interface_set_enabled(model, interface, state);
  return explain(rc, model, interface, "", " is always enabled", error);
}

open_error_t apply_shutdown(switch_model &model, std::span<const argument> arguments, std::string *error) {
  return set_shutdown(model, arguments, OPEN_DISABLE, error);
}

open_error_t apply_no_shutdown(switch_model &model, std::span<const argument> arguments, std::string *error) {
  return set_shutdown(model, arguments, OPEN_ENABLE, error);
}

void print_shutdown(const config_printer &print) {
  each_interface(
      print.model, [](uint32_t, const interface_entry &entry) { return !entry.enabled; },
      [&](uint32_t number, const interface_entry &) { print.line({number}); });
}

/* --- interface <interface> soft-shutdown ---------------------------------------------------------------- */

static open_error_t set_soft_shutdown(switch_model &model, std::span<const argument> arguments,
                                      uint32_t state, std::string *error) {
  uint32_t interface = arguments[0].number;
  open_error_t rc = interface_set_soft_shutdown(model, interface, state);
  return explain(rc, model, interface, "", " is no port: only ports have a soft shutdown", error);
}

open_error_t apply_soft_shutdown(switch_model &model, std::span<const argument> arguments,
                                 std::string *error) {
  return set_soft_shutdown(model, arguments, OPEN_ENABLE, error);
}

open_error_t apply_no_soft_shutdown(switch_model &model, std::span<const argument> arguments,
                                    std::string *error) {
  return set_soft_shutdown(model, arguments, OPEN_DISABLE, error);
}

void print_soft_shutdown(const config_printer &print) {
  each_interface(
      print.model, [](uint32_t, const interface_entry &entry) { return entry.soft_shutdown; },
      [&](uint32_t number, const interface_entry &) { print.line({number}); });
}

/* --- interface <interface> description <text> ----------------------------------------------------------- */

static open_error_t set_description(switch_model &model, uint32_t interface, std::string_view text,
                                    std::string *error) {
  std::string bad = has_control_character(text)
                        ? "the description holds a control character"
                        : "the description is longer than " + std::to_string(description_max) + " bytes";
  open_error_t rc = interface_set_description(model, interface, text);
  return explain(rc, model, interface, bad, " has no description", error);
}

open_error_t apply_description(switch_model &model, std::span<const argument> arguments, std::string *error) {
  return set_description(model, arguments[0].number, arguments[1].text, error);
}

open_error_t apply_no_description(switch_model &model, std::span<const argument> arguments,
                                  std::string *error) {
  return set_description(model, arguments[0].number, "", error);
}

void print_descriptions(const config_printer &print) {
  each_interface(
      print.model, [](uint32_t, const interface_entry &entry) { return !entry.description.empty(); },
      [&](uint32_t number, const interface_entry &entry) {
        print.line({number, std::string_view(entry.description)});
      });
}

/* --- interface <interface> mtu <number> ----------------------------------------------------------------- */

static open_error_t set_mtu(switch_model &model, uint32_t interface, uint32_t mtu, std::string *error) {
  std::string bad = "MTU out of range " + std::to_string(mtu_min) + ".." + std::to_string(mtu_max);
  open_error_t rc = interface_set_mtu(model, interface, mtu);
  return explain(rc, model, interface, bad, " has no MTU of its own", error);
}

open_error_t apply_mtu(switch_model &model, std::span<const argument> arguments, std::string *error) {
  return set_mtu(model, arguments[0].number, arguments[1].number, error);
}

open_error_t apply_no_mtu(switch_model &model, std::span<const argument> arguments, std::string *error) {
  return set_mtu(model, arguments[0].number, mtu_min, error);
}

void print_mtus(const config_printer &print) {
  each_interface(
      print.model, [](uint32_t, const interface_entry &entry) { return entry.mtu != mtu_min; },
      [&](uint32_t number, const interface_entry &entry) {
        print.line({number, uint32_t{entry.mtu}});
      });
}

/* --- interface <interface> speed <speed> ---------------------------------------------------------------- */

open_error_t apply_speed(switch_model &model, std::span<const argument> arguments, std::string *error) {
  uint32_t interface = arguments[0].number, code = arguments[1].number;
  std::string without = " does not have the speed " + std::string(port_speed_by_code(code)->word);
  open_error_t rc = interface_set_speed(model, interface, code);
  return explain(rc, model, interface, "", without, error);
}

open_error_t apply_no_speed(switch_model &model, std::span<const argument> arguments, std::string *error) {
  uint32_t interface = arguments[0].number;
  open_error_t rc = interface_reset_speed(model, interface);
  return explain(rc, model, interface, "", " is no port: only ports have a speed", error);
}

static bool speed_differs(const switch_model &model, uint32_t number) {
  return interface_is_port(model, number) &&
         model.interfaces->at[number].speed != interface_factory_speed(model, number);
}

void print_speeds(const config_printer &print) {
  each_interface(
      print.model,
      [&](uint32_t number, const interface_entry &) { return speed_differs(print.model, number); },
      [&](uint32_t number, const interface_entry &entry) {
        print.line({number, uint32_t{entry.speed}});
      });
}

/* --- interface <interface> auto-negotiation on|off ------------------------------------------------------ */

static open_error_t set_auto_negotiation(switch_model &model, uint32_t interface, uint32_t mode,
                                         std::string *error) {
  open_error_t rc = interface_set_auto_negotiation(model, interface, mode);
  return explain(rc, model, interface, "", " is no copper port: only copper ports have auto-negotiation",
                 error);
}

/* The words stand in the order of OPEN_PORT_AUTO_NEG_t. */
open_error_t apply_auto_negotiation(switch_model &model, std::span<const argument> arguments,
                                    std::string *error) {
  return set_auto_negotiation(model, arguments[0].number, arguments[1].number, error);
}

open_error_t apply_no_auto_negotiation(switch_model &model, std::span<const argument> arguments,
                                       std::string *error) {
  return set_auto_negotiation(model, arguments[0].number, OPEN_PORT_AUTO_NEGOTIATE_ENABLE, error);
}

/* A port with a line for its speed has had its auto-negotiation ended by it. */
void print_auto_negotiation(const config_printer &print) {
  const switch_model &model = print.model;
  each_interface(
      model,
      [&](uint32_t number, const interface_entry &entry) {
        bool so_far = interface_is_copper(model, number) && !speed_differs(model, number);
        return entry.auto_negotiation != so_far;
      },
      [&](uint32_t number, const interface_entry &) {
        print.line({number, interface_auto_negotiation(model, number)});
      });
}

} // namespace softswitch
