#include "engine/rest_engine_session_hdr.h"

#include "engine/rest_settings.h"
#include "engine/rest_status_file.h"
#include "platform/api/l7proc.h"

#include <limits.h>
#include <openssl/evp.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>

api_loginsession_t session_table[MAX_SESSIONS];
int32_t next_ssid = 1;
uint32_t session_timeout_seconds = SESSION_TIMEOUT_DEFAULT;

static uint32_t now_seconds(void) {
  return static_cast<uint32_t>(rest_time());
}

/* The first session with that number; 0 finds the first free slot. Null if there is none. */
static api_loginsession_t *find_slot(uint32_t ssid) {
  for (api_loginsession_t &session : session_table) {
    if (session.session_id == ssid) return &session;
  }
  return nullptr;
}

static api_loginsession_t *find_session(uint32_t ssid) {
  return ssid == 0 ? nullptr : find_slot(ssid);
}

static void free_slot(api_loginsession_t *session) {
  session->session_id = 0;
  memset(session->session_key, 0, sizeof session->session_key);
}

static int32_t take_session_number(void) {
  int32_t number = next_ssid;
  next_ssid = next_ssid == INT_MAX ? 1 : next_ssid + 1;
  return number;
}

/* RC_FALSE when the system's OpenSSL refuses MD5: all sessions would share one key then. */
static RC_t derive_key(const char *ip, time_t login_time, char *key) {
  char text[80]; /* the longest address text and a 64-bit time */
  int length = snprintf(text, sizeof text, "%.47s%ld", ip, static_cast<long>(login_time));
  unsigned char digest[EVP_MAX_MD_SIZE];
  if (EVP_Digest(text, length, digest, nullptr, EVP_md5(), nullptr) != 1) {
    l7proc_logf(L7PROC_ERROR, 0, "rest_engine_session_hdr.c", __LINE__, "no session: MD5 is not available");
    return RC_FALSE;
  }
  for (int i = 0; i < 16; i++) snprintf(key + 2 * i, 3, "%02x", digest[i]);
  return RC_TRUE;
}

RC_t create_session(const char *user, const char *ip, uint16_t port, unsigned char *sessionKey) {
  clear_expired_session();
  api_loginsession_t *session = find_slot(0);
  time_t now = rest_time();
  char key[SESSION_KEY_SIZE];
  if (session == nullptr || derive_key(ip, now, key) != RC_TRUE) return RC_FALSE;

  *session = {};
  session->session_id = static_cast<uint32_t>(take_session_number());
  memcpy(session->session_key, key, sizeof key);
  memcpy(sessionKey, key, sizeof key);
  snprintf(session->user_name, sizeof session->user_name, "%s", user);
  snprintf(session->remote_ip, sizeof session->remote_ip, "%s", ip);
  session->remote_port = port;
  session->login_time = session->last_activity_time = static_cast<uint32_t>(now);
  output_session_file();
  return RC_TRUE;
}

uint32_t get_session_id(const char *ip, const char *sessionKey) {
  for (const api_loginsession_t &session : session_table) {
    if (session.session_key[0] == '\0') continue;
    if (strcmp(session.session_key, sessionKey) == 0 && strcmp(session.remote_ip, ip) == 0) {
      return session.session_id;
    }
  }
  return 0;
}

RC_t delete_session(uint32_t ssid) {
  api_loginsession_t *session = find_session(ssid);
  if (session == nullptr) return RC_FALSE;
  free_slot(session);
  output_session_file();
  return RC_TRUE;
}

RC_t update_last_activity_time(uint32_t ssid) {
  api_loginsession_t *session = find_session(ssid);
  if (session == nullptr) return RC_FALSE;
  session->last_activity_time = now_seconds();
  output_session_file();
  return RC_TRUE;
}

RC_t get_the_session_by_id(uint32_t ssid, api_loginsession_t *out) {
  const api_loginsession_t *session = find_session(ssid);
  if (session == nullptr || out == nullptr) return RC_FALSE;
  *out = *session;
  return RC_TRUE;
}

void clear_expired_session(void) {
  if (session_timeout_seconds == 0) return;
  uint64_t now = now_seconds();
  for (api_loginsession_t &session : session_table) {
    uint64_t expiry = uint64_t{session.last_activity_time} + session_timeout_seconds;
    if (session.session_id != 0 && now >= expiry) free_slot(&session);
  }
  output_session_file();
}

RC_t get_session_id_list(int32_t *ssid_ary, uint32_t *count) {
  if (ssid_ary == nullptr || count == nullptr) return RC_FALSE;
  for (int i = 0; i < MAX_SESSIONS; i++) ssid_ary[i] = static_cast<int32_t>(session_table[i].session_id);
  qsort(ssid_ary, MAX_SESSIONS, sizeof ssid_ary[0], compare);
  *count = MAX_SESSIONS;
  return RC_TRUE;
}

int compare(const void *a, const void *b) {
  return *static_cast<const int32_t *>(a) - *static_cast<const int32_t *>(b);
}

RC_t set_session_timeout(uint32_t seconds) {
  session_timeout_seconds = seconds;
  return RC_TRUE;
}

RC_t get_session_timeout(uint32_t *seconds) {
  if (seconds == nullptr) return RC_FALSE;
  *seconds = session_timeout_seconds;
  return RC_TRUE;
}

/* --- Status file ---------------------------------------------------------------------------------------- */

static std::string status_text(void) {
  std::string text;
  char line[512]; /* name, address and numbers take less */
  for (const api_loginsession_t &session : session_table) {
    if (session.session_id == 0) continue;
    snprintf(line, sizeof line, "%d;%s;%s;%s;%d;%d\n", session.session_id, session.session_key,
             session.user_name, session.remote_ip, session.login_time, session.last_activity_time);
    text += line;
  }
  return text;
}

RC_t output_session_file(void) {
  static api_loginsession_t mirrored[MAX_SESSIONS]; /* the table that the file holds */
  static status_file file;
  const std::string &path = rest_settings().session_file;
  if (memcmp(mirrored, session_table, sizeof mirrored) == 0 && status_file_is_ours(&file, path))
    return RC_TRUE;
  if (!write_status_file(&file, path, status_text())) return RC_FALSE;
  memcpy(mirrored, session_table, sizeof mirrored);
  return RC_TRUE;
}
