#include "crypto.h"

#include <confd_lib.h>

#include <cstring>
#include <mutex>

#include "error.h"
#include "platform/wire/cipher.h"

namespace standin {
namespace {

struct InstalledKey {
  std::mutex lock;
  std::string octets;
};
InstalledKey& installed() {
  static auto* one = new InstalledKey;
  return *one;
}

struct Cleansed {
  std::string text;
  ~Cleansed() { cleanse(text); }
};

}  // namespace

int install_crypto_key(std::string key) {
  Cleansed own{std::move(key)};
  if (own.text.size() != kKeyOctets) return fail(CONFD_ERR_PROTOCOL, "crypto key of a wrong size");
  const std::scoped_lock guard(installed().lock);
  cleanse(installed().octets);
  installed().octets.assign(own.text);
  return CONFD_OK;
}

}  // namespace standin

using namespace standin;

int confd_decrypt(const char* text, int len, char* out) {
  return guarded([&] {
    if (text == nullptr || len < 0 || out == nullptr)
      return fail(CONFD_ERR_APIUSE, "nothing to decrypt");
    const std::string_view form(text, static_cast<std::size_t>(len));
    Cleansed key;
    {
      const std::scoped_lock guard(installed().lock);
      key.text = installed().octets;
    }
    if (key.text.empty()) return fail(CONFD_ERR_NO_KEYS, "no crypto keys installed");
    if (!in_encrypted_form(form)) return fail(CONFD_ERR_BADVALUE, "text is not in encrypted form");
    std::optional<std::string> clear = decrypt_text(form, key.text);
    if (!clear) return fail(CONFD_ERR_NO_KEYS, "text was encrypted with another key");
    Cleansed own{std::move(*clear)};
    if (own.text.size() > form.size()) return fail(CONFD_ERR_PROTOCOL, "clear text too long");
    std::memcpy(out, own.text.data(), own.text.size());
    return static_cast<int>(own.text.size());
  });
}
