/* The accounts file: its format, reading and replacing it. accounts.cpp decides with what it holds, and says
 * in accounts.h what the file looks like. */
#ifndef KESTREL_SOFTSWITCH_ACCOUNTS_FILE_H
#define KESTREL_SOFTSWITCH_ACCOUNTS_FILE_H

#include <map>
#include <string>
#include <string_view>
#include <sys/stat.h>

namespace softswitch {

struct account {
  std::string hash; /* as password_hash_new() makes it */
  int level;        /* OPEN_LOGIN_ACCESS_READ_ONLY or OPEN_LOGIN_ACCESS_READ_WRITE */
};

using account_table = std::map<std::string, account, std::less<>>;

/* Where the accounts of a state directory are. */
std::string accounts_path(const std::string &state_dir);

/* Parses the content of an accounts file. False with "PATH:LINE: reason"; `table` is then untouched. */
bool parse_accounts(std::string_view text, const std::string &path, account_table *table, std::string *error);

/* Reads an accounts file, which must be open to its owner alone. False with the reason; `table` is then
 * untouched. */
bool read_accounts(const std::string &path, account_table *table, std::string *error);

/* Makes the accounts file with the account "admin" when there is none; see accounts_open(). */
bool make_first_accounts(const std::string &state_dir, const std::string &admin_password, std::string *error);

} // namespace softswitch

#endif
