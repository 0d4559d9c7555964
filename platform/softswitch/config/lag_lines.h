/* The lines of the configuration language about link aggregation: what the rows of commands.cpp point to.
 * Apply functions take the arguments of their pattern in order. */
#ifndef KESTREL_SOFTSWITCH_CONFIG_LAG_LINES_H
#define KESTREL_SOFTSWITCH_CONFIG_LAG_LINES_H

#include "platform/softswitch/config/language.h"

namespace softswitch {

open_error_t apply_lag(switch_model &, std::span<const argument>, std::string *error);
open_error_t apply_no_lag(switch_model &, std::span<const argument>, std::string *error);
void print_deleted_lags(const config_printer &);

open_error_t apply_lag_member(switch_model &, std::span<const argument>, std::string *error);
open_error_t apply_no_lag_member(switch_model &, std::span<const argument>, std::string *error);
void print_lag_members(const config_printer &);

} // namespace softswitch

#endif
