/* Faults on order: lab control can make the next N calls of a platform function answer a given code instead
 * of being carried out. */
#ifndef KESTREL_SOFTSWITCH_FAULTS_H
#define KESTREL_SOFTSWITCH_FAULTS_H

#include "platform/api/openapi_common.h"

#include <string>
#include <string_view>

namespace softswitch {

/* Orders a fault. `skip` calls are carried out first, then `count` calls answer `code`. An order for the same
 * function replaces the one before; a count of 0 takes it back. False when the library has no such function.
 */
bool fault_order(std::string_view function, open_error_t code, unsigned count, unsigned skip);
void fault_clear_all();
/* One line "FUNCTION CODE COUNT SKIP" per order, with what is left of count and skip; the code as a name
 * where it has one. Sorted by function. */
std::string fault_list();
/* A result code from its name ("OPEN_E_FAIL") or a decimal number -32..31, known or not. False when it is
 * neither. */
bool fault_code_from_text(std::string_view text, open_error_t *code);
/* Called by every platform function: true, with the code, when this call is to fail. Costs one load while
 * nothing is ordered. */
bool fault_due(const char *function, open_error_t *code);

} // namespace softswitch

#endif
