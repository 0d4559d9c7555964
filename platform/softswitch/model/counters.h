/* Counters of interfaces: 63 per interface at most, 64 bits wide, wrapping. Nothing counts by itself so far:
 * they stay at what lab control sets, or run at the rate that it gives them. They are no configuration, so
 * nothing about them is journalled or pending, and a restart begins at 0.
 *
 * The time comes from the caller, as milliseconds of a clock that never runs backwards (services/clock.h).
 * Unless a function says otherwise: OPEN_E_PARAM for a counter id above 62 or an interface that does not
 * exist, OPEN_E_NOT_FOUND when the interface has no such counter. */
#ifndef KESTREL_SOFTSWITCH_MODEL_COUNTERS_H
#define KESTREL_SOFTSWITCH_MODEL_COUNTERS_H

#include "platform/api/openapi_stat.h"

#include <array>
#include <cstdint>
#include <map>
#include <string_view>

namespace softswitch {

struct switch_model;

struct counter {
  uint64_t value = 0;      /* at the time `since` */
  uint64_t per_second = 0; /* how fast it runs; 0 when it does not */
  int64_t since = 0;       /* milliseconds */
};

struct counter_table {
  /* By interface number: those of which any counter was ever set. */
  std::map<uint32_t, std::array<counter, OPEN_STAT_COUNTERS>> of;
};

/* --- What there is -------------------------------------------------------------------------------------- */

/* Name of a counter by its id, 0..62: "CTR_RX_TOTAL_BYTES". */
std::string_view counter_name(uint32_t id);
/* The id of the counter with this name; false when there is none. */
bool counter_by_name(std::string_view name, uint32_t *id);
/* The checks above. */
open_error_t counter_check(const switch_model &model, uint32_t interface, uint32_t id);

/* --- Reading and setting -------------------------------------------------------------------------------- */

/* A counter as it stands at `now`; nothing is checked. */
counter counter_at(const switch_model &model, uint32_t interface, uint32_t id, int64_t now);

/* Sets a counter; one that runs goes on from there. */
open_error_t counter_set(switch_model &model, uint32_t interface, uint32_t id, uint64_t value, int64_t now);
/* Counts a counter up. */
open_error_t counter_add(switch_model &model, uint32_t interface, uint32_t id, uint64_t amount, int64_t now);
/* Lets a counter run from what it has; a rate of 0 stops it there. */
open_error_t counter_run(switch_model &model, uint32_t interface, uint32_t id, uint64_t per_second,
                         int64_t now);

/* Sets all counters of an interface to 0; those that run go on from there. Only the interface is checked. */
open_error_t counters_clear(switch_model &model, uint32_t interface, int64_t now);
/* Drops all that is known of an interface's counters, for a new interface under its number. */
void counters_forget(switch_model &model, uint32_t interface);

} // namespace softswitch

#endif
