/* Faults on order: lab control can make the next N calls of a platform function answer a given code instead of
 * being carried out. */
#ifndef KESTREL_SOFTSWITCH_FAULTS_H
#define KESTREL_SOFTSWITCH_FAULTS_H

#include "platform/api/openapi_common.h"

#include <string>
#include <string_view>

namespace softswitch {

/* Orders a fault. `skip` calls are carried out first, then `count` calls answer `code`. An order for the same
 * function replaces the one before; a count of 0 takes it back. False when the library has no such function. */
bool fault_order(std::string_view function, open_error_t code, unsigned count, unsigned skip);
void fault_clear_all();
/* One line "function code count" per order. */
std::string fault_list();
/* Called by every platform function: true, with the code, when this call is to fail. Costs one load while
 * nothing is ordered. */
bool fault_due(const char *function, open_error_t *code);

} // namespace softswitch

#endif
