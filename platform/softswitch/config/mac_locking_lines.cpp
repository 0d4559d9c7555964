/* Applying and printing the lines about port MAC locking; see mac_locking_lines.h. The rules are those of
 * model/mac_locking.h; here they get their words. */
#include "platform/softswitch/config/mac_locking_lines.h"

#include "platform/softswitch/config/vlan_lines.h"

namespace softswitch {

/* --- interface <port> mac-locking sticky ---------------------------------------------------------------- */

open_error_t apply_sticky_mode(switch_model &model, std::span<const argument> arguments, std::string *) {
  return mac_locking_set_sticky_mode(model, arguments[0].number, true);
}

open_error_t apply_no_sticky_mode(switch_model &model, std::span<const argument> arguments, std::string *) {
  return mac_locking_set_sticky_mode(model, arguments[0].number, false);
}

void print_sticky_modes(const config_printer &print) {
  for (uint32_t number = port_first; number <= lag_last; number++) {
    if (print.model.mac_locking->sticky_mode[number]) print.line({number});
  }
}

/* --- interface <port> mac-locking address <mac> vlan <vlan> static|sticky ------------------------------- */

open_error_t apply_mac_lock(switch_model &model, std::span<const argument> arguments, std::string *error) {
  uint32_t interface = arguments[0].number, vlan = arguments[2].number;
  const mac_address &mac = arguments[1].mac;
  open_error_t rc = mac_lock_set(model, interface, mac, vlan, arguments[3].number == 1);
  if (rc == OPEN_E_EXISTS)
    *error = mac_text(mac) + " is locked in VLAN " + std::to_string(vlan) + " on " +
             interface_name(model, mac_lock_interface(model, mac, vlan));
  if (rc == OPEN_E_FULL)
    *error = interface_name(model, interface) + ": there is room for " +
             std::to_string(model.limits.static_macs) + " locked addresses only";
  return explain_vlan(rc, vlan, error);
}

open_error_t apply_no_mac_lock(switch_model &model, std::span<const argument> arguments, std::string *error) {
  uint32_t interface = arguments[0].number, vlan = arguments[2].number;
  const mac_address &mac = arguments[1].mac;
  open_error_t rc = mac_lock_release(model, interface, mac, vlan);
  if (rc == OPEN_E_NOT_FOUND)
    *error = mac_text(mac) + " is not locked in VLAN " + std::to_string(vlan) + " on " +
             interface_name(model, interface);
  return rc;
}

void print_mac_locks(const config_printer &print) {
  for (const mac_lock &lock : print.model.mac_locking->locks)
    print.line({lock.interface, lock.mac, lock.vlan, lock.sticky ? 1u : 0u});
}

} // namespace softswitch
