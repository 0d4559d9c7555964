/* The switch's state: what is configured, and what the outside world has made of it. Plain values; the rules
 * stand with the nouns (interface.h, lag.h, switchport.h, vlan.h). A copy is cheap (shared_table.h).
 *
 * Operations of the nouns take the model first and return an open_error_t of the platform interface. One that
 * fails may leave the model half changed: callers work on a copy and take it over when all went well. */
#ifndef KESTREL_SOFTSWITCH_MODEL_SWITCH_H
#define KESTREL_SOFTSWITCH_MODEL_SWITCH_H

#include "platform/api/openapi_common.h"
#include "platform/softswitch/model/acl.h"
#include "platform/softswitch/model/addresses.h"
#include "platform/softswitch/model/bgp.h"
#include "platform/softswitch/model/chassis.h"
#include "platform/softswitch/model/counters.h"
#include "platform/softswitch/model/interface.h"
#include "platform/softswitch/model/lag.h"
#include "platform/softswitch/model/leases.h"
#include "platform/softswitch/model/limits.h"
#include "platform/softswitch/model/logging.h"
#include "platform/softswitch/model/mac_locking.h"
#include "platform/softswitch/model/routing.h"
#include "platform/softswitch/model/shared_table.h"
#include "platform/softswitch/model/ssh.h"
#include "platform/softswitch/model/switchport.h"
#include "platform/softswitch/model/system.h"
#include "platform/softswitch/model/tcam.h"
#include "platform/softswitch/model/time_ranges.h"
#include "platform/softswitch/model/vlan.h"
#include "platform/softswitch/model/vxlan.h"
#include "platform/softswitch/services/profile.h"

#include <memory>

namespace softswitch {

struct switch_model {
  /* As the members have it; made once, as they are many. */
  switch_model();
  ~switch_model();
  switch_model(const switch_model &);
  switch_model &operator=(const switch_model &);
  /* Whether nothing whatever has been done to either since it was copied from the other. */
  bool operator==(const switch_model &) const = default;

  struct limits limits;
  std::shared_ptr<const chassis_profile> profile; /* as it was at start, save that the identity may change */
  bool ready = true;                              /* what the readiness query answers */
  uint32_t ssh_sessions = 0;                      /* that are open */

  /* Changes are numbered from 1. Whatever changes notes the number of its latest change; it is pending while
   * that is above the latest change that the data plane has taken. */
  uint64_t change = 0;
  uint64_t applied = 0;

  shared_table<system_table> system;
  shared_table<ssh_table> ssh;
  shared_table<chassis_table> chassis;
  shared_table<interface_table> interfaces;
  shared_table<vlan_table> vlans;
  shared_table<mac_locking_table> mac_locking;
  shared_table<acl_table> acls;
  shared_table<tcam_table> tcam;
  shared_table<time_range_table> time_ranges;
  shared_table<routing_table> routing;
  shared_table<address_table> addresses;
  shared_table<lease_table> leases;
  shared_table<bgp_table> bgp;
  shared_table<vxlan_table> vxlan;
  shared_table<logging_table> logging;
  shared_table<counter_table> counters;
};

/* A switch of this make in factory state, ports cabled as the profile says. */
switch_model make_switch(const chassis_profile &profile);

/* Returns the whole configuration to factory state, as a change. What is not configuration stays: limits,
 * the chassis, cables, time ranges, counters and leases (save of interfaces that go), SSH sessions,
 * readiness.
 */
void switch_reset(switch_model &model);

/* The number for the change that is being made. */
uint64_t next_change(switch_model &model);

/* Gives a member of a table a value, as a change when that is another one. */
template <typename Table, typename Value>
void set_member(switch_model &model, shared_table<Table> switch_model::*table, Value Table::*member,
                const Value &value) {
  if ((*(model.*table)).*member == value) return;
  next_change(model);
  (model.*table).edit()->*member = value;
}

/* Notes that the data plane has taken everything up to `change`. */
void changes_taken(switch_model &model, uint64_t change);

} // namespace softswitch

#endif
