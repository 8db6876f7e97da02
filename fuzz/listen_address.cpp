// Any octets give an address or nothing; an accepted one has 4 or 16 octets.
#include <cstdint>
#include <cstdlib>
#include <string_view>

#include "transforms/listen-address.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::string_view text(reinterpret_cast<const char*>(data), size);
  for (const auto port : {std::optional<std::uint16_t>(161), std::optional<std::uint16_t>()}) {
    const auto address = quillet::parse_listen_address(text, port);
    if (address && address->ip.size() != 4 && address->ip.size() != 16) std::abort();
  }
  return 0;
}
