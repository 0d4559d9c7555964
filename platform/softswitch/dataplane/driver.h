/* The table between the model and whatever moves packets. A driver is given the wanted state as a whole,
 * never a stream of commands: it compiles that into tables of its own and takes them over at once. It reports
 * back what only it can know. */
#ifndef KESTREL_SOFTSWITCH_DATAPLANE_DRIVER_H
#define KESTREL_SOFTSWITCH_DATAPLANE_DRIVER_H

#include "platform/softswitch/model/switch.h"

#include <memory>
#include <vector>

namespace softswitch {

struct wanted_port {
  bool enabled = false; /* false also in soft shutdown, and where there is no port or LAG */
  uint16_t pvid = 1;
  uint8_t accept_frames = OPEN_DOT1Q_ADMIT_ALL; /* OPEN_DOT1Q_ACCEPT_FRAME_TYPE_t */
  uint16_t lag = 0;                             /* number of the LAG that the port is a member of, or 0 */
};

struct wanted_vlan {
  uint16_t id;
  member_set members;
  member_set tagged; /* members whose frames leave with a tag */
};

/* What the data plane shall do, without anything that only management needs (names, modes, defaults). */
struct wanted_state {
  std::vector<wanted_vlan> vlans;  /* in order of id */
  wanted_port ports[lag_last + 1]; /* ports and LAGs by interface number */
};

/* The wanted state of a model. */
std::unique_ptr<const wanted_state> compile_wanted(const switch_model &model);

struct dataplane_driver {
  const char *name;
  /* Takes a state over in the place of the one before. May last; called without the switch's lock, by one
   * thread at a time. */
  void (*take)(std::unique_ptr<const wanted_state>);
  /* Whether a port's link is up. `connected` is what the lab says: a cable is in and the far end alive; for
   * drivers without cables of their own. Must not last; may be called while take() runs. */
  bool (*link_up)(uint32_t port, bool connected);
};

/* Moves no packets. A link is up when its port is enabled and connected. */
extern const dataplane_driver none_driver;

} // namespace softswitch

#endif
