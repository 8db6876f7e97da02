#include "transforms/listen-address.h"

#include <arpa/inet.h>

#include <algorithm>

namespace quillet {
namespace {

bool is_digit(char c) { return c >= '0' && c <= '9'; }

std::optional<std::vector<std::uint8_t>> parse_ip(const std::string& text) {
  const bool ipv6 = text.find(':') != std::string::npos;
  std::vector<std::uint8_t> octets(ipv6 ? 16 : 4);
  if (inet_pton(ipv6 ? AF_INET6 : AF_INET, text.c_str(), octets.data()) != 1) return std::nullopt;
  return octets;
}

}  // namespace

std::strong_ordering ListenAddress::operator<=>(const ListenAddress& other) const {
  if (ip.size() != other.ip.size()) return ip.size() <=> other.ip.size();
  if (ip != other.ip) {
    return std::lexicographical_compare_three_way(ip.begin(), ip.end(), other.ip.begin(),
                                                  other.ip.end());
  }
  return port <=> other.port;
}

std::optional<ListenAddress> parse_listen_address(std::string_view text,
                                                  std::optional<std::uint16_t> default_port) {
  if (text.empty()) return std::nullopt;
  std::size_t last = text.size() - 1;
  while (last > 0 && is_digit(text[last])) --last;

  std::size_t end = text.size();
  std::optional<std::uint16_t> port = default_port;
  if (last > 0 && text[last] == ':') {
    unsigned number = 0;
    for (const char c : text.substr(last + 1)) {
      number = (number * 10 + static_cast<unsigned>(c - '0')) & 0xffff;
    }
    port = static_cast<std::uint16_t>(number);
    end = last--;
  }
  if (last > 0 && text[last] == ']') end = last;
  const std::size_t begin = text.front() == '[' ? 1 : 0;

  if (!port || begin > end) return std::nullopt;
  const std::string address(text.substr(begin, end - begin));
  if (address.find('\0') != std::string::npos) return std::nullopt;
  const auto octets = parse_ip(address);
  if (!octets) return std::nullopt;
  return ListenAddress{*octets, *port};
}

}  // namespace quillet
