/* Files that are the user's alone, and settings. */
#include "tests/support/temporary_dir.h"
#include "tools/kestrelctl/certificate.h"
#include "tools/kestrelctl/private_files.h"
#include "tools/kestrelctl/server_address.h"
#include "tools/kestrelctl/session.h"
#include "tools/kestrelctl/settings.h"

#include <gtest/gtest.h>
#include <stdlib.h>
#include <sys/stat.h>
#include <unistd.h>

static const std::string FINGERPRINT =
    "sha256:00:11:22:33:44:55:66:77:88:99:AA:BB:CC:DD:EE:FF:00:11:22:33:44:55:66:77:88:99:AA:BB:CC:DD:EE:FF";
static const std::string KEY = "0123456789abcdef0123456789abcdef";

static mode_t mode_of(const std::string &path) {
  struct stat status;
  return lstat(path.c_str(), &status) == 0 ? status.st_mode & 07777 : 0;
}

/* --- Private files ------------------------------------------------------------------------------------- */

struct KestrelctlPrivateFiles : testing::Test {
  TemporaryDir home;
  std::string folder = home.file("a/b/kestrelctl"), content, error;

  bool read(const char *name = "file") { return read_private_file(folder, name, &content, &error); }
  bool write(const std::string &text) { return write_private_file(folder, "file", text, &error); }
  std::string path() const { return folder + "/file"; }
};

TEST_F(KestrelctlPrivateFiles, AreReadAsWrittenAndNobodyElses) {
  const mode_t before = umask(0);
  EXPECT_TRUE(write("one\n"));
  EXPECT_TRUE(write("two\n"));
  umask(before);
  EXPECT_TRUE(read());
  EXPECT_EQ(content, "two\n");
  EXPECT_EQ(mode_of(path()), 0600u);
  EXPECT_EQ(mode_of(folder), 0700u);
  EXPECT_EQ(mode_of(home.file("a")), 0700u);
}

TEST_F(KestrelctlPrivateFiles, AreReadableByTheirOwnerWhateverTheUmask) {
  const mode_t before = umask(0277);
  mkdir(home.file("a").c_str(), 0700);
  umask(0077);
  EXPECT_TRUE(write("one\n"));
  umask(before);
  EXPECT_TRUE(read());
  EXPECT_EQ(mode_of(path()), 0600u);
}

TEST_F(KestrelctlPrivateFiles, MissingOnesAreEmpty) {
  EXPECT_TRUE(read());
  EXPECT_EQ(content, "");
  EXPECT_TRUE(write("one\n"));
  EXPECT_TRUE(read("other"));
  EXPECT_EQ(content, "");
  EXPECT_TRUE(remove_private_file(folder, "other", &error));
  EXPECT_TRUE(remove_private_file(folder, "file", &error));
  EXPECT_TRUE(read());
  EXPECT_EQ(content, "");
  EXPECT_EQ(error, "");
}

TEST_F(KestrelctlPrivateFiles, FileThatOthersMayReadIsRefused) {
  ASSERT_TRUE(write("one\n"));
  chmod(path().c_str(), 0640);
  EXPECT_FALSE(read());
  EXPECT_EQ(error, path() + ": others have rights to it; its mode must be 600, that of its folder 700");
}

TEST_F(KestrelctlPrivateFiles, FolderThatOthersMayEnterIsRefused) {
  ASSERT_TRUE(write("one\n"));
  chmod(folder.c_str(), 0711);
  EXPECT_FALSE(read());
  EXPECT_EQ(error, folder + ": others have rights to it; its mode must be 600, that of its folder 700");
  error.clear();
  EXPECT_FALSE(write("two\n"));
}

TEST_F(KestrelctlPrivateFiles, LinksAreRefused) {
  ASSERT_TRUE(write("one\n"));
  ASSERT_EQ(rename(path().c_str(), home.file("elsewhere").c_str()), 0);
  ASSERT_EQ(symlink(home.file("elsewhere").c_str(), path().c_str()), 0);
  EXPECT_FALSE(read());
  EXPECT_EQ(error, path() + ": it is a link");
  /* Writing replaces the link and leaves alone what it points to. */
  EXPECT_TRUE(write("two\n"));
  EXPECT_EQ(read_file(home.file("elsewhere")), "one\n");
  error.clear();
  ASSERT_EQ(rename(folder.c_str(), home.file("folder").c_str()), 0);
  ASSERT_EQ(symlink(home.file("folder").c_str(), folder.c_str()), 0);
  EXPECT_FALSE(read());
  EXPECT_EQ(error, folder + ": it is no folder, or a link");
}

TEST_F(KestrelctlPrivateFiles, FileOfAnotherUserIsRefused) {
  if (geteuid() != 0) GTEST_SKIP() << "only root can give files away";
  ASSERT_TRUE(write("one\n"));
  ASSERT_EQ(chown(path().c_str(), 1, 1), 0);
  EXPECT_FALSE(read());
  EXPECT_EQ(error, path() + ": it belongs to another user");
}

TEST_F(KestrelctlPrivateFiles, WhatIsNoFileIsRefusedAndNotWaitedFor) {
  ASSERT_TRUE(write("one\n"));
  ASSERT_EQ(unlink(path().c_str()), 0);
  ASSERT_EQ(mkfifo(path().c_str(), 0600), 0);
  EXPECT_FALSE(read());
  EXPECT_EQ(error, path() + ": it is no plain file");
}

TEST_F(KestrelctlPrivateFiles, NothingIsLeftBesideAFile) {
  ASSERT_TRUE(write("one\n"));
  ASSERT_TRUE(remove_private_file(folder, "file", &error));
  EXPECT_EQ(rmdir(folder.c_str()), 0);
}

/* --- What is kept for a server ------------------------------------------------------------------------- */

struct KestrelctlSession : testing::Test {
  TemporaryDir home;
  std::string error, server = "https://[::1]:8446";
  kept_session session;

  KestrelctlSession() { setenv("XDG_STATE_HOME", home.path().c_str(), 1); }
  ~KestrelctlSession() override { unsetenv("XDG_STATE_HOME"); }
  std::string file(const char *ending) const {
    return home.file("kestrelctl/https%3A%2F%2F%5B%3A%3A1%5D%3A8446") + ending;
  }
};

TEST_F(KestrelctlSession, IsKeptForEachServer) {
  ASSERT_TRUE(store_session(server, {KEY, "admin"}, &error));
  ASSERT_TRUE(load_session(server, &session, &error));
  EXPECT_EQ(session.key, KEY);
  EXPECT_EQ(session.user, "admin");
  ASSERT_TRUE(load_session("https://other:8446", &session, &error));
  EXPECT_EQ(session.key, "");
  EXPECT_EQ(read_file(file(".session")), KEY + "\nadmin\n");
  ASSERT_TRUE(forget_session(server, &error));
  ASSERT_TRUE(load_session(server, &session, &error));
  EXPECT_EQ(session.key, "");
}

TEST_F(KestrelctlSession, FileWithoutASessionIsNone) {
  ASSERT_TRUE(store_session(server, {"x&admin=1", "admin"}, &error));
  EXPECT_FALSE(load_session(server, &session, &error));
  EXPECT_EQ(error, file(".session") + ": it holds no session; log in anew after removing it");
}

TEST_F(KestrelctlSession, TrustIsKeptForEachServer) {
  std::string fingerprint;
  ASSERT_TRUE(store_trust(server, FINGERPRINT, &error));
  ASSERT_TRUE(load_trust(server, &fingerprint, &error));
  EXPECT_EQ(fingerprint, FINGERPRINT);
  ASSERT_TRUE(load_trust("https://other:8446", &fingerprint, &error));
  EXPECT_EQ(fingerprint, "");
  ASSERT_TRUE(store_trust(server, "sha256:00", &error));
  EXPECT_FALSE(load_trust(server, &fingerprint, &error));
  EXPECT_EQ(error, file(".trust") + ": it holds no fingerprint");
}

TEST_F(KestrelctlSession, StateIsInTheHomeFolderUnlessSaidOtherwise) {
  EXPECT_EQ(state_folder(), home.file("kestrelctl"));
  const char *home_before = getenv("HOME");
  const std::string saved = home_before != nullptr ? home_before : "";
  setenv("XDG_STATE_HOME", "relative", 1);
  setenv("HOME", "/home/nobody", 1);
  EXPECT_EQ(state_folder(), "/home/nobody/.local/state/kestrelctl");
  unsetenv("HOME");
  EXPECT_EQ(state_folder(), "");
  EXPECT_FALSE(load_session(server, &session, &error));
  EXPECT_EQ(error, "HOME: it is not set, so there is no place for session keys");
  if (home_before != nullptr) setenv("HOME", saved.c_str(), 1);
}

/* --- Addresses and fingerprints ------------------------------------------------------------------------ */

static std::string address_of(const char *text) {
  std::string address, error;
  return read_server_address(text, &address, &error) ? address : error;
}

TEST(KestrelctlServerAddress, HasOneForm) {
  EXPECT_EQ(address_of("https://localhost:8446"), "https://localhost:8446");
  EXPECT_EQ(address_of("HTTPS://Switch1/"), "https://switch1:8446");
  EXPECT_EQ(address_of("switch1"), "https://switch1:8446");
  EXPECT_EQ(address_of("switch1:443"), "https://switch1:443");
  EXPECT_EQ(address_of("http://10.0.0.1"), "http://10.0.0.1:8080");
  EXPECT_EQ(address_of("https://[2001:DB8::1]:1"), "https://[2001:db8::1]:1");
}

TEST(KestrelctlServerAddress, AnythingMoreIsRefused) {
  for (const char *text :
       {"", "ftp://switch1", "https://", "https://a/b", "https://a?x=1", "https://a#f", "https://u@a",
        "https://u:p@a", "https://a b", "https://a:99999", "file:///etc/passwd"})
    EXPECT_EQ(address_of(text),
              std::string("\"") + text + "\" is no address of a switch, such as https://localhost:8446");
}

TEST(KestrelctlFingerprint, HasOneForm) {
  std::string fingerprint;
  for (const char *text : {"sha256:00112233445566778899aabbccddeeff00112233445566778899AABBCCDDEEFF",
                           "sha256 "
                           "Fingerprint=00:11:22:33:44:55:66:77:88:99:AA:BB:CC:DD:EE:FF:00:11:22:33:44:55:66:"
                           "77:88:99:AA:BB:CC:DD:EE:FF",
                           FINGERPRINT.c_str()}) {
    fingerprint.clear();
    EXPECT_TRUE(read_fingerprint(text, &fingerprint)) << text;
    EXPECT_EQ(fingerprint, FINGERPRINT);
  }
}

TEST(KestrelctlFingerprint, AnythingElseIsRefused) {
  std::string fingerprint = "untouched";
  for (const std::string &text : {std::string(""), std::string("sha256:"), std::string("sha256:00"),
                                  FINGERPRINT.substr(7), "sha1" + FINGERPRINT.substr(6), FINGERPRINT + ":00",
                                  FINGERPRINT.substr(0, FINGERPRINT.size() - 1), FINGERPRINT + "g"})
    EXPECT_FALSE(read_fingerprint(text, &fingerprint)) << text;
  EXPECT_EQ(fingerprint, "untouched");
}

/* --- Settings ------------------------------------------------------------------------------------------ */

struct KestrelctlSettings : testing::Test {
  TemporaryDir home;
  settings given;
  std::string error;

  KestrelctlSettings() {
    setenv("XDG_CONFIG_HOME", home.path().c_str(), 1);
    unsetenv("KESTRELCTL_SERVER");
    mkdir(home.file("kestrelctl").c_str(), 0700);
  }
  ~KestrelctlSettings() override {
    unsetenv("XDG_CONFIG_HOME");
    unsetenv("KESTRELCTL_SERVER");
  }
  void configure(const std::string &text) { overwrite_file(home.file("kestrelctl/config"), text); }
  bool read(const std::vector<std::string> &arguments) {
    given = {};
    error.clear();
    return read_settings(arguments, &given, &error);
  }
};

TEST_F(KestrelctlSettings, OptionsWinOverTheEnvironmentAndThatOverTheFile) {
  EXPECT_TRUE(read({"vlans"}));
  EXPECT_EQ(given.server, "https://localhost:8446");
  configure("# switches\n\n server = switch1 \nuser=operator\ntimeout = 5\n");
  EXPECT_TRUE(read({"vlans"})) << error;
  EXPECT_EQ(given.server, "https://switch1:8446");
  EXPECT_EQ(given.user, "operator");
  EXPECT_EQ(given.seconds, 5);
  setenv("KESTRELCTL_SERVER", "switch2", 1);
  EXPECT_TRUE(read({"vlans"}));
  EXPECT_EQ(given.server, "https://switch2:8446");
  EXPECT_TRUE(read({"vlans", "--server", "switch3", "--timeout=7"}));
  EXPECT_EQ(given.server, "https://switch3:8446");
  EXPECT_EQ(given.seconds, 7);
}

TEST_F(KestrelctlSettings, OptionsStandAnywhereBeforeTwoDashes) {
  EXPECT_TRUE(read({"--json", "if", "3", "set", "--quiet", "description", "-1", "--", "--xml"}));
  EXPECT_EQ(given.form, output_form::JSON);
  EXPECT_TRUE(given.quiet);
  EXPECT_EQ(given.words, (std::vector<std::string>{"if", "3", "set", "description", "-1", "--xml"}));
}

TEST_F(KestrelctlSettings, MistakesAreNamed) {
  EXPECT_FALSE(read({"--colour"}));
  EXPECT_EQ(error, "unknown option \"--colour\"; a word that begins with \"--\" stands behind a word \"--\"");
  EXPECT_FALSE(read({"--server"}));
  EXPECT_EQ(error, "--server needs a value: URL");
  EXPECT_FALSE(read({"--json=1"}));
  EXPECT_EQ(error, "--json takes no value");
  for (const char *seconds : {"0", "-1", "", "1x", "86401", "99999999999999999999"}) {
    EXPECT_FALSE(read({"--timeout", seconds}));
    EXPECT_EQ(error, std::string("\"") + seconds + "\" is no time-out: seconds from 1 to 86400");
  }
  EXPECT_FALSE(read({"--fingerprint", "sha256:00"}));
  EXPECT_EQ(error, "\"sha256:00\" is no fingerprint: \"sha256:\" and 64 hexadecimal digits");
  setenv("KESTRELCTL_SERVER", "ftp://x", 1);
  EXPECT_FALSE(read({}));
  EXPECT_EQ(error,
            "KESTRELCTL_SERVER: \"ftp://x\" is no address of a switch, such as https://localhost:8446");
}

TEST_F(KestrelctlSettings, MistakesInTheFileAreNamedWithTheirLine) {
  const std::string place = home.file("kestrelctl/config") + ", line 2: ";
  for (const char *line : {"json = 1", "yes", "servers = x", "insecure = 1"}) {
    configure(std::string("user = a\n") + line + "\n");
    EXPECT_FALSE(read({}));
    EXPECT_EQ(error, place + "\"" + line +
                         "\" is no setting: server, user, timeout, ca-file or fingerprint = VALUE");
  }
  configure("user = a\ntimeout = x\n");
  EXPECT_FALSE(read({}));
  EXPECT_EQ(error, place + "\"x\" is no time-out: seconds from 1 to 86400");
}
