/* File transfers between the switch and servers: one at a time, on a thread of its own. A file that comes in
 * is written to `transfer.part` in the state directory, checked there, and renamed into its place
 * (stored_files.h), so that what was there stays until the new one is whole. No lock of the switch is held
 * meanwhile. docs/transfers.md is the manual; the network side is transfer/client.h.
 *
 * The functions may be called from any thread unless they say otherwise. */
#ifndef KESTREL_SOFTSWITCH_TRANSFER_H
#define KESTREL_SOFTSWITCH_TRANSFER_H

#include "platform/api/openapi_transfer.h"

#include <string>
#include <string_view>

namespace softswitch {

/* Makes transfers possible, with their files in this directory: there was none so far. What a crash left of
 * one is removed. */
void transfers_open(const std::string &state_dir);
/* Cancels the current transfer and waits for its end. */
void transfers_close();

/* Start a transfer; `target` and `source` as in openapi_transfer.h, and so the results. From one thread at a
 * time. */
open_error_t transfer_download(const std::string &url, std::string_view target);
open_error_t transfer_upload(const std::string &url, std::string_view source);

/* Lets the switch reload once the current transfer is done, or now when the latest is done. False when there
 * was none. */
bool transfer_reload_when_done();

/* Cancels the current transfer, if there is one, and waits for its end. */
void transfer_cancel();

/* A sentence of at most 255 bytes on the current or latest download or upload. */
std::string transfer_status(bool upload);
/* How far the current or latest transfer is in percent; 0 while that is not known. */
uint32_t transfer_percent();
/* Whether one is in progress. While it is, the answer takes up to a tenth of a second. */
bool transfer_in_progress();
/* How the current or latest transfer stands. */
OPEN_TRANSFER_CODE_t transfer_code();

} // namespace softswitch

#endif
