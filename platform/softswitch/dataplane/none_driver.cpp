/* The driver that moves no packets; see driver.h. */
#include "platform/softswitch/dataplane/driver.h"

#include <mutex>

namespace softswitch {

struct none_tables {
  std::mutex lock;
  std::unique_ptr<const wanted_state> taken;
};

/* Never destroyed, so that a thread may still use it while the process ends. */
static none_tables &tables() {
  static none_tables *const the_tables = new none_tables;
  return *the_tables;
}

static void take(std::unique_ptr<const wanted_state> wanted) {
  std::lock_guard guard(tables().lock);
  tables().taken = std::move(wanted);
}

static bool link_up(uint32_t port, bool connected) {
  std::lock_guard guard(tables().lock);
  return connected && tables().taken && tables().taken->ports[port].enabled;
}

const dataplane_driver none_driver = {"none", take, link_up};

} // namespace softswitch
