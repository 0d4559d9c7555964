/* The address of a switch: "https://switch1:8446". */
#ifndef KESTREL_TOOLS_KESTRELCTL_SERVER_ADDRESS_H
#define KESTREL_TOOLS_KESTRELCTL_SERVER_ADDRESS_H

#include <string>

inline constexpr const char *DEFAULT_SERVER = "https://localhost:8446";

/* Brings an address into its one form, scheme, host and port, so that it can name a session: "switch1" and
 * "HTTPS://switch1:8446/" become "https://switch1:8446". The scheme is https unless given, the port the
 * switch's own, 8446 or with http 8080. Anything else in it (a path, a user, a query) is refused: false with
 * a sentence in *error. */
bool read_server_address(const std::string &text, std::string *address, std::string *error);

#endif
