#include "platform/wire/cipher.h"

#include <openssl/crypto.h>
#include <openssl/evp.h>
#include <openssl/hmac.h>
#include <openssl/rand.h>

#include <array>
#include <climits>
#include <memory>
#include <stdexcept>

namespace standin {
namespace {

constexpr std::string_view kPrefix = "$8$";
constexpr std::size_t kIvOctets = 16;
constexpr std::size_t kMacOctets = 16;
constexpr std::size_t kMaxClear = INT_MAX / 2;  // what libcrypto's int lengths hold after base64

const unsigned char* octets(std::string_view s) {
  return reinterpret_cast<const unsigned char*>(s.data());
}
unsigned char* octets(std::string& s) { return reinterpret_cast<unsigned char*>(s.data()); }

// HMAC-SHA-256 in a buffer that does not outlive its use with what it holds.
class Digest {
 public:
  Digest(std::string_view key, std::string_view data) {
    unsigned int size = 0;
    if (HMAC(EVP_sha256(), key.data(), static_cast<int>(key.size()), octets(data), data.size(),
             value_.data(), &size) == nullptr ||
        size != value_.size()) {
      throw std::runtime_error("cannot compute a message authentication code");
    }
  }
  ~Digest() { OPENSSL_cleanse(value_.data(), value_.size()); }
  Digest(const Digest&) = delete;
  Digest& operator=(const Digest&) = delete;
  std::string_view view() const {
    return {reinterpret_cast<const char*>(value_.data()), value_.size()};
  }

 private:
  std::array<unsigned char, 32> value_{};
};

// One key each for secrecy and authenticity, so that neither use tells about the other.
struct Keys {
  explicit Keys(std::string_view key) : encryption(key, "encryption"), mac(key, "authentication") {}
  Digest encryption;
  Digest mac;
};

struct ContextDeleter {
  void operator()(EVP_CIPHER_CTX* context) const { EVP_CIPHER_CTX_free(context); }
};

// AES-256 in counter mode: the same operation both ways.
std::string apply_cipher(std::string_view in, std::string_view iv, const Keys& keys) {
  const std::unique_ptr<EVP_CIPHER_CTX, ContextDeleter> context(EVP_CIPHER_CTX_new());
  std::string out(in.size(), '\0');
  int size = 0;
  if (!context ||
      EVP_EncryptInit_ex(context.get(), EVP_aes_256_ctr(), nullptr, octets(keys.encryption.view()),
                         octets(iv)) != 1 ||
      EVP_EncryptUpdate(context.get(), octets(out), &size, octets(in),
                        static_cast<int>(in.size())) != 1 ||
      static_cast<std::size_t>(size) != in.size()) {
    cleanse(out);
    throw std::runtime_error("cannot apply the cipher");
  }
  return out;
}

std::string base64(std::string_view in) {
  std::string out((in.size() + 2) / 3 * 4 + 1, '\0');  // the encoder appends a NUL
  EVP_EncodeBlock(octets(out), octets(in), static_cast<int>(in.size()));
  out.pop_back();
  return out;
}

// Nothing unless `in` is exactly what base64 writes: the decoder itself passes over blanks and
// ignores bits past the end.
std::optional<std::string> from_base64(std::string_view in) {
  if (in.size() % 4 != 0 || in.size() > INT_MAX) return std::nullopt;
  std::string out(in.size() / 4 * 3, '\0');
  if (EVP_DecodeBlock(octets(out), octets(in), static_cast<int>(in.size())) < 0) {
    return std::nullopt;
  }
  while (!in.empty() && !out.empty() && in.back() == '=') {
    in.remove_suffix(1);
    out.pop_back();
  }
  const std::string again = base64(out);
  if (!std::string_view(again).starts_with(in) ||
      again.find('=') != (in.size() == again.size() ? std::string::npos : in.size())) {
    return std::nullopt;
  }
  return out;
}

}  // namespace

bool in_encrypted_form(std::string_view text) { return text.starts_with(kPrefix); }

std::string encrypt_text(std::string_view clear, std::string_view key) {
  if (key.size() != kKeyOctets) throw std::invalid_argument("a key of a wrong length");
  if (clear.size() > kMaxClear) throw std::invalid_argument("a text too long to encrypt");
  std::string sealed(kIvOctets, '\0');
  if (RAND_bytes(octets(sealed), static_cast<int>(kIvOctets)) != 1) {
    throw std::runtime_error("no random octets");
  }
  const Keys keys(key);
  sealed += apply_cipher(clear, sealed, keys);
  sealed += Digest(keys.mac.view(), sealed).view().substr(0, kMacOctets);
  return std::string(kPrefix) + base64(sealed);
}

std::optional<std::string> decrypt_text(std::string_view text, std::string_view key) {
  if (!in_encrypted_form(text) || key.size() != kKeyOctets) return std::nullopt;
  const std::optional<std::string> sealed = from_base64(text.substr(kPrefix.size()));
  if (!sealed || sealed->size() < kIvOctets + kMacOctets) return std::nullopt;
  const std::string_view all = *sealed;
  const std::string_view signed_part = all.substr(0, all.size() - kMacOctets);
  const std::string_view mac = all.substr(signed_part.size());
  const Keys keys(key);
  if (CRYPTO_memcmp(Digest(keys.mac.view(), signed_part).view().data(), mac.data(), kMacOctets) !=
      0) {
    return std::nullopt;
  }
  return apply_cipher(signed_part.substr(kIvOctets), signed_part.substr(0, kIvOctets), keys);
}

void cleanse(std::string& s) {
  OPENSSL_cleanse(s.data(), s.size());
  s.clear();
}

}  // namespace standin
