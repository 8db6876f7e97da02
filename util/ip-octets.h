// IP addresses as values and as octets in network order, 4 or 16 of them.
#pragma once

#include <confd_lib.h>

#include <cstdint>
#include <cstring>
#include <vector>

namespace quillet {

// REQUIRES: a C_IPV4 or C_IPV6.
inline std::vector<std::uint8_t> octets_of_ip(const confd_value_t& ip) {
  if (ip.type == C_IPV6) {
    const in6_addr address = CONFD_GET_IPV6(&ip);
    return {address.s6_addr, address.s6_addr + sizeof address.s6_addr};
  }
  const in_addr address = CONFD_GET_IPV4(&ip);
  std::vector<std::uint8_t> octets(sizeof address);
  std::memcpy(octets.data(), &address, sizeof address);
  return octets;
}

// C_IPV6 for 16 octets, else C_IPV4 of the first four. REQUIRES: at least 4 octets.
inline confd_value_t ip_value(const std::vector<std::uint8_t>& octets) {
  confd_value_t v;
  if (octets.size() == sizeof(in6_addr)) {
    in6_addr ip{};
    std::memcpy(&ip, octets.data(), sizeof ip);
    CONFD_SET_IPV6(&v, ip);
  } else {
    in_addr ip{};
    std::memcpy(&ip, octets.data(), sizeof ip);
    CONFD_SET_IPV4(&v, ip);
  }
  return v;
}

}  // namespace quillet
