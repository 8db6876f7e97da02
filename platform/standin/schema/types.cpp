#include "types.h"

#include <libyang/plugins_types.h>

#include <algorithm>
#include <limits>
#include <stdexcept>

namespace standin {
namespace {

const lysc_type_str* string_type(const Node& node) {
  const lysc_type* type = libyang_type(node.lysc);
  return type->basetype == LY_TYPE_STRING ? reinterpret_cast<const lysc_type_str*>(type) : nullptr;
}

bool shares_pattern(const lysc_type* type, const lysc_type* other) {
  if (other == nullptr || type->basetype != LY_TYPE_STRING) return false;
  const auto* a = reinterpret_cast<const lysc_type_str*>(type)->patterns;
  const auto* b = reinterpret_cast<const lysc_type_str*>(other)->patterns;
  return a != nullptr && b != nullptr && a[0] == b[0];
}

// An address is a string to libyang; the built-in plugin of the type tells it apart.
bool is_address(const lysc_type* type) {
  if (type->basetype == LY_TYPE_UNION) {
    const auto* members = reinterpret_cast<const lysc_type_union*>(type)->types;
    return std::all_of(members, members + LY_ARRAY_COUNT(members), is_address);
  }
  const std::string_view id = type->plugin->id == nullptr ? "" : type->plugin->id;
  return id.starts_with("libyang 2 - ipv4-address") || id.starts_with("libyang 2 - ipv6-address");
}

struct Plain {
  LY_DATA_TYPE base;
  Type type;
  const char* name;
};
constexpr Plain kPlain[] = {
    {LY_TYPE_INT8, Type::int8, "int8"},       {LY_TYPE_INT16, Type::int16, "int16"},
    {LY_TYPE_INT32, Type::int32, "int32"},    {LY_TYPE_INT64, Type::int64, "int64"},
    {LY_TYPE_UINT8, Type::uint8, "uint8"},    {LY_TYPE_UINT16, Type::uint16, "uint16"},
    {LY_TYPE_UINT32, Type::uint32, "uint32"}, {LY_TYPE_UINT64, Type::uint64, "uint64"},
    {LY_TYPE_BOOL, Type::boolean, "boolean"}, {LY_TYPE_ENUM, Type::enumeration, "enumeration"},
    {LY_TYPE_EMPTY, Type::xmltag, "empty"},   {LY_TYPE_STRING, Type::buf, "string"},
};

template <typename Number>
std::pair<Number, Number> bounds_of(Type type) {
  switch (type) {
    case Type::int8:
      return {std::numeric_limits<std::int8_t>::min(), std::numeric_limits<std::int8_t>::max()};
    case Type::int16:
      return {std::numeric_limits<std::int16_t>::min(), std::numeric_limits<std::int16_t>::max()};
    case Type::int32:
      return {std::numeric_limits<std::int32_t>::min(), std::numeric_limits<std::int32_t>::max()};
    case Type::uint8:
      return {0, std::numeric_limits<std::uint8_t>::max()};
    case Type::uint16:
      return {0, std::numeric_limits<std::uint16_t>::max()};
    case Type::uint32:
      return {0, std::numeric_limits<std::uint32_t>::max()};
    default:
      return {std::numeric_limits<Number>::min(), std::numeric_limits<Number>::max()};
  }
}

template <typename Number>
std::string interval(Number low, Number high) {
  std::string text = std::to_string(low);
  if (high != low) text += " to " + std::to_string(high);
  return text;
}

std::string number_requirement(const Node& node) {
  const auto* type = reinterpret_cast<const lysc_type_num*>(libyang_type(node.lysc));
  const bool is_signed = type->basetype >= LY_TYPE_INT8;
  std::string allowed;
  if (type->range == nullptr && is_signed) {
    const auto [low, high] = bounds_of<std::int64_t>(node.type);
    allowed = interval(low, high);
  } else if (type->range == nullptr) {
    const auto [low, high] = bounds_of<std::uint64_t>(node.type);
    allowed = interval(low, high);
  } else {
    const auto* parts = type->range->parts;
    for (std::size_t i = 0; i < LY_ARRAY_COUNT(parts); ++i) {
      if (i != 0) allowed += " or ";
      allowed += is_signed ? interval(parts[i].min_64, parts[i].max_64)
                           : interval(parts[i].min_u64, parts[i].max_u64);
    }
  }
  return "a whole number of " + allowed + " is needed";
}

// n octets as a hex string are 3n - 1 characters, none is the empty text.
std::uint64_t octets_of(std::uint64_t characters) {
  return characters == std::numeric_limits<std::uint64_t>::max() ? characters
                                                                 : (characters + 1) / 3;
}

// Lengths that the model gives a string or octets, in octets; none: any.
using Sizes = std::vector<std::pair<std::uint64_t, std::uint64_t>>;
constexpr auto kNoLimit = std::numeric_limits<std::uint64_t>::max();

Sizes sizes_of(const Node& node) {
  const auto* type = string_type(node);
  Sizes sizes;
  if (type == nullptr || type->length == nullptr) return sizes;
  const auto* parts = type->length->parts;
  for (std::size_t i = 0; i < LY_ARRAY_COUNT(parts); ++i) {
    const bool hex = node.type == Type::binary;
    sizes.emplace_back(hex ? octets_of(parts[i].min_u64) : parts[i].min_u64,
                       hex ? octets_of(parts[i].max_u64) : parts[i].max_u64);
  }
  return sizes;
}

std::string size_text(const Sizes& sizes) {
  std::string text;
  for (const auto& [low, high] : sizes) text += (text.empty() ? "" : " or ") + interval(low, high);
  return text;
}

}  // namespace

std::string flowed(const char* text) {
  std::string out;
  for (const char* c = text == nullptr ? "" : text; *c != '\0'; ++c) {
    const bool blank = *c == ' ' || *c == '\n' || *c == '\t' || *c == '\r';
    if (!blank) out += *c;
    if (blank && !out.empty() && out.back() != ' ') out += ' ';
  }
  if (out.ends_with(' ')) out.pop_back();
  return out;
}

const lysc_type* libyang_type(const lysc_node* leaf) {
  return leaf->nodetype == LYS_LEAFLIST ? reinterpret_cast<const lysc_node_leaflist*>(leaf)->type
                                        : reinterpret_cast<const lysc_node_leaf*>(leaf)->type;
}

void describe_type(Node& node, const lysc_type* type, bool octets, const lysc_type* oid) {
  const auto set = [&node](Type t, const char* name) {
    node.type = t;
    node.type_name = name;
  };
  if (octets && type->basetype != LY_TYPE_STRING) {
    throw std::runtime_error("octets are a hex string");
  }
  if (octets) return set(Type::binary, "octets");
  if (shares_pattern(type, oid)) return set(Type::oid, "object-identifier");
  if (is_address(type)) return set(Type::ipv4, "ip-address");
  const auto* plain = std::ranges::find(kPlain, type->basetype, &Plain::base);
  if (plain == std::end(kPlain)) throw std::runtime_error("a type that is not served");
  set(plain->type, plain->name);
  if (node.type != Type::enumeration) return;
  const auto* items = reinterpret_cast<const lysc_type_enum*>(type)->enums;
  for (std::size_t i = 0; i < LY_ARRAY_COUNT(items); ++i) {
    node.labels.emplace_back(items[i].value, items[i].name);
  }
  std::ranges::sort(node.labels);
}

std::string requirement(const Node& node) {
  switch (node.type) {
    case Type::boolean:
      return "true or false is needed";
    case Type::ipv4:
      return "an IPv4 or IPv6 address is needed";
    case Type::binary:
      return "octets are needed as pairs of hexadecimal digits with colons between";
    case Type::xmltag:
      return "it takes no value";
    case Type::enumeration: {
      std::string text = "one of";
      for (const auto& [number, label] : node.labels)
        text += (text.size() > 6 ? ", " : " ") + label;
      return text + " is needed";
    }
    case Type::buf:
    case Type::oid:
      return {};
    default:
      return number_requirement(node);
  }
}

std::string size_problem(const Node& node, std::size_t octets) {
  const Sizes sizes = sizes_of(node);
  const auto fits = [octets](const auto& s) { return octets >= s.first && octets <= s.second; };
  if (sizes.empty() || std::ranges::any_of(sizes, fits)) return {};
  if (sizes.back().second == kNoLimit) return "it is too short";
  const std::string allowed = size_text(sizes);
  return allowed + (allowed == "1" ? " octet is needed" : " octets are needed");
}

std::string admitted(const Node& node) {
  if (node.type != Type::buf && node.type != Type::oid && node.type != Type::binary) {
    constexpr std::string_view kNeeded = " is needed";
    std::string text = requirement(node);
    if (text.ends_with(kNeeded)) text.resize(text.size() - kNeeded.size());
    return text;
  }
  std::string text;
  const auto also = [&text](const std::string& part) { text += (text.empty() ? "" : "; ") + part; };
  const Sizes sizes = sizes_of(node);
  if (!sizes.empty() && sizes.back().second != kNoLimit) also(size_text(sizes) + " octets");
  if (node.type == Type::binary) {
    also("pairs of hexadecimal digits with colons between");
    return text;
  }
  const auto* type = string_type(node);
  for (std::size_t i = 0; type != nullptr && i < LY_ARRAY_COUNT(type->patterns); ++i) {
    if (type->patterns[i]->emsg != nullptr) also(type->patterns[i]->emsg);
  }
  return text;
}

std::size_t pattern_count(const Node& node) {
  const auto* type = string_type(node);
  return type == nullptr ? 0 : LY_ARRAY_COUNT(type->patterns);
}

bool is_pattern_message(const Node& node, std::string_view message) {
  const auto* type = string_type(node);
  if (type == nullptr || type->patterns == nullptr) return false;
  return std::any_of(
      type->patterns, type->patterns + LY_ARRAY_COUNT(type->patterns),
      [message](const lysc_pattern* p) { return p->emsg != nullptr && message == p->emsg; });
}

}  // namespace standin
