/* Password hashes; see password_hash.h. */
#include "platform/softswitch/services/password_hash.h"

#include <atomic>
#include <crypt.h>
#include <memory>
#include <stdlib.h>
#include <string.h>
#include <sys/random.h>

namespace softswitch {

static std::atomic<unsigned long> hashes_made;

/* crypt(3) itself: hashes by the method, cost and salt of `setting`. Empty when the setting is no good. */
static std::string hash_with_setting(std::string_view password, const std::string &setting) {
  auto data = std::make_unique<crypt_data>();
  std::string terminated(password);
  const char *hash = crypt_r(terminated.c_str(), setting.c_str(), data.get());
  std::string made = hash && hash[0] != '*' ? hash : "";
  explicit_bzero(terminated.data(), terminated.size());
  explicit_bzero(data.get(), sizeof *data);
  return made;
}

std::string password_hash_new(std::string_view password) {
  char *setting = crypt_gensalt_ra("$y$", 0, nullptr, 0);
  if (!setting) return "";
  std::string hash = hash_with_setting(password, setting);
  free(setting);
  return hash;
}

bool password_hash_is_whole(std::string_view text) {
  static const char alphabet[] = "./0123456789ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz";
  if (!text.starts_with("$y$")) return false;
  size_t cost_end = text.find('$', 3);
  if (cost_end == 3 || cost_end == text.npos) return false;
  size_t salt_end = text.find('$', cost_end + 1);
  if (salt_end == text.npos || text.size() - salt_end - 1 != 43) return false;
  std::string_view salt = text.substr(cost_end + 1, salt_end - cost_end - 1);
  std::string_view digest = text.substr(salt_end + 1);
  return salt.find_first_not_of(alphabet) == salt.npos && digest.find_first_not_of(alphabet) == digest.npos &&
         crypt_checksalt(std::string(text).c_str()) == CRYPT_SALT_OK;
}

/* Takes the same time wherever two texts of one length differ. */
static bool same_text(std::string_view a, std::string_view b) {
  if (a.size() != b.size()) return false;
  volatile unsigned char difference = 0;
  for (size_t i = 0; i < a.size(); i++) difference = difference | static_cast<unsigned char>(a[i] ^ b[i]);
  return difference == 0;
}

bool password_matches(std::string_view password, const std::string &hash) {
  std::string made = hash_with_setting(password, hash);
  /* Only work that was really done is counted. */
  if (!made.empty()) hashes_made.fetch_add(1, std::memory_order_relaxed);
  bool whole = password.find('\0') == password.npos;
  return same_text(made, hash) && whole && !hash.empty();
}

unsigned long password_hash_count() {
  return hashes_made.load(std::memory_order_relaxed);
}

std::string random_password(size_t length) {
  static const char alphabet[] = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789";
  constexpr unsigned char alphabet_size = sizeof alphabet - 1;
  /* Bytes past the last whole multiple of the alphabet would make its first characters likelier. */
  constexpr unsigned char fair_below = 256 / alphabet_size * alphabet_size;
  std::string made;
  while (made.size() < length) {
    unsigned char byte;
    if (getrandom(&byte, 1, 0) != 1) return "";
    if (byte < fair_below) made.push_back(alphabet[byte % alphabet_size]);
  }
  return made;
}

} // namespace softswitch
