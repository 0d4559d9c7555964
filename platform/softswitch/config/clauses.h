/* Lines that hold several settings of one thing, in any order and each at most once:
 *
 *   acl ip web rule 10 permit protocol 6 destination-port equal 80
 *
 * The pattern of such a line ends with "..."; what stands there is clauses. A clause is a pattern like that
 * of a line; it begins with a keyword that no other clause of its table begins with. */
#ifndef KESTREL_SOFTSWITCH_CONFIG_CLAUSES_H
#define KESTREL_SOFTSWITCH_CONFIG_CLAUSES_H

#include "platform/softswitch/config/language.h"

#include <algorithm>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace softswitch {

/* A clause of lines about a T. */
template <typename T> struct clause {
  std::string_view pattern;
  /* Puts what the clause says into a T. Ranges are checked where the T is used, as a whole. */
  void (*set)(T *, std::span<const argument>);
  /* Gives the arguments to print the clause with; false when the T does not have it. */
  bool (*get)(const T &, std::vector<argument> *);
  /* The first word of a clause that says the same in another way: only one of them can be there. */
  std::string_view instead_of = {};
};

/* The first word of a pattern. */
std::string_view first_word(std::string_view pattern);
/* Fits the first words to a pattern. The number of words that it took; 0 with the reason when they do not
 * fit. */
size_t read_clause(const switch_model &model, std::string_view pattern, std::span<const token> words,
                   std::vector<argument> *arguments, std::string *error);

/* The clause that begins with a word; the table's end when none does. */
template <typename T> auto find_clause(std::span<const clause<T>> table, std::string_view word) {
  return std::find_if(table.begin(), table.end(),
                      [&](const clause<T> &candidate) { return first_word(candidate.pattern) == word; });
}

/* Reads clauses into a T. False with the reason when something is no clause, or there twice. */
template <typename T>
bool read_clauses(const switch_model &model, std::span<const clause<T>> table, std::span<const token> words,
                  T *into, std::string *error) {
  std::vector<bool> seen(table.size());
  while (!words.empty()) {
    auto row = find_clause(table, words[0].text);
    if (row == table.end() || words[0].quoted) {
      *error = "\"" + words[0].text + "\" is not expected here";
      return false;
    }
    size_t index = static_cast<size_t>(row - table.begin());
    if (seen[index]) {
      *error = words[0].text + " is there twice";
      return false;
    }
    auto other = find_clause(table, row->instead_of);
    if (other != table.end() && seen[static_cast<size_t>(other - table.begin())]) {
      *error = words[0].text + " does not go with " + std::string(row->instead_of);
      return false;
    }
    seen[index] = true;
    std::vector<argument> arguments;
    size_t taken = read_clause(model, row->pattern, words, &arguments, error);
    if (taken == 0) return false;
    row->set(into, arguments);
    words = words.subspan(taken);
  }
  return true;
}

/* What a T has as clauses, in the order of the table; each begins with a blank. */
template <typename T>
std::string print_clauses(const switch_model &model, std::span<const clause<T>> table, const T &from) {
  std::string text;
  for (const clause<T> &row : table) {
    std::vector<argument> arguments;
    if (row.get(from, &arguments)) text += ' ' + format_line(model, row.pattern, arguments);
  }
  return text;
}

} // namespace softswitch

#endif
