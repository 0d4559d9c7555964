/* What kestrelctl does: log in and out, trust, and carry out commands. Each takes the settings and returns
 * the exit status, having said what there is to say. */
#ifndef KESTREL_TOOLS_KESTRELCTL_ACTIONS_H
#define KESTREL_TOOLS_KESTRELCTL_ACTIONS_H

#include "tools/kestrelctl/commands.h"
#include "tools/kestrelctl/settings.h"

#include <string>

enum exit_status {
  DONE = 0,
  REFUSED = 1,        /* the switch has, and said why */
  WRONG_USAGE = 2,    /* of kestrelctl: options, configuration, commands */
  NOT_LOGGED_IN = 3,  /* there is no session, or it has ended */
  NOT_REACHED = 4,    /* no connection, no reply in time, or a certificate that is not trusted */
  NOT_UNDERSTOOD = 5, /* the answer is none of the switch's, or could not be written */
};

/* Says "kestrelctl: " and the complaint on standard error. */
int complain(exit_status status, const std::string &complaint);

int log_in(const settings &given);
int log_out(const settings &given);
int trust_server(const settings &given);
int untrust_server(const settings &given);
int carry_out(const settings &given, const understood_command &command);

#endif
