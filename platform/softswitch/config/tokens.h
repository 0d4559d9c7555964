/* The lowest layer of the configuration language: a line as tokens. Tokens are separated by blanks and tabs;
 * a token in double quotes may hold blanks, and \" and \\ in it stand for the quote and the backslash. A line
 * whose first character other than a blank is ! is a comment and has no tokens. */
#ifndef KESTREL_SOFTSWITCH_CONFIG_TOKENS_H
#define KESTREL_SOFTSWITCH_CONFIG_TOKENS_H

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace softswitch {

/* The longest line in bytes, without its line break. */
inline constexpr size_t config_line_max = 16384;

struct token {
  std::string text;
  bool quoted = false; /* a quoted token is never a keyword */
};

/* Splits a line. False with the reason for a line too long, a control character or a wrong quote. */
bool split_line(std::string_view line, std::vector<token> *tokens, std::string *error);

/* A text as a token: in quotes when it holds anything but letters, digits and . _ / : , + - % */
std::string quote_token(std::string_view text);

} // namespace softswitch

#endif
