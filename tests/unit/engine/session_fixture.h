/* Tests of sessions: a clock that the test sets, an empty table, and a status file of the test's own. */
#ifndef KESTREL_TESTS_ENGINE_SESSION_FIXTURE_H
#define KESTREL_TESTS_ENGINE_SESSION_FIXTURE_H

#include "engine/rest_engine_session_hdr.h"
#include "engine/rest_settings.h"
#include "tests/support/temporary_dir.h"

#include <gtest/gtest.h>
#include <stdlib.h>
#include <string>

class SessionTest : public testing::Test {
protected:
  SessionTest() : status_path(dir.file("status")) {
    setenv("KESTREL_SESSION_FILE", status_path.c_str(), 1);
    reload_rest_settings();
    for (api_loginsession_t &session : session_table) session = {};
    next_ssid = 1;
    session_timeout_seconds = SESSION_TIMEOUT_DEFAULT;
    now = 1700000000;
    rest_set_clock([] { return now; });
  }
  ~SessionTest() override {
    rest_set_clock(nullptr);
    unsetenv("KESTREL_SESSION_FILE");
    reload_rest_settings();
  }

  /* Opens a session and returns its key; empty when there was no room. */
  static std::string open_session(const char *user, const char *ip, uint16_t port = 40000) {
    unsigned char key[SESSION_KEY_SIZE] = {};
    if (create_session(user, ip, port, key) != RC_TRUE) return "";
    return reinterpret_cast<char *>(key);
  }

  std::string status() const { return read_file(status_path); }

  TemporaryDir dir;
  std::string status_path;
  inline static time_t now;
};

#endif
