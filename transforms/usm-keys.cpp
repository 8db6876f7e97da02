#include "transforms/usm-keys.h"

#include <openssl/crypto.h>
#include <openssl/evp.h>

#include <algorithm>
#include <array>
#include <cstring>
#include <memory>
#include <vector>

namespace quillet {
namespace {

constexpr std::size_t kExpandedOctets = 1u << 20;
// Octets fed at a time: enough that the digest's own speed decides, small enough for the cache.
constexpr std::size_t kFeed = 8192;

struct FreeDigest {
  void operator()(EVP_MD_CTX* ctx) const { EVP_MD_CTX_free(ctx); }
};
using Digest = std::unique_ptr<EVP_MD_CTX, FreeDigest>;

// Octets that are overwritten when they go out of scope.
struct CleansedOctets {
  std::vector<unsigned char> data;
  ~CleansedOctets() { OPENSSL_cleanse(data.data(), data.size()); }
};

bool digest_expanded(EVP_MD_CTX* ctx, const EVP_MD* md, const unsigned char* password,
                     std::size_t password_len, unsigned char* ku) {
  // Whole multiples of the password, so that each feed goes on where the last one ended; made by
  // doubling, which costs nothing beside the digest however short the password is.
  const std::size_t repeats = kFeed / password_len + 1;
  CleansedOctets feed{std::vector<unsigned char>(repeats * password_len)};
  std::memcpy(feed.data.data(), password, password_len);
  for (std::size_t filled = password_len; filled < feed.data.size();) {
    const std::size_t n = std::min(filled, feed.data.size() - filled);
    std::memcpy(feed.data.data() + filled, feed.data.data(), n);
    filled += n;
  }
  if (EVP_DigestInit_ex(ctx, md, nullptr) != 1) return false;
  for (std::size_t left = kExpandedOctets; left > 0;) {
    const std::size_t n = std::min(left, feed.data.size());
    if (EVP_DigestUpdate(ctx, feed.data.data(), n) != 1) return false;
    left -= n;
  }
  return EVP_DigestFinal_ex(ctx, ku, nullptr) == 1;
}

int password_to_key(const EVP_MD* md, std::size_t key_len, const unsigned char* password,
                    std::size_t password_len, const unsigned char* engine_id,
                    std::size_t engine_id_len, unsigned char* key) {
  if (password_len == 0 || engine_id_len > kMaxEngineId) return -1;
  const Digest ctx(EVP_MD_CTX_new());
  std::array<unsigned char, EVP_MAX_MD_SIZE> ku{};
  std::array<unsigned char, EVP_MAX_MD_SIZE> kul{};
  const bool done = ctx && digest_expanded(ctx.get(), md, password, password_len, ku.data()) &&
                    EVP_DigestInit_ex(ctx.get(), md, nullptr) == 1 &&
                    EVP_DigestUpdate(ctx.get(), ku.data(), key_len) == 1 &&
                    EVP_DigestUpdate(ctx.get(), engine_id, engine_id_len) == 1 &&
                    EVP_DigestUpdate(ctx.get(), ku.data(), key_len) == 1 &&
                    EVP_DigestFinal_ex(ctx.get(), kul.data(), nullptr) == 1;
  if (done) std::memcpy(key, kul.data(), key_len);
  OPENSSL_cleanse(ku.data(), ku.size());
  OPENSSL_cleanse(kul.data(), kul.size());
  return done ? 0 : -1;
}

}  // namespace

int password_to_key_md5(const unsigned char* password, std::size_t password_len,
                        const unsigned char* engine_id, std::size_t engine_id_len,
                        unsigned char* key) {
  return password_to_key(EVP_md5(), kMd5KeyOctets, password, password_len, engine_id, engine_id_len,
                         key);
}

int password_to_key_sha(const unsigned char* password, std::size_t password_len,
                        const unsigned char* engine_id, std::size_t engine_id_len,
                        unsigned char* key) {
  return password_to_key(EVP_sha1(), kShaKeyOctets, password, password_len, engine_id,
                         engine_id_len, key);
}

}  // namespace quillet
