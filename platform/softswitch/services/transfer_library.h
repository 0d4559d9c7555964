/* Loads the library of transfers (transfer/client.h) when it is first needed. */
#ifndef KESTREL_SOFTSWITCH_TRANSFER_LIBRARY_H
#define KESTREL_SOFTSWITCH_TRANSFER_LIBRARY_H

#include "platform/softswitch/transfer/client.h"

namespace softswitch {

/* The functions of the library; nullptr, with an error in the log, when it cannot be loaded. It stays once it
 * is there. Calls come from one thread at a time. */
const transfer_functions *transfer_library();

} // namespace softswitch

#endif
