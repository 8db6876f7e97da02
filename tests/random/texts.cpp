#include "texts.h"

#include <arpa/inet.h>

#include <algorithm>
#include <array>
#include <cctype>
#include <charconv>

namespace random_operations {
namespace {

using Number = unsigned long long;

bool sized(const std::string& v, std::size_t least, std::size_t most) {
  return v.size() >= least && v.size() <= most;
}

bool spaced(const std::string& v) {
  return std::any_of(v.begin(), v.end(), [](unsigned char c) { return std::isspace(c) != 0; });
}

}  // namespace

std::optional<std::vector<Number>> numbers(const std::string& text) {
  std::vector<Number> result;
  const char* at = text.data();
  const char* const end = at + text.size();
  for (;;) {
    Number n = 0;
    const auto [next, error] = std::from_chars(at, end, n);
    if (error != std::errc()) return std::nullopt;
    result.push_back(n);
    if (next == end) return result;
    if (*next != '.') return std::nullopt;
    at = next + 1;
  }
}

namespace admits {

bool name(const std::string& v) { return sized(v, 1, 32); }
bool optional_name(const std::string& v) { return sized(v, 0, 32); }
bool text(const std::string& v) { return sized(v, 0, 255); }
bool any(const std::string&) { return true; }
bool tag(const std::string& v) { return text(v) && !spaced(v); }
bool word(const std::string& v) { return tag(v) && !v.empty(); }
bool engine(const std::string& v) {
  return octets(v) && octet_count(v) >= 5 && octet_count(v) <= 32;
}
bool octets(const std::string& v) {
  for (std::size_t i = 0; i < v.size(); ++i) {
    const bool separator = i % 3 == 2;
    if (separator ? v[i] != ':' : std::isxdigit(static_cast<unsigned char>(v[i])) == 0)
      return false;
  }
  return v.empty() || v.size() % 3 == 2;
}
bool oid(const std::string& v) {
  const auto all = numbers(v);
  return all && all->size() <= 128 &&
         std::all_of(all->begin(), all->end(), [](Number n) { return n <= UINT32_MAX; });
}
bool ip(const std::string& v) {
  std::array<unsigned char, 16> octets{};
  return ::inet_pton(AF_INET, v.c_str(), octets.data()) == 1 ||
         ::inet_pton(AF_INET6, v.c_str(), octets.data()) == 1;
}
bool level(const std::string& v) { return one_of(v, {"noAuthNoPriv", "authNoPriv", "authPriv"}); }
bool boolean(const std::string& v) { return one_of(v, {"true", "false"}); }
bool whole(const std::string& v, long long least, long long most) {
  long long n = 0;
  const auto [end, error] = std::from_chars(v.data(), v.data() + v.size(), n);
  return error == std::errc() && end == v.data() + v.size() && n >= least && n <= most;
}

}  // namespace admits

std::vector<std::string> split(const std::string& text, char separator) {
  std::vector<std::string> parts;
  for (std::size_t at = 0; at <= text.size();) {
    const std::size_t end = std::min(text.find(separator, at), text.size());
    parts.push_back(text.substr(at, end - at));
    at = end + 1;
  }
  return parts;
}

bool one_of(const std::string& v, std::initializer_list<std::string_view> labels) {
  return std::find(labels.begin(), labels.end(), v) != labels.end();
}

namespace {
constexpr std::array<std::pair<const char*, const char*>, 3> kLevels{
    {{"no-auth-no-priv", "noAuthNoPriv"},
     {"auth-no-priv", "authNoPriv"},
     {"auth-priv", "authPriv"}}};
}  // namespace

std::string stored_level(const std::string& shown) {
  for (const auto& [label, stored] : kLevels) {
    if (shown == label) return stored;
  }
  return shown;
}

bool is_level(const std::string& shown) { return stored_level(shown) != shown; }

std::string shown_level(const std::string& stored) {
  for (const auto& [label, name] : kLevels) {
    if (stored == name) return label;
  }
  return stored;
}

std::string shown_oid(const std::string& stored) {
  std::string text;
  for (const std::string& part : split(stored, '.')) {
    text += (text.empty() ? "" : ".") + (part == "0" ? "*" : part);
  }
  return text;
}

std::size_t octet_count(const std::string& hex) { return (hex.size() + 1) / 3; }

std::string hex(const std::string& octets) {
  constexpr const char* kDigits = "0123456789abcdef";
  std::string text;
  for (const char c : octets) {
    const auto octet = static_cast<unsigned char>(c);
    if (!text.empty()) text += ':';
    text += {kDigits[octet / 16], kDigits[octet % 16]};
  }
  return text;
}

std::string octets(const std::string& hex) {
  std::string result;
  for (std::size_t i = 0; i < hex.size(); i += 3) {
    result += static_cast<char>(std::stoi(hex.substr(i, 2), nullptr, 16));
  }
  return result;
}

std::string ip_octets(const std::string& ip) {
  std::array<char, 16> raw{};
  const bool six = ip.find(':') != std::string::npos;
  ::inet_pton(six ? AF_INET6 : AF_INET, ip.c_str(), raw.data());
  return {raw.data(), six ? 16U : 4U};
}

std::string ip_text(const std::string& octets) {
  std::array<char, INET6_ADDRSTRLEN> text{};
  ::inet_ntop(octets.size() == 16 ? AF_INET6 : AF_INET, octets.data(), text.data(), text.size());
  return text.data();
}

std::string canonical_ip(const std::string& v) { return ip_text(ip_octets(v)); }

}  // namespace random_operations
