#include "tools/kestrelctl/session.h"

#include "tools/kestrelctl/certificate.h"
#include "tools/kestrelctl/private_files.h"
#include "tools/kestrelctl/text.h"

static std::string session_file(const std::string &server) {
  return percent_encoded(server) + ".session";
}
static std::string trust_file(const std::string &server) {
  return percent_encoded(server) + ".trust";
}

bool is_session_key(const std::string &text) {
  return text.size() == 32 && text.find_first_not_of("0123456789abcdef") == text.npos;
}

bool load_session(const std::string &server, kept_session *session, std::string *error) {
  std::string content;
  *session = {};
  if (!read_private_file(state_folder(), session_file(server), &content, error)) return false;
  if (content.empty()) return true;
  const std::vector<std::string> lines = split(content, '\n');
  if (lines.size() == 3 && is_session_key(lines[0])) return *session = {lines[0], lines[1]}, true;
  *error =
      state_folder() + "/" + session_file(server) + ": it holds no session; log in anew after removing it";
  return false;
}

bool store_session(const std::string &server, const kept_session &session, std::string *error) {
  return write_private_file(state_folder(), session_file(server), session.key + "\n" + session.user + "\n",
                            error);
}

bool forget_session(const std::string &server, std::string *error) {
  return remove_private_file(state_folder(), session_file(server), error);
}

bool load_trust(const std::string &server, std::string *fingerprint, std::string *error) {
  std::string content;
  fingerprint->clear();
  if (!read_private_file(state_folder(), trust_file(server), &content, error)) return false;
  if (content.empty() || read_fingerprint(content, fingerprint)) return true;
  *error = state_folder() + "/" + trust_file(server) + ": it holds no fingerprint";
  return false;
}

bool store_trust(const std::string &server, const std::string &fingerprint, std::string *error) {
  return write_private_file(state_folder(), trust_file(server), fingerprint + "\n", error);
}

bool forget_trust(const std::string &server, std::string *error) {
  return remove_private_file(state_folder(), trust_file(server), error);
}
