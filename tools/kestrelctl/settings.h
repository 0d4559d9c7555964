/* What kestrelctl is told besides its command: by the configuration file, the environment and options, in
 * this order, the later winning. */
#ifndef KESTREL_TOOLS_KESTRELCTL_SETTINGS_H
#define KESTREL_TOOLS_KESTRELCTL_SETTINGS_H

#include <string>
#include <vector>

enum class output_form { TEXT, JSON, XML };

struct settings {
  std::string server; /* as read_server_address() makes it */
  std::string user = "admin";
  std::string ca_file;
  std::string fingerprint; /* as read_fingerprint() makes it */
  long seconds = 60;
  output_form form = output_form::TEXT;
  bool quiet = false;
  bool yes = false;
  bool help = false;
  bool version = false;
  std::vector<std::string> words; /* the command */
};

/* An option as it is described. */
struct option_description {
  const char *name;  /* without its dashes */
  const char *value; /* what it takes, "URL"; null for nothing */
  const char *meaning;
};
extern const std::vector<option_description> option_descriptions;

/* Reads all of them. An option may stand anywhere; behind a word "--" nothing is one. Returns false with a
 * sentence in *error. */
bool read_settings(const std::vector<std::string> &arguments, settings *out, std::string *error);

/* The configuration file: $XDG_CONFIG_HOME/kestrelctl/config or ~/.config/kestrelctl/config. */
std::string configuration_file();

#endif
