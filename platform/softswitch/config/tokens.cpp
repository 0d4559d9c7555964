/* Lines as tokens; see tokens.h. */
#include "platform/softswitch/config/tokens.h"

#include <algorithm>

namespace softswitch {

static bool is_blank(char byte) {
  return byte == ' ' || byte == '\t';
}

static bool is_control(char byte) {
  return (static_cast<unsigned char>(byte) < 0x20 && byte != '\t') || byte == 0x7f;
}

/* Takes a quoted token off the front of `rest`, which begins with the quote. */
static bool take_quoted(std::string_view *rest, token *taken, std::string *error) {
  taken->quoted = true;
  size_t at = 1;
  for (; at < rest->size() && (*rest)[at] != '"'; at++) {
    if ((*rest)[at] == '\\') {
      at++;
      if (at == rest->size()) break;
      if ((*rest)[at] != '"' && (*rest)[at] != '\\') {
        *error = "only \\\" and \\\\ are known after a backslash";
        return false;
      }
    }
    taken->text += (*rest)[at];
  }
  if (at >= rest->size()) {
    *error = "the closing quote is missing";
    return false;
  }
  rest->remove_prefix(at + 1);
  if (rest->empty() || is_blank(rest->front())) return true;
  *error = "a blank is missing after the closing quote";
  return false;
}

static bool take_plain(std::string_view *rest, token *taken, std::string *error) {
  auto end = std::find_if(rest->begin(), rest->end(), is_blank);
  taken->text.assign(rest->begin(), end);
  rest->remove_prefix(taken->text.size());
  if (taken->text.find_first_of("\"\\") == std::string::npos) return true;
  *error = "a text with quotes or backslashes stands in double quotes";
  return false;
}

static bool check_bytes(std::string_view line, std::string *error) {
  if (line.size() > config_line_max) {
    *error = "the line is longer than " + std::to_string(config_line_max) + " bytes";
    return false;
  }
  if (std::any_of(line.begin(), line.end(), is_control)) {
    *error = "the line holds a control character";
    return false;
  }
  return true;
}

static void skip_blanks(std::string_view *rest) {
  while (!rest->empty() && is_blank(rest->front())) rest->remove_prefix(1);
}

bool split_line(std::string_view line, std::vector<token> *tokens, std::string *error) {
  tokens->clear();
  if (!check_bytes(line, error)) return false;
  std::string_view rest = line;
  skip_blanks(&rest);
  if (!rest.empty() && rest.front() == '!') return true;
  while (!rest.empty()) {
    token taken;
    bool quoted = rest.front() == '"';
    if (!(quoted ? take_quoted(&rest, &taken, error) : take_plain(&rest, &taken, error))) return false;
    tokens->push_back(std::move(taken));
    skip_blanks(&rest);
  }
  return true;
}

static bool is_plain(char byte) {
  bool letter = (byte >= 'a' && byte <= 'z') || (byte >= 'A' && byte <= 'Z');
  return letter || (byte >= '0' && byte <= '9') ||
         std::string_view("._/:,+-%").find(byte) != std::string_view::npos;
}

std::string quote_token(std::string_view text) {
  if (!text.empty() && std::all_of(text.begin(), text.end(), is_plain)) return std::string(text);
  std::string quoted = "\"";
  for (char byte : text) {
    if (byte == '"' || byte == '\\') quoted += '\\';
    quoted += byte;
  }
  return quoted + '"';
}

} // namespace softswitch
