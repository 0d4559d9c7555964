/* Persistence: what keeps every acknowledged change. Files in the state directory, all in the configuration
 * language:
 *   running-config   a snapshot of the configuration; its first line is "! generation N"
 *   journal-N        the changes since snapshot N, one line each, each written before its call returned
 *   startup-config   as the user saved it
 * The running configuration is snapshot N with journal N on top. Renaming a new snapshot into place is the
 * one atomic switch from generation N to N+1; journals of other generations are remains of a crash.
 *
 * A journal belongs to one process (the state directory is locked). Its functions are called under the
 * switch's lock unless they say otherwise. */
#ifndef KESTREL_SOFTSWITCH_CONFIG_JOURNAL_H
#define KESTREL_SOFTSWITCH_CONFIG_JOURNAL_H

#include "platform/softswitch/model/switch.h"
#include "platform/softswitch/services/files.h"

#include <memory>
#include <string>
#include <string_view>

namespace softswitch {

struct journal {
  std::string dir; /* path of the state directory */
  uint64_t generation = 0;
  std::shared_ptr<file_guard> file; /* journal-N; shared with a thread that is syncing it */
  off_t length = 0;                 /* bytes of whole lines in it */
  off_t allocated = 0;              /* bytes that the disk is known to have room for in it */
  bool torn = false;                /* bytes of a failed write may follow them */
};

/* --- Opening -------------------------------------------------------------------------------------------- */

/* Takes the state directory for this process: `lock` is the open directory, which is what is locked, as a
 * file in it could be removed and made anew for a second process. False with the reason when it cannot be
 * used or another process has it. */
bool state_dir_take(const std::string &dir, std::shared_ptr<file_guard> *lock, std::string *error);

/* Loads the configuration into a model in factory state and opens the journal for more. A last line that was
 * not written to its end is dropped with a warning in the log; anything else that cannot be read or applied
 * is an error with file, line and reason, and nothing on disk has then been changed. */
bool journal_open(journal *journal, const std::string &dir, switch_model *model, std::string *error);

/* Removes the running configuration, so that journal_open() begins anew. The directory is this process's. */
bool journal_remove(const std::string &dir, std::string *error);

/* Reads a configuration file of the state directory whole. False with the reason; a file that does not exist
 * is no failure but `exists` false. */
bool read_config_file(const std::string &dir, const std::string &name, std::string *text, bool *exists,
                      std::string *error);

/* --- Changes -------------------------------------------------------------------------------------------- */

/* Adds a line. False when it cannot be stored (disk full); the journal is then as it was. Lines that take
 * something back ("no ...") have a little room that others leave to them, so that what was begun can be
 * undone when it cannot be finished. */
bool journal_append(journal *journal, std::string_view line);

/* Makes everything appended before safe from a power cut. Without the lock, on a copy of journal.file. */
bool journal_sync(const file_guard &file);

/* --- New generations ------------------------------------------------------------------------------------ */

/* Writes a snapshot of the next generation beside the present one. Needs no lock; one at a time. */
bool snapshot_write(const std::string &dir, uint64_t generation, const std::string &configuration,
                    std::string *error);
/* Goes over to the snapshot that snapshot_write() left. Lines appended at `offset` and later came after it
 * was printed and are taken along. False with the reason, and the journal goes on as it was. */
bool snapshot_install(journal *journal, off_t offset, std::string *error);
/* Removes the journal of a past generation once the new one is safe from a power cut. Needs no lock. */
void journal_discard(const std::string &dir, uint64_t generation);

} // namespace softswitch

#endif
