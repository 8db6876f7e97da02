// Texts of extra listen addresses: "192.0.2.1:161", "192.0.2.1", "[2001:db8::1]:161",
// "[2001:db8::1]", "2001:db8::1:161". Pure functions.
#pragma once

#include <netinet/in.h>

#include <compare>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace quillet {

struct ListenAddress {
  // Octets in network order, 4 or 16 of them.
  std::vector<std::uint8_t> ip;
  std::uint16_t port = 0;

  bool is_ipv6() const { return ip.size() == 16; }
  bool operator==(const ListenAddress&) const = default;
  // IPv4 before IPv6, then octet-wise, then by port: the order in which entries are listed.
  std::strong_ordering operator<=>(const ListenAddress& other) const;
};

// The last colon that only digits follow starts the port, whose low 16 bits count whatever its
// length; without one the port is `default_port`. Nothing when the address does not parse, or when
// there is neither a port nor a default.
std::optional<ListenAddress> parse_listen_address(std::string_view text,
                                                  std::optional<std::uint16_t> default_port);

}  // namespace quillet
