/* Reading the run-time settings; see settings.h for what they mean. */
#include "platform/softswitch/services/settings.h"

#include <errno.h>
#include <stdlib.h>
#include <string.h>
#include <sys/stat.h>

namespace softswitch {

static std::string text_from_environment(const char *name, const char *otherwise) {
  const char *value = getenv(name);
  return value && *value ? value : otherwise;
}

settings read_settings() {
  settings read;
  read.state_dir = text_from_environment("KESTREL_STATE_DIR", "/var/lib/kestrel");
  read.profile = text_from_environment("KESTREL_PROFILE", "");
  read.admin_password = text_from_environment("KESTREL_ADMIN_PASSWORD", "");
  read.trace_platform = text_from_environment("KESTREL_TRACE", "") == "platform";
  return read;
}

bool make_state_dir(const std::string &state_dir, std::string *error) {
  if (mkdir(state_dir.c_str(), 0700) == 0) return true;
  int reason = errno;
  struct stat found;
  bool exists = reason == EEXIST && stat(state_dir.c_str(), &found) == 0;
  if (exists && S_ISDIR(found.st_mode)) return true;
  *error = state_dir + ": " + (exists ? "is not a directory" : strerror(reason));
  return false;
}

} // namespace softswitch
