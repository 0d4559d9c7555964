/* User accounts: the file `accounts` (mode 600) in the state directory, one line `name:hash:level` each: a
 * name of 1..63 characters out of A-Z a-z 0-9 . _ -, a hash made by crypt(3) (yescrypt), level 1 (read) or 15
 * (read and write). One malformed line refuses the whole file. A wrong guess costs one hash; past the limits
 * of failed attempts (per account and in total) attempts are refused without hashing, so that a flood of them
 * cannot keep the server busy. */
#ifndef KESTREL_SOFTSWITCH_ACCOUNTS_H
#define KESTREL_SOFTSWITCH_ACCOUNTS_H

#include <string>
#include <string_view>
#include <time.h>

namespace softswitch {

/* Reads the accounts file; when there is none makes one with the account "admin". Its password is
 * `admin_password`, or a random one that is then left in the file `admin-password` (mode 600) beside it until
 * the account gets another or goes.
 * False with the reason when the file cannot be read, made or understood (file and line named). */
bool accounts_open(const std::string &state_dir, const std::string &admin_password, std::string *error);
void accounts_close();

/* Says whether the password is the account's; `level` is then its access level. `now` is seconds of a
 * monotonic clock. The file is read again when it has changed, so that a new password holds at once; a
 * file that cannot be used leaves the accounts as they were and is logged once. */
bool accounts_check(std::string_view user, std::string_view password, time_t now, int *level);

/* Sets or adds an account in an accounts file (made when there is none), replacing the file as a whole. For
 * the password tool; a running switch takes the new file up by itself. False with the reason, and the file as
 * it was, when the name, password (1..255 characters, no control characters) or level (1 or 15) is refused or
 * the file cannot be understood or written. */
bool accounts_set(const std::string &state_dir, std::string_view user, std::string_view password, int level,
                  std::string *error);
/* Takes an account out of an accounts file. False with the reason, also when there is no such account. */
bool accounts_remove(const std::string &state_dir, std::string_view user, std::string *error);

} // namespace softswitch

#endif
