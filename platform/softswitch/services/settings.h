/* The software switch's run-time settings, read from the environment once, when the switch starts. */
#ifndef KESTREL_SOFTSWITCH_SETTINGS_H
#define KESTREL_SOFTSWITCH_SETTINGS_H

#include <string>

namespace softswitch {

struct settings {
  /* KESTREL_STATE_DIR: default /var/lib/kestrel; made (mode 700) when it is missing */
  std::string state_dir;
  /* KESTREL_PROFILE: chassis profile, a JSON file; empty = built in */
  std::string profile;
  /* KESTREL_ADMIN_PASSWORD: of the account "admin" when the accounts file is first made; empty = random */
  std::string admin_password;
  /* KESTREL_TRACE is "platform": one line per platform call on standard error */
  bool trace_platform;
};

/* Reads the environment; a variable that is set but empty counts as unset. */
settings read_settings();

/* Makes the state directory (mode 700) when it is missing; its parent must exist. False with the reason when
 * it cannot be made or is no directory. */
bool make_state_dir(const std::string &state_dir, std::string *error);

} // namespace softswitch

#endif
