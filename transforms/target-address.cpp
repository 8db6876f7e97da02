#include "transforms/target-address.h"

#include "util/ip-octets.h"

namespace quillet {

std::optional<TransportAddress> decode_taddress(const unsigned char* octets, std::size_t size) {
  if (size < kShortestTAddress) return std::nullopt;
  const std::size_t address = size - 2;
  return TransportAddress{{octets, octets + address},
                          static_cast<std::uint16_t>(octets[address] << 8 | octets[address + 1])};
}

std::vector<std::uint8_t> encode_taddress(const TransportAddress& taddress) {
  std::vector<std::uint8_t> octets = taddress.address;
  octets.push_back(static_cast<std::uint8_t>(taddress.port >> 8));
  octets.push_back(static_cast<std::uint8_t>(taddress.port & 0xff));
  return octets;
}

confd_value_t ip_of(const TransportAddress& taddress) { return ip_value(taddress.address); }

confd_value_t tdomain_for_address_type(confd_vtype type) {
  static confd_snmp_oid udp_ipv4 = {{1, 3, 6, 1, 2, 1, 100, 1, 1}, 9};
  static confd_snmp_oid udp_ipv6 = {{1, 3, 6, 1, 2, 1, 100, 1, 2}, 9};
  confd_value_t v;
  CONFD_SET_OID(&v, type == C_IPV6 ? &udp_ipv6 : &udp_ipv4);
  return v;
}

}  // namespace quillet
