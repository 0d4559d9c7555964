/* The engine's run-time settings, read from the environment once, at the first use. With no variable set they
 * are what the product is shipped with. */
#ifndef KESTREL_ENGINE_REST_SETTINGS_H
#define KESTREL_ENGINE_REST_SETTINGS_H

#include <string>

struct rest_settings_t {
  /* KESTREL_ROOT: stands for "/mnt/kestrel" everywhere: certificate, document root, user-apps/ */
  std::string root;
  /* KESTREL_LISTENING_PORT: the server option, "8080,ssl://8446:<root>/ssl.pem" */
  std::string listening_port;
  /* KESTREL_SESSION_FILE: the session status file, "/tmp/restsessionstatus" */
  std::string session_file;
};

const rest_settings_t &rest_settings(void);
/* Reads the environment again, for tests. */
void reload_rest_settings(void);

#endif
