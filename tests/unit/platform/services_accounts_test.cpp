/* Accounts: the file, passwords, and how many wrong guesses are let through. */
#include "platform/softswitch/services/accounts.h"

#include "platform/softswitch/services/accounts_file.h"
#include "platform/softswitch/services/log.h"
#include "platform/softswitch/services/password_hash.h"
#include "platform/softswitch/services/throttle.h"
#include "tests/unit/platform/services_test_support.h"

#include <crypt.h>
#include <errno.h>
#include <string.h>
#include <thread>
#include <unistd.h>

using namespace softswitch;

namespace {

/* A real yescrypt hash at the lowest cost, so that many can be tried. */
std::string cheap_hash(const char *password) {
  static crypt_data data;
  char setting[CRYPT_GENSALT_OUTPUT_SIZE];
  crypt_gensalt_rn("$y$", 1, nullptr, 0, setting, sizeof setting);
  return crypt_r(password, setting, &data);
}

class Accounts : public testing::Test {
protected:
  void TearDown() override {
    accounts_close();
    log_close();
  }
  std::string file() const { return directory.path + "/accounts"; }
  bool open(const std::string &admin_password = "secret") {
    return accounts_open(directory.path, admin_password, &error);
  }
  /* The level that a login gives at a time; 0 when it is refused. */
  int login(std::string_view user, std::string_view password, time_t now = 1000) {
    int level = 0;
    return accounts_check(user, password, now, &level) ? level : 0;
  }
  /* Hashes made by one login. */
  unsigned long hashes_of_login(std::string_view user, std::string_view password, time_t now = 1000) {
    unsigned long before = password_hash_count();
    login(user, password, now);
    return password_hash_count() - before;
  }
  temporary_directory directory;
  std::string error;
};

/* --- Throttle arithmetic ---------------------------------------------------------------------------------
 */

unsigned tokens_left(throttle_bucket *bucket, const throttle_rate &rate, time_t now) {
  unsigned taken = 0;
  for (; throttle_allows(bucket, rate, now); taken++) throttle_take(bucket);
  return taken;
}

TEST(Throttle, FullBucketGivesItsBurstAndNoMore) {
  throttle_bucket bucket = throttle_full({10, 1, 3});
  EXPECT_EQ(tokens_left(&bucket, {10, 1, 3}, 500), 10u);
  EXPECT_EQ(tokens_left(&bucket, {10, 1, 3}, 500), 0u);
}

TEST(Throttle, EmptyBucketGainsByWholePeriods) {
  const struct {
    time_t seconds;
    unsigned gained;
  } table[] = {{0, 0}, {1, 0}, {2, 0}, {3, 1}, {5, 1}, {6, 2}, {29, 9}, {30, 10}, {31, 10}, {100000, 10}};
  for (const auto &row : table) {
    throttle_bucket bucket = throttle_full({10, 1, 3});
    tokens_left(&bucket, {10, 1, 3}, 500);
    EXPECT_EQ(tokens_left(&bucket, {10, 1, 3}, 500 + row.seconds), row.gained) << row.seconds << " s";
  }
}

TEST(Throttle, LookingOftenDoesNotLoseFractionsOfAPeriod) {
  throttle_bucket bucket = throttle_full({10, 1, 3});
  tokens_left(&bucket, {10, 1, 3}, 500);
  unsigned gained = 0;
  for (time_t now = 501; now <= 530; now++) gained += tokens_left(&bucket, {10, 1, 3}, now);
  EXPECT_EQ(gained, 10u);
}

TEST(Throttle, FullBucketSavesNothingUp) {
  throttle_bucket bucket = throttle_full({10, 1, 3});
  EXPECT_TRUE(throttle_allows(&bucket, {10, 1, 3}, 100000));
  throttle_take(&bucket);
  EXPECT_EQ(tokens_left(&bucket, {10, 1, 3}, 100002), 9u);
}

TEST(Throttle, RefillOfSeveralStopsAtTheBurst) {
  throttle_bucket bucket = throttle_full(throttle_in_total);
  EXPECT_EQ(tokens_left(&bucket, throttle_in_total, 1), 50u);
  EXPECT_EQ(tokens_left(&bucket, throttle_in_total, 2), 5u);
  EXPECT_EQ(tokens_left(&bucket, throttle_in_total, 11), 45u);
  EXPECT_EQ(tokens_left(&bucket, throttle_in_total, 22), 50u);
}

TEST(Throttle, ClockThatGoesBackGainsNothing) {
  throttle_bucket bucket = throttle_full({10, 1, 3});
  tokens_left(&bucket, {10, 1, 3}, 500);
  EXPECT_EQ(tokens_left(&bucket, {10, 1, 3}, 100), 0u);
  EXPECT_EQ(tokens_left(&bucket, {10, 1, 3}, 503), 1u);
}

/* --- The file --------------------------------------------------------------------------------------------
 */

TEST_F(Accounts, FirstStartMakesAdminWithTheGivenPassword) {
  ASSERT_TRUE(open("secret")) << error;
  EXPECT_EQ(login("admin", "secret"), 15);
  EXPECT_EQ(login("admin", "Secret"), 0);
  EXPECT_EQ(mode_of(file()), 0600u);
  EXPECT_EQ(mode_of(directory.path + "/admin-password"), 0u);
}

TEST_F(Accounts, FirstStartWithoutPasswordLeavesARandomOneToItsOwner) {
  mode_t before = umask(0);
  ASSERT_TRUE(open("")) << error;
  umask(before);
  std::string password = file_content(directory.path + "/admin-password");
  ASSERT_EQ(password.size(), 21u);
  EXPECT_EQ(password.back(), '\n');
  password.pop_back();
  EXPECT_TRUE(std::all_of(password.begin(), password.end(), [](unsigned char c) { return isalnum(c); }))
      << password;
  EXPECT_EQ(login("admin", password), 15);
  EXPECT_EQ(mode_of(directory.path + "/admin-password"), 0600u);
  EXPECT_EQ(mode_of(file()), 0600u);
  EXPECT_NE(random_password(20), random_password(20));
}

TEST_F(Accounts, LaterStartKeepsTheFileAsItIs) {
  write_file(file(), "bob:" + cheap_hash("builder") + ":1\n");
  std::string before = file_content(file());
  ASSERT_TRUE(open("secret")) << error;
  EXPECT_EQ(file_content(file()), before);
  EXPECT_EQ(login("bob", "builder"), 1);
  EXPECT_EQ(login("admin", "secret"), 0);
}

TEST_F(Accounts, StartFailsWhenTheFileCannotBeMade) {
  EXPECT_FALSE(accounts_open(directory.path + "/none", "x", &error));
  EXPECT_EQ(error, directory.path + "/none/accounts.lock: No such file or directory");
}

TEST_F(Accounts, UnusableAdminPasswordMakesNoFile) {
  EXPECT_FALSE(open(std::string(256, 'x')));
  EXPECT_EQ(error, "account admin: a password is 1 to 255 characters without control characters");
  EXPECT_EQ(mode_of(file()), 0u);
}

TEST_F(Accounts, FileThatOthersMayReadIsRefused) {
  for (mode_t mode : std::initializer_list<mode_t>{0640, 0604, 0620, 0602, 0666}) {
    write_file(file(), "bob:" + cheap_hash("builder") + ":1\n", mode);
    EXPECT_FALSE(open());
    EXPECT_EQ(error, file() + ": must be open to its owner alone (mode 600)") << std::oct << mode;
  }
}

TEST_F(Accounts, FifoOrDirectoryInTheFilesPlaceIsRefusedWithoutWaiting) {
  ASSERT_EQ(mkfifo(file().c_str(), 0600), 0);
  EXPECT_FALSE(open());
  EXPECT_EQ(error, file() + ": is not a regular file");
  unlink(file().c_str());
  ASSERT_EQ(mkdir(file().c_str(), 0700), 0);
  EXPECT_FALSE(open());
  EXPECT_EQ(error, file() + ": is not a regular file");
}

TEST_F(Accounts, OneMalformedLineRefusesTheWholeFile) {
  const std::string hash = cheap_hash("x");
  const char *name = "a user name is 1 to 63 characters out of A-Z a-z 0-9 . _ -";
  const char *no_hash = "not a yescrypt hash ($y$...)";
  const char *level = "a level is 1 (read) or 15 (read and write)";
  const struct {
    std::string line;
    std::string reason;
  } table[] = {
      {"", "a line is name:hash:level"},
      {"bob", "a line is name:hash:level"},
      {"bob:" + hash, "a line is name:hash:level"},
      {"# a comment", "a line is name:hash:level"},
      {":" + hash + ":1", name},
      {"bo b:" + hash + ":1", name},
      {"b\xc3\xb6"
       "b:" +
           hash + ":1",
       name},
      {std::string("b\0b:", 4) + hash + ":1", name},
      {std::string(64, 'a') + ":" + hash + ":1", name},
      {"bob::1", no_hash},
      {"bob:secret:1", no_hash},
      {"bob:" + hash.substr(0, hash.size() - 1) + ":1", no_hash},
      {"bob:" + hash + "a:1", no_hash},
      {"bob:$6$salt$" + std::string(86, 'a') + ":1", no_hash},
      {"bob:$y$$salt$" + hash.substr(hash.size() - 43) + ":1", no_hash},
      {"bob:*" + hash + ":1", no_hash},
      {"bob:" + hash + ":", level},
      {"bob:" + hash + ":0", level},
      {"bob:" + hash + ":2", level},
      {"bob:" + hash + ":150", level},
      {"bob:" + hash + ": 1", level},
      {"bob:" + hash + ":1\r", level},
      {"bob:" + hash + ":1:", level},
      {"alice:" + hash + ":15", "the account was given before"},
  };
  for (const auto &row : table) {
    std::string text = "alice:" + hash + ":1\n" + row.line + "\ncarol:" + hash + ":1\n";
    account_table accounts = {{"before", {"", 1}}};
    EXPECT_FALSE(parse_accounts(text, "FILE", &accounts, &error)) << row.line;
    EXPECT_EQ(error, "FILE:2: " + row.reason) << row.line;
    EXPECT_EQ(accounts.size(), 1u) << "a refused file changed the table";
  }
}

TEST_F(Accounts, GoodFilesAreRead) {
  const std::string hash = cheap_hash("x");
  const struct {
    std::string text;
    size_t count;
  } table[] = {
      {"", 0},
      {"a:" + hash + ":1\n", 1},
      {"a:" + hash + ":15", 1},
      {"A-z.0_9:" + hash + ":1\n-:" + hash + ":15\n", 2},
      {std::string(63, 'a') + ":" + hash + ":1\n", 1},
      {"bob:" + hash + ":1\nBob:" + hash + ":1\n", 2},
  };
  for (const auto &row : table) {
    account_table accounts;
    EXPECT_TRUE(parse_accounts(row.text, "FILE", &accounts, &error)) << error;
    EXPECT_EQ(accounts.size(), row.count) << row.text;
  }
}

/* --- Changing the file -----------------------------------------------------------------------------------
 */

TEST_F(Accounts, NewPasswordHoldsAtOnceAndAfterARestart) {
  ASSERT_TRUE(open("secret")) << error;
  ASSERT_TRUE(accounts_set(directory.path, "admin", "changed", 1, &error)) << error;
  EXPECT_EQ(login("admin", "secret"), 0);
  EXPECT_EQ(login("admin", "changed"), 1);
  accounts_close();
  ASSERT_TRUE(open("secret")) << error;
  EXPECT_EQ(login("admin", "changed"), 1);
  EXPECT_EQ(mode_of(file()), 0600u);
}

TEST_F(Accounts, RandomFirstPasswordIsForgottenWhenAdminGetsAnother) {
  ASSERT_TRUE(open("")) << error;
  std::string left = directory.path + "/admin-password";
  ASSERT_TRUE(accounts_set(directory.path, "operator", "chosen", 15, &error)) << error;
  EXPECT_EQ(access(left.c_str(), F_OK), 0);
  ASSERT_TRUE(accounts_set(directory.path, "admin", "chosen", 15, &error)) << error;
  EXPECT_NE(access(left.c_str(), F_OK), 0);
}

TEST_F(Accounts, RandomFirstPasswordIsForgottenWithTheAccount) {
  ASSERT_TRUE(open("")) << error;
  ASSERT_TRUE(accounts_remove(directory.path, "admin", &error)) << error;
  EXPECT_EQ(mode_of(directory.path + "/admin-password"), 0u);
}

TEST_F(Accounts, RandomFirstPasswordIsForgottenWhenANewFileIsMadeWithAChosenOne) {
  ASSERT_TRUE(open("")) << error;
  accounts_close();
  unlink(file().c_str());
  ASSERT_TRUE(open("chosen")) << error;
  EXPECT_EQ(login("admin", "chosen"), 15);
  EXPECT_EQ(mode_of(directory.path + "/admin-password"), 0u);
}

/* The owner of the directory may have made the link, and the one who follows it may be root. */
TEST_F(Accounts, LinkInTheLocksPlaceIsNotFollowed) {
  ASSERT_EQ(symlink("target", (file() + ".lock").c_str()), 0);
  EXPECT_FALSE(accounts_set(directory.path, "bob", "x", 1, &error));
  EXPECT_EQ(error, file() + ".lock: " + strerror(ELOOP));
  EXPECT_EQ(mode_of(directory.path + "/target"), 0u) << "the link was followed";
}

TEST_F(Accounts, RootGivesNoFileAwayThatHasASecondName) {
  if (geteuid() != 0) GTEST_SKIP() << "only root gives files away";
  constexpr uid_t nobody = 65534;
  temporary_directory elsewhere;
  write_file(elsewhere.path + "/precious", "");
  ASSERT_EQ(chown(directory.path.c_str(), nobody, nobody), 0);
  ASSERT_EQ(link((elsewhere.path + "/precious").c_str(), (file() + ".lock").c_str()), 0);
  ASSERT_TRUE(accounts_set(directory.path, "bob", "x", 1, &error)) << error;
  struct stat found;
  ASSERT_EQ(stat((elsewhere.path + "/precious").c_str(), &found), 0);
  EXPECT_EQ(found.st_uid, 0u);
  ASSERT_EQ(stat(file().c_str(), &found), 0);
  EXPECT_EQ(found.st_uid, nobody) << "what root made is for the owner of the directory";
}

TEST_F(Accounts, AddedAccountLeavesTheOthersAlone) {
  ASSERT_TRUE(open("secret")) << error;
  ASSERT_TRUE(accounts_set(directory.path, "guest", "p\xc3\xa4ss word:", 1, &error)) << error;
  EXPECT_EQ(login("guest", "p\xc3\xa4ss word:"), 1);
  EXPECT_EQ(login("admin", "secret"), 15);
}

TEST_F(Accounts, RemovedAccountIsRefusedAtOnce) {
  ASSERT_TRUE(open("secret")) << error;
  ASSERT_TRUE(accounts_remove(directory.path, "admin", &error)) << error;
  EXPECT_EQ(login("admin", "secret"), 0);
  EXPECT_FALSE(accounts_remove(directory.path, "admin", &error));
  EXPECT_EQ(error, file() + ": there is no such account");
}

TEST_F(Accounts, RefusedChangesLeaveTheFileAsItWas) {
  ASSERT_TRUE(open("secret")) << error;
  const std::string before = file_content(file());
  const char *password = "a password is 1 to 255 characters without control characters";
  const struct {
    std::string user, password;
    int level;
    std::string reason;
  } table[] = {
      {"", "x", 1, "a user name is 1 to 63 characters out of A-Z a-z 0-9 . _ -"},
      {"a:b", "x", 1, "a user name is 1 to 63 characters out of A-Z a-z 0-9 . _ -"},
      {"a\nb", "x", 1, "a user name is 1 to 63 characters out of A-Z a-z 0-9 . _ -"},
      {"bob", "", 1, password},
      {"bob", std::string(256, 'x'), 1, password},
      {"bob", "a\nb", 1, password},
      {"bob", std::string("a\0b", 3), 1, password},
      {"bob", "x", 0, "a level is 1 (read) or 15 (read and write)"},
      {"bob", "x", 14, "a level is 1 (read) or 15 (read and write)"},
  };
  for (const auto &row : table) {
    EXPECT_FALSE(accounts_set(directory.path, row.user, row.password, row.level, &error)) << row.reason;
    EXPECT_EQ(error, row.reason);
    EXPECT_EQ(file_content(file()), before);
  }
}

TEST_F(Accounts, MalformedFileIsNotOverwritten) {
  write_file(file(), "rubbish\n");
  EXPECT_FALSE(accounts_set(directory.path, "bob", "x", 1, &error));
  EXPECT_EQ(error, file() + ":1: a line is name:hash:level");
  EXPECT_EQ(file_content(file()), "rubbish\n");
}

TEST_F(Accounts, LongestPasswordWorks) {
  ASSERT_TRUE(open(std::string(255, 'x'))) << error;
  EXPECT_EQ(login("admin", std::string(255, 'x')), 15);
  EXPECT_EQ(login("admin", std::string(254, 'x')), 0);
  EXPECT_EQ(login("admin", std::string(5000, 'x')), 0);
}

TEST_F(Accounts, WritersAtTheSameTimeLoseNothing) {
  std::vector<std::thread> writers;
  for (int i = 0; i < 8; i++)
    writers.emplace_back([this, i] {
      std::string reason;
      EXPECT_TRUE(accounts_set(directory.path, "user" + std::to_string(i), "x", 1, &reason)) << reason;
    });
  for (std::thread &writer : writers) writer.join();
  account_table accounts;
  ASSERT_TRUE(read_accounts(file(), &accounts, &error)) << error;
  EXPECT_EQ(accounts.size(), 8u);
}

TEST_F(Accounts, BadNewFileKeepsTheOldAccountsAndIsLoggedOnce) {
  ASSERT_TRUE(open("secret")) << error;
  ASSERT_TRUE(log_open(directory.path, &error)) << error;
  testing::internal::CaptureStderr();
  write_file(file(), "rubbish\n");
  for (int i = 0; i < 3; i++) EXPECT_EQ(login("admin", "secret"), 15);
  log_close();
  testing::internal::GetCapturedStderr();
  std::vector<std::string> logged = lines_of(file_content(directory.path + "/log"));
  ASSERT_EQ(logged.size(), 1u);
  size_t text = logged[0].find(file());
  ASSERT_NE(text, std::string::npos) << logged[0];
  EXPECT_EQ(logged[0].substr(text), file() + ":1: a line is name:hash:level; the accounts stay as they were");
  EXPECT_EQ(logged[0].substr(25, 6), "ERROR ");
}

TEST_F(Accounts, MissingFileKeepsTheOldAccountsUntilANewOneComes) {
  ASSERT_TRUE(open("secret")) << error;
  testing::internal::CaptureStderr();
  unlink(file().c_str());
  EXPECT_EQ(login("admin", "secret"), 15);
  write_file(file(), "bob:" + cheap_hash("builder") + ":1\n");
  EXPECT_EQ(login("admin", "secret"), 0);
  EXPECT_EQ(login("bob", "builder"), 1);
  log_close();
  testing::internal::GetCapturedStderr();
}

/* --- Guessing --------------------------------------------------------------------------------------------
 */

TEST_F(Accounts, UnknownNameCostsTheSameHash) {
  ASSERT_TRUE(open("secret")) << error;
  EXPECT_EQ(hashes_of_login("admin", "wrong"), 1u);
  EXPECT_EQ(hashes_of_login("nobody", "wrong"), 1u);
  EXPECT_EQ(hashes_of_login("", ""), 1u);
  EXPECT_EQ(hashes_of_login("admin", "secret"), 1u);
}

TEST_F(Accounts, PasswordWithAZeroByteNeverMatches) {
  ASSERT_TRUE(open("secret")) << error;
  EXPECT_EQ(login("admin", std::string_view("secret\0", 7)), 0);
  EXPECT_EQ(login("admin", std::string_view("secret\0junk", 11)), 0);
  EXPECT_EQ(login(std::string_view("admin\0", 6), "secret"), 0);
}

TEST_F(Accounts, EleventhAttemptAfterTenWrongOnesIsRefusedWithoutHashing) {
  write_file(file(), "bob:" + cheap_hash("builder") + ":1\n");
  ASSERT_TRUE(open()) << error;
  for (int i = 0; i < 10; i++) EXPECT_EQ(hashes_of_login("bob", "wrong"), 1u) << i;
  EXPECT_EQ(hashes_of_login("bob", "wrong"), 0u);
  EXPECT_EQ(hashes_of_login("bob", "builder"), 0u);
  EXPECT_EQ(login("bob", "builder"), 0);
  EXPECT_EQ(login("bob", "builder", 1002), 0);
  EXPECT_EQ(login("bob", "builder", 1003), 1);
}

TEST_F(Accounts, RightPasswordsAreNotCounted) {
  write_file(file(), "bob:" + cheap_hash("builder") + ":1\n");
  ASSERT_TRUE(open()) << error;
  for (int i = 0; i < 100; i++) ASSERT_EQ(login("bob", "builder"), 1) << i;
}

TEST_F(Accounts, AllUnknownNamesShareOneAllowanceAndLeaveAccountsAlone) {
  write_file(file(), "bob:" + cheap_hash("builder") + ":1\n");
  ASSERT_TRUE(open()) << error;
  for (int i = 0; i < 10; i++) EXPECT_EQ(hashes_of_login("nobody" + std::to_string(i), "x"), 1u) << i;
  EXPECT_EQ(hashes_of_login("somebody", "x"), 0u);
  EXPECT_EQ(login("bob", "builder"), 1);
  EXPECT_EQ(hashes_of_login("somebody", "x", 1003), 1u);
}

TEST_F(Accounts, FiftyWrongAttemptsInAllCloseEveryAccountForASecond) {
  std::string text, hash = cheap_hash("x");
  for (int i = 0; i < 6; i++) text += "user" + std::to_string(i) + ":" + hash + ":1\n";
  write_file(file(), text);
  ASSERT_TRUE(open()) << error;
  for (int i = 0; i < 50; i++) EXPECT_EQ(hashes_of_login("user" + std::to_string(i / 10), "wrong"), 1u) << i;
  EXPECT_EQ(hashes_of_login("user5", "x"), 0u);
  EXPECT_EQ(login("user5", "x", 1001), 1);
  for (int i = 0; i < 5; i++) EXPECT_EQ(hashes_of_login("user5", "wrong", 1001), 1u) << i;
  EXPECT_EQ(hashes_of_login("user5", "wrong", 1001), 0u);
}

TEST_F(Accounts, NewFileDoesNotGiveGuessersNewAttempts) {
  write_file(file(), "bob:" + cheap_hash("builder") + ":1\n");
  ASSERT_TRUE(open()) << error;
  for (int i = 0; i < 10; i++) login("bob", "wrong");
  ASSERT_TRUE(accounts_set(directory.path, "bob", "other", 1, &error)) << error;
  EXPECT_EQ(hashes_of_login("bob", "other"), 0u);
  EXPECT_EQ(login("bob", "other", 1003), 1);
}

TEST_F(Accounts, NobodyIsLetInBeforeOpeningAndAfterClosing) {
  EXPECT_EQ(login("admin", ""), 0);
  ASSERT_TRUE(open("secret")) << error;
  accounts_close();
  EXPECT_EQ(login("admin", "secret"), 0);
}

} // namespace
