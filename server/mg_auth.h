/* The inside of digest authentication (mg_auth.cpp): its steps one by one, for that unit and its tests. */
#ifndef KESTREL_SERVER_MG_AUTH_H
#define KESTREL_SERVER_MG_AUTH_H

#include "server/http_conn.h"
#include "server/mg_hash.h"

#include <stdio.h>

enum { MG_DIGEST_FIELD_SIZE = 256 };

/* What an Authorization header of the scheme "Digest" says. */
struct digest {
  char username[MG_DIGEST_FIELD_SIZE];
  char nonce[MG_DIGEST_FIELD_SIZE];
  char cnonce[MG_DIGEST_FIELD_SIZE];
  char nc[16];
  char qop[16];
  char response[MD5_TEXT_SIZE];
  char uri[MG_MAX_REQUEST_HEAD]; /* as the client sent it, not decoded */
};
/* Reads a header's value (null: there was none). False when it is of another scheme, when a field is missing,
 * empty or does not fit, and when the quality of protection is not "auth". */
bool parse_digest(const char *authorization, struct digest *);
/* Whether the digest was made for the URI and query string of this request. */
bool is_for_this_uri(const struct digest *, const struct mg_connection *);
/* Whether the response is that of a user whose password file line ends with `ha1` (RFC 2617 section 3.2.2).
 */
bool is_right_response(const struct digest *, const char *method, const char *ha1);
/* Looks a user up in a password file: lines user:domain:HA1, where HA1 is the MD5 of user:domain:password in
 * lower-case hexadecimal. Lines that begin with "#", have another form or more than 1022 bytes are skipped.
 * The first line of the user in the domain counts. False when there is none; `ha1` is then undefined. */
bool find_ha1(FILE *, const char *user, const char *domain, char ha1[MD5_TEXT_SIZE]);

#endif
