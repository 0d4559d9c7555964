/* Asks for a password. */
#ifndef KESTREL_TOOLS_KESTRELCTL_PASSWORD_H
#define KESTREL_TOOLS_KESTRELCTL_PASSWORD_H

#include <string>

/* Takes the password from KESTRELCTL_PASSWORD; else from the terminal, without echo; else, when standard
 * input is none, from its first line. Whatever ends the prompt, a signal too, the terminal is as it was
 * before. Returns false with a sentence in *error when there is none. */
bool read_password(const std::string &prompt, std::string *password, std::string *error);

/* Asks a question at the terminal; true when the answer begins with "y". */
bool confirm(const std::string &question);

#endif
