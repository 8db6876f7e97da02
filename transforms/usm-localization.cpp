#include "transforms/usm-localization.h"

#include <confd_maapi.h>
#include <openssl/crypto.h>

#include <array>
#include <cstdlib>
#include <cstring>
#include <vector>

#include "core/daemon-sockets.h"
#include "transforms/snmp-usm-internal.h"
#include "transforms/usm-keys.h"

namespace quillet {
namespace {

constexpr std::size_t kMaxPassword = 255;
constexpr std::size_t kPrivKeyOctets = 16;

using PasswordToKey = int (*)(const unsigned char*, std::size_t, const unsigned char*, std::size_t,
                              unsigned char*);

struct Derivation {
  PasswordToKey digest = nullptr;
  std::size_t key_octets = 0;
};

Derivation auth_derivation(int protocol) {
  if (protocol_is(protocol, tags::snmp::md5)) return {password_to_key_md5, kMd5KeyOctets};
  if (protocol_is(protocol, tags::snmp::sha)) return {password_to_key_sha, kShaKeyOctets};
  return {};
}

Derivation derivation(int protocol, int auth_status) {
  if (protocol_is(protocol, tags::snmp::des) || protocol_is(protocol, tags::snmp::aes)) {
    return {auth_derivation(auth_status).digest, kPrivKeyOctets};
  }
  return auth_derivation(protocol);
}

// As large as the encrypted form, which the clear text never exceeds.
class ClearText {
 public:
  explicit ClearText(const confd_value_t* encrypted) : octets_(CONFD_GET_BUFSIZE(encrypted)) {
    const auto* text = reinterpret_cast<const char*>(CONFD_GET_BUFPTR(encrypted));
    decrypted_ = confd_decrypt(text, static_cast<int>(octets_.size()), octets_.data()) >= 0;
  }
  ClearText(const ClearText&) = delete;
  ClearText& operator=(const ClearText&) = delete;
  ~ClearText() { OPENSSL_cleanse(octets_.data(), octets_.size()); }

  bool decrypted() const { return decrypted_; }
  const unsigned char* data() const {
    return reinterpret_cast<const unsigned char*>(octets_.data());
  }
  std::size_t size() const { return c_text(data(), octets_.size()).size(); }

 private:
  std::vector<char> octets_;  // zeros at first, so that the text ends where the zeros begin
  bool decrypted_;
};

// The keys stay installed for the life of the process; until then every call tries again.
void install_crypto_keys() {
  static int crypto_keys_state = -1;
  if (crypto_keys_state != CONFD_OK) crypto_keys_state = maapi_install_crypto_keys(maapi_sock);
}

// Owned by the value, in a buffer that fits the key of any protocol. The octets are overwritten.
void take_key(std::array<unsigned char, kShaKeyOctets>& octets, std::size_t size, Value& key) {
  void* buffer = std::calloc(1, octets.size());
  if (buffer != nullptr) {
    std::memcpy(buffer, octets.data(), size);
    CONFD_SET_BINARY(key.get(), buffer, size);
  }
  OPENSSL_cleanse(octets.data(), octets.size());
}

}  // namespace

SecretValue::~SecretValue() {
  confd_value_t* v = get();
  if (v->type == C_BINARY) OPENSSL_cleanse(CONFD_GET_BINARY_PTR(v), CONFD_GET_BINARY_SIZE(v));
}

const char* _localize_password(const confd_value_t* password, const confd_value_t* engine_id,
                               int protocol, int auth_status, SecretValue& key) {
  key.out();
  const Derivation wanted = derivation(protocol, auth_status);
  const unsigned char* engine = CONFD_GET_BINARY_PTR(engine_id);
  const std::size_t engine_octets = CONFD_GET_BINARY_SIZE(engine_id);
  if (engine_octets > kMaxEngineId) return "engine-id longer than 32 octets";
  install_crypto_keys();
  const ClearText clear(password);
  if (!clear.decrypted()) return "password cannot be decrypted";
  if (clear.size() == 0) return "password is empty";
  if (clear.size() > kMaxPassword) return "password longer than 255 octets";
  std::array<unsigned char, kShaKeyOctets> octets{};
  if (wanted.digest != nullptr &&
      wanted.digest(clear.data(), clear.size(), engine, engine_octets, octets.data()) != 0) {
    return "key cannot be derived";
  }
  take_key(octets, wanted.key_octets, key);
  return key->type == C_NOEXISTS ? "no memory for the key" : nullptr;
}

}  // namespace quillet
