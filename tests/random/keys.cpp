// RFC 3414, A.2: from passwords to localized keys.
#include <openssl/evp.h>

#include <array>
#include <map>
#include <memory>
#include <stdexcept>
#include <tuple>

#include "users.h"

namespace random_operations {
namespace {

class Digest {
 public:
  explicit Digest(const std::string& name) : context_(EVP_MD_CTX_new(), EVP_MD_CTX_free) {
    const EVP_MD* const algorithm = name == "md5" ? EVP_md5() : EVP_sha1();
    if (EVP_DigestInit_ex(context_.get(), algorithm, nullptr) != 1) {
      throw std::runtime_error("digest");
    }
  }
  void add(const std::string& octets) {
    EVP_DigestUpdate(context_.get(), octets.data(), octets.size());
  }
  std::string result() {
    std::array<unsigned char, EVP_MAX_MD_SIZE> out{};
    unsigned n = 0;
    EVP_DigestFinal_ex(context_.get(), out.data(), &n);
    return {reinterpret_cast<const char*>(out.data()), n};
  }

 private:
  std::unique_ptr<EVP_MD_CTX, decltype(&EVP_MD_CTX_free)> context_;
};

std::string user_key(const std::string& password, const std::string& digest) {
  constexpr std::size_t kOctets = 1048576;
  std::string all;
  all.reserve(kOctets + password.size());
  while (all.size() < kOctets) all += password;
  all.resize(kOctets);
  Digest md(digest);
  md.add(all);
  return md.result();
}

}  // namespace

std::string localized_key(const std::string& password, const std::string& engine_id,
                          const std::string& digest, std::size_t length) {
  if (digest.empty()) return hex(std::string(length, '\0'));
  static std::map<std::tuple<std::string, std::string>, std::string> made;
  std::string& ku = made[{password, digest}];
  if (ku.empty()) ku = user_key(password, digest);
  Digest md(digest);
  md.add(ku + octets(engine_id) + ku);
  return hex(md.result().substr(0, length));
}

}  // namespace random_operations
