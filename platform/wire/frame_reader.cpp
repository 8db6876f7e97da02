#include <limits>

#include "platform/wire/frame.h"
#include "platform/wire/token_stream.h"

namespace standin {
namespace {

constexpr std::size_t kMaxOid = 128;  // RFC 2578 section 3.5

// Reads tokens in order; each get checks the kind. The element counts of arrays can be trusted:
// tokenize has seen that many elements.
class Cursor {
 public:
  explicit Cursor(std::vector<Token> tokens) : tokens_(std::move(tokens)) {}

  bool at_end() const { return at_ == tokens_.size(); }

  std::uint64_t number() { return expect(Token::Kind::positive, "a number").number; }

  std::int64_t signed_number() {
    const Token& token = next();
    const bool negative = token.kind == Token::Kind::negative;
    if (!negative && (token.kind != Token::Kind::positive ||
                      token.number > std::numeric_limits<std::int64_t>::max())) {
      throw WireError("a frame lacks a signed number where one is due");
    }
    return static_cast<std::int64_t>(token.number);
  }

  bool boolean() { return expect(Token::Kind::boolean, "a boolean").number != 0; }

  std::string text() {
    const Token& token = expect(Token::Kind::text, "a text");
    return {token.size == 0 ? "" : token.data, token.size};
  }

  std::string octets() {
    const Token& token = expect(Token::Kind::octets, "a binary value");
    return {token.size == 0 ? "" : token.data, token.size};
  }

  std::size_t array() { return expect(Token::Kind::array, "an array").size; }

  bool skip_nil() {
    if (next().kind == Token::Kind::nil) return true;
    --at_;
    return false;
  }

  Value value();
  Level values(std::size_t count);
  PathStep step();

 private:
  const Token& next() {
    if (at_end()) throw WireError("a frame ends before an element that is due");
    return tokens_[at_++];
  }
  const Token& expect(Token::Kind kind, const char* what) {
    const Token& token = next();
    if (token.kind != kind) throw WireError(std::string("a frame lacks ") + what + " where due");
    return token;
  }
  std::uint32_t number32() {
    const std::uint64_t n = number();
    if (n > UINT32_MAX) throw WireError("a number in a frame is past 32 bits");
    return static_cast<std::uint32_t>(n);
  }
  Tag tag() {
    const std::uint32_t name = number32();
    return {name, number32()};
  }
  template <typename Int>
  Value signed_value(Type type) {
    const std::int64_t n = signed_number();
    if (n < std::numeric_limits<Int>::min() || n > std::numeric_limits<Int>::max()) {
      throw WireError("a number in a frame is out of its type's range");
    }
    return Value::signed_number(type, n);
  }
  template <typename Int>
  Value unsigned_value(Type type) {
    const std::uint64_t n = number();
    if (n > std::numeric_limits<Int>::max()) {
      throw WireError("a number in a frame is out of its type's range");
    }
    return Value::unsigned_number(type, n);
  }
  Value address(std::size_t size) {
    std::string octets = this->octets();
    if (octets.size() != size) throw WireError("an address in a frame has a wrong length");
    return Value::address(std::move(octets));
  }
  Value oid(std::size_t count) {
    if (count > kMaxOid) throw WireError("an object identifier in a frame is too long");
    Oid oid(count);
    for (std::uint32_t& n : oid) n = number32();
    return Value::oid(std::move(oid));
  }
  Value contents(Type type, std::size_t count);

  std::vector<Token> tokens_;
  std::size_t at_ = 0;
};

Value Cursor::value() {
  const std::size_t elements = array();
  if (elements == 0) throw WireError("a value in a frame has no type");
  const std::uint64_t type = number();
  if (type > UINT8_MAX) throw WireError("a value in a frame has an unknown type");
  return contents(static_cast<Type>(type), elements - 1);
}

// `count`: the elements that follow the type.
Value Cursor::contents(Type type, std::size_t count) {
  if (type == Type::list) return Value::list(values(count));
  if (type == Type::oid) return oid(count);
  const std::size_t due = type == Type::noexists ? 0 : type == Type::xmltag ? 2 : 1;
  if (count != due) throw WireError("a value in a frame has a wrong number of elements");
  switch (type) {
    case Type::noexists:
      return {};
    case Type::xmltag:
      return Value::tag(tag());
    case Type::str:
      return Value::text(text());
    case Type::buf:
      return Value::buf(text());
    case Type::int8:
      return signed_value<std::int8_t>(type);
    case Type::int16:
      return signed_value<std::int16_t>(type);
    case Type::int32:
    case Type::enumeration:
      return signed_value<std::int32_t>(type);
    case Type::int64:
      return signed_value<std::int64_t>(type);
    case Type::uint8:
      return unsigned_value<std::uint8_t>(type);
    case Type::uint16:
      return unsigned_value<std::uint16_t>(type);
    case Type::uint32:
      return unsigned_value<std::uint32_t>(type);
    case Type::uint64:
      return unsigned_value<std::uint64_t>(type);
    case Type::ipv4:
      return address(4);
    case Type::ipv6:
      return address(16);
    case Type::boolean:
      return Value::boolean(boolean());
    case Type::binary:
      return Value::octets(octets());
    case Type::oid:
    case Type::list:
      break;
  }
  throw WireError("a value in a frame has an unknown type");
}

Level Cursor::values(std::size_t count) {
  Level level;
  level.reserve(count);
  for (std::size_t i = 0; i < count; ++i) level.push_back(value());
  return level;
}

PathStep Cursor::step() {
  const std::size_t elements = array();
  if (elements == 0) throw WireError("a path step in a frame has no kind");
  const std::uint64_t kind = number();
  PathStep step;
  if (kind == static_cast<std::uint64_t>(PathStep::Kind::name) && elements == 2) {
    step.kind = PathStep::Kind::name;
    step.name = text();
  } else if (kind == static_cast<std::uint64_t>(PathStep::Kind::tag) && elements == 3) {
    step.kind = PathStep::Kind::tag;
    step.tag = tag();
  } else if (kind == static_cast<std::uint64_t>(PathStep::Kind::keys)) {
    step.kind = PathStep::Kind::keys;
    step.keys = values(elements - 1);
  } else {
    throw WireError("a path step in a frame is of an unknown kind");
  }
  return step;
}

}  // namespace

struct FrameReader::Impl {
  explicit Impl(std::string_view text) : payload(text), cursor(tokenize(payload)) {
    cursor.array();
  }
  std::string payload;  // the tokens point into it
  Cursor cursor;
};

FrameReader::FrameReader(std::string_view payload) : impl_(std::make_unique<Impl>(payload)) {}
FrameReader::~FrameReader() = default;
FrameReader::FrameReader(FrameReader&&) noexcept = default;
FrameReader& FrameReader::operator=(FrameReader&&) noexcept = default;

bool FrameReader::at_end() const { return impl_->cursor.at_end(); }
std::uint64_t FrameReader::number() { return impl_->cursor.number(); }
std::int64_t FrameReader::signed_number() { return impl_->cursor.signed_number(); }
bool FrameReader::boolean() { return impl_->cursor.boolean(); }
std::string FrameReader::text() { return impl_->cursor.text(); }
Value FrameReader::value() { return impl_->cursor.value(); }
Level FrameReader::level() { return impl_->cursor.values(impl_->cursor.array()); }
bool FrameReader::skip_nil() { return impl_->cursor.skip_nil(); }
std::size_t FrameReader::array() { return impl_->cursor.array(); }

Keypath FrameReader::keypath() {
  Keypath kp(array());
  for (Level& level : kp) level = this->level();
  return kp;
}

Path FrameReader::path() {
  Path path(array());
  for (PathStep& step : path) step = impl_->cursor.step();
  return path;
}

std::vector<std::string> FrameReader::texts() {
  std::vector<std::string> texts(array());
  for (std::string& text : texts) text = this->text();
  return texts;
}

Value unpack_value(std::string_view octets) {
  Cursor cursor(tokenize(octets));
  Value v = cursor.value();
  if (!cursor.at_end()) throw WireError("octets after a value");
  return v;
}

}  // namespace standin
