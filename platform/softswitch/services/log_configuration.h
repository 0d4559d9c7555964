/* What the configuration says of the log, told to the log service. */
#ifndef KESTREL_SOFTSWITCH_LOG_CONFIGURATION_H
#define KESTREL_SOFTSWITCH_LOG_CONFIGURATION_H

#include "platform/softswitch/model/logging.h"

#include <string>

namespace softswitch {

/* Takes over console mode, console threshold and remote hosts. `hostname` is the switch's own. */
void log_configure(const logging_table &logging, const std::string &hostname);

} // namespace softswitch

#endif
