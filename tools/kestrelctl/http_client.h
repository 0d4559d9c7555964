/* Sends a request to the switch and takes its reply, one connection for each. Certificates are always
 * checked, no redirect is followed, and nothing takes longer or is larger than bounded here. */
#ifndef KESTREL_TOOLS_KESTRELCTL_HTTP_CLIENT_H
#define KESTREL_TOOLS_KESTRELCTL_HTTP_CLIENT_H

#include <string>

enum {
  CONNECT_SECONDS = 10,              /* until a connection must stand */
  LARGEST_REPLY = 256 * 1024 * 1024, /* bytes of a body */
};

struct connection_settings {
  std::string server;      /* as read_server_address() makes it */
  std::string ca_file;     /* certificates of authorities, in PEM; empty: those of the system */
  std::string fingerprint; /* of the one certificate that is trusted; empty: the authorities decide */
  long seconds;            /* until the whole reply must be there */
};

struct http_message {
  std::string method; /* GET, POST, PUT or DELETE */
  std::string target; /* path and query, percent-encoded */
  std::string body;   /* form-encoded; empty for none */
};

enum class http_outcome {
  REPLIED,     /* with status 200 */
  NOT_REACHED, /* no connection, or no reply in time */
  NOT_TRUSTED, /* the certificate; nothing has been sent */
  BAD_REPLY,   /* another status, no HTTP, too much, or an end too early */
};

struct http_reply {
  http_outcome outcome;
  std::string body;        /* REPLIED only */
  std::string error;       /* a sentence without its final stop, unless REPLIED */
  std::string fingerprint; /* of the server's certificate; empty when none has been seen */
};

http_reply send_request(const connection_settings &settings, const http_message &request);

/* Connects to see the server's certificate, whichever it is, and sends nothing. REPLIED with the fingerprint.
 */
http_reply see_certificate(const connection_settings &settings);

#endif
