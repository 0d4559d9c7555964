/* REST sessions: a table of at most five, found by key and client address, expired when idle, and mirrored
 * into the status file (engine/rest_settings.h) for other programs on the switch. */
#ifndef KESTREL_ENGINE_REST_ENGINE_SESSION_HDR_H
#define KESTREL_ENGINE_REST_ENGINE_SESSION_HDR_H

#include "engine/rest_common.h"

#include <stdint.h>

enum {
  MAX_SESSIONS = 5,
  SESSION_TIMEOUT_DEFAULT = 300, /* seconds */
};

typedef struct api_loginsession_s {
  uint32_t session_id;                /* 0 = free slot */
  char session_key[SESSION_KEY_SIZE]; /* 32 lower-case hexadecimal digits; empty in a free slot */
  char user_name[256];
  char remote_ip[48];
  uint16_t remote_port;
  uint32_t login_time;         /* seconds since the Unix epoch */
  uint32_t last_activity_time; /* the same; refreshed by use */
} api_loginsession_t;

extern api_loginsession_t session_table[MAX_SESSIONS];
extern int32_t next_ssid;                /* number of the next session, 1..2147483647 */
extern uint32_t session_timeout_seconds; /* 0 = sessions never expire */

/* Opens a session after sweeping out expired ones and writes its key (SESSION_KEY_SIZE bytes). The key is the
 * MD5 digest of the address and the current second, so two logins from one address within a second share it.
 * RC_FALSE when all slots are taken. */
RC_t create_session(const char *user, const char *ip, uint16_t port, unsigned char *sessionKey);
/* Number of the first session with that key and address; 0 if none. */
uint32_t get_session_id(const char *ip, const char *sessionKey);
/* RC_FALSE if there is no such session (as in the next ones). */
RC_t delete_session(uint32_t ssid);
RC_t update_last_activity_time(uint32_t ssid);
RC_t get_the_session_by_id(uint32_t ssid, api_loginsession_t *out);
/* Frees every session idle for the time-out or longer; does nothing at all while the time-out is 0. */
void clear_expired_session(void);
/* The numbers of all five slots in ascending order, free ones as 0. RC_FALSE for a null pointer. */
RC_t get_session_id_list(int32_t *ssid_ary, uint32_t *count);
/* Order of two numbers for qsort(3). */
int compare(const void *a, const void *b);
/* Idle time-out in seconds, not checked here. */
RC_t set_session_timeout(uint32_t seconds);
RC_t get_session_timeout(uint32_t *seconds);
/* Makes the status file hold what the table holds, one line "id;key;user;address;login;activity" per session.
 * It is rewritten only when the table has changed or somebody else has touched the file. RC_FALSE when it
 * cannot be written. */
RC_t output_session_file(void);

#endif
