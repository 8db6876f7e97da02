// Encrypted strings: what an encrypted leaf is kept and read back as.
#pragma once

#include <string>
#include <string_view>

namespace standin {

// The form and its cipher are the wire library's (platform/wire/cipher.h), since confd_decrypt()
// reads it too; this class owns the key file.
class Secrets {
 public:
  // Reads the key file, or makes one, mode 0600. Throws std::runtime_error for a file that is not
  // a key file, and when `must_exist` and it is gone.
  Secrets(const std::string& key_file, bool must_exist);
  ~Secrets();
  Secrets(const Secrets&) = delete;
  Secrets& operator=(const Secrets&) = delete;

  const std::string& key() const { return key_; }
  // Text already in encrypted form that decrypts with the key is kept as it is; other text in that
  // form is refused (Refusal, badvalue); anything else is encrypted with a random IV.
  std::string encrypt(std::string_view text) const;

 private:
  std::string key_;
};

}  // namespace standin
