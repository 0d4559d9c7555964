/* User accounts: the file `accounts` in the state directory, one line `name:hash:level` each, hashes made by
 * crypt(3) (yescrypt). A wrong guess costs one hash; past the limits of failed attempts (per account and in
 * total) attempts are refused without hashing, so that a flood of them cannot keep the server busy. */
#ifndef KESTREL_SOFTSWITCH_ACCOUNTS_H
#define KESTREL_SOFTSWITCH_ACCOUNTS_H

#include <string>
#include <string_view>
#include <time.h>

namespace softswitch {

/* Reads the accounts file; when there is none makes one with the account "admin". Its password is
 * `admin_password`, or a random one that is then left in the file `admin-password` (mode 600) beside it.
 * False with the reason when the file cannot be read, made or understood (file and line named). */
bool accounts_open(const std::string &state_dir, const std::string &admin_password, std::string *error);
void accounts_close();

/* Says whether the password is the account's; `level` is then its access level. `now` is seconds of a
 * monotonic clock. The file is read again when it has changed, so that a new password holds at once. */
bool accounts_check(std::string_view user, std::string_view password, time_t now, int *level);

/* Sets or adds an account in an accounts file, replacing the file as a whole. For the password tool. */
bool accounts_set(const std::string &state_dir, std::string_view user, std::string_view password, int level,
                  std::string *error);

} // namespace softswitch

#endif
