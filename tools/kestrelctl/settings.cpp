#include "tools/kestrelctl/settings.h"

#include "tools/kestrelctl/certificate.h"
#include "tools/kestrelctl/server_address.h"
#include "tools/kestrelctl/text.h"

#include <charconv>
#include <errno.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>

const std::vector<option_description> option_descriptions = {
    {"server", "URL", "the switch; https://localhost:8446 unless given"},
    {"user", "NAME", "the account to log in with; admin unless given"},
    {"json", nullptr, "print the switch's answer as it is, in JSON"},
    {"xml", nullptr, "print the switch's answer as it is, in XML"},
    {"quiet", nullptr, "print data and errors only"},
    {"timeout", "SECONDS", "how long to wait for an answer; 60 unless given"},
    {"ca-file", "FILE", "trust the authorities whose certificates are in the file"},
    {"fingerprint", "SHA256", "trust the one certificate with this fingerprint"},
    {"yes", nullptr, "trust: do not ask"},
    {"help", nullptr, "describe a command"},
    {"version", nullptr, "print the version"},
};

static bool read_seconds(const std::string &text, settings *out, std::string *error) {
  const auto [end, wrong] = std::from_chars(text.data(), text.data() + text.size(), out->seconds);
  const bool right = wrong == std::errc() && end == text.data() + text.size() && out->seconds > 0;
  if (right && out->seconds <= 86400) return true;
  *error = "\"" + printable(text) + "\" is no time-out: seconds from 1 to 86400";
  return false;
}

/* Takes over a setting that has a value. */
static bool set_value(const std::string &name, const std::string &value, settings *out, std::string *error) {
  if (name == "server") return read_server_address(value, &out->server, error);
  if (name == "timeout") return read_seconds(value, out, error);
  if (name == "user") return out->user = value, true;
  if (name == "ca-file") return out->ca_file = value, true;
  if (read_fingerprint(value, &out->fingerprint)) return true;
  *error = "\"" + printable(value) + "\" is no fingerprint: \"sha256:\" and 64 hexadecimal digits";
  return false;
}

static void set_flag(const std::string &name, settings *out) {
  if (name == "json") out->form = output_form::JSON;
  if (name == "xml") out->form = output_form::XML;
  if (name == "quiet") out->quiet = true;
  if (name == "yes") out->yes = true;
  if (name == "help") out->help = true;
  if (name == "version") out->version = true;
}

static const option_description *find_option(const std::string &name) {
  for (const option_description &option : option_descriptions)
    if (option.name == name) return &option;
  return nullptr;
}

/* --- The configuration file ---------------------------------------------------------------------------- */

std::string configuration_file() {
  const char *folder = getenv("XDG_CONFIG_HOME"), *home = getenv("HOME");
  if (folder != nullptr && folder[0] == '/') return std::string(folder) + "/kestrelctl/config";
  return home != nullptr && home[0] == '/' ? std::string(home) + "/.config/kestrelctl/config" : "";
}

static bool read_text(const std::string &path, std::string *text) {
  FILE *file = fopen(path.c_str(), "re");
  if (file == nullptr) return errno == ENOENT || errno == ENOTDIR;
  char block[4096];
  for (size_t size; (size = fread(block, 1, sizeof block, file)) > 0;) text->append(block, size);
  const bool whole = ferror(file) == 0;
  fclose(file);
  return whole;
}

/* A line "name = value". */
static bool read_configuration_line(std::string_view line, settings *out, std::string *error) {
  line = trimmed(line);
  if (line.empty() || line.starts_with('#')) return true;
  const size_t equals = line.find('=');
  const std::string name(trimmed(line.substr(0, equals)));
  const option_description *option = find_option(name);
  if (equals == line.npos || option == nullptr || option->value == nullptr) {
    *error =
        "\"" + printable(line) + "\" is no setting: server, user, timeout, ca-file or fingerprint = VALUE";
    return false;
  }
  return set_value(name, std::string(trimmed(line.substr(equals + 1))), out, error);
}

static bool read_configuration(const std::string &path, settings *out, std::string *error) {
  std::string text;
  if (path.empty()) return true;
  if (!read_text(path, &text)) return *error = path + ": " + strerror(errno), false;
  size_t number = 0;
  for (const std::string &line : split(text, '\n')) {
    number++;
    if (read_configuration_line(line, out, error)) continue;
    *error = path + ", line " + std::to_string(number) + ": " + *error;
    return false;
  }
  return true;
}

/* --- Options ------------------------------------------------------------------------------------------- */

/* Takes the option at *at, and its value if that is a word of its own. */
static bool read_option(const std::vector<std::string> &arguments, size_t *at, settings *out,
                        std::string *error) {
  const std::string &word = arguments[*at];
  const size_t equals = word.find('=');
  const std::string name = word == "-h" ? "help" : word.substr(2, equals == word.npos ? equals : equals - 2);
  const option_description *option = find_option(name);
  if (option == nullptr) {
    *error = "unknown option \"" + printable(word) +
             "\"; a word that begins with \"--\" stands behind a word \"--\"";
    return false;
  }
  if (option->value == nullptr) {
    if (equals != word.npos) return *error = "--" + name + " takes no value", false;
    return set_flag(name, out), true;
  }
  if (equals != word.npos) return set_value(name, word.substr(equals + 1), out, error);
  if (*at + 1 == arguments.size()) return *error = "--" + name + " needs a value: " + option->value, false;
  return set_value(name, arguments[++*at], out, error);
}

static bool read_arguments(const std::vector<std::string> &arguments, settings *out, std::string *error) {
  bool options_end = false;
  for (size_t i = 0; i < arguments.size(); i++) {
    const std::string &word = arguments[i];
    if (!options_end && word == "--")
      options_end = true;
    else if (options_end || !(word.starts_with("--") || word == "-h"))
      out->words.push_back(word);
    else if (!read_option(arguments, &i, out, error))
      return false;
  }
  return true;
}

bool read_settings(const std::vector<std::string> &arguments, settings *out, std::string *error) {
  out->server = DEFAULT_SERVER;
  if (!read_configuration(configuration_file(), out, error)) return false;
  const char *server = getenv("KESTRELCTL_SERVER");
  if (server != nullptr && *server != '\0' && !set_value("server", server, out, error)) {
    *error = "KESTRELCTL_SERVER: " + *error;
    return false;
  }
  return read_arguments(arguments, out, error);
}
