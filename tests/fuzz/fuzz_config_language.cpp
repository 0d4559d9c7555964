/* Fuzz target of the configuration language: any bytes as a configuration. Besides not crashing, four things
 * must hold: a text is accepted as a whole exactly when each of its lines is; a line that is refused changes
 * nothing that shows; what is printed gives the same when it is applied to a switch in factory state; and
 * what is accepted passes the check of lines by which scripts are judged before. */
#include "platform/softswitch/config/language.h"

#include <stdint.h>
#include <stdio.h>
#include <stdlib.h>
#include <string>
#include <string_view>

using namespace softswitch;

/* The built-in switch, its first two ports of copper, so that every line applies somewhere. */
static switch_model make_factory() {
  chassis_profile profile = built_in_profile();
  profile.ports[0].copper = true;
  profile.ports[1].copper = true;
  profile.ports[1].speed_mbps = 1000;
  return make_switch(profile);
}

static const switch_model &factory() {
  static const switch_model model = make_factory();
  return model;
}

static void check(bool holds, const char *rule, const std::string &shown) {
  if (holds) return;
  fprintf(stderr, "broken: %s\n%s\n", rule, shown.c_str());
  abort();
}

/* Applies line by line, going on after refused ones. Says whether all were accepted. */
static bool apply_lines(switch_model &model, std::string_view text) {
  bool all = true;
  while (!text.empty()) {
    size_t end = text.find('\n');
    std::string_view line = text.substr(0, end);
    text.remove_prefix(end == std::string_view::npos ? text.size() : end + 1);
    if (line.ends_with('\r')) line.remove_suffix(1);
    switch_model changed = model;
    std::string error;
    if (apply_line(changed, line, &error) == OPEN_E_NONE) {
      model = changed;
    } else {
      check(!error.empty(), "a refusal has a reason", std::string(line));
      all = false;
    }
  }
  return all;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
  std::string_view text(reinterpret_cast<const char *>(data), size);
  std::string error;

  switch_model model = factory();
  bool accepted = apply_text(model, text, &error);
  if (!accepted) {
    model = factory();
    check(!apply_lines(model, text), "a text is refused only when one of its lines is", error);
  } else {
    check(check_lines(factory(), text).empty(), "lines that apply pass the check of lines",
          std::string(text));
  }
  std::string printed = print_configuration(model);

  switch_model again = factory();
  check(apply_text(again, printed, &error), "what is printed can be applied", error + "\n" + printed);
  check(print_configuration(again) == printed, "what is printed gives the same", printed);
  check(print_configuration(factory()).empty(), "nobody's changes reach another copy", printed);
  return 0;
}
