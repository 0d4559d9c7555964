/* Remote logging hosts: messages, and what reaches whom. The other end is a socket on loopback. */
#include "platform/softswitch/services/syslog.h"

#include "platform/api/l7proc.h"
#include "platform/softswitch/services/log.h"
#include "platform/softswitch/services/syslog_message.h"
#include "tests/unit/platform/services_test_support.h"
#include "tests/unit/platform/syslog_test_support.h"

#include <atomic>
#include <condition_variable>
#include <map>
#include <mutex>
#include <regex>
#include <thread>

using namespace softswitch;

namespace {

using texts = std::vector<std::string>;

/* --- Messages ------------------------------------------------------------------------------------------- */

const std::string header = " " + std::string(program_invocation_short_name) + " " + std::to_string(getpid());

TEST(SyslogMessage, HasTheHeaderOfTheStandardAndTheTextOfTheLine) {
  EXPECT_EQ(syslog_message("sw1", 4, "2026-01-31T12:34:56.789Z WARNING rest_common.c:129 a  text\n"),
            "<188>1 2026-01-31T12:34:56.789Z sw1" + header + " - - rest_common.c:129 a  text");
  EXPECT_EQ(syslog_message("sw1", 0, "2026-01-31T12:34:56.789Z EMERGENCY f:1 x\n"),
            "<184>1 2026-01-31T12:34:56.789Z sw1" + header + " - - f:1 x");
  EXPECT_EQ(syslog_message("sw1", 7, "2026-01-31T12:34:56.789Z DEBUG f:1 \n"),
            "<191>1 2026-01-31T12:34:56.789Z sw1" + header + " - - f:1 ");
}

TEST(SyslogMessage, HostNameIsPrintableAndNeverEmpty) {
  const std::string line = "2026-01-31T12:34:56.789Z INFO f:1 x\n",
                    begin = "<190>1 2026-01-31T12:34:56.789Z ";
  for (const auto &[name, shown] :
       std::vector<std::pair<std::string, std::string>>{{"", "-"},
                                                        {"a b\tc", "a?b?c"},
                                                        {"k\xc3\xa4", "k??"},
                                                        {std::string(300, 'n'), std::string(255, 'n')}})
    EXPECT_EQ(syslog_message(name, 6, line), begin + shown + header + " - - f:1 x");
}

TEST(SyslogMessage, IsCutAtTheEndOfACharacter) {
  const std::string begin = "2026-01-31T12:34:56.789Z INFO f:1 ";
  size_t head = syslog_message("sw1", 6, begin).size();
  const std::string filling(syslog_message_max - head, 'x');
  auto tail = [&](size_t room, const std::string &text) {
    return syslog_message("sw1", 6, begin + filling.substr(room) + text).substr(syslog_message_max - room);
  };
  EXPECT_EQ(tail(0, ""), "");
  EXPECT_EQ(tail(0, "y"), "");
  EXPECT_EQ(tail(1, "yz"), "y");
  EXPECT_EQ(tail(1, "\xc3\xa4"), "");
  EXPECT_EQ(tail(2, "\xc3\xa4"), "\xc3\xa4");
  EXPECT_EQ(tail(2, "\xe2\x9c\x93"), "");
  EXPECT_EQ(tail(3, "\xe2\x9c\x93z"), "\xe2\x9c\x93");
  EXPECT_EQ(tail(3, "\xf0\x9f\x98\x80"), "");
  EXPECT_EQ(tail(4, "\xf0\x9f\x98\x80z"), "\xf0\x9f\x98\x80");
  EXPECT_EQ(tail(5, "\x80\x80\x80\x80\x80\x80").size(), 2u) << "no character has as many bytes";
}

/* --- Sending -------------------------------------------------------------------------------------------- */

/* What the lookups of a test say. */
struct names {
  std::mutex lock;
  std::condition_variable changed;
  bool hang = false;
  bool found = true;
  std::map<std::string, int> lookups; /* since say(), by name */
};
names &the_names() {
  static names only;
  return only;
}

/* Every name is that of this machine, if it is found. */
bool look_up(const std::string &name, socket_address *address, std::string *error) {
  names &said = the_names();
  std::unique_lock<std::mutex> hold(said.lock);
  said.lookups[name]++;
  said.changed.notify_all();
  said.changed.wait(hold, [&] { return !said.hang; });
  *error = "nobody knows it";
  return said.found && socket_address_read("127.0.0.1", address);
}

class Syslog : public testing::Test {
protected:
  void SetUp() override {
    settings.hostname = "sw1";
    settings.look_up = look_up;
    say(false, true);
  }
  void TearDown() override {
    say(false, true);
    log_close();
    /* Lookups that are left behind must not meet the next test. */
    syslog_settings nobody;
    syslog_configure(nobody);
  }

  static void say(bool hang, bool found) {
    names &said = the_names();
    std::lock_guard<std::mutex> hold(said.lock);
    said.hang = hang;
    said.found = found;
    said.lookups.clear();
    said.changed.notify_all();
  }

  /* Lookups of a name that have begun. */
  static int lookups(const std::string &name) {
    std::lock_guard<std::mutex> hold(the_names().lock);
    return the_names().lookups[name];
  }

  static void wait_for_lookup(const std::string &name, int count = 1) {
    names &said = the_names();
    std::unique_lock<std::mutex> hold(said.lock);
    said.changed.wait(hold, [&] { return said.lookups[name] >= count; });
  }

  void configure(const std::vector<syslog_host> &hosts) {
    settings.hosts = hosts;
    syslog_configure(settings);
  }

  static void log(int severity, const std::string &text) {
    if (severity <= syslog_severity()) syslog_write(severity, log_format(severity, "f", 1, text));
  }

  syslog_settings settings;
};

TEST_F(Syslog, LineArrivesAsAMessage) {
  log_receiver receiver;
  configure({{"127.0.0.1", receiver.port(), 7}});
  l7proc_logf(L7PROC_DEBUG, 0, "rest_common.c", 129, "%s", "K\xc3\xa4stchen\n<x>");
  std::string message = receiver.hear();
  EXPECT_TRUE(
      std::regex_match(message, std::regex("<191>1 \\d{4}-\\d\\d-\\d\\dT\\d\\d:\\d\\d:\\d\\d\\.\\d{3}Z sw1" +
                                           header + " - - rest_common\\.c:129 K\xc3\xa4stchen <x>")))
      << message;
}

TEST_F(Syslog, Ipv6HostsAreReached) {
  log_receiver receiver(AF_INET6);
  if (!receiver.is_bound()) GTEST_SKIP() << "this machine has no IPv6";
  configure({{"::1", receiver.port(), 7}});
  log(3, "six");
  EXPECT_EQ(receiver.hear_text(), "3 f:1 six");
}

TEST_F(Syslog, NamesAreLookedUpByTheSystem) {
  /* The name may stand for either loopback address. A bare machine knows no name; there it is an address that
   * is looked up. */
  socket_address address;
  std::string error;
  std::string name = socket_address_look_up("localhost", &address, &error) ? "localhost" : "127.0.0.1";
  log_receiver ipv4;
  log_receiver ipv6(AF_INET6, ipv4.port());
  settings.look_up = socket_address_look_up;
  configure({{name, ipv4.port(), 7}});
  log(3, "by name");
  ASSERT_TRUE(socket_address_look_up(name, &address, &error)) << error;
  log_receiver &used = address.storage.ss_family == AF_INET ? ipv4 : ipv6;
  EXPECT_EQ(used.hear_text(), "3 f:1 by name");
  EXPECT_FALSE(socket_address_look_up("does-not-exist.invalid", &address, &error));
  EXPECT_NE(error, "");
}

TEST_F(Syslog, EachHostGetsWhatIsSevereEnoughForIt) {
  log_receiver all, warnings, emergencies;
  configure(
      {{"127.0.0.1", all.port(), 7}, {"localhost", warnings.port(), 4}, {"other", emergencies.port(), 0}});
  EXPECT_EQ(syslog_severity(), 7);
  for (int severity = 0; severity <= 7; severity++) log(severity, "x");
  EXPECT_EQ(all.hear_texts(8),
            (texts{"0 f:1 x", "1 f:1 x", "2 f:1 x", "3 f:1 x", "4 f:1 x", "5 f:1 x", "6 f:1 x", "7 f:1 x"}));
  EXPECT_EQ(warnings.hear_texts(5), (texts{"0 f:1 x", "1 f:1 x", "2 f:1 x", "3 f:1 x", "4 f:1 x"}));
  EXPECT_EQ(emergencies.hear_text(), "0 f:1 x");
  syslog_stop();
  EXPECT_TRUE(all.is_silent() && warnings.is_silent() && emergencies.is_silent());
}

TEST_F(Syslog, NothingIsSentWhileThereIsNoHost) {
  EXPECT_LT(syslog_severity(), 0);
  log_receiver receiver;
  configure({{"127.0.0.1", receiver.port(), 7}});
  log(3, "on");
  EXPECT_EQ(receiver.hear_text(), "3 f:1 on");
  configure({});
  EXPECT_LT(syslog_severity(), 0);
  l7proc_logf(L7PROC_INFO, 0, "f", 1, "off");
  syslog_write(3, log_format(3, "f", 1, "off"));
  configure({{"127.0.0.1", receiver.port(), 7}});
  log(3, "on again");
  EXPECT_EQ(receiver.hear_text(), "3 f:1 on again");
}

TEST_F(Syslog, ChangesHoldFromTheNextLineOn) {
  log_receiver first, second;
  configure({{"127.0.0.1", first.port(), 7}});
  log(7, "one");
  EXPECT_EQ(first.hear_text(), "7 f:1 one");
  configure({{"127.0.0.1", second.port(), 7}});
  log(7, "two");
  EXPECT_EQ(second.hear_text(), "7 f:1 two");
  configure({{"127.0.0.1", second.port(), 3}});
  log(4, "not severe enough");
  log(3, "three");
  EXPECT_EQ(second.hear_text(), "3 f:1 three");
  settings.hostname = "renamed";
  configure({{"127.0.0.1", second.port(), 3}, {"localhost", first.port(), 3}});
  log(3, "four");
  EXPECT_NE(first.hear().find(" renamed "), std::string::npos);
  EXPECT_EQ(second.hear_text(), "3 f:1 four");
  configure({{"localhost", first.port(), 3}});
  log(3, "five");
  EXPECT_EQ(first.hear_text(), "3 f:1 five");
  syslog_stop();
  EXPECT_TRUE(first.is_silent() && second.is_silent());
}

TEST_F(Syslog, ClosedPortDisturbsNobody) {
  uint16_t closed;
  {
    log_receiver gone;
    closed = gone.port();
  }
  log_receiver receiver;
  configure({{"127.0.0.1", receiver.port(), 7}, {"closed", closed, 7}});
  for (int i = 0; i < 50; i++) {
    log(6, std::to_string(i));
    ASSERT_EQ(receiver.hear_text(), "6 f:1 " + std::to_string(i));
  }
}

TEST_F(Syslog, BurstsArriveWholeAndInOrder) {
  log_receiver receiver;
  configure({{"127.0.0.1", receiver.port(), 7}});
  for (int i = 0; i < 100; i++) log(6, std::to_string(i));
  for (int i = 0; i < 100; i++) ASSERT_EQ(receiver.hear_text(), "6 f:1 " + std::to_string(i));
}

TEST_F(Syslog, LinesOfManyThreadsArriveWhole) {
  log_receiver receiver;
  configure({{"127.0.0.1", receiver.port(), 7}, {"by-name", receiver.port(), 0}});
  std::vector<std::thread> writers;
  for (int who = 0; who < 4; who++)
    writers.emplace_back([who] {
      for (int i = 0; i < 25; i++) log(6, std::string(50, static_cast<char>('a' + who)));
    });
  int counts[4] = {};
  for (int i = 0; i < 100; i++) {
    std::string text = receiver.hear_text();
    ASSERT_EQ(text.size(), 56u) << text;
    ASSERT_EQ(text, "6 f:1 " + std::string(50, text[6]));
    counts[text[6] - 'a']++;
  }
  for (std::thread &writer : writers) writer.join();
  for (int count : counts) EXPECT_EQ(count, 25);
}

TEST_F(Syslog, WhatIsQueuedIsSentBeforeTheEnd) {
  log_receiver receiver;
  configure({{"127.0.0.1", receiver.port(), 7}, {"by-name", receiver.port(), 3}});
  for (int i = 0; i < 20; i++) log(6, std::to_string(i));
  log(3, "last");
  syslog_stop();
  int last = 0;
  for (int i = 0; i < 22; i++) last += receiver.hear_text() == "3 f:1 last";
  EXPECT_EQ(last, 2) << "once for each host";
  EXPECT_TRUE(receiver.is_silent());
}

/* --- Names that make trouble ---------------------------------------------------------------------------- */

TEST_F(Syslog, LookupThatHangsHoldsUpNobody) {
  log_receiver receiver, named;
  say(true, true);
  configure({{"127.0.0.1", receiver.port(), 7}, {"slow.example", named.port(), 7}});
  for (int i = 0; i < 50; i++) {
    log(6, std::to_string(i));
    ASSERT_EQ(receiver.hear_text(), "6 f:1 " + std::to_string(i));
  }
  wait_for_lookup("slow.example");
  EXPECT_TRUE(named.is_silent());
  say(false, true);
  for (int i = 0; i < 50; i++) ASSERT_EQ(named.hear_text(), "6 f:1 " + std::to_string(i));
}

TEST_F(Syslog, EndDoesNotWaitForALookupThatHangs) {
  log_receiver named;
  say(true, true);
  configure({{"stuck.example", named.port(), 7}});
  log(6, "lost");
  wait_for_lookup("stuck.example");
  syslog_stop();
  /* Reached at all: the lookup is still under way. What it finds then is of no use to anybody. */
  say(false, true);
  configure({{"127.0.0.1", named.port(), 7}});
  log(6, "later");
  EXPECT_EQ(named.hear_text(), "6 f:1 later");
}

TEST_F(Syslog, FullQueueDropsTheOldestLinesOfThoseWhoLagBehindAndTellsThem) {
  log_receiver prompt, named, terse;
  /* A message of these has 100 bytes. */
  size_t head = syslog_message("sw1", 6, log_format(6, "f", 1, "0000 ")).size();
  ASSERT_LT(head, 100u);
  const std::string filling(100 - head, 'x');
  auto text = [&](int i) { return std::to_string(1000 + i) + " " + filling; };
  say(true, true);
  settings.queue_bytes_max = 1000;
  configure({{"127.0.0.1", prompt.port(), 7},
             {"lagging.example", named.port(), 6},
             {"terse.example", terse.port(), 3}});
  for (int i = 0; i < 30; i++) {
    log(i % 3 == 0 ? 7 : i % 3 == 1 ? 6 : 3, text(i));
    ASSERT_EQ(prompt.hear_text().substr(6), text(i)) << "who keeps up gets every line";
  }
  wait_for_lookup("lagging.example");
  wait_for_lookup("terse.example");
  say(false, true);
  /* Of the 20 lines that are gone, 0 to 19, every third was not for this host. */
  std::string note = named.hear_text();
  EXPECT_TRUE(std::regex_match(
      note, std::regex("4 syslog\\.cpp:\\d+ 13 lines were dropped: they could not be sent in time")))
      << note;
  for (int i = 20; i < 30; i++) {
    if (i % 3 != 0) {
      ASSERT_EQ(named.hear_text().substr(6), text(i));
    }
  }
  for (int i = 20; i < 30; i += 3)
    ASSERT_EQ(terse.hear_text().substr(6), text(i)) << "who takes no warnings is not told";
  syslog_stop();
  EXPECT_TRUE(named.is_silent() && terse.is_silent() && prompt.is_silent());
}

/* Lines of the log file that complain about a host. */
texts complaints(const std::string &state_dir) {
  texts found;
  for (const std::string &line : lines_of(file_content(state_dir + "/log"))) {
    if (line.find(" nothing can be sent to the logging host ") != line.npos) found.push_back(line.substr(25));
  }
  return found;
}

TEST_F(Syslog, NameThatIsNotFoundIsTriedAgainAndComplainedOfOnce) {
  log_set_console_severity(-1);
  log_receiver receiver, named;
  say(false, false);
  settings.bad_ms = 1;
  configure({{"127.0.0.1", receiver.port(), 6}, {"lost.example", named.port(), 6}});
  log(6, "one");
  wait_for_lookup("lost.example", 5);
  EXPECT_EQ(receiver.hear_text(), "6 f:1 one");
  std::string complaint = receiver.hear_text();
  EXPECT_TRUE(
      std::regex_match(complaint, std::regex("4 syslog\\.cpp:\\d+ nothing can be sent to the logging host "
                                             "lost\\.example: nobody knows it")))
      << complaint;
  EXPECT_TRUE(named.is_silent());
  say(false, true);
  EXPECT_EQ(named.hear_text(), "6 f:1 one") << "nothing is lost for want of an address";
  EXPECT_EQ(named.hear_text(), complaint) << "which is a line like any other";
  syslog_stop();
  EXPECT_TRUE(receiver.is_silent() && named.is_silent());
}

TEST_F(Syslog, AddressOfANameIsKeptWhenItIsNoLongerFound) {
  log_receiver named;
  /* Errors and worse, so that the complaint about the lookup is not among the lines. */
  settings.good_ms = 0;
  settings.bad_ms = 0;
  configure({{"fickle.example", named.port(), 3}});
  log(3, "one");
  EXPECT_EQ(named.hear_text(), "3 f:1 one");
  say(false, false);
  /* A lookup of before may still be under way. */
  while (lookups("fickle.example") == 0) {
    log(3, "two");
    ASSERT_EQ(named.hear_text(), "3 f:1 two");
  }
  log(3, "three");
  EXPECT_EQ(named.hear_text(), "3 f:1 three");
}

TEST_F(Syslog, AddressOfANameIsLookedUpAgainOnlyWhenItIsOld) {
  log_receiver named;
  configure({{"good.example", named.port(), 6}});
  for (int i = 0; i < 20; i++) {
    log(6, std::to_string(i));
    ASSERT_EQ(named.hear_text(), "6 f:1 " + std::to_string(i));
  }
  EXPECT_EQ(lookups("good.example"), 1);
}

TEST_F(Syslog, AddressThatCannotBeSentToIsComplainedOfAndDisturbsNobody) {
  temporary_directory directory;
  std::string error;
  ASSERT_TRUE(log_open(directory.path, &error)) << error;
  log_set_console_severity(-1);
  log_receiver receiver;
  /* Nobody may send to everybody without asking for it first. */
  configure({{"255.255.255.255", 9, 6}, {"127.0.0.1", receiver.port(), 6}});
  for (int i = 0; i < 5; i++) log(6, std::to_string(i));
  texts heard = receiver.hear_texts(6);
  auto is_complaint = [](const std::string &text) {
    return text.ends_with(" nothing can be sent to the logging host 255.255.255.255: Permission denied");
  };
  EXPECT_EQ(std::count_if(heard.begin(), heard.end(), is_complaint), 1);
  syslog_stop();
  EXPECT_EQ(complaints(directory.path).size(), 1u);
  EXPECT_TRUE(receiver.is_silent());
}

} // namespace
