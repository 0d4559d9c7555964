/* MD5, SHA-1 and Base64, written after their standards. */
#include "server/mg_hash.h"

#include <bit>
#include <stdarg.h>
#include <string.h>

enum {
  BLOCK_SIZE = 64,    /* both digests work on blocks of this many bytes */
  LENGTH_OFFSET = 56, /* the last block ends with the message length */
};

/* Takes bytes off *data until the block, of which `filled` bytes are there, is whole or they run out. Returns
 * whether it is whole. */
static bool fill_block(unsigned char block[BLOCK_SIZE], size_t filled, const unsigned char **data,
                       size_t *len) {
  const size_t missing = BLOCK_SIZE - filled;
  const size_t n = *len < missing ? *len : missing;
  if (n > 0) memcpy(block + filled, *data, n); /* the data of an empty text may be null */
  *data += n;
  *len -= n;
  return n == missing;
}

/* Zeroes after a first 1 bit, so many that the length fits exactly behind them. */
static const unsigned char padding[BLOCK_SIZE] = {0x80};

static size_t padding_length(size_t filled) {
  return (filled < LENGTH_OFFSET ? 0 : BLOCK_SIZE) + LENGTH_OFFSET - filled;
}

/* --- MD5 ----------------------------------------------------------------------------------------------- */

/* 2^32 times the absolute sine of 1 to 64 (RFC 1321 section 3.4). */
static const uint32_t md5_sines[64] = {
    0xd76aa478, 0xe8c7b756, 0x242070db, 0xc1bdceee, 0xf57c0faf, 0x4787c62a, 0xa8304613, 0xfd469501,
    0x698098d8, 0x8b44f7af, 0xffff5bb1, 0x895cd7be, 0x6b901122, 0xfd987193, 0xa679438e, 0x49b40821,
    0xf61e2562, 0xc040b340, 0x265e5a51, 0xe9b6c7aa, 0xd62f105d, 0x02441453, 0xd8a1e681, 0xe7d3fbc8,
    0x21e1cde6, 0xc33707d6, 0xf4d50d87, 0x455a14ed, 0xa9e3e905, 0xfcefa3f8, 0x676f02d9, 0x8d2a4c8a,
    0xfffa3942, 0x8771f681, 0x6d9d6122, 0xfde5380c, 0xa4beea44, 0x4bdecfa9, 0xf6bb4b60, 0xbebfbc70,
    0x289b7ec6, 0xeaa127fa, 0xd4ef3085, 0x04881d05, 0xd9d4d039, 0xe6db99e5, 0x1fa27cf8, 0xc4ac5665,
    0xf4292244, 0x432aff97, 0xab9423a7, 0xfc93a039, 0x655b59c3, 0x8f0ccc92, 0xffeff47d, 0x85845dd1,
    0x6fa87e4f, 0xfe2ce6e0, 0xa3014314, 0x4e0811a1, 0xf7537e82, 0xbd3af235, 0x2ad7d2bb, 0xeb86d391,
};

static const int md5_shifts[4][4] = {{7, 12, 17, 22}, {5, 9, 14, 20}, {4, 11, 16, 23}, {6, 10, 15, 21}};

static uint32_t load_little_endian(const unsigned char *p) {
  return p[0] | static_cast<uint32_t>(p[1]) << 8 | static_cast<uint32_t>(p[2]) << 16 |
         static_cast<uint32_t>(p[3]) << 24;
}

static void store_little_endian(unsigned char *p, uint32_t value) {
  for (int i = 0; i < 4; i++) p[i] = static_cast<unsigned char>(value >> (8 * i));
}

/* What one of the 64 steps adds of the other state words, and which word of the block. */
static uint32_t md5_mix(int step, uint32_t b, uint32_t c, uint32_t d, int *word) {
  switch (step / 16) {
  case 0:
    *word = step;
    return (b & c) | (~b & d);
  case 1:
    *word = (5 * step + 1) % 16;
    return (b & d) | (c & ~d);
  case 2:
    *word = (3 * step + 5) % 16;
    return b ^ c ^ d;
  default:
    *word = 7 * step % 16;
    return c ^ (b | ~d);
  }
}

static void md5_block(uint32_t state[4], const unsigned char block[BLOCK_SIZE]) {
  uint32_t a = state[0], b = state[1], c = state[2], d = state[3];
  for (int step = 0; step < 64; step++) {
    int word;
    const uint32_t mixed = md5_mix(step, b, c, d, &word);
    const uint32_t sum = a + mixed + load_little_endian(block + 4 * word) + md5_sines[step];
    a = d;
    d = c;
    c = b;
    b += std::rotl(sum, md5_shifts[step / 16][step % 4]);
  }
  state[0] += a;
  state[1] += b;
  state[2] += c;
  state[3] += d;
}

void MD5Init(struct MD5Context *context) {
  *context = {{0x67452301, 0xefcdab89, 0x98badcfe, 0x10325476}, {}, {}};
}

void MD5Update(struct MD5Context *context, const void *data, size_t len) {
  size_t filled = context->bits[0] / 8 % BLOCK_SIZE;
  const uint64_t before = context->bits[0] | static_cast<uint64_t>(context->bits[1]) << 32;
  const uint64_t bits = before + static_cast<uint64_t>(len) * 8;
  context->bits[0] = static_cast<uint32_t>(bits);
  context->bits[1] = static_cast<uint32_t>(bits >> 32);

  const auto *bytes = static_cast<const unsigned char *>(data);
  while (fill_block(context->in, filled, &bytes, &len)) {
    md5_block(context->buf, context->in);
    filled = 0;
  }
}

void MD5Final(unsigned char digest[MD5_DIGEST_SIZE], struct MD5Context *context) {
  unsigned char length[8];
  store_little_endian(length, context->bits[0]);
  store_little_endian(length + 4, context->bits[1]);
  MD5Update(context, padding, padding_length(context->bits[0] / 8 % BLOCK_SIZE));
  MD5Update(context, length, sizeof(length));
  for (int i = 0; i < 4; i++) store_little_endian(digest + 4 * i, context->buf[i]);
}

char *mg_md5(char out[MD5_TEXT_SIZE], ...) {
  struct MD5Context context;
  MD5Init(&context);
  va_list ap;
  va_start(ap, out);
  for (const char *text; (text = va_arg(ap, const char *)) != nullptr;) {
    MD5Update(&context, text, strlen(text));
  }
  va_end(ap);

  unsigned char digest[MD5_DIGEST_SIZE];
  MD5Final(digest, &context);
  for (int i = 0; i < MD5_DIGEST_SIZE; i++) {
    out[2 * i] = "0123456789abcdef"[digest[i] >> 4];
    out[2 * i + 1] = "0123456789abcdef"[digest[i] & 15];
  }
  out[2 * MD5_DIGEST_SIZE] = '\0';
  return out;
}

/* --- SHA-1 --------------------------------------------------------------------------------------------- */

static uint32_t load_big_endian(const unsigned char *p) {
  return static_cast<uint32_t>(p[0]) << 24 | static_cast<uint32_t>(p[1]) << 16 |
         static_cast<uint32_t>(p[2]) << 8 | p[3];
}

/* What one of the 80 steps adds of the middle state words, with the constant of its round. */
static uint32_t sha1_mix(int step, uint32_t b, uint32_t c, uint32_t d) {
  switch (step / 20) {
  case 0:
    return ((b & c) | (~b & d)) + 0x5a827999;
  case 1:
    return (b ^ c ^ d) + 0x6ed9eba1;
  case 2:
    return ((b & c) | (b & d) | (c & d)) + 0x8f1bbcdc;
  default:
    return (b ^ c ^ d) + 0xca62c1d6;
  }
}

static void sha1_block(uint32_t state[5], const unsigned char block[BLOCK_SIZE]) {
  uint32_t words[80];
  for (int i = 0; i < 16; i++) words[i] = load_big_endian(block + 4 * i);
  for (int i = 16; i < 80; i++) {
    words[i] = std::rotl(words[i - 3] ^ words[i - 8] ^ words[i - 14] ^ words[i - 16], 1);
  }
  uint32_t a = state[0], b = state[1], c = state[2], d = state[3], e = state[4];
  for (int step = 0; step < 80; step++) {
    const uint32_t sum = std::rotl(a, 5) + sha1_mix(step, b, c, d) + e + words[step];
    e = d;
    d = c;
    c = std::rotl(b, 30);
    b = a;
    a = sum;
  }
  state[0] += a;
  state[1] += b;
  state[2] += c;
  state[3] += d;
  state[4] += e;
}

void SHA1Init(struct SHA1Context *context) {
  *context = {{0x67452301, 0xefcdab89, 0x98badcfe, 0x10325476, 0xc3d2e1f0}, 0, {}};
}

void SHA1Update(struct SHA1Context *context, const void *data, size_t len) {
  size_t filled = context->length % BLOCK_SIZE;
  context->length += len;
  const auto *bytes = static_cast<const unsigned char *>(data);
  while (fill_block(context->buffer, filled, &bytes, &len)) {
    sha1_block(context->state, context->buffer);
    filled = 0;
  }
}

void SHA1Final(unsigned char digest[SHA1_DIGEST_SIZE], struct SHA1Context *context) {
  unsigned char length[8];
  for (int i = 0; i < 8; i++) length[i] = static_cast<unsigned char>(context->length * 8 >> (56 - 8 * i));
  SHA1Update(context, padding, padding_length(context->length % BLOCK_SIZE));
  SHA1Update(context, length, sizeof(length));
  for (int i = 0; i < SHA1_DIGEST_SIZE; i++) {
    digest[i] = static_cast<unsigned char>(context->state[i / 4] >> (24 - 8 * (i % 4)));
  }
}

/* --- Base64 -------------------------------------------------------------------------------------------- */

void base64_encode(const unsigned char *src, size_t src_len, char *dst) {
  static const char alphabet[] = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
  for (size_t i = 0; i < src_len; i += 3) {
    const size_t left = src_len - i;
    const unsigned b0 = src[i], b1 = left > 1 ? src[i + 1] : 0u, b2 = left > 2 ? src[i + 2] : 0u;
    *dst++ = alphabet[b0 >> 2];
    *dst++ = alphabet[(b0 & 3) << 4 | b1 >> 4];
    *dst++ = left > 1 ? alphabet[(b1 & 15) << 2 | b2 >> 6] : '=';
    *dst++ = left > 2 ? alphabet[b2 & 63] : '=';
  }
  *dst = '\0';
}
