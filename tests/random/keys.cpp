// RFC 3414, A.2: from passwords to localized keys.
#include <openssl/evp.h>

#include <array>
#include <map>
#include <stdexcept>
#include <tuple>

#include "users.h"

namespace random_operations {
namespace {

std::string digest_of(const std::string& octets, const std::string& digest) {
  std::array<unsigned char, EVP_MAX_MD_SIZE> out{};
  unsigned n = 0;
  const EVP_MD* const algorithm = digest == "md5" ? EVP_md5() : EVP_sha1();
  if (EVP_Digest(octets.data(), octets.size(), out.data(), &n, algorithm, nullptr) != 1) {
    throw std::runtime_error("digest");
  }
  return {reinterpret_cast<const char*>(out.data()), n};
}

std::string user_key(const std::string& password, const std::string& digest) {
  constexpr std::size_t kOctets = 1048576;
  std::string all;
  all.reserve(kOctets + password.size());
  while (all.size() < kOctets) all += password;
  all.resize(kOctets);
  return digest_of(all, digest);
}

}  // namespace

std::string localized_key(const std::string& password, const std::string& engine_id,
                          const std::string& digest, std::size_t length) {
  if (digest.empty()) return hex(std::string(length, '\0'));
  static std::map<std::tuple<std::string, std::string>, std::string> made;
  std::string& ku = made[{password, digest}];
  if (ku.empty()) ku = user_key(password, digest);
  return hex(digest_of(ku + octets(engine_id) + ku, digest).substr(0, length));
}

}  // namespace random_operations
