/* The network side of transfers, in a library of its own (libkestrel_transfer.so): what it needs of others is
 * much, and is loaded with it when the first transfer is asked for. The switch's side, which loads it, is
 * services/transfer.cpp. Nothing but the one function at the end is shown by the library, and nothing of the
 * switch is known here. */
#ifndef KESTREL_SOFTSWITCH_TRANSFER_CLIENT_H
#define KESTREL_SOFTSWITCH_TRANSFER_CLIENT_H

#include "platform/api/openapi_transfer.h"

#include <stddef.h>
#include <stdint.h>

namespace softswitch {

/* One end of one transfer; opaque. */
struct transfer_client;

struct transfer_request {
  const char *url; /* url_read() took it */
  bool upload;

  /* Files, each of which may be missing. */
  const char *trusted_ca;  /* certificates (PEM) that are trusted besides the system's */
  const char *known_hosts; /* host keys of SSH servers, as OpenSSH keeps them; no others are trusted */
  const char *private_key; /* the switch's own for SSH servers, without a passphrase */

  uint32_t connect_seconds; /* until the server has answered and let the switch in */
  uint32_t stall_seconds;   /* after that without a byte */
  uint32_t total_seconds;
  uint64_t size_max; /* bytes, of a download */

  const char *data; /* what to send; uploads */
  uint64_t size;

  /* Takes what comes in; false when it cannot be stored. Downloads. */
  bool (*take)(void *context, const char *data, size_t size);
  /* Tells how far it is: bytes moved, and bytes in all, 0 while that is not known. */
  void (*progress)(void *context, uint64_t bytes, uint64_t total);
  void *context; /* for both */
};

struct transfer_result {
  OPEN_TRANSFER_CODE_t code;       /* OPEN_TRANSFER_DONE or why not */
  char reason[160];                /* why not, in words without a full stop; printable ASCII */
  char sha256[2 * 32 + sizeof ""]; /* of a download, hexadecimal */
};

/* A file of an archive. */
struct archive_file {
  const char *name;
  const char *data;
  size_t size;
};

struct transfer_functions {
  /* Says whether a text is the URL of a file that the library can fetch, or send. `shown` then gets it as
   * others may see it, cut to its room: scheme, host, port and path. */
  bool (*url_read)(const char *url, bool upload, char *shown, size_t shown_size);

  /* A transfer can be cancelled from any thread, also before it runs; run() then returns soon. nullptr when
   * memory or descriptors are short. */
  struct transfer_client *(*open)(void);
  void (*run)(struct transfer_client *client, const struct transfer_request *request,
              struct transfer_result *result);
  void (*cancel)(struct transfer_client *client);
  void (*close)(struct transfer_client *client);

  /* Writes files as a tar archive (POSIX ustar), readable for their owner and dated `time` (seconds since
   * 1970), by calls of `put`. False when it cannot be made or a call of `put` said so. */
  bool (*archive)(const struct archive_file *files, size_t count, int64_t time,
                  bool (*put)(void *context, const char *data, size_t size), void *context);
};

} // namespace softswitch

extern "C" const softswitch::transfer_functions *kestrel_transfer_functions(void);

#endif
