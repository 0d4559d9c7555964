/* The apply thread: carries changes from the model to the data plane, and with them to the disk. A change is
 * pending from its call until this thread has synced the journal and the driver has taken a state that
 * includes it. The thread also compacts the journal when that has grown long. */
#ifndef KESTREL_SOFTSWITCH_DATAPLANE_APPLY_H
#define KESTREL_SOFTSWITCH_DATAPLANE_APPLY_H

#include "platform/softswitch/softswitch_state.h"

namespace softswitch {

/* Gives the driver the configuration that the switch starts with. Before the thread runs. */
void apply_initial(switch_model *model);
/* Starts and ends the thread. False when the system gives no thread. Without the lock. */
bool apply_start(running_switch *the_switch);
void apply_stop(running_switch *the_switch);

/* Takes over what the driver says of all links. Under the lock. */
void report_links(switch_model *model);

} // namespace softswitch

#endif
