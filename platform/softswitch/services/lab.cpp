/* Lab control's commands; see lab.h. The table near the end is the list of them all: `help` prints it, and a
 * new command is a handler and a row. The socket that they come in by is lab_socket.cpp. */
#include "platform/softswitch/services/lab.h"

#include "platform/softswitch/services/faults.h"
#include "platform/softswitch/services/lab_commands.h"
#include "platform/softswitch/services/log.h"
#include "platform/softswitch/services/stored_files.h"
#include "platform/softswitch/softswitch.h"

#include <algorithm>
#include <charconv>
#include <stdint.h>
#include <string.h>
#include <vector>

namespace softswitch {

using arguments = std::vector<std::string_view>;

/* One command. The handler gets the words after `words`, as many as the row allows. */
struct command_row {
  const char *words;    /* "fault", "fault list" */
  const char *usage;    /* its arguments, for help and errors */
  size_t arguments_min; /* how many it takes at least and at most */
  size_t arguments_max;
  const char *purpose;
  lab_outcome (*run)(const command_row &row, const arguments &given);
};

/* --- Helpers -------------------------------------------------------------------------------------------- */

static lab_outcome done(std::string text = "") {
  return {lab_outcome::done, std::move(text)};
}

static lab_outcome refused(std::string reason) {
  /* A reason of several lines would tear the reply apart. */
  std::replace(reason.begin(), reason.end(), '\n', ' ');
  return {lab_outcome::refused, std::move(reason)};
}

static std::string command_line(const command_row &row) {
  return *row.usage ? std::string(row.words) + " " + row.usage : row.words;
}

static lab_outcome misused(const command_row &row) {
  return refused("usage: " + command_line(row));
}

/* A decimal number of at most `max`; false for anything else. */
template <typename Number> static bool number_from_text(std::string_view text, Number max, Number *number) {
  auto [end, failure] = std::from_chars(text.data(), text.data() + text.size(), *number);
  return failure == std::errc() && end == text.data() + text.size() && *number <= max;
}

/* Takes one of two words; false for any other. */
static bool choice_from_text(std::string_view text, const char *yes, const char *no, bool *chosen) {
  *chosen = text == yes;
  return text == yes || text == no;
}

/* --- Commands, in the order of the table ---------------------------------------------------------------- */

static lab_outcome show_help(const command_row &, const arguments &);

static lab_outcome hold(const command_row &, const arguments &) {
  hold_apply(true);
  return done();
}

static lab_outcome release(const command_row &, const arguments &) {
  hold_apply(false);
  return done();
}

static constexpr unsigned wait_default_ms = 5000;
static constexpr unsigned wait_max_ms = 600000;

static lab_outcome wait(const command_row &row, const arguments &given) {
  unsigned milliseconds = wait_default_ms;
  if (!given.empty() && !number_from_text(given[0], wait_max_ms, &milliseconds)) return misused(row);
  return {lab_outcome::waiting, "", static_cast<int>(milliseconds)};
}

static lab_outcome order_fault(const command_row &row, const arguments &given) {
  open_error_t code;
  unsigned count = 1;
  unsigned skip = 0;
  if (!fault_code_from_text(given[1], &code)) return misused(row);
  if (given.size() > 2 && !number_from_text(given[2], UINT32_MAX, &count)) return misused(row);
  if (given.size() > 3 && !number_from_text(given[3], UINT32_MAX, &skip)) return misused(row);
  if (fault_order(given[0], code, count, skip)) return done();
  return refused("no such platform function");
}

static lab_outcome clear_faults(const command_row &, const arguments &) {
  fault_clear_all();
  return done();
}

static lab_outcome list_faults(const command_row &, const arguments &) {
  return done(fault_list());
}

static lab_outcome move_cable(const command_row &row, const arguments &given) {
  bool in;
  if (!choice_from_text(given[0], "in", "out", &in)) return misused(row);
  return set_cabled(given[1], in) ? done() : refused("no such port");
}

static lab_outcome change_link(const command_row &row, const arguments &given) {
  bool up;
  if (!choice_from_text(given[0], "up", "down", &up)) return misused(row);
  return set_far_end(given[1], up) ? done() : refused("no such port");
}

static lab_outcome change_counter_by(counter_change change, const command_row &row, const arguments &given) {
  uint64_t amount;
  std::string error;
  if (!number_from_text(given[2], UINT64_MAX, &amount)) return misused(row);
  return change_counter(given[0], given[1], change, amount, &error) ? done() : refused(error);
}

static lab_outcome set_counter(const command_row &row, const arguments &given) {
  return change_counter_by(counter_set, row, given);
}

static lab_outcome add_to_counter(const command_row &row, const arguments &given) {
  return change_counter_by(counter_add, row, given);
}

static lab_outcome run_counter(const command_row &row, const arguments &given) {
  return change_counter_by(counter_run, row, given);
}

/* "13 CTR_RX_UCAST_FRAMES" */
static std::string counter_title(uint32_t id) {
  return std::to_string(id) + " " + std::string(counter_name(id));
}

static lab_outcome list_counters(const command_row &, const arguments &given) {
  std::map<uint32_t, counter> counters;
  std::string error, text;
  if (!read_counters(given[0], &counters, &error)) return refused(error);
  for (const auto &[id, read] : counters) {
    text += counter_title(id) + " " + std::to_string(read.value);
    if (read.per_second > 0) text += " " + std::to_string(read.per_second);
    text += "\n";
  }
  return done(std::move(text));
}

static lab_outcome name_counters(const command_row &, const arguments &) {
  std::string text;
  for (uint32_t id = 0; id < OPEN_STAT_COUNTERS; id++) text += counter_title(id) + "\n";
  return done(std::move(text));
}

/* By OPEN_ACL_RULE_STATUS_t. */
static constexpr std::string_view time_range_words[] = {"none", "inactive", "active"};

static lab_outcome change_time_range(const command_row &row, const arguments &given) {
  auto word = std::find(std::begin(time_range_words), std::end(time_range_words), given[1]);
  if (word == std::end(time_range_words)) return misused(row);
  uint32_t state = static_cast<uint32_t>(word - std::begin(time_range_words));
  return set_time_range(given[0], state) ? done() : refused("no name of a time range");
}

static lab_outcome list_time_ranges(const command_row &, const arguments &) {
  std::string text;
  for (const auto &[name, state] : time_ranges())
    text += name + " " + std::string(time_range_words[state]) + "\n";
  return done(std::move(text));
}

static lab_outcome change_lease(const command_row &, const arguments &given) {
  std::string error;
  bool good = given[1] == "none" ? withdraw_lease(given[0], &error) : offer_lease(given[0], given[1], &error);
  return good ? done() : refused(error);
}

static lab_outcome list_leases(const command_row &, const arguments &) {
  return done(lease_list());
}

static lab_outcome change_ready(const command_row &row, const arguments &given) {
  bool ready;
  if (!choice_from_text(given[0], "yes", "no", &ready)) return misused(row);
  set_ready(ready);
  return done();
}

static lab_outcome change_ssh_sessions(const command_row &row, const arguments &given) {
  unsigned sessions;
  if (!number_from_text(given[0], UINT32_MAX, &sessions)) return misused(row);
  return set_ssh_sessions(sessions) ? done() : refused("more sessions than there can be");
}

static lab_outcome change_limit(const command_row &row, const arguments &given) {
  unsigned value;
  if (!number_from_text(given[1], UINT32_MAX, &value)) return misused(row);
  return set_limit(given[0], value) ? done() : refused("no such limit, or above what is built in");
}

static lab_outcome change_log(const command_row &row, const arguments &given) {
  int severity;
  if (!log_severity_from_text(given[0], &severity)) return misused(row);
  log_set_console_severity(severity);
  return done();
}

static lab_outcome show_running_config(const command_row &, const arguments &) {
  std::string text = running_config();
  if (!text.empty() && text.back() != '\n') text.push_back('\n');
  return done(std::move(text));
}

static lab_outcome show_images(const command_row &, const arguments &) {
  return done(image_list(state_directory()));
}

static lab_outcome save(const command_row &, const arguments &) {
  std::string error;
  return save_startup_config(&error) ? done() : refused(error);
}

static lab_outcome reload_with(uint32_t mode) {
  std::string error;
  return reload(&error, mode) ? done() : refused(error);
}

static lab_outcome reload_startup(const command_row &, const arguments &) {
  return reload_with(OPEN_RELOAD);
}

static lab_outcome reload_warm(const command_row &, const arguments &) {
  return reload_with(OPEN_RELOAD_WARM);
}

static lab_outcome reload_factory(const command_row &, const arguments &) {
  return reload_with(OPEN_RELOAD_FACTORY);
}

/* A command of two words stands before the one that its first word alone is. */
static const command_row commands[] = {
    {"help", "", 0, 0, "this list", show_help},
    {"hold", "", 0, 0, "hold changes back from the data plane: they stay pending", hold},
    {"release", "", 0, 0, "let held changes through", release},
    {"wait", "[MILLISECONDS]", 0, 1, "wait until no change is pending, 5000 ms at most unless given", wait},
    {"fault clear", "", 0, 0, "take back all faults", clear_faults},
    {"fault list", "", 0, 0, "list faults: function, code, calls to fail, calls to skip before", list_faults},
    {"fault", "FUNCTION CODE [COUNT [SKIP]]", 2, 4,
     "let the next COUNT (1) calls of a platform function, after SKIP (0) more, answer CODE", order_fault},
    {"cable", "in|out PORT", 2, 2, "plug a port's cable in or pull it out", move_cable},
    {"link", "up|down PORT", 2, 2, "take the far end of a port's cable up or down", change_link},
    {"counter set", "INTERFACE COUNTER VALUE", 3, 3, "set a counter", set_counter},
    {"counter add", "INTERFACE COUNTER AMOUNT", 3, 3, "count a counter up", add_to_counter},
    {"counter run", "INTERFACE COUNTER PER-SECOND", 3, 3, "let a counter run; 0 stops it", run_counter},
    {"counter list", "INTERFACE", 1, 1,
     "list an interface's counters: id, name, value, per second when running", list_counters},
    {"counter names", "", 0, 0, "list all counters: id, name", name_counters},
    {"time-range list", "", 0, 0, "list the time ranges that are defined: name, state", list_time_ranges},
    {"time-range", "NAME active|inactive|none", 2, 2, "define a time range with its state, or no longer",
     change_time_range},
    {"lease list", "", 0, 0, "list what is offered: interface, prefix", list_leases},
    {"lease", "INTERFACE PREFIX|none", 2, 2,
     "offer an address to an interface that obtains its own, or withdraw what is offered", change_lease},
    {"ready", "yes|no", 1, 1, "whether the switch says that it has come up", change_ready},
    {"ssh-sessions", "NUMBER", 1, 1, "how many SSH sessions are open", change_ssh_sessions},
    {"limit", "NAME VALUE", 2, 2, "lower a limit of the switch, to see its table full", change_limit},
    {"log", "LEVEL", 1, 1, "lines this severe go to the console: emergency ... debug, or 0 to 7", change_log},
    {"show running-config", "", 0, 0, "print the running configuration", show_running_config},
    {"show images", "", 0, 0, "list the software images: name, size, SHA-256, when and from where fetched",
     show_images},
    {"save", "", 0, 0, "make the running configuration the startup configuration", save},
    {"reload warm", "", 0, 0, "hand the running configuration to the data plane anew", reload_warm},
    {"reload factory", "", 0, 0, "return to factory state, removing all configurations", reload_factory},
    {"reload", "", 0, 0, "return to the startup configuration", reload_startup},
};

static lab_outcome show_help(const command_row &, const arguments &) {
  std::string text;
  for (const command_row &row : commands) {
    std::string line = command_line(row);
    line.resize(std::max<size_t>(line.size() + 1, 42), ' ');
    text += line + row.purpose + "\n";
  }
  return done(std::move(text));
}

/* --- Running a line ------------------------------------------------------------------------------------- */

/* Splits at blanks. */
static arguments split_words(std::string_view line) {
  arguments words;
  while (!line.empty()) {
    size_t start = std::min(line.find_first_not_of(" \t"), line.size());
    line.remove_prefix(start);
    size_t end = std::min(line.find_first_of(" \t"), line.size());
    if (end > 0) words.push_back(line.substr(0, end));
    line.remove_prefix(end);
  }
  return words;
}

/* How many of the given words are the row's own: all of its words or none. */
static size_t words_matched(const command_row &row, const arguments &given) {
  arguments own = split_words(row.words);
  bool matches = given.size() >= own.size() && std::equal(own.begin(), own.end(), given.begin());
  return matches ? own.size() : 0;
}

lab_outcome lab_run(std::string_view line) {
  if (line.ends_with('\r')) line.remove_suffix(1);
  for (unsigned char c : line) {
    if ((c < 0x20 && c != '\t') || c == 0x7f) return refused("control characters in the command");
  }
  arguments given = split_words(line);
  for (const command_row &row : commands) {
    size_t own = words_matched(row, given);
    if (own == 0) continue;
    given.erase(given.begin(), given.begin() + static_cast<long>(own));
    if (given.size() < row.arguments_min || given.size() > row.arguments_max) return misused(row);
    return row.run(row, given);
  }
  return refused("no such command; \"help\" lists them");
}

lab_outcome lab_wait_outcome(bool applied) {
  return applied ? done() : refused("changes are still pending");
}

std::string lab_reply(const lab_outcome &outcome) {
  if (outcome.kind == lab_outcome::refused) return "error: " + outcome.text + "\n";
  return outcome.text + "ok\n";
}

/* Carries a line out to its end. */
static lab_outcome run_to_end(std::string_view line) {
  lab_outcome outcome = lab_run(line);
  if (outcome.kind != lab_outcome::waiting) return outcome;
  return lab_wait_outcome(wait_applied(outcome.milliseconds));
}

std::string lab_command(std::string_view line) {
  return lab_reply(run_to_end(line));
}

} // namespace softswitch

int kestrel_lab_command(const char *line, char *reply, size_t size) {
  if (!line) return -1;
  softswitch::lab_outcome outcome = softswitch::run_to_end(line);
  std::string text = softswitch::lab_reply(outcome);
  if (reply && size > 0) {
    size_t kept = std::min(text.size(), size - 1);
    memcpy(reply, text.data(), kept);
    reply[kept] = '\0';
  }
  return outcome.kind == softswitch::lab_outcome::done ? 0 : -1;
}
