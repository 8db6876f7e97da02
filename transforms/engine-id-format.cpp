#include "transforms/engine-id-format.h"

#include <charconv>

namespace quillet {

Octets build_engine_id(std::uint32_t enterprise_number, EngineIdFormat format, const Octets& data) {
  const std::uint32_t number = enterprise_number | 0x80000000u;
  Octets id;
  id.reserve(kEngineIdMinSize + data.size());
  for (const int shift : {24, 16, 8, 0}) id.push_back(static_cast<std::uint8_t>(number >> shift));
  id.push_back(static_cast<std::uint8_t>(format));
  id.insert(id.end(), data.begin(), data.end());
  return id;
}

std::optional<Octets> parse_octet_groups(std::string_view text) {
  Octets octets;
  while (!text.empty()) {
    const std::string_view group = text.substr(0, text.find(':'));
    if (group.size() > 2) return std::nullopt;
    std::uint8_t octet = 0;
    const char* end = group.data() + group.size();
    const auto [parsed, error] = std::from_chars(group.data(), end, octet, 16);
    if (error != std::errc{} || parsed != end) return std::nullopt;
    octets.push_back(octet);
    text.remove_prefix(group.size());
    if (text.empty()) break;
    text.remove_prefix(1);
    if (text.empty()) return std::nullopt;  // a colon at the end
  }
  return octets;
}

}  // namespace quillet
