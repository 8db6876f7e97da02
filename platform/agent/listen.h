// The addresses that snmpd binds: what is configured, kept on loopback.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "rows.h"

namespace standin::agent {

struct Endpoint {
  bool v6 = false;
  std::string address;  // canonical text
  std::uint32_t port = 0;

  std::string spec() const;  // "udp:127.0.0.1:161", "udp6:[::1]:161"
  bool operator==(const Endpoint&) const = default;
};

// ADDRESS, ADDRESS:PORT or [ADDRESS]:PORT; nothing for any other text.
std::optional<Endpoint> parse_endpoint(const std::string& text, std::uint16_t default_port);
// The same port on 127.0.0.1 or ::1, unless the address is a loopback address already.
Endpoint on_loopback(const Endpoint& configured);

}  // namespace standin::agent
