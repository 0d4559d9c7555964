/* Password hashes by crypt(3). Used by accounts.cpp, which decides how often one may be made. */
#ifndef KESTREL_SOFTSWITCH_PASSWORD_HASH_H
#define KESTREL_SOFTSWITCH_PASSWORD_HASH_H

#include <string>
#include <string_view>

namespace softswitch {

/* A new yescrypt hash of a password with a random salt at the library's default cost; empty when none can be
 * made. */
std::string password_hash_new(std::string_view password);

/* Says whether `text` is a whole yescrypt hash: "$y$", cost, salt and 43 characters of digest. */
bool password_hash_is_whole(std::string_view text);

/* Hashes the password as `hash` was made and compares in constant time. A password with a zero byte in it
 * never matches. */
bool password_matches(std::string_view password, const std::string &hash);

/* How many times password_matches() has hashed in this process. Lets tests see what throttling saves. */
unsigned long password_hash_count();

/* `length` random characters out of A-Z a-z 0-9; empty when the system gives no randomness. */
std::string random_password(size_t length);

} // namespace softswitch

#endif
