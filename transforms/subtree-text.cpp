#include "transforms/subtree-text.h"

#include <algorithm>
#include <charconv>

namespace quillet {
namespace {

// The value of one component: 0 for "*".
std::optional<std::uint32_t> parse_component(std::string_view text) {
  if (text == "*") return 0;
  if (text.empty() || text.front() < '1' || text.front() > '9') return std::nullopt;
  std::uint32_t number = 0;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
  if (error != std::errc{} || end != text.data() + text.size()) return std::nullopt;
  return number;
}

}  // namespace

std::optional<MibSubtree> parse_subtree_text(std::string_view text) {
  if (text.empty() || text.size() > kMaxSubtreeText) return std::nullopt;
  MibSubtree subtree;
  bool wildcard = false;
  for (std::size_t start = 0; start <= text.size();) {
    const std::size_t end = std::min(text.find('.', start), text.size());
    const auto component = parse_component(text.substr(start, end - start));
    const std::size_t index = subtree.oid.size();
    if (!component || index == kMaxSubIdentifiers) return std::nullopt;
    if (index % 8 == 0) subtree.mask.push_back(0);
    if (*component == 0) {
      wildcard = true;
    } else {
      subtree.mask.back() |= static_cast<std::uint8_t>(0x80u >> (index % 8));
    }
    subtree.oid.push_back(*component);
    start = end + 1;
  }
  if (!wildcard) subtree.mask.clear();
  return subtree;
}

std::string subtree_text(const std::uint32_t* oid, std::size_t length) {
  std::string text;
  for (std::size_t i = 0; i < length; ++i) {
    if (i > 0) text += '.';
    text += oid[i] == 0 ? "*" : std::to_string(oid[i]);
  }
  return text;
}

}  // namespace quillet
