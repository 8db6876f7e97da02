// A stored transport address of any octets: what can be read is written back as it was.
#include <cstdint>
#include <cstdlib>
#include <vector>

#include "transforms/target-address.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const auto taddress = quillet::decode_taddress(data, size);
  if (taddress.has_value() != (size >= quillet::kShortestTAddress)) std::abort();
  if (!taddress) return 0;
  if (quillet::encode_taddress(*taddress) != std::vector<std::uint8_t>(data, data + size)) {
    std::abort();
  }
  const confd_value_t ip = quillet::ip_of(*taddress);
  if ((ip.type == C_IPV6) != (size == 18)) std::abort();
  return 0;
}
