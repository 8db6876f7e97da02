// What the engine ID's area asks of the users', and the other way round.
#pragma once

#include <optional>
#include <string>

#include "tables.h"

namespace random_operations {

// Moves the users of the old engine, with keys from passwords made anew.
void move_users(Tables& t, const std::string& from, const std::string& to);
// The ID as the settings stand, which a remote user must not have.
std::optional<std::string> configured_engine_id(const Tables& t);

// RFC 3414, A.2, the first `length` octets in hexadecimal; `digest` is "md5" or "sha", or empty for
// zeros.
std::string localized_key(const std::string& password, const std::string& engine_id,
                          const std::string& digest, std::size_t length);

}  // namespace random_operations
