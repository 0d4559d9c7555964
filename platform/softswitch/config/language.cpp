/* Reading, applying and printing by the command table; see language.h. */
#include "platform/softswitch/config/language.h"

#include "platform/softswitch/config/clauses.h"

namespace softswitch {

/* --- Patterns ------------------------------------------------------------------------------------------- */

/* The last word of a pattern that takes whatever follows. */
static constexpr std::string_view words_follow = "...";

/* Takes the next word off the front of a pattern; empty at its end. */
static std::string_view take_word(std::string_view *pattern) {
  size_t blank = pattern->find(' ');
  std::string_view word = pattern->substr(0, blank);
  pattern->remove_prefix(blank == std::string_view::npos ? pattern->size() : blank + 1);
  return word;
}

/* How far a line went along with a pattern, and why no further. */
struct match {
  bool complete = false;
  size_t tokens = 0; /* that fitted */
  std::vector<argument> arguments;
  std::string error;
};

static std::string unexpected(const token &found) {
  return "\"" + found.text + "\" is not expected here";
}

/* Fits one token to one word of a pattern. */
static bool match_word(const switch_model &model, std::string_view word, const token &found, match *so_far) {
  if (!is_placeholder(word)) {
    if (!found.quoted && found.text == word) return true;
    so_far->error = unexpected(found);
    return false;
  }
  argument read;
  if (!read_placeholder(word, model, found, &read, &so_far->error)) return false;
  so_far->arguments.push_back(std::move(read));
  return true;
}

static void take_rest(std::span<const token> tokens, match *so_far) {
  argument rest;
  rest.words.assign(tokens.begin() + static_cast<std::ptrdiff_t>(so_far->tokens), tokens.end());
  so_far->arguments.push_back(std::move(rest));
  so_far->tokens = tokens.size();
}

/* Fits the first tokens to a whole pattern; complete also when more tokens follow. */
static match match_front(const switch_model &model, std::string_view pattern, std::span<const token> tokens) {
  match result;
  while (!pattern.empty()) {
    std::string_view word = take_word(&pattern);
    if (word == words_follow) {
      take_rest(tokens, &result);
      break;
    }
    if (result.tokens == tokens.size()) {
      result.error = "the line ends too early: " + std::string(word) + " is missing";
      return result;
    }
    if (!match_word(model, word, tokens[result.tokens], &result)) return result;
    result.tokens++;
  }
  result.complete = true;
  return result;
}

static match match_pattern(const switch_model &model, std::string_view pattern,
                           std::span<const token> tokens) {
  match result = match_front(model, pattern, tokens);
  if (!result.complete || result.tokens == tokens.size()) return result;
  result.complete = false;
  result.error = unexpected(tokens[result.tokens]);
  return result;
}

size_t read_clause(const switch_model &model, std::string_view pattern, std::span<const token> words,
                   std::vector<argument> *arguments, std::string *error) {
  match found = match_front(model, pattern, words);
  *error = std::move(found.error);
  *arguments = std::move(found.arguments);
  return found.complete ? found.tokens : 0;
}

std::string_view first_word(std::string_view pattern) {
  return take_word(&pattern);
}

/* --- Applying ------------------------------------------------------------------------------------------- */

/* Whether a line has a pattern's number of words, and its keywords in their places. */
static bool has_shape(std::string_view pattern, const std::vector<token> &tokens) {
  for (const token &found : tokens) {
    std::string_view word = take_word(&pattern);
    if (word.empty()) return false;
    if (word == words_follow) return true;
    if (!is_placeholder(word) && (found.quoted || found.text != word)) return false;
  }
  return pattern.empty() || pattern == words_follow;
}

/* The row that the tokens fit, or nullptr with a reason: that of the row whose shape they have, else of the
 * row that they fit longest. */
static const command *find_command(const switch_model &model, const std::vector<token> &tokens, match *best) {
  for (const command &row : commands()) {
    if (!has_shape(row.pattern, tokens)) continue;
    *best = match_pattern(model, row.pattern, tokens);
    if (best->complete) return &row;
  }
  if (!best->error.empty()) return nullptr;
  best->error = "unknown command \"" + tokens[0].text + "\"";
  for (const command &row : commands()) {
    match found = match_pattern(model, row.pattern, tokens);
    if (found.tokens > best->tokens) *best = std::move(found);
  }
  return nullptr;
}

open_error_t apply_line(switch_model &model, std::string_view line, std::string *error) {
  std::vector<token> tokens;
  if (!split_line(line, &tokens, error)) return OPEN_E_PARAM;
  if (tokens.empty()) return OPEN_E_NONE;
  match found;
  const command *row = find_command(model, tokens, &found);
  if (!row) {
    *error = found.error;
    return OPEN_E_PARAM;
  }
  return row->apply(model, found.arguments, error);
}

/* --- Texts ---------------------------------------------------------------------------------------------- */

/* Takes the next line off the front of a text, without its line break. */
static std::string_view take_line(std::string_view *text) {
  size_t end = text->find('\n');
  std::string_view line = text->substr(0, end);
  text->remove_prefix(end == std::string_view::npos ? text->size() : end + 1);
  if (line.ends_with('\r')) line.remove_suffix(1);
  return line;
}

/* Calls `judge` with one line after the other until it has refused so many of them; what it said of those. */
template <typename Judge>
static std::vector<std::string> refused_lines(std::string_view text, size_t refused_max, Judge judge) {
  std::vector<std::string> refused;
  for (size_t number = 1; !text.empty() && refused.size() < refused_max; number++) {
    std::string reason;
    if (!judge(take_line(&text), &reason))
      refused.push_back("line " + std::to_string(number) + ": " + reason);
  }
  return refused;
}

/* How many lines are said to be wrong at most. */
static constexpr size_t faults_max = 10;

bool apply_text(switch_model &model, std::string_view text, std::string *error) {
  std::vector<std::string> refused = refused_lines(text, 1, [&](std::string_view line, std::string *reason) {
    return apply_line(model, line, reason) == OPEN_E_NONE;
  });
  if (!refused.empty()) *error = refused.front();
  return refused.empty();
}

std::vector<std::string> check_configuration(switch_model model, std::string_view text) {
  return refused_lines(text, faults_max, [&](std::string_view line, std::string *reason) {
    return apply_line(model, line, reason) == OPEN_E_NONE;
  });
}

/* Makes the VLAN routing interfaces that a line names ("vlan10", "fe80::1%vlan10"). */
static void make_named_interfaces(switch_model &model, std::string_view line) {
  static constexpr std::string_view name_begins = "vlan";
  std::vector<token> tokens;
  std::string ignored;
  if (!split_line(line, &tokens, &ignored)) return;
  for (const token &word : tokens) {
    std::string_view name = std::string_view(word.text).substr(word.text.find('%') + 1); /* npos + 1 is 0 */
    if (!name.starts_with(name_begins) || name.size() == name_begins.size()) continue;
    std::string vlan = "vlan " + quote_token(name.substr(name_begins.size()));
    apply_line(model, vlan, &ignored);
    apply_line(model, vlan + " routing", &ignored);
  }
}

std::vector<std::string> check_lines(const switch_model &factory, std::string_view text) {
  return refused_lines(text, faults_max, [&](std::string_view line, std::string *reason) {
    switch_model alone = factory;
    make_named_interfaces(alone, line);
    return apply_line(alone, line, reason) != OPEN_E_PARAM;
  });
}

/* --- Printing ------------------------------------------------------------------------------------------- */

std::string format_line(const switch_model &model, std::string_view pattern,
                        std::span<const argument> arguments) {
  std::string line;
  while (!pattern.empty()) {
    std::string_view word = take_word(&pattern);
    if (word == words_follow) return line + arguments.front().text;
    if (!line.empty()) line += ' ';
    if (!is_placeholder(word)) {
      line += word;
      continue;
    }
    line += print_placeholder(word, model, arguments.front());
    arguments = arguments.subspan(1);
  }
  return line;
}

void config_printer::line(const std::vector<argument> &arguments) const {
  *text += format_line(model, pattern, arguments) + '\n';
}

std::string print_configuration(const switch_model &model) {
  std::string text;
  for (const command &row : commands()) {
    if (row.print) row.print({model, row.pattern, &text});
  }
  return text;
}

} // namespace softswitch
