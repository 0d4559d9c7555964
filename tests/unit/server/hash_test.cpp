/* Digests and Base64: the examples of their standards, and OpenSSL's results for every length around the
 * edges of their blocks. */
#include "server/mg_hash.h"

#include <gtest/gtest.h>
#include <openssl/evp.h>
#include <string>

static std::string hex(const unsigned char *bytes, size_t len) {
  std::string text;
  for (size_t i = 0; i < len; i++) {
    char digits[3];
    snprintf(digits, sizeof(digits), "%02x", bytes[i]);
    text += digits;
  }
  return text;
}

/* Bytes that differ from their neighbours. */
static std::string some_bytes(size_t len) {
  std::string bytes;
  for (size_t i = 0; i < len; i++) bytes += static_cast<char>(i * 7 + i / 256);
  return bytes;
}

/* The digest of a text given in pieces of `piece` bytes. */
template <typename Context, size_t digest_size, auto init, auto update, auto final>
static std::string digest_of(const std::string &text, size_t piece) {
  Context context;
  unsigned char digest[digest_size];
  init(&context);
  for (size_t at = 0; at < text.size(); at += std::min(piece, text.size())) {
    update(&context, text.data() + at, std::min(piece, text.size() - at));
  }
  final(digest, &context);
  return hex(digest, sizeof(digest));
}

static std::string md5(const std::string &text, size_t piece = SIZE_MAX) {
  return digest_of<MD5Context, MD5_DIGEST_SIZE, MD5Init, MD5Update, MD5Final>(text, piece);
}

static std::string sha1(const std::string &text, size_t piece = SIZE_MAX) {
  return digest_of<SHA1Context, SHA1_DIGEST_SIZE, SHA1Init, SHA1Update, SHA1Final>(text, piece);
}

static std::string openssl_digest(const char *name, const std::string &text) {
  unsigned char digest[EVP_MAX_MD_SIZE];
  unsigned len = 0;
  EVP_Digest(text.data(), text.size(), digest, &len, EVP_get_digestbyname(name), nullptr);
  return hex(digest, len);
}

/* RFC 1321, appendix A.5. */
TEST(Md5, ExamplesOfTheStandard) {
  EXPECT_EQ(md5(""), "d41d8cd98f00b204e9800998ecf8427e");
  EXPECT_EQ(md5("a"), "0cc175b9c0f1b6a831c399e269772661");
  EXPECT_EQ(md5("abc"), "900150983cd24fb0d6963f7d28e17f72");
  EXPECT_EQ(md5("message digest"), "f96b697d7cb7938d525a2f31aaf161d0");
  EXPECT_EQ(md5("abcdefghijklmnopqrstuvwxyz"), "c3fcd3d76192e4007dfb496cca67e13b");
  EXPECT_EQ(md5("ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789"),
            "d174ab98d277d9f5a5611c2c9f419d9f");
  EXPECT_EQ(md5("12345678901234567890123456789012345678901234567890123456789012345678901234567890"),
            "57edf4a22be3c955ac49da2e2107b67a");
}

/* RFC 3174, section 7.3, which holds those of FIPS 180-1. */
TEST(Sha1, ExamplesOfTheStandard) {
  EXPECT_EQ(sha1("abc"), "a9993e364706816aba3e25717850c26c9cd0d89d");
  EXPECT_EQ(sha1("abcdbcdecdefdefgefghfghighijhijkijkljklmklmnlmnomnopnopq"),
            "84983e441c3bd26ebaae4aa1f95129e5e54670f1");
  EXPECT_EQ(sha1(std::string(1000000, 'a')), "34aa973cd4c4daa4f61eeb2bdbad27316534016f");
  std::string digits;
  for (int i = 0; i < 80; i++) digits += "01234567";
  EXPECT_EQ(sha1(digits), "dea356a2cddd90c7a7ecedc5ebb563934f460452");
  EXPECT_EQ(sha1(""), "da39a3ee5e6b4b0d3255bfef95601890afd80709");
}

TEST(Digests, AgreeWithOpensslForEveryLengthAroundTheBlocksEdges) {
  for (size_t len = 0; len <= 200; len++) {
    const std::string text = some_bytes(len);
    EXPECT_EQ(md5(text), openssl_digest("MD5", text)) << len;
    EXPECT_EQ(sha1(text), openssl_digest("SHA1", text)) << len;
  }
}

TEST(Digests, AreTheSameHoweverTheTextIsSplit) {
  const std::string text = some_bytes(1000);
  for (const size_t piece : {1u, 3u, 55u, 56u, 63u, 64u, 65u, 128u, 999u}) {
    EXPECT_EQ(md5(text, piece), openssl_digest("MD5", text)) << piece;
    EXPECT_EQ(sha1(text, piece), openssl_digest("SHA1", text)) << piece;
  }
}

TEST(Md5, CountsBitsBeyond32) {
  struct MD5Context context;
  MD5Init(&context);
  context.bits[0] = 0xfffffe00; /* as after 2^29 - 64 bytes */
  MD5Update(&context, some_bytes(65).data(), 65);
  EXPECT_EQ(context.bits[0], 8u);
  EXPECT_EQ(context.bits[1], 1u);
}

TEST(Digests, EmptyUpdatesChangeNothing) {
  struct MD5Context context;
  MD5Init(&context);
  MD5Update(&context, nullptr, 0);
  unsigned char digest[MD5_DIGEST_SIZE];
  MD5Final(digest, &context);
  EXPECT_EQ(hex(digest, sizeof(digest)), md5(""));
}

TEST(Md5, OfSeveralTextsIsThatOfTheirSequence) {
  char text[MD5_TEXT_SIZE];
  EXPECT_STREQ(mg_md5(text, "user", ":", "domain", ":", "", "pass", nullptr),
               md5("user:domain:pass").c_str());
  EXPECT_STREQ(mg_md5(text, nullptr), "d41d8cd98f00b204e9800998ecf8427e");
}

static std::string base64(const std::string &text) {
  std::string out(4 * ((text.size() + 2) / 3) + 1, '?');
  base64_encode(reinterpret_cast<const unsigned char *>(text.data()), text.size(), out.data());
  EXPECT_EQ(out.back(), '\0');
  out.pop_back();
  return out;
}

/* RFC 4648, section 10. */
TEST(Base64, ExamplesOfTheStandard) {
  EXPECT_EQ(base64(""), "");
  EXPECT_EQ(base64("f"), "Zg==");
  EXPECT_EQ(base64("fo"), "Zm8=");
  EXPECT_EQ(base64("foo"), "Zm9v");
  EXPECT_EQ(base64("foob"), "Zm9vYg==");
  EXPECT_EQ(base64("fooba"), "Zm9vYmE=");
  EXPECT_EQ(base64("foobar"), "Zm9vYmFy");
}

TEST(Base64, AgreesWithOpensslForEveryByteAndLength) {
  for (size_t len = 1; len <= 300; len++) {
    const std::string text = some_bytes(len);
    std::string expected(4 * ((len + 2) / 3) + 1, '\0');
    EVP_EncodeBlock(reinterpret_cast<unsigned char *>(expected.data()),
                    reinterpret_cast<const unsigned char *>(text.data()), static_cast<int>(len));
    expected.pop_back();
    EXPECT_EQ(base64(text), expected);
  }
}
