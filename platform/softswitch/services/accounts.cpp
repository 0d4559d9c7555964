/* Checking passwords: the accounts in force, and how many wrong guesses are let through; see accounts.h. The
 * file itself is accounts_file.cpp, the hashes password_hash.cpp, the limits and why throttle.h. */
#include "platform/softswitch/services/accounts.h"

#include "platform/api/l7proc.h"
#include "platform/softswitch/services/accounts_file.h"
#include "platform/softswitch/services/password_hash.h"
#include "platform/softswitch/services/throttle.h"

#include <mutex>

namespace softswitch {

/* What tells one version of a file from another; files are replaced, so the inode alone nearly does. */
struct file_version {
  dev_t device = 0;
  ino_t inode = 0;
  off_t size = 0;
  struct timespec modified = {};
  struct timespec changed = {};
};

struct accounts_state {
  std::string path; /* empty while closed */
  file_version read_version;
  account_table accounts;
  std::string dummy_hash; /* what passwords for unknown names are compared with; nobody knows its password */
  std::map<std::string, throttle_bucket, std::less<>> buckets; /* of accounts that have been tried */
  throttle_bucket unknown_names = throttle_full(throttle_per_account);
  throttle_bucket total = throttle_full(throttle_in_total);
};

static std::mutex lock;
static accounts_state state;

static bool same_time(const struct timespec &a, const struct timespec &b) {
  return a.tv_sec == b.tv_sec && a.tv_nsec == b.tv_nsec;
}

static bool same_version(const file_version &a, const file_version &b) {
  return a.device == b.device && a.inode == b.inode && a.size == b.size &&
         same_time(a.modified, b.modified) && same_time(a.changed, b.changed);
}

/* The version of the file now; all zero when there is none. */
static file_version version_of(const std::string &path) {
  struct stat found;
  if (stat(path.c_str(), &found) != 0) return {};
  return {found.st_dev, found.st_ino, found.st_size, found.st_mtim, found.st_ctim};
}

bool accounts_open(const std::string &state_dir, const std::string &admin_password, std::string *error) {
  std::lock_guard<std::mutex> hold(lock);
  accounts_state fresh;
  fresh.path = accounts_path(state_dir);
  if (!make_first_accounts(state_dir, admin_password, error)) return false;
  fresh.read_version = version_of(fresh.path);
  if (!read_accounts(fresh.path, &fresh.accounts, error)) return false;
  fresh.dummy_hash = password_hash_new(random_password(20));
  if (fresh.dummy_hash.empty()) {
    *error = "the system cannot make yescrypt password hashes";
    return false;
  }
  state = std::move(fresh);
  return true;
}

void accounts_close() {
  std::lock_guard<std::mutex> hold(lock);
  state = {};
}

/* Takes a changed file up. The version is noted before reading and whatever comes of it, so that a change in
 * between is seen next time and a bad file is logged once. */
static void take_up_changes() {
  file_version version = version_of(state.path);
  if (same_version(version, state.read_version)) return;
  state.read_version = version;
  std::string error;
  if (!read_accounts(state.path, &state.accounts, &error)) {
    l7proc_logf(L7PROC_ERROR, 0, "accounts.cpp", __LINE__, "%s; the accounts stay as they were",
                error.c_str());
    return;
  }
  std::erase_if(state.buckets, [](const auto &tried) { return !state.accounts.contains(tried.first); });
}

/* The bucket of failed attempts that an attempt with this name draws from. All unknown names share one, as a
 * bucket for each would let anybody fill the memory. The price: while it is empty, unknown names are refused
 * faster than accounts are. */
static throttle_bucket *bucket_of(std::string_view user, bool known) {
  if (!known) return &state.unknown_names;
  return &state.buckets.try_emplace(std::string(user), throttle_full(throttle_per_account)).first->second;
}

bool accounts_check(std::string_view user, std::string_view password, time_t now, int *level) {
  std::lock_guard<std::mutex> hold(lock);
  if (state.path.empty()) return false;
  take_up_changes();
  auto found = state.accounts.find(user);
  bool known = found != state.accounts.end();
  throttle_bucket *bucket = bucket_of(user, known);
  if (!throttle_allows(bucket, throttle_per_account, now)) return false;
  if (!throttle_allows(&state.total, throttle_in_total, now)) return false;
  /* An unknown name costs the same hash, so that the time taken does not tell which names exist. */
  bool matches = password_matches(password, known ? found->second.hash : state.dummy_hash);
  if (!matches || !known) {
    throttle_take(bucket);
    throttle_take(&state.total);
    return false;
  }
  *level = found->second.level;
  return true;
}

} // namespace softswitch
