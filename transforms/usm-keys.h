// Password to localized key (RFC 3414 appendix A.2). Pure functions over libcrypto's digests.
#pragma once

#include <cstddef>

namespace quillet {

inline constexpr std::size_t kMaxEngineId = 32;  // octets, RFC 3411 section 5 (SnmpEngineID)
inline constexpr std::size_t kMd5KeyOctets = 16;
inline constexpr std::size_t kShaKeyOctets = 20;

// Ku and Kul with MD5 (A.2.1) and SHA-1 (A.2.2): the digest of 1 MiB of the repeated password, then
// of Ku, engine ID, Ku. `key` holds 16 or 20 octets. 0 when done; -1, and `key` untouched, for an
// empty password, an engine ID past kMaxEngineId, or a digest that libcrypto refuses.
int password_to_key_md5(const unsigned char* password, std::size_t password_len,
                        const unsigned char* engine_id, std::size_t engine_id_len,
                        unsigned char* key);
int password_to_key_sha(const unsigned char* password, std::size_t password_len,
                        const unsigned char* engine_id, std::size_t engine_id_len,
                        unsigned char* key);

}  // namespace quillet
