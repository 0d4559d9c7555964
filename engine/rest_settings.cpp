#include "engine/rest_settings.h"

#include <stdlib.h>

static std::string variable_or(const char *name, const std::string &fallback) {
  const char *value = getenv(name);
  return value == nullptr || value[0] == '\0' ? fallback : value;
}

static rest_settings_t read_environment(void) {
  rest_settings_t settings;
  settings.root = variable_or("KESTREL_ROOT", "/mnt/kestrel");
  settings.listening_port =
      variable_or("KESTREL_LISTENING_PORT", "8080,ssl://8446:" + settings.root + "/ssl.pem");
  settings.session_file = variable_or("KESTREL_SESSION_FILE", "/tmp/restsessionstatus");
  return settings;
}

static rest_settings_t &stored_settings(void) {
  static rest_settings_t settings = read_environment();
  return settings;
}

const rest_settings_t &rest_settings(void) {
  return stored_settings();
}

void reload_rest_settings(void) {
  stored_settings() = read_environment();
}
