#include "quoting.h"

#include <algorithm>

namespace standin::agent {
namespace {

constexpr char kDigits[] = "0123456789abcdef";

bool is_control(char c) { return static_cast<unsigned char>(c) < 0x20 || c == 0x7f; }

void append_pair(std::string& text, char c) {
  text += kDigits[static_cast<unsigned char>(c) >> 4];
  text += kDigits[static_cast<unsigned char>(c) & 15];
}

}  // namespace

std::optional<std::string> quoted(std::string_view text) {
  if (std::any_of(text.begin(), text.end(), is_control)) return std::nullopt;
  std::string word = "\"";
  for (const char c : text) {
    if (c == '"' || c == '\\') word += '\\';
    word += c;
  }
  return word + '"';
}

std::string hex(std::string_view octets) {
  if (octets.empty()) return "\"\"";
  std::string word = "0x";
  for (const char c : octets) append_pair(word, c);
  return word;
}

std::string dotted(const Oid& oid) {
  std::string text;
  for (const std::uint32_t number : oid) text += "." + std::to_string(number);
  return text;
}

std::string printable(std::string_view text) {
  std::string out;
  for (const char c : text) {
    if (is_control(c)) {
      out += "\\x";
      append_pair(out, c);
    } else {
      out += c;
    }
  }
  return out;
}

}  // namespace standin::agent
