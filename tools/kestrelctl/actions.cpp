#include "tools/kestrelctl/actions.h"

#include "tools/kestrelctl/answer.h"
#include "tools/kestrelctl/http_client.h"
#include "tools/kestrelctl/output.h"
#include "tools/kestrelctl/password.h"
#include "tools/kestrelctl/session.h"
#include "tools/kestrelctl/text.h"

#include <stdio.h>
#include <unistd.h>

int complain(exit_status status, const std::string &complaint) {
  fprintf(stderr, "kestrelctl: %s\n", complaint.c_str());
  return status;
}

/* What has been done, for people. */
static void say(const settings &given, const std::string &message) {
  if (!given.quiet) fprintf(stderr, "%s\n", printable(message).c_str());
}

/* --- Requests ------------------------------------------------------------------------------------------ */

/* The fingerprint that is given, else the one that is kept. */
static bool find_connection(const settings &given, connection_settings *connection) {
  std::string error;
  *connection = {given.server, given.ca_file, given.fingerprint, given.seconds};
  if (!given.fingerprint.empty() || load_trust(given.server, &connection->fingerprint, &error)) return true;
  complain(NOT_REACHED, error);
  return false;
}

static int report_distrust(const connection_settings &connection, const http_reply &reply) {
  if (connection.fingerprint.empty())
    return complain(NOT_REACHED, connection.server + ": the certificate is not trusted: " + reply.error +
                                     "\nIt is " + reply.fingerprint +
                                     ". Nothing was sent. \"kestrelctl trust\" trusts it.");
  return complain(NOT_REACHED,
                  connection.server + ": the certificate is not the one that is trusted.\nTrusted is " +
                      connection.fingerprint + ",\nit is      " + reply.fingerprint + ". Nothing was sent.");
}

static int report_failure(const connection_settings &connection, const http_reply &reply) {
  if (reply.outcome == http_outcome::NOT_TRUSTED) return report_distrust(connection, reply);
  const exit_status status = reply.outcome == http_outcome::BAD_REPLY ? NOT_UNDERSTOOD : NOT_REACHED;
  return complain(status, connection.server + ": " + reply.error);
}

static int report_nonsense(const settings &given) {
  return complain(NOT_UNDERSTOOD, given.server + ": the answer is no document of a switch");
}

static int report_missing_session(const settings &given, const std::string &why) {
  return complain(NOT_LOGGED_IN, given.server + ": " + why + " Log in with \"kestrelctl login\".");
}

/* The answer is a refusal. */
static int report_refusal(const settings &given, const answer &refusal) {
  const std::string why = printable(refusal.message);
  if (refusal.code == RESULT_SESSION_ENDED || refusal.code == RESULT_NO_SESSION_KEY)
    return report_missing_session(given, why + " (" + std::to_string(refusal.code) + ")");
  return complain(REFUSED, why + " (" + std::to_string(refusal.code) + ")");
}

static void add_variable(std::string *text, const std::string &name, const std::string &value) {
  *text += (text->empty() ? "" : "&") + name + "=" + percent_encoded(value);
}

/* --- Sessions ------------------------------------------------------------------------------------------ */

/* The session that is kept, if it is the same user's: the switch then opens no second one. */
static std::string own_session_key(const settings &given, const kept_session &kept) {
  return kept.user == percent_encoded(given.user) ? kept.key : "";
}

static int keep_session(const settings &given, const answer &welcome, const std::string &old_key) {
  json_object *member = nullptr;
  json_object_object_get_ex(welcome.data, "sessionKey", &member);
  const std::string key = json_object_is_type(member, json_type_string) ? json_object_get_string(member) : "";
  std::string error;
  if (!is_session_key(key) && (member != nullptr || old_key.empty())) return report_nonsense(given);
  if (member != nullptr && !store_session(given.server, {key, percent_encoded(given.user)}, &error))
    return complain(NOT_LOGGED_IN, error);
  say(given, welcome.message);
  return DONE;
}

int log_in(const settings &given) {
  connection_settings connection;
  kept_session kept;
  std::string password, query, body, error;
  if (!find_connection(given, &connection)) return NOT_REACHED;
  if (!load_session(given.server, &kept, &error)) return complain(NOT_LOGGED_IN, error);
  const std::string prompt = "Password of " + printable(given.user) + " at " + given.server + ": ";
  if (!read_password(prompt, &password, &error)) return complain(WRONG_USAGE, error);
  const std::string old_key = own_session_key(given, kept);
  if (!old_key.empty()) add_variable(&query, "sessionkey", old_key);
  add_variable(&query, "format", "json");
  add_variable(&body, "user", given.user);
  add_variable(&body, "password", password);
  const http_reply reply = send_request(connection, {"POST", "/login?" + query, body});
  if (reply.outcome != http_outcome::REPLIED) return report_failure(connection, reply);
  const answer welcome = read_json_answer(reply.body);
  if (!welcome.understood) return report_nonsense(given);
  return welcome.code == RESULT_SUCCESS ? keep_session(given, welcome, old_key)
                                        : report_refusal(given, welcome);
}

/* The session that is kept; false when there is none, which has been said. */
static bool find_session(const settings &given, kept_session *kept) {
  std::string error;
  if (!load_session(given.server, kept, &error)) return complain(NOT_LOGGED_IN, error), false;
  if (kept->key.empty()) report_missing_session(given, "You are not logged in.");
  return !kept->key.empty();
}

int log_out(const settings &given) {
  connection_settings connection;
  kept_session kept;
  std::string query, error;
  if (!find_connection(given, &connection)) return NOT_REACHED;
  if (!find_session(given, &kept)) return NOT_LOGGED_IN;
  add_variable(&query, "sessionkey", kept.key);
  add_variable(&query, "format", "json");
  const http_reply reply = send_request(connection, {"DELETE", "/login?" + query, ""});
  if (reply.outcome != http_outcome::REPLIED) return report_failure(connection, reply);
  const answer farewell = read_json_answer(reply.body);
  if (!farewell.understood) return report_nonsense(given);
  const bool ended = farewell.code == RESULT_SUCCESS || farewell.code == RESULT_SESSION_ENDED;
  if (ended && !forget_session(given.server, &error)) return complain(NOT_LOGGED_IN, error);
  if (farewell.code != RESULT_SUCCESS) return report_refusal(given, farewell);
  say(given, farewell.message);
  return DONE;
}

/* --- Trust --------------------------------------------------------------------------------------------- */

static int store_confirmed(const settings &given, const std::string &fingerprint) {
  std::string error;
  if (!store_trust(given.server, fingerprint, &error)) return complain(NOT_REACHED, error);
  say(given, "The certificate of " + given.server + " is trusted from now on.");
  return DONE;
}

/* Whether the user wants the certificate. A change of a trusted one is never agreed to by --yes alone. */
static int ask_for_trust(const settings &given, const std::string &seen, const std::string &trusted) {
  fprintf(stderr, "The certificate of %s is\n  %s\n", given.server.c_str(), seen.c_str());
  if (!trusted.empty()) fprintf(stderr, "Trusted so far is another one:\n  %s\n", trusted.c_str());
  if (given.yes && trusted.empty()) return DONE;
  if (!isatty(STDIN_FILENO))
    return complain(WRONG_USAGE, trusted.empty()
                                     ? "to trust it without a terminal, give --yes or --fingerprint"
                                     : "to trust it without a terminal, give --fingerprint");
  if (confirm("Compare it with what the switch's owner tells. Trust it? [y/N] ")) return DONE;
  return complain(NOT_REACHED, "it is not trusted");
}

int trust_server(const settings &given) {
  std::string trusted, error;
  if (!given.server.starts_with("https://"))
    return complain(WRONG_USAGE, given.server + ": only servers of https have certificates");
  if (!load_trust(given.server, &trusted, &error)) return complain(NOT_REACHED, error);
  const connection_settings connection = {given.server, "", given.fingerprint, given.seconds};
  const http_reply reply = see_certificate(connection);
  if (reply.outcome != http_outcome::REPLIED) return report_failure(connection, reply);
  if (reply.fingerprint.empty()) return complain(NOT_REACHED, given.server + ": it shows no certificate");
  if (!given.fingerprint.empty()) {
    const bool same = given.fingerprint == reply.fingerprint;
    return same ? store_confirmed(given, reply.fingerprint) : report_distrust(connection, reply);
  }
  if (trusted == reply.fingerprint) return say(given, "It is trusted already: " + trusted), DONE;
  const int agreed = ask_for_trust(given, reply.fingerprint, trusted);
  return agreed == DONE ? store_confirmed(given, reply.fingerprint) : agreed;
}

int untrust_server(const settings &given) {
  std::string error;
  if (!forget_trust(given.server, &error)) return complain(NOT_REACHED, error);
  say(given, "No certificate of " + given.server + " is trusted by itself any more.");
  return DONE;
}

/* --- Commands ------------------------------------------------------------------------------------------ */

static std::string target_of(const understood_command &command, const std::string &key, output_form form) {
  std::string query;
  for (const request_variable &variable : command.variables)
    add_variable(&query, variable.name, variable.value);
  add_variable(&query, "sessionkey", key);
  add_variable(&query, "format", form == output_form::XML ? "xml" : "json");
  return command.uri + "?" + query;
}

/* After a refusal: what in the command is not as documented. */
static void say_doubts(const understood_command &command) {
  for (const command_segment &segment : command.chosen->segments) {
    if (segment.placeholder == nullptr) continue;
    const size_t place = static_cast<size_t>(&segment - command.chosen->segments.data());
    const std::string doubt = doubt_about(*segment.placeholder, command.segment_values[place]);
    if (!doubt.empty()) fprintf(stderr, "  %s\n", doubt.c_str());
  }
  for (const request_variable &variable : command.variables) {
    for (const api_parameter *known : variables_of(*command.chosen->operation)) {
      const std::string doubt = known->name == variable.name ? doubt_about(*known, variable.value) : "";
      if (!doubt.empty()) fprintf(stderr, "  %s\n", doubt.c_str());
    }
  }
}

int carry_out(const settings &given, const understood_command &command) {
  connection_settings connection;
  kept_session kept;
  if (!find_connection(given, &connection)) return NOT_REACHED;
  if (!find_session(given, &kept)) return NOT_LOGGED_IN;
  const std::string target = target_of(command, kept.key, given.form);
  const http_reply reply = send_request(connection, {command.chosen->operation->method, target, ""});
  if (reply.outcome != http_outcome::REPLIED) return report_failure(connection, reply);
  const answer result =
      given.form == output_form::XML ? read_xml_answer(reply.body) : read_json_answer(reply.body);
  if (!result.understood) return report_nonsense(given);
  if (given.form != output_form::TEXT && !print_document(reply.body))
    return complain(NOT_UNDERSTOOD, lost_output());
  if (result.code != RESULT_SUCCESS) {
    const int status = report_refusal(given, result);
    if (status == REFUSED) say_doubts(command);
    return status;
  }
  if (given.form != output_form::TEXT) return DONE;
  bool anything = false;
  if (!print_answer(result, &anything)) return complain(NOT_UNDERSTOOD, lost_output());
  if (!anything) say(given, result.message);
  return DONE;
}
