/* Counters; see counters.h. */
#include "platform/softswitch/model/counters.h"

#include "platform/softswitch/model/interface_settings.h"
#include "platform/softswitch/model/switch.h"

#include <algorithm>

namespace softswitch {

/* --- What there is -------------------------------------------------------------------------------------- */

/* Kinds of interfaces, as bits: which of them have a counter. The host is the switch itself as a station: the
 * CPU interface and VLAN routing interfaces. Loopbacks have none. */
enum : uint8_t {
  nowhere = 0,
  on_copper = 1,
  on_cages = 2,
  on_ports = on_copper | on_cages,
  on_lags = 4,
  on_ports_and_lags = on_ports | on_lags,
  on_host = 8,
  on_all = on_ports_and_lags | on_host
};

struct counter_kind {
  std::string_view name;
  uint8_t where;
};

/* By id. */
static constexpr counter_kind kinds[OPEN_STAT_COUNTERS] = {
    {"CTR_RESERVED", nowhere},
    {"CTR_RX_TOTAL_BYTES", on_all},
    {"CTR_RX_64", on_ports},
    {"CTR_RX_65_127", on_ports},
    {"CTR_RX_128_255", on_ports},
    {"CTR_RX_256_511", on_ports},
    {"CTR_RX_512_1023", on_ports},
    {"CTR_RX_1024_1518", on_ports},
    {"CTR_RX_1519_1530", on_ports},
    {"CTR_RX_GOOD_OVERSIZE", on_ports},
    {"CTR_RX_ERROR_OVERSIZE", on_ports},
    {"CTR_RX_GOOD_UNDERSIZE", on_ports},
    {"CTR_RX_ERROR_UNDERSIZE", on_ports},
    {"CTR_RX_UCAST_FRAMES", on_all},
    {"CTR_RX_MCAST_FRAMES", on_ports_and_lags},
    {"CTR_RX_BCAST_FRAMES", on_ports_and_lags},
    {"CTR_RX_ALIGN_ERRORS", on_ports},
    {"CTR_RX_FCS_ERRORS", on_ports},
    {"CTR_RX_OVERRUNS", on_ports},
    {"CTR_RX_FRAME_TOO_LONG", on_ports},
    {"CTR_TX_TOTAL_BYTES", on_all},
    {"CTR_TX_64", on_ports},
    {"CTR_TX_65_127", on_ports},
    {"CTR_TX_128_255", on_ports},
    {"CTR_TX_256_511", on_ports},
    {"CTR_TX_512_1023", on_ports},
    {"CTR_TX_1024_1518", on_ports},
    {"CTR_TX_1519_1530", on_ports},
    {"CTR_TX_UCAST_FRAMES", on_all},
    {"CTR_TX_MCAST_FRAMES", on_ports_and_lags},
    {"CTR_TX_BCAST_FRAMES", on_ports_and_lags},
    {"CTR_TX_FCS_ERRORS", on_ports},
    {"CTR_TX_OVERSIZED", on_ports},
    {"CTR_TX_UNDERRUN_ERRORS", on_ports},
    {"CTR_TX_ONE_COLLISION", on_copper},
    {"CTR_TX_MULTIPLE_COLLISION", on_copper},
    {"CTR_TX_EXCESSIVE_COLLISION", on_copper},
    {"CTR_TX_LATE_COLLISION", on_copper},
    {"CTR_TX_RX_64", on_ports},
    {"CTR_TX_RX_65_127", on_ports},
    {"CTR_TX_RX_128_255", on_ports},
    {"CTR_TX_RX_256_511", on_ports},
    {"CTR_TX_RX_512_1023", on_ports},
    {"CTR_TX_RX_1024_1518", on_ports},
    {"CTR_TX_RX_1519_1522", on_ports},
    {"CTR_TX_RX_1523_2047", on_ports},
    {"CTR_TX_RX_2048_4095", on_ports},
    {"CTR_TX_RX_4096_9216", on_ports},
    {"CTR_ETHER_STATS_DROP_EVENTS", on_ports},
    {"CTR_SNMPIFOUTDISCARD_FRAMES", on_ports_and_lags},
    {"CTR_SNMPIFINDISCARD_FRAMES", on_ports_and_lags},
    {"CTR_RX_TOTAL_FRAMES", on_all},
    {"CTR_RX_TOTAL_ERROR_FRAMES", on_ports_and_lags},
    {"CTR_TX_TOTAL_FRAMES", on_all},
    {"CTR_TX_TOTAL_ERROR_FRAMES", on_ports_and_lags},
    {"CTR_TX_TOTAL_COLLISION_FRAMES", on_copper},
    {"CTR_RX_CRC_ERRORS", on_ports},
    {"CTR_RX_TOTAL_MAC_ERROR_FRAMES", on_ports_and_lags},
    {"CTR_RX_RATE_BITS", on_ports_and_lags},
    {"CTR_TX_RATE_BITS", on_ports_and_lags},
    {"CTR_RX_RATE_FRAMES", on_ports_and_lags},
    {"CTR_TX_RATE_FRAMES", on_ports_and_lags},
    {"CTR_ETHER_STATS_HOLD", nowhere},
};

std::string_view counter_name(uint32_t id) {
  return kinds[id].name;
}

bool counter_by_name(std::string_view name, uint32_t *id) {
  auto found = std::find_if(std::begin(kinds), std::end(kinds),
                            [&](const counter_kind &candidate) { return candidate.name == name; });
  *id = static_cast<uint32_t>(found - std::begin(kinds));
  return found != std::end(kinds);
}

/* Of which kind an interface is. */
static uint8_t kind_of(const switch_model &model, uint32_t interface) {
  switch (interface_type(interface)) {
  case OPEN_INTF_TYPE_PHY:
    return interface_is_copper(model, interface) ? on_copper : on_cages;
  case OPEN_INTF_TYPE_LAG:
    return on_lags;
  case OPEN_INTF_TYPE_CPU:
  case OPEN_INTF_TYPE_VLAN_RTR:
    return on_host;
  case OPEN_INTF_TYPE_LOOPBACK:
    return nowhere;
  }
  return nowhere;
}

open_error_t counter_check(const switch_model &model, uint32_t interface, uint32_t id) {
  if (id >= OPEN_STAT_COUNTERS || !interface_exists(model, interface)) return OPEN_E_PARAM;
  return kinds[id].where & kind_of(model, interface) ? OPEN_E_NONE : OPEN_E_NOT_FOUND;
}

/* --- Reading and setting -------------------------------------------------------------------------------- */

/* What a counter has run up since its value was noted. Whole thousands and the rest of the rate are taken
 * apart so that nothing but the counter itself wraps. */
static uint64_t run_up(const counter &counter, int64_t now) {
  uint64_t elapsed = static_cast<uint64_t>(now - counter.since);
  return counter.per_second / 1000 * elapsed + counter.per_second % 1000 * elapsed / 1000;
}

counter counter_at(const switch_model &model, uint32_t interface, uint32_t id, int64_t now) {
  auto found = model.counters->of.find(interface);
  if (found == model.counters->of.end()) return counter();
  const counter &kept = found->second[id];
  return {kept.value + run_up(kept, now), kept.per_second, now};
}

open_error_t counter_set(switch_model &model, uint32_t interface, uint32_t id, uint64_t value, int64_t now) {
  open_error_t rc = counter_check(model, interface, id);
  if (rc != OPEN_E_NONE) return rc;
  counter *changed = &model.counters.edit()->of[interface][id];
  changed->value = value;
  changed->since = now;
  return OPEN_E_NONE;
}

/* What it has run up so far stays as it is: noting it would lose the fraction each time. */
open_error_t counter_add(switch_model &model, uint32_t interface, uint32_t id, uint64_t amount, int64_t) {
  open_error_t rc = counter_check(model, interface, id);
  if (rc == OPEN_E_NONE) model.counters.edit()->of[interface][id].value += amount;
  return rc;
}

open_error_t counter_run(switch_model &model, uint32_t interface, uint32_t id, uint64_t per_second,
                         int64_t now) {
  open_error_t rc = counter_check(model, interface, id);
  if (rc != OPEN_E_NONE) return rc;
  counter *changed = &model.counters.edit()->of[interface][id];
  *changed = {changed->value + run_up(*changed, now), per_second, now};
  return OPEN_E_NONE;
}

open_error_t counters_clear(switch_model &model, uint32_t interface, int64_t now) {
  if (!interface_exists(model, interface)) return OPEN_E_PARAM;
  if (!model.counters->of.contains(interface)) return OPEN_E_NONE;
  for (counter &kept : model.counters.edit()->of[interface]) kept = {0, kept.per_second, now};
  return OPEN_E_NONE;
}

void counters_forget(switch_model &model, uint32_t interface) {
  if (model.counters->of.contains(interface)) model.counters.edit()->of.erase(interface);
}

} // namespace softswitch
