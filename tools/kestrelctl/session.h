/* What kestrelctl keeps for each server: the session and the fingerprint of the certificate that is trusted.
 */
#ifndef KESTREL_TOOLS_KESTRELCTL_SESSION_H
#define KESTREL_TOOLS_KESTRELCTL_SESSION_H

#include <string>

struct kept_session {
  std::string key;  /* 32 hexadecimal digits; empty when there is no session */
  std::string user; /* percent-encoded */
};

/* The functions return false with a sentence in *error when something is wrong. */

bool load_session(const std::string &server, kept_session *session, std::string *error);
bool store_session(const std::string &server, const kept_session &session, std::string *error);
bool forget_session(const std::string &server, std::string *error);

/* *fingerprint is empty when none is kept. */
bool load_trust(const std::string &server, std::string *fingerprint, std::string *error);
bool store_trust(const std::string &server, const std::string &fingerprint, std::string *error);
bool forget_trust(const std::string &server, std::string *error);

bool is_session_key(const std::string &text);

#endif
