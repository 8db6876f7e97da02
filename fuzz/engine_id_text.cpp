// Octets that are read print back to a text that reads the same; every ID is their number, format
// and octets, and nothing else.
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <string_view>

#include "transforms/engine-id-format.h"

namespace {

std::string groups(const quillet::Octets& octets) {
  std::string text;
  for (const auto octet : octets) {
    char group[4];
    std::snprintf(group, sizeof group, "%s%02x", text.empty() ? "" : ":", octet);
    text += group;
  }
  return text;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::string_view text(reinterpret_cast<const char*>(data), size);
  const auto octets = quillet::parse_octet_groups(text);
  if (!octets) return 0;
  if (quillet::parse_octet_groups(groups(*octets)) != octets) std::abort();
  const auto number = static_cast<std::uint32_t>(size * 0x01010101u);
  const auto id = quillet::build_engine_id(number, quillet::EngineIdFormat::octets, *octets);
  if (id.size() != quillet::kEngineIdMinSize + octets->size()) std::abort();
  if ((id[0] & 0x80) == 0 || id[3] != (number & 0xff) || id[4] != 5) std::abort();
  if (!octets->empty() && id.back() != octets->back()) std::abort();
  return 0;
}
