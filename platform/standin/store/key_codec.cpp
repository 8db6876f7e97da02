#include "key_codec.h"

namespace standin {
namespace {

constexpr std::uint64_t kSignBit = std::uint64_t{1} << 63;

template <typename Number>
void append_number(std::string& key, Number n) {
  for (unsigned shift = sizeof n * 8; shift > 0; shift -= 8)
    key.push_back(static_cast<char>(static_cast<std::uint8_t>(n >> (shift - 8))));
}

template <typename Number>
std::optional<Number> take_number(std::string_view& in) {
  if (in.size() < sizeof(Number)) return std::nullopt;
  Number n = 0;
  for (std::size_t i = 0; i < sizeof n; ++i)
    n = static_cast<Number>((n << 8) | static_cast<std::uint8_t>(in[i]));
  in.remove_prefix(sizeof n);
  return n;
}

void append_octets(std::string& key, std::string_view octets) {
  for (const char c : octets) {
    key.push_back(c);
    if (c == '\0') key.push_back('\xff');
  }
  key.append(2, '\0');
}

std::optional<std::string> take_octets(std::string_view& in) {
  std::string octets;
  for (std::size_t i = 0; i < in.size(); ++i) {
    if (in[i] != '\0') {
      octets.push_back(in[i]);
      continue;
    }
    if (++i == in.size()) break;
    if (in[i] == '\0') {
      in.remove_prefix(i + 1);
      return octets;
    }
    if (in[i] != '\xff') break;
    octets.push_back('\0');
  }
  return std::nullopt;
}

void append_oid(std::string& key, const Oid& oid) {
  for (const std::uint32_t n : oid) {
    key.push_back('\1');
    append_number(key, n);
  }
  key.push_back('\0');
}

std::optional<Oid> take_oid(std::string_view& in) {
  Oid oid;
  while (!in.empty()) {
    const char more = in.front();
    in.remove_prefix(1);
    if (more == '\0') return oid;
    const auto n = more == '\1' ? take_number<std::uint32_t>(in) : std::nullopt;
    if (!n) break;
    oid.push_back(*n);
  }
  return std::nullopt;
}

constexpr std::size_t address_size(Type t) { return t == Type::ipv4 ? 4 : 16; }

// Wraps what a reader found, and passes on that it found nothing.
template <typename Found, typename Make>
std::optional<Value> made(const std::optional<Found>& found, Make make) {
  if (!found) return std::nullopt;
  return make(*found);
}

std::optional<Value> take_address(std::string_view& in, Type type) {
  const std::size_t size = address_size(type);
  if (in.size() < size) return std::nullopt;
  auto v = Value::address(std::string(in.substr(0, size)));
  in.remove_prefix(size);
  return v;
}

std::optional<Value> take_boolean(std::string_view& in) {
  if (in.empty() || static_cast<std::uint8_t>(in.front()) > 1) return std::nullopt;
  const bool b = in.front() == '\1';
  in.remove_prefix(1);
  return Value::boolean(b);
}

std::optional<Value> take_value(std::string_view& in) {
  if (in.empty()) return std::nullopt;
  const auto type = static_cast<Type>(in.front());
  in.remove_prefix(1);
  switch (type) {
    case Type::int8:
    case Type::int16:
    case Type::int32:
    case Type::int64:
    case Type::enumeration:
      return made(take_number<std::uint64_t>(in), [&](std::uint64_t n) {
        return Value::signed_number(type, static_cast<std::int64_t>(n ^ kSignBit));
      });
    case Type::uint8:
    case Type::uint16:
    case Type::uint32:
    case Type::uint64:
      return made(take_number<std::uint64_t>(in),
                  [&](std::uint64_t n) { return Value::unsigned_number(type, n); });
    case Type::buf:
      return made(take_octets(in), [](const std::string& s) { return Value::buf(s); });
    case Type::binary:
      return made(take_octets(in), [](const std::string& s) { return Value::octets(s); });
    case Type::oid:
      return made(take_oid(in), [](const Oid& oid) { return Value::oid(oid); });
    case Type::ipv4:
    case Type::ipv6:
      return take_address(in, type);
    case Type::boolean:
      return take_boolean(in);
    case Type::noexists:
    case Type::xmltag:
    case Type::str:
    case Type::list:
      break;
  }
  return std::nullopt;
}

}  // namespace

void append_id(std::string& key, std::uint16_t id) { append_number(key, id); }

void append_value(std::string& key, const Value& v) {
  const auto type_octet = static_cast<char>(v.type());
  switch (v.type()) {
    case Type::int8:
    case Type::int16:
    case Type::int32:
    case Type::int64:
    case Type::enumeration:
      key.push_back(type_octet);
      return append_number(key, static_cast<std::uint64_t>(v.number()) ^ kSignBit);
    case Type::uint8:
    case Type::uint16:
    case Type::uint32:
    case Type::uint64:
      key.push_back(type_octet);
      return append_number(key, v.unsigned_number());
    case Type::buf:
    case Type::binary:
      key.push_back(type_octet);
      return append_octets(key, v.bytes());
    case Type::oid:
      key.push_back(type_octet);
      return append_oid(key, v.oid());
    case Type::ipv4:
    case Type::ipv6:
      if (v.bytes().size() != address_size(v.type())) break;
      key.push_back(type_octet);
      key.append(v.bytes());
      return;
    case Type::boolean:
      key.push_back(type_octet);
      key.push_back(v.boolean() ? '\1' : '\0');
      return;
    case Type::noexists:
    case Type::xmltag:
    case Type::str:
    case Type::list:
      break;
  }
  throw Refusal(ErrorCode::badtype, "a value of this type cannot be a key");
}

void append_step(std::string& key, const NodePath::Step& step) {
  append_id(key, step.node->id);
  for (const Value& v : step.keys) append_value(key, v);
}

std::string store_key(const NodePath& path) {
  std::string key;
  for (const NodePath::Step& step : path.steps) append_step(key, step);
  return key;
}

// No node has a number this high, and neither a number nor a type begins with FF FF, so everything
// below stands before the end.
std::string range_end(std::string key) { return key.append(2, '\xff'); }

std::string content_end(std::string key) {
  append_id(key, kAttributeId);
  return key;
}

std::string attribute_key(std::string node_key, std::uint32_t number) {
  append_id(node_key, kAttributeId);
  append_number(node_key, number);
  return node_key;
}

std::optional<std::uint32_t> attribute_number(std::string_view key, std::string_view node_key) {
  const std::string head = content_end(std::string(node_key));
  if (!key.starts_with(head) || key.size() != head.size() + sizeof(std::uint32_t))
    return std::nullopt;
  key.remove_prefix(head.size());
  return take_number<std::uint32_t>(key);
}

std::optional<Level> entry_keys(std::string_view key, std::string_view list_key,
                                std::size_t count) {
  if (!key.starts_with(list_key)) return std::nullopt;
  key.remove_prefix(list_key.size());
  Level keys;
  while (keys.size() < count) {
    auto v = take_value(key);
    if (!v) return std::nullopt;
    keys.push_back(std::move(*v));
  }
  return keys;
}

}  // namespace standin
