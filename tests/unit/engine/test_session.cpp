/* The session table. The file that mirrors it: test_status_file.cpp. */
#include "tests/unit/engine/session_fixture.h"

#include <limits.h>
#include <string.h>
#include <vector>

static std::vector<int32_t> session_numbers() {
  int32_t numbers[MAX_SESSIONS];
  uint32_t count = 0;
  EXPECT_EQ(get_session_id_list(numbers, &count), RC_TRUE);
  return std::vector<int32_t>(numbers, numbers + count);
}

TEST_F(SessionTest, KeyIsTheDigestOfAddressAndSecond) {
  EXPECT_EQ(open_session("admin", "10.0.0.2"), "43792d7aa2f38c7c8496b0a550d1fb07");
}

TEST_F(SessionTest, LoginsOfOneSecondShareTheKeyAndTheLowerSlotIsFound) {
  std::string first = open_session("admin", "10.0.0.2");
  std::string second = open_session("oper", "10.0.0.2");
  EXPECT_EQ(first, second);
  EXPECT_EQ(get_session_id("10.0.0.2", first.c_str()), 1u);
  EXPECT_NE(open_session("admin", "10.0.0.3"), first);
  now++;
  EXPECT_NE(open_session("admin", "10.0.0.2"), first);
  delete_session(1);
  EXPECT_EQ(get_session_id("10.0.0.2", first.c_str()), 2u);
}

TEST_F(SessionTest, LongestAddressGivesTheKeyOfItsWholeText) {
  const char *address = "1111:2222:3333:4444:5555:6666:7777:8888";
  EXPECT_EQ(open_session("admin", address), "363aaad3c151acc66b0de5d551d433b7");
  std::string longest(47, 'f');
  EXPECT_EQ(get_session_id(longest.c_str(), open_session("admin", longest.c_str()).c_str()), 2u);
  EXPECT_STREQ(session_table[1].remote_ip, longest.c_str());
}

TEST_F(SessionTest, NewSessionHoldsWhatItWasOpenedWith) {
  std::string key = open_session("admin", "10.0.0.2", 50123);
  api_loginsession_t session = {};
  ASSERT_EQ(get_the_session_by_id(1, &session), RC_TRUE);
  EXPECT_EQ(session.session_id, 1u);
  EXPECT_EQ(std::string(session.session_key), key);
  EXPECT_STREQ(session.user_name, "admin");
  EXPECT_STREQ(session.remote_ip, "10.0.0.2");
  EXPECT_EQ(session.remote_port, 50123);
  EXPECT_EQ(session.login_time, 1700000000u);
  EXPECT_EQ(session.last_activity_time, 1700000000u);
}

TEST_F(SessionTest, UserNamesAreCutAfter255Characters) {
  std::string user(300, 'u');
  open_session(user.c_str(), "10.0.0.2");
  EXPECT_EQ(std::string(session_table[0].user_name), user.substr(0, 255));
}

TEST_F(SessionTest, SixthLoginIsRefusedUntilASlotIsFree) {
  std::vector<std::string> keys;
  for (int i = 0; i < MAX_SESSIONS; i++) {
    keys.push_back(open_session("admin", ("10.0.0." + std::to_string(i)).c_str()));
    EXPECT_NE(keys.back(), "");
  }
  api_loginsession_t before[MAX_SESSIONS];
  memcpy(before, session_table, sizeof before);
  unsigned char key[SESSION_KEY_SIZE] = "untouched";
  EXPECT_EQ(create_session("admin", "10.0.0.9", 1, key), RC_FALSE);
  EXPECT_STREQ(reinterpret_cast<char *>(key), "untouched");
  EXPECT_EQ(memcmp(before, session_table, sizeof before), 0);
  EXPECT_EQ(next_ssid, 6);

  EXPECT_EQ(delete_session(3), RC_TRUE);
  EXPECT_NE(open_session("admin", "10.0.0.9"), "");
  EXPECT_EQ(session_table[2].session_id, 6u); /* the slot that was freed, the next number */
  EXPECT_EQ(session_numbers(), (std::vector<int32_t>{1, 2, 4, 5, 6}));
}

TEST_F(SessionTest, ExpiredSessionsMakeRoomForALogin) {
  for (int i = 0; i < MAX_SESSIONS; i++) open_session("admin", "10.0.0.2");
  now += 299;
  EXPECT_EQ(open_session("admin", "10.0.0.3"), "");
  now += 1;
  EXPECT_NE(open_session("admin", "10.0.0.3"), "");
  EXPECT_EQ(session_numbers(), (std::vector<int32_t>{0, 0, 0, 0, 6}));
}

TEST_F(SessionTest, NumbersWrapToOneAfterTheLargestInt) {
  next_ssid = INT_MAX;
  open_session("admin", "10.0.0.2");
  open_session("admin", "10.0.0.3");
  EXPECT_EQ(session_numbers(), (std::vector<int32_t>{0, 0, 0, 1, INT_MAX}));
  EXPECT_EQ(next_ssid, 2);
}

TEST_F(SessionTest, KeyIsFoundFromItsOwnAddressOnly) {
  std::string key = open_session("admin", "10.0.0.2");
  EXPECT_EQ(get_session_id("10.0.0.2", key.c_str()), 1u);
  std::string upper_case = key;
  for (char &c : upper_case) c = static_cast<char>(toupper(c));
  for (const char *address : {"10.0.0.3", "10.0.0.20", "10.0.0", "", " 10.0.0.2"}) {
    EXPECT_EQ(get_session_id(address, key.c_str()), 0u) << address;
  }
  for (const std::string &other :
       {std::string(), key.substr(0, 31), key + "0", upper_case, std::string(32, '0')}) {
    EXPECT_EQ(get_session_id("10.0.0.2", other.c_str()), 0u) << other;
  }
}

TEST_F(SessionTest, EmptyKeyNeverFindsAFreeSlot) {
  EXPECT_EQ(get_session_id("", ""), 0u);
  open_session("admin", "10.0.0.2");
  delete_session(1);
  EXPECT_EQ(get_session_id("10.0.0.2", ""), 0u);
}

TEST_F(SessionTest, DeletedSessionLosesNumberAndKey) {
  std::string key = open_session("admin", "10.0.0.2");
  EXPECT_EQ(delete_session(1), RC_TRUE);
  EXPECT_EQ(get_session_id("10.0.0.2", key.c_str()), 0u);
  EXPECT_EQ(session_table[0].session_id, 0u);
  for (char c : session_table[0].session_key) EXPECT_EQ(c, 0);
  EXPECT_STREQ(session_table[0].user_name, "admin"); /* the rest stays until the slot is used again */
  EXPECT_EQ(delete_session(1), RC_FALSE);
}

TEST_F(SessionTest, UnknownNumbersAreRefused) {
  open_session("admin", "10.0.0.2");
  api_loginsession_t session;
  for (uint32_t ssid : {0u, 2u, 4294967295u}) {
    EXPECT_EQ(delete_session(ssid), RC_FALSE) << ssid;
    EXPECT_EQ(update_last_activity_time(ssid), RC_FALSE) << ssid;
    EXPECT_EQ(get_the_session_by_id(ssid, &session), RC_FALSE) << ssid;
  }
  EXPECT_EQ(get_the_session_by_id(1, nullptr), RC_FALSE);
}

TEST_F(SessionTest, SweepRemovesWhatHasBeenIdleForExactlyTheTimeOut) {
  open_session("admin", "10.0.0.2");
  now += 1;
  open_session("admin", "10.0.0.3");
  now += 299; /* 300 and 299 seconds idle */
  clear_expired_session();
  EXPECT_EQ(session_numbers(), (std::vector<int32_t>{0, 0, 0, 0, 2}));
  EXPECT_EQ(update_last_activity_time(2), RC_TRUE);
  now += 299;
  clear_expired_session();
  EXPECT_EQ(session_numbers(), (std::vector<int32_t>{0, 0, 0, 0, 2}));
  now += 1;
  clear_expired_session();
  EXPECT_EQ(session_numbers(), (std::vector<int32_t>{0, 0, 0, 0, 0}));
}

TEST_F(SessionTest, NothingExpiresWithATimeOutOfZero) {
  open_session("admin", "10.0.0.2");
  set_session_timeout(0);
  now += 1000000000;
  clear_expired_session();
  EXPECT_EQ(session_numbers(), (std::vector<int32_t>{0, 0, 0, 0, 1}));
}

TEST_F(SessionTest, NewTimeOutHoldsForOpenSessions) {
  open_session("admin", "10.0.0.2");
  now += 100;
  EXPECT_EQ(set_session_timeout(101), RC_TRUE);
  clear_expired_session();
  EXPECT_EQ(session_numbers().back(), 1);
  EXPECT_EQ(set_session_timeout(100), RC_TRUE);
  clear_expired_session();
  EXPECT_EQ(session_numbers().back(), 0);
}

TEST_F(SessionTest, HugeTimeOutDoesNotOverflow) {
  open_session("admin", "10.0.0.2");
  set_session_timeout(4294967295u);
  now += 1000;
  clear_expired_session();
  EXPECT_EQ(session_numbers().back(), 1);
}

TEST_F(SessionTest, ClockSetBackExpiresNothing) {
  open_session("admin", "10.0.0.2");
  now -= 100000;
  clear_expired_session();
  EXPECT_EQ(session_numbers().back(), 1);
}

TEST_F(SessionTest, TimeOutCanBeRead) {
  uint32_t seconds = 0;
  EXPECT_EQ(get_session_timeout(&seconds), RC_TRUE);
  EXPECT_EQ(seconds, 300u);
  set_session_timeout(9600);
  EXPECT_EQ(get_session_timeout(&seconds), RC_TRUE);
  EXPECT_EQ(seconds, 9600u);
  EXPECT_EQ(get_session_timeout(nullptr), RC_FALSE);
}

TEST_F(SessionTest, ListHasFiveAscendingEntriesZerosFirst) {
  EXPECT_EQ(session_numbers(), (std::vector<int32_t>{0, 0, 0, 0, 0}));
  next_ssid = INT_MAX - 1;
  for (int i = 0; i < 4; i++) open_session("admin", "10.0.0.2");
  delete_session(1);
  EXPECT_EQ(session_numbers(), (std::vector<int32_t>{0, 0, 2, INT_MAX - 1, INT_MAX}));
}

TEST_F(SessionTest, ListNeedsBothPointers) {
  int32_t numbers[MAX_SESSIONS];
  uint32_t count = 7;
  EXPECT_EQ(get_session_id_list(nullptr, &count), RC_FALSE);
  EXPECT_EQ(get_session_id_list(numbers, nullptr), RC_FALSE);
  EXPECT_EQ(count, 7u);
}

TEST_F(SessionTest, CompareIsTheDifference) {
  int32_t one = 1, three = 3;
  EXPECT_EQ(compare(&one, &three), -2);
  EXPECT_EQ(compare(&three, &one), 2);
  EXPECT_EQ(compare(&one, &one), 0);
}
