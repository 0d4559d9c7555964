/* Digests and encodings that digest authentication and the WebSocket handshake are made of. Not for secrets
 * of any other kind: MD5 and SHA-1 are what these protocols ask for. */
#ifndef KESTREL_SERVER_MG_HASH_H
#define KESTREL_SERVER_MG_HASH_H

#include <stddef.h>
#include <stdint.h>

/* MD5 (RFC 1321). */
struct MD5Context {
  uint32_t buf[4];      /* the state */
  uint32_t bits[2];     /* message length in bits, low word first */
  unsigned char in[64]; /* the block being filled */
};
enum { MD5_DIGEST_SIZE = 16, MD5_TEXT_SIZE = 33 };
void MD5Init(struct MD5Context *);
void MD5Update(struct MD5Context *, const void *data, size_t len);
void MD5Final(unsigned char digest[MD5_DIGEST_SIZE], struct MD5Context *);
/* MD5 of the texts, which end with a null pointer, one behind the other: 32 lower-case hexadecimal digits and
 * the terminator. Returns `out`. */
char *mg_md5(char out[MD5_TEXT_SIZE], ...) __attribute__((sentinel));

/* SHA-1 (FIPS 180-1, RFC 3174). */
struct SHA1Context {
  uint32_t state[5];
  uint64_t length;          /* message length in bytes */
  unsigned char buffer[64]; /* the block being filled */
};
enum { SHA1_DIGEST_SIZE = 20 };
void SHA1Init(struct SHA1Context *);
void SHA1Update(struct SHA1Context *, const void *data, size_t len);
void SHA1Final(unsigned char digest[SHA1_DIGEST_SIZE], struct SHA1Context *);

/* Base64 with the standard alphabet and padding (RFC 4648 section 4). `dst` takes 4 * ((src_len + 2) / 3) + 1
 * bytes and is terminated. */
void base64_encode(const unsigned char *src, size_t src_len, char *dst);

#endif
