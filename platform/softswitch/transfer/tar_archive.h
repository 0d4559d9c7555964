/* Archives of files; the contract is with transfer_functions in client.h. */
#ifndef KESTREL_SOFTSWITCH_TRANSFER_TAR_ARCHIVE_H
#define KESTREL_SOFTSWITCH_TRANSFER_TAR_ARCHIVE_H

#include "platform/softswitch/transfer/client.h"

namespace softswitch {

bool tar_archive_write(const archive_file *files, size_t count, int64_t time,
                       bool (*put)(void *context, const char *data, size_t size), void *context);

} // namespace softswitch

#endif
