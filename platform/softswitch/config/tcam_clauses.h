/* What a TCAM policy matches and does, as clauses of its line (clauses.h). */
#ifndef KESTREL_SOFTSWITCH_CONFIG_TCAM_CLAUSES_H
#define KESTREL_SOFTSWITCH_CONFIG_TCAM_CLAUSES_H

#include "platform/softswitch/config/language.h"

#include <span>
#include <string>

namespace softswitch {

/* Reads clauses into a record, whose other members stay. False with the reason when something is no clause,
 * is there twice, or does not fit its member; the ranges of fields are tcam_record_fault()'s. */
bool read_tcam_clauses(const switch_model &model, std::span<const token> words, open_tcamApiPolicy_t *into,
                       std::string *error);
/* The clauses of a record, each with a blank before it. Records in normal form that have the same clauses are
 * the same but for their type. */
std::string print_tcam_clauses(const switch_model &model, const open_tcamApiPolicy_t &record);

} // namespace softswitch

#endif
