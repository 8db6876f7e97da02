// Transport addresses of snmpTargetAddrTAddress over UDP (RFC 3419 section 3): the address octets,
// then the port in two octets, most significant first. Pure functions.
#pragma once

#include <confd_lib.h>

#include <cstdint>
#include <optional>
#include <string_view>
#include <vector>

namespace quillet {

inline constexpr std::uint16_t kDefaultUdpPort = 162;  // RFC 3417 section 3.2

// Less than an IPv4 address with its port cannot be read.
inline constexpr std::size_t kShortestTAddress = 6;

// A stored value's parts. Its length decides: 18 octets are IPv6, any other length from 6 on IPv4
// (the first four octets). Nothing for a shorter one.
struct TransportAddress {
  std::vector<std::uint8_t> address;  // as stored, without the port
  std::uint16_t port = 0;
};
std::optional<TransportAddress> decode_taddress(const unsigned char* octets, std::size_t size);
std::vector<std::uint8_t> encode_taddress(const TransportAddress& taddress);

// C_IPV6 for 16 address octets, else C_IPV4 of the first four.
confd_value_t ip_of(const TransportAddress& taddress);

// transportDomainUdpIpv6 for a C_IPV6, else transportDomainUdpIpv4 (RFC 3419). The value owns
// nothing: it points to a constant.
confd_value_t tdomain_for_address_type(confd_vtype type);

}  // namespace quillet
