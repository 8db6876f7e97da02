// The values that travel between server, library and client, and that the store keeps.
#pragma once

#include <compare>
#include <cstdint>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

namespace standin {

// Numbers are those of the library's confd_vtype; libconfd asserts it.
enum class Type : std::uint8_t {
  noexists = 1,
  xmltag = 2,
  str = 5,  // text still to be read by the node's type; `buf` where the type is a string
  buf = 6,
  int8 = 7,
  int16 = 8,
  int32 = 9,
  int64 = 10,
  uint8 = 11,
  uint16 = 12,
  uint32 = 13,
  uint64 = 14,
  ipv4 = 16,
  ipv6 = 17,
  boolean = 18,
  enumeration = 29,
  list = 31,
  oid = 38,
  binary = 39,
};

struct Tag {
  std::uint32_t tag = 0;  // number of the element's name
  std::uint32_t ns = 0;   // number of its module's namespace
  auto operator<=>(const Tag&) const = default;
};

using Oid = std::vector<std::uint32_t>;

// A tagged value; the alternative in use follows from the type:
//   noexists -> monostate, xmltag -> Tag, str/buf/binary/ipv4/ipv6 -> string (4 and 16 octets for
//   addresses), int* and enumeration -> int64, uint* -> uint64, boolean -> bool, oid -> Oid,
//   list -> vector<Value>.
class Value {
 public:
  Value() = default;
  static Value text(std::string s) { return {Type::str, std::move(s)}; }
  static Value buf(std::string s) { return {Type::buf, std::move(s)}; }
  static Value octets(std::string s) { return {Type::binary, std::move(s)}; }
  static Value address(std::string octets) {
    return {octets.size() == 16 ? Type::ipv6 : Type::ipv4, std::move(octets)};
  }
  static Value signed_number(Type t, std::int64_t n) { return {t, n}; }
  static Value unsigned_number(Type t, std::uint64_t n) { return {t, n}; }
  static Value int32(std::int32_t n) { return {Type::int32, std::int64_t{n}}; }
  static Value enumeration(std::int32_t n) { return {Type::enumeration, std::int64_t{n}}; }
  static Value boolean(bool b) { return {Type::boolean, b}; }
  static Value oid(Oid o) { return {Type::oid, std::move(o)}; }
  static Value tag(Tag t) { return {Type::xmltag, t}; }
  static Value list(std::vector<Value> items) { return {Type::list, std::move(items)}; }

  Type type() const { return type_; }
  bool is(Type t) const { return type_ == t; }
  bool exists() const { return type_ != Type::noexists; }

  // Each throws std::bad_variant_access on another type's value.
  const std::string& bytes() const { return std::get<std::string>(data_); }
  std::int64_t number() const { return std::get<std::int64_t>(data_); }
  std::uint64_t unsigned_number() const { return std::get<std::uint64_t>(data_); }
  bool boolean() const { return std::get<bool>(data_); }
  const Oid& oid() const { return std::get<Oid>(data_); }
  Tag tag() const { return std::get<Tag>(data_); }
  const std::vector<Value>& items() const { return std::get<std::vector<Value>>(data_); }

  bool operator==(const Value&) const = default;

 private:
  using Data = std::variant<std::monostate, bool, std::int64_t, std::uint64_t, std::string, Oid,
                            Tag, std::vector<Value>>;
  Value(Type t, Data d) : type_(t), data_(std::move(d)) {}

  Type type_ = Type::noexists;
  Data data_;
};

// Text without a schema: decimal numbers, strings raw, canonical addresses, dotted OIDs, octets as
// 80:00:7e, lists with blanks between, tags as "ns:tag" in numbers.
std::string to_text(const Value& v);

// 31-bit FNV-1a of an element's name or a namespace's URI, never 0: what a Tag holds.
std::uint32_t tag_number(std::string_view name);

// One level of a keypath: an element (one xmltag) or the keys of a list entry.
using Level = std::vector<Value>;
// Outermost level first, as it travels; the library turns it round.
using Keypath = std::vector<Level>;

}  // namespace standin
