/* What the TCAM is used for. Nothing of it is stored: it follows from the policies (tcam.h) and from the
 * rules of access lists that are bound (acl.h).
 *
 * The TCAM is made of slices of 256 or 512 entries. The entries of one kind at one stage form a group, which
 * has slices of its own. Where an entry is wider than a slice, two slices stand side by side as one row. A
 * group has as many rows as its entries need. */
#ifndef KESTREL_SOFTSWITCH_MODEL_TCAM_USAGE_H
#define KESTREL_SOFTSWITCH_MODEL_TCAM_USAGE_H

#include <cstdint>
#include <string_view>
#include <vector>

namespace softswitch {

struct switch_model;

struct tcam_group {
  uint32_t kind;          /* number of the kind of its entries */
  uint32_t slice_entries; /* entries of a slice: 256 or 512 */
  uint32_t width;         /* slices side by side in a row */
  uint32_t count;         /* entries in use */
  uint32_t depth;         /* rows of slices */
};

/* The groups of a stage (OPEN_TCAM_STAGE_...), always in the same order, also those without entries. */
std::vector<tcam_group> tcam_groups(const switch_model &model, uint32_t stage);

struct tcam_slices {
  uint32_t used;  /* by groups; above `total` when a limit was lowered below the use */
  uint32_t total; /* that there are */
};

/* The slices of a size at a stage. */
tcam_slices tcam_slices_of(const switch_model &model, uint32_t stage, uint32_t slice_entries);

/* The name of a kind; empty when there is no such kind. */
std::string_view tcam_kind_name(uint32_t kind);

} // namespace softswitch

#endif
