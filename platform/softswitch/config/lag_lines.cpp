/* Applying and printing the lines about link aggregation; see lag_lines.h. The rules are those of
 * model/lag.h. */
#include "platform/softswitch/config/lag_lines.h"

#include "platform/softswitch/config/interface_lines.h"

namespace softswitch {

static std::string lag_words(uint32_t port_channel) {
  return "port-channel " + std::to_string(port_channel);
}

/* --- lag <port-channel> --------------------------------------------------------------------------------- */

/* A LAG that is there already stays as it is: the line says what shall be, not what shall be done. */
open_error_t apply_lag(switch_model &model, std::span<const argument> arguments, std::string *) {
  open_error_t rc = lag_create(model, lag_of_port_channel(arguments[0].number));
  return rc == OPEN_E_EXISTS ? OPEN_E_NONE : rc;
}

open_error_t apply_no_lag(switch_model &model, std::span<const argument> arguments, std::string *error) {
  uint32_t number = lag_of_port_channel(arguments[0].number);
  open_error_t rc = lag_delete(model, number);
  if (rc == OPEN_E_NOT_FOUND) *error = lag_words(arguments[0].number) + " does not exist";
  if (rc == OPEN_E_FAIL) *error = lag_words(arguments[0].number) + interface_use_words(model, number);
  return rc;
}

void print_deleted_lags(const config_printer &print) {
  for (uint32_t id = 1; id <= port_channel_max; id++) {
    if (!interface_exists(print.model, lag_of_port_channel(id))) print.line({id});
  }
}

/* --- interface <port> lag <port-channel> ---------------------------------------------------------------- */

/* <port> stands for LAGs, too; only ports can be members. */
static bool check_port(const switch_model &model, uint32_t interface, std::string *error) {
  if (interface_is_port(model, interface)) return true;
  *error = interface_name(model, interface) + " is a LAG itself";
  return false;
}

static std::string refusal_words(const switch_model &model, open_error_t rc, uint32_t port,
                                 uint32_t port_channel) {
  if (rc == OPEN_E_FULL)
    return lag_words(port_channel) + ": there is room for " + std::to_string(model.limits.lag_members) +
           " members only";
  if (rc == OPEN_E_NOT_FOUND) return lag_words(port_channel) + " does not exist";
  uint32_t present = port_channel_of_lag(model.interfaces->at[port].lag);
  return interface_name(model, port) + " is a member of " + lag_words(present);
}

open_error_t apply_lag_member(switch_model &model, std::span<const argument> arguments, std::string *error) {
  uint32_t port = arguments[0].number, port_channel = arguments[1].number;
  if (!check_port(model, port, error)) return OPEN_E_NOT_FOUND;
  open_error_t rc = lag_add_port(model, lag_of_port_channel(port_channel), port);
  if (rc == OPEN_E_NONE || rc == OPEN_E_EXISTS) return OPEN_E_NONE;
  *error = refusal_words(model, rc, port, port_channel);
  return rc;
}

open_error_t apply_no_lag_member(switch_model &model, std::span<const argument> arguments,
                                 std::string *error) {
  uint32_t port = arguments[0].number;
  if (!check_port(model, port, error)) return OPEN_E_NOT_FOUND;
  uint32_t present = model.interfaces->at[port].lag;
  return present == 0 ? OPEN_E_NONE : lag_remove_port(model, present, port);
}

void print_lag_members(const config_printer &print) {
  for (uint32_t port = port_first; port <= port_last; port++) {
    uint32_t lag = print.model.interfaces->at[port].lag;
    if (lag != 0) print.line({port, port_channel_of_lag(lag)});
  }
}

} // namespace softswitch
