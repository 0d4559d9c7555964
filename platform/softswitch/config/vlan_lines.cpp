/* Applying and printing the lines about VLANs; see vlan_lines.h. The rules are those of model/vlan.h; here
 * they get their words. */
#include "platform/softswitch/config/vlan_lines.h"

#include "platform/softswitch/config/vxlan_lines.h"

namespace softswitch {

std::string vlan_words(uint32_t id) {
  return "VLAN " + std::to_string(id);
}

/* Ports exist: the line was read. */
open_error_t explain_vlan(open_error_t rc, uint32_t id, std::string *error) {
  if (rc == OPEN_E_NOT_FOUND) *error = vlan_words(id) + " does not exist";
  return rc;
}

/* The ids of all VLANs for which `wanted` holds. */
template <typename Wanted> static id_list vlans_where(const switch_model &model, Wanted wanted) {
  id_list ids;
  for (const vlan_entry &vlan : model.vlans->entries) {
    if (vlan.exists && wanted(vlan)) ids.push_back(vlan.id);
  }
  return ids;
}

/* Calls `print` with the number of each port and LAG whose part in any VLAN is not that of factory state.
 * That is few of them, and only for those each VLAN must be looked at. */
template <typename Print> static void each_member(const switch_model &model, Print print) {
  member_set configured;
  for (const vlan_entry &vlan : model.vlans->entries) {
    if (vlan.exists)
      configured |= (vlan.id == 1 ? ~vlan.included : vlan.included) | vlan.excluded | vlan.tagged;
  }
  each_switching_interface(model, [&](uint32_t number) {
    if (configured[number]) print(number);
  });
}

/* --- vlan <vlan-list> ----------------------------------------------------------------------------------- */

/* A VLAN that is there already stays as it is: the line says what shall be, not what shall be done. */
open_error_t apply_vlans(switch_model &model, std::span<const argument> arguments, std::string *error) {
  for (uint32_t id : arguments[0].list) {
    open_error_t rc = vlan_create(model, id);
    if (rc == OPEN_E_NONE || rc == OPEN_E_EXISTS) continue;
    *error = vlan_words(id) + ": there is room for " + std::to_string(model.limits.vlans) + " VLANs only";
    return rc;
  }
  return OPEN_E_NONE;
}

/* Why a VLAN that exists cannot be deleted. */
static std::string use_words(const switch_model &model, uint32_t id) {
  if (id == 1) return vlan_words(id) + " cannot be deleted";
  uint32_t tenant = vxlan_tenant_of_vlan(model, id);
  return tenant != 0 ? tenant_binding_words(id, tenant) : vlan_words(id) + " has a routing interface";
}

open_error_t apply_no_vlans(switch_model &model, std::span<const argument> arguments, std::string *error) {
  for (uint32_t id : arguments[0].list) {
    open_error_t rc = vlan_delete(model, id);
    if (rc == OPEN_E_NONE) continue;
    if (rc == OPEN_E_FAIL) *error = use_words(model, id);
    return explain_vlan(rc, id, error);
  }
  return OPEN_E_NONE;
}

void print_vlans(const config_printer &print) {
  id_list ids = vlans_where(print.model, [](const vlan_entry &vlan) { return vlan.id != 1; });
  for (const id_list &part : split_list(ids)) print.line({part});
}

/* --- vlan <vlan> name <text> ---------------------------------------------------------------------------- */

open_error_t apply_vlan_name(switch_model &model, std::span<const argument> arguments, std::string *error) {
  open_error_t rc = vlan_set_name(model, arguments[0].number, arguments[1].text);
  if (rc == OPEN_E_PARAM) *error = "the name is longer than 32 bytes";
  return explain_vlan(rc, arguments[0].number, error);
}

open_error_t apply_no_vlan_name(switch_model &model, std::span<const argument> arguments,
                                std::string *error) {
  uint32_t id = arguments[0].number;
  return explain_vlan(vlan_set_name(model, id, vlan_factory_name(id)), id, error);
}

void print_vlan_names(const config_printer &print) {
  for (const vlan_entry &vlan : print.model.vlans->entries) {
    std::string_view name = vlan.name;
    if (vlan.exists && name != vlan_factory_name(vlan.id)) print.line({vlan.id, name});
  }
}

/* --- interface <port> vlan <vlan-list> participation ---------------------------------------------------- */

open_error_t apply_participation(switch_model &model, std::span<const argument> arguments,
                                 std::string *error) {
  for (uint32_t id : arguments[1].list) {
    open_error_t rc = vlan_set_participation(model, id, arguments[0].number, arguments[2].number);
    if (rc != OPEN_E_NONE) return explain_vlan(rc, id, error);
  }
  return OPEN_E_NONE;
}

open_error_t apply_no_participation(switch_model &model, std::span<const argument> arguments,
                                    std::string *error) {
  for (uint32_t id : arguments[1].list) {
    open_error_t rc = vlan_set_participation(model, id, arguments[0].number, vlan_factory_participation(id));
    if (rc != OPEN_E_NONE) return explain_vlan(rc, id, error);
  }
  return OPEN_E_NONE;
}

static void print_participation_as(const config_printer &print, uint32_t interface, uint32_t mode) {
  id_list ids = vlans_where(print.model, [&](const vlan_entry &vlan) {
    return mode == vlan_participation(vlan, interface) && mode != vlan_factory_participation(vlan.id);
  });
  for (const id_list &part : split_list(ids)) print.line({interface, part, mode});
}

void print_participation(const config_printer &print) {
  each_member(print.model, [&](uint32_t interface) {
    print_participation_as(print, interface, OPEN_VLAN_PARTICIPATION_MODE_INCLUDE);
    print_participation_as(print, interface, OPEN_VLAN_PARTICIPATION_MODE_AUTO);
    print_participation_as(print, interface, OPEN_VLAN_PARTICIPATION_MODE_EXCLUDE);
  });
}

/* --- interface <port> vlan <vlan-list> tagging ---------------------------------------------------------- */

static open_error_t set_tagging(switch_model &model, std::span<const argument> arguments, uint32_t tagging,
                                std::string *error) {
  for (uint32_t id : arguments[1].list) {
    open_error_t rc = vlan_set_tagging(model, id, arguments[0].number, tagging);
    if (rc != OPEN_E_NONE) return explain_vlan(rc, id, error);
  }
  return OPEN_E_NONE;
}

open_error_t apply_tagging(switch_model &model, std::span<const argument> arguments, std::string *error) {
  return set_tagging(model, arguments, OPEN_ENABLE, error);
}

open_error_t apply_no_tagging(switch_model &model, std::span<const argument> arguments, std::string *error) {
  return set_tagging(model, arguments, OPEN_DISABLE, error);
}

void print_tagging(const config_printer &print) {
  each_member(print.model, [&](uint32_t interface) {
    id_list ids = vlans_where(print.model, [&](const vlan_entry &vlan) { return vlan.tagged[interface]; });
    for (const id_list &part : split_list(ids)) print.line({interface, part});
  });
}

/* --- interface <port> pvid <vlan> ----------------------------------------------------------------------- */

open_error_t apply_pvid(switch_model &model, std::span<const argument> arguments, std::string *error) {
  uint32_t id = arguments[1].number;
  return explain_vlan(vlan_set_pvid(model, arguments[0].number, id), id, error);
}

open_error_t apply_no_pvid(switch_model &model, std::span<const argument> arguments, std::string *) {
  return vlan_set_pvid(model, arguments[0].number, 1);
}

void print_pvids(const config_printer &print) {
  each_switching_interface(print.model, [&](uint32_t interface) {
    uint32_t pvid = print.model.interfaces->at[interface].pvid;
    if (pvid != 1) print.line({interface, pvid});
  });
}

/* --- interface <port> accept-frames all|tagged|untagged ------------------------------------------------- */

/* The words stand in the order of OPEN_DOT1Q_ACCEPT_FRAME_TYPE_t, which counts from 1. */
open_error_t apply_accept_frames(switch_model &model, std::span<const argument> arguments, std::string *) {
  return vlan_set_accept_frames(model, arguments[0].number, arguments[1].number + OPEN_DOT1Q_ADMIT_ALL);
}

open_error_t apply_no_accept_frames(switch_model &model, std::span<const argument> arguments, std::string *) {
  return vlan_set_accept_frames(model, arguments[0].number, OPEN_DOT1Q_ADMIT_ALL);
}

void print_accept_frames(const config_printer &print) {
  each_switching_interface(print.model, [&](uint32_t interface) {
    uint32_t type = print.model.interfaces->at[interface].accept_frames;
    if (type != OPEN_DOT1Q_ADMIT_ALL) print.line({interface, type - OPEN_DOT1Q_ADMIT_ALL});
  });
}

} // namespace softswitch
