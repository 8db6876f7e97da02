#include "listen.h"

#include <arpa/inet.h>

#include <array>
#include <charconv>

namespace standin::agent {
namespace {

constexpr unsigned kLoopbackNet = 127;

bool set_address(Endpoint& endpoint, const std::string& text) {
  std::array<unsigned char, sizeof(in6_addr)> octets{};
  std::array<char, INET6_ADDRSTRLEN> canonical{};
  endpoint.v6 = text.find(':') != std::string::npos;
  const int family = endpoint.v6 ? AF_INET6 : AF_INET;
  if (::inet_pton(family, text.c_str(), octets.data()) != 1) return false;
  endpoint.address = ::inet_ntop(family, octets.data(), canonical.data(), canonical.size());
  return true;
}

bool set_port(Endpoint& endpoint, std::string_view text) {
  std::uint16_t port = 0;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), port);
  endpoint.port = port;
  return error == std::errc() && end == text.data() + text.size() && port != 0;
}

}  // namespace

std::string Endpoint::spec() const {
  return (v6 ? "udp6:[" + address + "]" : "udp:" + address) + ":" + std::to_string(port);
}

std::optional<Endpoint> parse_endpoint(const std::string& text, std::uint16_t default_port) {
  Endpoint endpoint;
  endpoint.port = default_port;
  if (set_address(endpoint, text)) return endpoint;
  const std::size_t colon = text.rfind(':');
  std::string address = text.substr(0, colon);
  if (address.size() > 2 && address.front() == '[' && address.back() == ']') {
    address = address.substr(1, address.size() - 2);
  } else if (address.find(':') != std::string::npos) {
    return std::nullopt;
  }
  if (!set_address(endpoint, address)) return std::nullopt;
  if (!set_port(endpoint, std::string_view(text).substr(colon + 1))) return std::nullopt;
  return endpoint;
}

Endpoint on_loopback(const Endpoint& configured) {
  Endpoint endpoint = configured;
  if (configured.v6) {
    endpoint.address = "::1";
  } else if (std::stoul(configured.address) != kLoopbackNet) {
    endpoint.address = "127.0.0.1";
  }
  return endpoint;
}

}  // namespace standin::agent
