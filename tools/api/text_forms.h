/* The forms that a text parameter may have besides a length, by the bracket that names them in the help
 * document. */
#ifndef KESTREL_TOOLS_TEXT_FORMS_H
#define KESTREL_TOOLS_TEXT_FORMS_H

#include <string_view>

/* A form as JSON Schema describes it; null where it has no word or pattern for it. */
struct text_form {
  const char *range;   /* "[MAC address]" */
  const char *format;  /* a name that JSON Schema gives such texts: "ipv4" */
  const char *pattern; /* what the whole text matches, a regular expression of ECMA-262 */
};

/* Null when there is no such form. */
const text_form *find_text_form(std::string_view range);

#endif
