// SnmpEngineID from an enterprise number and a format (RFC 3411, section 5, SnmpEngineID).
//
//   octets 0..3   the enterprise number with its top bit set, most significant octet first
//   octet  4      the format
//   octets 5..    the data
//
// For example 32473 and the address 192.0.2.1 give 80 00 7e d9 01 c0 00 02 01.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string_view>
#include <vector>

namespace quillet {

using Octets = std::vector<std::uint8_t>;

enum class EngineIdFormat : std::uint8_t {
  none = 0,
  ipv4 = 1,
  ipv6 = 2,
  mac = 3,
  text = 4,
  octets = 5,
};

constexpr std::size_t kEngineIdMinSize = 5;
constexpr std::size_t kEngineIdMaxSize = 32;

// Of any length: whether an SNMP engine may carry it is the caller's question.
Octets build_engine_id(std::uint32_t enterprise_number, EngineIdFormat format, const Octets& data);

// Groups of one or two hexadecimal digits with a colon between them ("01:0a:ff"); an empty text
// gives no octets. Nothing for any other text.
std::optional<Octets> parse_octet_groups(std::string_view text);

}  // namespace quillet
