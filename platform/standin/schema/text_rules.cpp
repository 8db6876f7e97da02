#include "text_rules.h"

#include <array>
#include <cstdint>

namespace standin {
namespace {

struct Character {
  std::uint32_t code = 0;
  std::size_t size = 0;  // octets; 0: not UTF-8
};

// RFC 3629, section 4: neither overlong forms nor surrogates nor anything above U+10FFFF.
Character first_character(std::string_view s) {
  const auto at = [&](std::size_t i) { return static_cast<std::uint8_t>(s[i]); };
  const std::uint8_t lead = at(0);
  if (lead < 0x80) return {lead, 1};
  const std::size_t size = lead >= 0xf0 ? 4 : lead >= 0xe0 ? 3 : 2;
  if (lead < 0xc2 || lead > 0xf4 || s.size() < size) return {};
  std::uint32_t code = lead & (0x7fU >> size);
  for (std::size_t i = 1; i < size; ++i) {
    if ((at(i) & 0xc0) != 0x80) return {};
    code = code << 6 | (at(i) & 0x3fU);
  }
  constexpr std::array<std::uint32_t, 5> kLeast{0, 0, 0x80, 0x800, 0x10000};
  const bool surrogate = code >= 0xd800 && code <= 0xdfff;
  if (code < kLeast[size] || code > 0x10ffff || surrogate) return {};
  return {code, size};
}

// C0, DEL and C1: the last ones move a terminal's cursor too.
bool is_control(std::uint32_t code) { return code < 0x20 || (code >= 0x7f && code < 0xa0); }

int hex_digit(char c) {
  if (c >= '0' && c <= '9') return c - '0';
  if (c >= 'a' && c <= 'f') return c - 'a' + 10;
  if (c >= 'A' && c <= 'F') return c - 'A' + 10;
  return -1;
}

}  // namespace

bool is_plain_text(std::string_view text) {
  while (!text.empty()) {
    const Character c = first_character(text);
    if (c.size == 0) return false;
    if (is_control(c.code) && c.code != '\t' && c.code != '\n') return false;
    text.remove_prefix(c.size);
  }
  return true;
}

std::optional<std::string> octets_from_text(std::string_view text) {
  std::string octets;
  if (text.empty()) return octets;
  if (text.size() % 3 != 2) return std::nullopt;
  octets.reserve(text.size() / 3 + 1);
  for (std::size_t i = 0; i < text.size(); i += 3) {
    const int high = hex_digit(text[i]);
    const int low = hex_digit(text[i + 1]);
    if (high < 0 || low < 0 || (i != 0 && text[i - 1] != ':')) return std::nullopt;
    octets.push_back(static_cast<char>(high << 4 | low));
  }
  return octets;
}

std::string one_line(std::string_view text) {
  constexpr std::size_t kMost = 120;
  constexpr std::string_view kDigits = "0123456789abcdef";
  std::string out;
  while (!text.empty()) {
    if (out.size() > kMost) return out + "...";
    const Character c = first_character(text);
    if (c.size == 0 || is_control(c.code)) {
      const auto octet = static_cast<std::uint8_t>(text[0]);
      out += "\\x";
      out += kDigits[octet >> 4];
      out += kDigits[octet & 0xf];
      text.remove_prefix(1);
    } else {
      out += text.substr(0, c.size);
      text.remove_prefix(c.size);
    }
  }
  return out;
}

}  // namespace standin
