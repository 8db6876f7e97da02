#include "platform/wire/value.h"

#include <arpa/inet.h>

#include <array>

namespace standin {
namespace {

std::string hex_groups(std::string_view octets) {
  constexpr std::string_view digits = "0123456789abcdef";
  std::string out;
  out.reserve(octets.size() * 3);
  for (const char c : octets) {
    const auto octet = static_cast<unsigned char>(c);
    if (!out.empty()) out += ':';
    out += digits[octet >> 4];
    out += digits[octet & 15];
  }
  return out;
}

std::string address_text(int family, std::size_t size, const std::string& octets) {
  std::array<char, INET6_ADDRSTRLEN> buffer{};
  if (octets.size() != size ||
      inet_ntop(family, octets.data(), buffer.data(), buffer.size()) == nullptr) {
    return hex_groups(octets);
  }
  return buffer.data();
}

std::string oid_text(const Oid& oid) {
  std::string out;
  for (const std::uint32_t n : oid) {
    if (!out.empty()) out += '.';
    out += std::to_string(n);
  }
  return out;
}

std::string list_text(const std::vector<Value>& items) {
  std::string out;
  for (std::size_t i = 0; i < items.size(); ++i) {
    if (i > 0) out += ' ';
    out += to_text(items[i]);
  }
  return out;
}

}  // namespace

std::string to_text(const Value& v) {
  switch (v.type()) {
    case Type::noexists:
      return {};
    case Type::xmltag:
      return std::to_string(v.tag().ns) + ':' + std::to_string(v.tag().tag);
    case Type::str:
    case Type::buf:
      return v.bytes();
    case Type::int8:
    case Type::int16:
    case Type::int32:
    case Type::int64:
    case Type::enumeration:
      return std::to_string(v.number());
    case Type::uint8:
    case Type::uint16:
    case Type::uint32:
    case Type::uint64:
      return std::to_string(v.unsigned_number());
    case Type::ipv4:
      return address_text(AF_INET, 4, v.bytes());
    case Type::ipv6:
      return address_text(AF_INET6, 16, v.bytes());
    case Type::boolean:
      return v.boolean() ? "true" : "false";
    case Type::list:
      return list_text(v.items());
    case Type::oid:
      return oid_text(v.oid());
    case Type::binary:
      return hex_groups(v.bytes());
  }
  return {};
}

std::uint32_t tag_number(std::string_view name) {
  std::uint32_t hash = 2166136261u;
  for (const char c : name) hash = (hash ^ static_cast<unsigned char>(c)) * 16777619u;
  hash &= 0x7fffffffu;  // positive where a caller keeps it in an int
  return hash == 0 ? 1 : hash;
}

}  // namespace standin
