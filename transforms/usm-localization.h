// A user's stored password -> the key that SNMPv3 uses with one engine (RFC 3414 section 2.6 and
// appendix A.2; RFC 3826 section 1.2 for AES).
//
//   protocol    digest of                  key
//   md5         the protocol               16 octets
//   sha         the protocol               20 octets
//   des, aes    the user's authentication  its first 16 octets
#pragma once

#include <confd_lib.h>

#include "util/value-guards.h"

namespace quillet {

// A value whose octets are overwritten before they are freed.
class SecretValue : public Value {
 public:
  SecretValue() = default;
  SecretValue(const SecretValue&) = delete;
  SecretValue& operator=(const SecretValue&) = delete;
  ~SecretValue();
};

// `password` is C_BUF in the server's encrypted form, `engine_id` C_BINARY (both asserted). `key`
// becomes C_BINARY of the length above: zeros for des and aes without an authentication protocol,
// no octets for a protocol that is none of these.
//
// Returns null, or why there is no key, and `key` is C_NOEXISTS then: "password cannot be
// decrypted", an empty password, one longer than 255 octets, an engine ID longer than 32. Nothing
// of the password is in that text. The clear text does not outlive the call.
const char* _localize_password(const confd_value_t* password, const confd_value_t* engine_id,
                               int protocol, int auth_status, SecretValue& key);

}  // namespace quillet
