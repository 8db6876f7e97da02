// The encrypted form of a string: "$8$" and base64 of a random IV of 16 octets, the AES-256-CTR
// cipher text, and 16 octets of HMAC-SHA-256 over both, keyed from the same key. The clear text is
// never longer than the form. The buffers that held clear text are cleansed by those who own them.
#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

namespace standin {

inline constexpr std::size_t kKeyOctets = 32;

// By its beginning alone: a damaged form must be refused, not taken for a password.
bool in_encrypted_form(std::string_view text);
std::string encrypt_text(std::string_view clear, std::string_view key);
// Nothing when the text is not in that form, was changed, or was made with another key.
std::optional<std::string> decrypt_text(std::string_view text, std::string_view key);
// Overwrites the octets in a way that the compiler keeps, and empties the string.
void cleanse(std::string& s);

}  // namespace standin
