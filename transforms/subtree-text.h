// The operator's form of a view subtree and the MIB's: "1.3.6.1.*.1" <-> OID and mask
// (vacmViewTreeFamilySubtree and vacmViewTreeFamilyMask, RFC 3415 section 4). Pure functions.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace quillet {

inline constexpr std::size_t kMaxSubtreeText = 255;     // characters
inline constexpr std::size_t kMaxSubIdentifiers = 128;  // RFC 2578 section 3.5

struct MibSubtree {
  std::vector<std::uint32_t> oid;  // 0 where the text has "*"
  // A bit for each component, the first one the most significant of the first octet, cleared for a
  // wildcard. Empty, which means all ones, when there is no wildcard.
  std::vector<std::uint8_t> mask;
};

// Components separated by ".", each "*" or a number of 1 to 2^32-1 without leading zeros. Nothing
// for any other text.
std::optional<MibSubtree> parse_subtree_text(std::string_view text);

// Dotted decimal with "*" for every 0. May be longer than kMaxSubtreeText for a row that somebody
// else wrote.
std::string subtree_text(const std::uint32_t* oid, std::size_t length);

}  // namespace quillet
