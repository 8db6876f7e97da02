// Paths as clients write them, before a schema has been asked.
#pragma once

#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

#include "platform/wire/value.h"

namespace standin {

// One step of a path: an element by name (perhaps with a prefix) or by tag, or keys in braces.
// Keys and leaf-list values that came as text are Type::str: the server reads them by the key's
// type.
struct PathStep {
  enum class Kind : std::uint8_t { name, tag, keys } kind = Kind::name;
  std::string name;  // "prefix:name" or "name"
  Tag tag;
  Level keys;
  bool operator==(const PathStep&) const = default;
};
using Path = std::vector<PathStep>;

struct PathError : std::runtime_error {
  using std::runtime_error::runtime_error;
};

// Reads "/snmp:snmp/community{\"a b\"}/name". A word with blanks, quotes, braces or a backslash,
// and an empty one, stands in double quotes, with a backslash before a quote or a backslash
// inside. Doubled and trailing slashes are accepted; "/" alone is the empty path.
// Throws PathError with a sentence that names what stands where.
Path parse_path(std::string_view text);

// Splits a command line by the same rule for words. A word that begins with a quote is unquoted;
// any other may hold braces with keys, quotes included, and stays as it stands, so that a path
// needs no quotes round it. Throws PathError.
std::vector<std::string> split_words(std::string_view line);

// The word, in double quotes when the rule asks for them.
std::string quote_word(std::string_view word);

Path to_path(const Keypath& kp);

}  // namespace standin
