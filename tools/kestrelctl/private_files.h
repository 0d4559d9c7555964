/* Files that nobody else may read: the session keys, and the fingerprints that a user trusts. They are small
 * texts in one folder, $XDG_STATE_HOME/kestrelctl or ~/.local/state/kestrelctl.
 *
 * Folder (mode 700) and files (mode 600) must belong to the user, be no links, and give others no rights;
 * what is otherwise is refused, not repaired: somebody else may have had a hand in it. A file is replaced by
 * writing beside it, syncing and renaming. */
#ifndef KESTREL_TOOLS_KESTRELCTL_PRIVATE_FILES_H
#define KESTREL_TOOLS_KESTRELCTL_PRIVATE_FILES_H

#include <string>

/* The folder as the environment says; empty when there is neither XDG_STATE_HOME nor HOME. */
std::string state_folder();

/* The functions return false with a sentence in *error when something is wrong. */

/* Reads a file; *content is empty when there is none. */
bool read_private_file(const std::string &folder, const std::string &name, std::string *content,
                       std::string *error);
/* Writes a file, and makes the folder if need be. */
bool write_private_file(const std::string &folder, const std::string &name, const std::string &content,
                        std::string *error);
/* Removes a file; it may be missing. */
bool remove_private_file(const std::string &folder, const std::string &name, std::string *error);

#endif
