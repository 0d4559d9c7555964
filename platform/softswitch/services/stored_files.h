/* The files of the switch that transfers bring and fetch: configurations, scripts, software images. They are
 * in the state directory, for its owner alone:
 *   startup-config, backup-config   in the configuration language
 *   scripts/NAME.scr                likewise
 *   images/active, images/backup    software images; beside each, in NAME.info, one line: its size in bytes,
 *                                   its SHA-256, when (UTC) and from where it came
 * Links are not followed, and only regular files count. */
#ifndef KESTREL_SOFTSWITCH_STORED_FILES_H
#define KESTREL_SOFTSWITCH_STORED_FILES_H

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace softswitch {

/* Bytes; no configuration and no script comes near this. */
inline constexpr size_t stored_text_max = size_t{256} * 1024 * 1024;

enum class stored_kind { none, configuration, script, image };

/* What a name stands for: "startup-config", "backup-config", "active", "backup", or a script. */
stored_kind stored_kind_of(std::string_view name);

/* The path of a stored file; `name` stands for one. */
std::string stored_path(const std::string &state_dir, std::string_view name);

/* Reads a configuration or a script whole. False with the reason; a file that does not exist is no failure
 * but `exists` false. */
bool stored_read(const std::string &state_dir, std::string_view name, std::string *text, bool *exists,
                 std::string *error);
/* Puts a new file, which must be on the state directory's file system, in the place of a stored one. False
 * with the reason, and nothing has changed. */
bool stored_install(const std::string &state_dir, std::string_view name, const std::string &new_file,
                    std::string *error);
/* Whether the file is there. */
bool stored_exists(const std::string &state_dir, std::string_view name);

/* The names of all scripts, in order. False with the reason when the folder cannot be read. */
bool scripts_list(const std::string &state_dir, std::vector<std::string> *names, std::string *error);
/* Removes a script. False with the reason; one that does not exist is no failure but `existed` false. */
bool script_remove(const std::string &state_dir, std::string_view name, bool *existed, std::string *error);

/* Writes the line beside an image that has been put in its place. False with the reason. */
bool image_describe(const std::string &state_dir, std::string_view name, uint64_t size,
                    std::string_view sha256, std::string_view from, std::string *error);
/* One line for each image that is there: its name, then what stands beside it, "unknown" when nothing does.
 */
std::string image_list(const std::string &state_dir);

/* Removes all of it: what a return to factory state does. False with the reason for the first that could not
 * be removed; the others are gone all the same. */
bool stored_files_remove(const std::string &state_dir, std::string *error);

} // namespace softswitch

#endif
