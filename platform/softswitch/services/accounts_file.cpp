/* The accounts file; see accounts_file.h, and accounts.h for what the password tool calls. */
#include "platform/softswitch/services/accounts_file.h"

#include "platform/api/openapi_user.h"
#include "platform/softswitch/services/accounts.h"
#include "platform/softswitch/services/files.h"
#include "platform/softswitch/services/password_hash.h"

#include <errno.h>
#include <fcntl.h>
#include <string.h>
#include <sys/file.h>
#include <unistd.h>

namespace softswitch {

static constexpr size_t name_length_max = 63;
static constexpr size_t password_length_max = 255; /* what a login can carry */
static constexpr size_t file_size_max = size_t{1024} * 1024;

std::string accounts_path(const std::string &state_dir) {
  return state_dir + "/accounts";
}

/* --- The rules ------------------------------------------------------------------------------------------ */

/* Each check answers what is wrong, or null. */

static const char *fault_of_name(std::string_view name) {
  static const char allowed[] = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789._-";
  bool good = !name.empty() && name.size() <= name_length_max && name.find_first_not_of(allowed) == name.npos;
  return good ? nullptr : "a user name is 1 to 63 characters out of A-Z a-z 0-9 . _ -";
}

static const char *fault_of_level(int level) {
  bool good = level == OPEN_LOGIN_ACCESS_READ_ONLY || level == OPEN_LOGIN_ACCESS_READ_WRITE;
  return good ? nullptr : "a level is 1 (read) or 15 (read and write)";
}

static const char *fault_of_password(std::string_view password) {
  bool good = !password.empty() && password.size() <= password_length_max;
  for (unsigned char c : password) good = good && c >= 0x20 && c != 0x7f;
  return good ? nullptr : "a password is 1 to 255 characters without control characters";
}

/* --- Reading -------------------------------------------------------------------------------------------- */

/* Parses one line into a table; answers what is wrong with it, or null. */
static const char *parse_line(std::string_view line, account_table *table) {
  size_t name_end = line.find(':');
  size_t hash_end = name_end == line.npos ? line.npos : line.find(':', name_end + 1);
  if (hash_end == line.npos) return "a line is name:hash:level";
  std::string_view name = line.substr(0, name_end);
  std::string_view hash = line.substr(name_end + 1, hash_end - name_end - 1);
  std::string_view level = line.substr(hash_end + 1);
  if (const char *fault = fault_of_name(name)) return fault;
  if (!password_hash_is_whole(hash)) return "not a yescrypt hash ($y$...)";
  if (level != "1" && level != "15") return fault_of_level(0);
  bool is_new =
      table->try_emplace(std::string(name), account{std::string(hash), level == "1" ? 1 : 15}).second;
  return is_new ? nullptr : "the account was given before";
}

bool parse_accounts(std::string_view text, const std::string &path, account_table *table,
                    std::string *error) {
  account_table read;
  for (size_t number = 1; !text.empty(); number++) {
    size_t end = text.find('\n');
    if (const char *fault = parse_line(text.substr(0, end), &read)) {
      *error = path + ":" + std::to_string(number) + ": " + fault;
      return false;
    }
    text.remove_prefix(end == text.npos ? text.size() : end + 1);
  }
  *table = std::move(read);
  return true;
}

static bool failed(const std::string &path, const char *reason, std::string *error) {
  *error = path + ": " + reason;
  return false;
}

bool read_accounts(const std::string &path, account_table *table, std::string *error) {
  /* Non-blocking, so that a FIFO put in the file's place cannot hold up a login. */
  file_guard file(open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK));
  struct stat found;
  if (file.fd < 0 || fstat(file.fd, &found) != 0) return failed(path, strerror(errno), error);
  if (!S_ISREG(found.st_mode)) return failed(path, "is not a regular file", error);
  if (found.st_mode & 077) return failed(path, "must be open to its owner alone (mode 600)", error);
  std::string text;
  return read_file(file.fd, path, file_size_max, &text, error) && parse_accounts(text, path, table, error);
}

/* --- Writing -------------------------------------------------------------------------------------------- */

/* Keeps other writers of the accounts out until it is closed; readers need no lock, as files are replaced
 * whole. -1 with the reason when that fails. */
static int lock_accounts(const std::string &state_dir, std::string *error) {
  std::string path = state_dir + "/accounts.lock";
  int fd = open(path.c_str(), O_RDWR | O_CREAT | O_CLOEXEC | O_NOFOLLOW, 0600);
  if (fd >= 0) give_to_directory_owner(fd, path);
  int rc = fd < 0 ? -1 : flock(fd, LOCK_EX);
  if (rc == 0) return fd;
  failed(path, strerror(errno), error);
  if (fd >= 0) close(fd);
  return -1;
}

static bool file_exists(const std::string &path) {
  struct stat found;
  return stat(path.c_str(), &found) == 0 || errno != ENOENT;
}

static bool write_accounts(const std::string &path, const account_table &table, std::string *error) {
  std::string text;
  for (const auto &[name, entry] : table)
    text += name + ":" + entry.hash + ":" + std::to_string(entry.level) + "\n";
  return replace_file(path, text, 0600, error);
}

static bool make_account(std::string_view password, int level, account *made, std::string *error) {
  *made = {password_hash_new(password), level};
  if (!made->hash.empty()) return true;
  *error = "the password cannot be hashed";
  return false;
}

static std::string first_password_path(const std::string &state_dir) {
  return state_dir + "/admin-password";
}

/* The random first password is no longer that of the account. */
static void forget_first_password(const std::string &state_dir) {
  unlink(first_password_path(state_dir).c_str());
}

bool make_first_accounts(const std::string &state_dir, const std::string &admin_password,
                         std::string *error) {
  std::string path = accounts_path(state_dir);
  if (file_exists(path)) return true;
  file_guard lock(lock_accounts(state_dir, error));
  if (lock.fd < 0) return false;
  if (file_exists(path)) return true;
  std::string password = admin_password.empty() ? random_password(20) : admin_password;
  if (const char *fault = fault_of_password(password)) return failed("account admin", fault, error);
  account admin;
  if (!make_account(password, OPEN_LOGIN_ACCESS_READ_WRITE, &admin, error)) return false;
  /* The password must be there before the account is: a crash in between then costs nothing. */
  if (!admin_password.empty())
    forget_first_password(state_dir); /* of an accounts file that somebody removed */
  else if (!replace_file(first_password_path(state_dir), password + "\n", 0600, error))
    return false;
  return write_accounts(path, {{"admin", admin}}, error);
}

bool accounts_set(const std::string &state_dir, std::string_view user, std::string_view password, int level,
                  std::string *error) {
  const char *fault = fault_of_name(user);
  if (!fault) fault = fault_of_password(password);
  if (!fault) fault = fault_of_level(level);
  if (fault) {
    *error = fault;
    return false;
  }
  account made;
  if (!make_account(password, level, &made, error)) return false;
  file_guard lock(lock_accounts(state_dir, error));
  if (lock.fd < 0) return false;
  std::string path = accounts_path(state_dir);
  account_table table;
  if (file_exists(path) && !read_accounts(path, &table, error)) return false;
  table.insert_or_assign(std::string(user), made);
  if (!write_accounts(path, table, error)) return false;
  if (user == "admin") forget_first_password(state_dir);
  return true;
}

bool accounts_remove(const std::string &state_dir, std::string_view user, std::string *error) {
  file_guard lock(lock_accounts(state_dir, error));
  if (lock.fd < 0) return false;
  std::string path = accounts_path(state_dir);
  account_table table;
  if (!read_accounts(path, &table, error)) return false;
  auto found = table.find(user);
  if (found == table.end()) return failed(path, "there is no such account", error);
  table.erase(found);
  if (!write_accounts(path, table, error)) return false;
  if (user == "admin") forget_first_password(state_dir);
  return true;
}

} // namespace softswitch
