#include "platform/wire/token_stream.h"

#include <algorithm>
#include <msgpack.hpp>

#include "platform/wire/frame.h"

namespace standin {
namespace {

// Called by msgpack's parser for each element. An array's announced count allocates nothing: the
// parser itself fails when the elements do not follow.
class Collector : public msgpack::null_visitor {
 public:
  explicit Collector(std::vector<Token>& tokens) : tokens_(tokens) {}

  bool visit_nil() { return add(Token::Kind::nil, 0); }
  bool visit_boolean(bool b) { return add(Token::Kind::boolean, b ? 1 : 0); }
  bool visit_positive_integer(std::uint64_t n) { return add(Token::Kind::positive, n); }
  bool visit_negative_integer(std::int64_t n) {
    // A signed encoding may carry a number that is not negative.
    return add(n < 0 ? Token::Kind::negative : Token::Kind::positive,
               static_cast<std::uint64_t>(n));
  }
  bool visit_str(const char* data, std::uint32_t size) {
    return add_octets(Token::Kind::text, data, size);
  }
  bool visit_bin(const char* data, std::uint32_t size) {
    return add_octets(Token::Kind::octets, data, size);
  }
  bool visit_float32(float) { return refuse("a frame holds a floating-point number"); }
  bool visit_float64(double) { return refuse("a frame holds a floating-point number"); }
  bool visit_ext(const char*, std::uint32_t) { return refuse("a frame holds an extension type"); }
  bool start_map(std::uint32_t) { return refuse("a frame holds a map"); }
  bool start_array(std::uint32_t count) {
    if (++depth_ > kMaxDepth) return refuse("a frame is nested too deep");
    if (!add(Token::Kind::array, 0)) return false;
    tokens_.back().size = count;
    return true;
  }
  bool end_array() {
    --depth_;
    return true;
  }

  const char* refusal() const { return refusal_; }

 private:
  bool refuse(const char* why) {
    refusal_ = why;
    return false;
  }
  bool add(Token::Kind kind, std::uint64_t number) {
    if (tokens_.size() == kMaxElements) return refuse("a frame holds too many elements");
    Token token;
    token.kind = kind;
    token.number = number;
    tokens_.push_back(token);
    return true;
  }
  bool add_octets(Token::Kind kind, const char* data, std::uint32_t size) {
    if (!add(kind, 0)) return false;
    tokens_.back().data = data;
    tokens_.back().size = size;
    return true;
  }

  std::vector<Token>& tokens_;
  std::size_t depth_ = 0;
  const char* refusal_ = "a frame is cut short or not msgpack";
};

}  // namespace

std::vector<Token> tokenize(std::string_view payload) {
  std::vector<Token> tokens;
  // Each element takes at least one octet; most frames are small and fit without growing.
  tokens.reserve(std::min<std::size_t>(payload.size(), 64));
  Collector collector(tokens);
  std::size_t offset = 0;
  bool complete = false;
  try {
    complete = msgpack::parse(payload.data(), payload.size(), offset, collector);
  } catch (const msgpack::unpack_error&) {  // sizes that no frame can have
    complete = false;
  }
  if (!complete) throw WireError(collector.refusal());
  if (offset != payload.size()) throw WireError("a frame has octets after its message");
  return tokens;
}

}  // namespace standin
