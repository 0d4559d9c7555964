/* What transfers do with the switch's files: gathering what is sent, checking and storing what was fetched.
 */
#ifndef KESTREL_SOFTSWITCH_TRANSFER_FILES_H
#define KESTREL_SOFTSWITCH_TRANSFER_FILES_H

#include "platform/softswitch/model/limits.h"
#include "platform/softswitch/transfer/client.h"

#include <string>
#include <string_view>
#include <vector>

namespace softswitch {

/* --- Sending -------------------------------------------------------------------------------------------- */

/* Whether files are sent by this name. */
bool is_transfer_source(std::string_view name);

/* Gathers what is sent by a name, as it is now. False with the reason when there is no such file, or too much
 * for an archive. Takes the switch's lock for a moment. */
bool transfer_gather(const transfer_functions &library, const std::string &state_dir, std::string_view source,
                     std::string *data, std::string *error);

/* --- Fetching ------------------------------------------------------------------------------------------- */

/* How large a file for this target may be, in bytes. */
uint64_t transfer_size_max(const struct limits &limits, std::string_view target);

/* A file that was fetched. */
struct fetched_file {
  std::string path;
  int fd; /* open for reading */
  std::string sha256;
};

/* What is wrong with a file that was fetched for this target, each in words that go into the log; empty when
 * nothing is. `text` gets what is in it, unless it is an image. Takes the switch's lock for a moment. */
std::vector<std::string> transfer_faults(std::string_view target, const fetched_file &file,
                                         std::string *text);

/* Puts a file that is right, with this text, into its place. False with the reason.
 *   from   where it came from, for images */
bool transfer_store(const std::string &state_dir, std::string_view target, const fetched_file &file,
                    std::string_view text, std::string_view from, std::string *error);

} // namespace softswitch

#endif
