#include "json.h"

#include <cstdint>

#include "platform/standin/schema/schema.h"

namespace standin {
namespace {

constexpr int kDeepest = 64;  // far below any schema here, far above a stack's end

class Parser {
 public:
  explicit Parser(std::string_view text) : text_(text) {}

  Json document() {
    Json j = value(0);
    skip_blanks();
    if (at_ < text_.size()) fail("unexpected text after the document");
    return j;
  }

 private:
  [[noreturn]] void fail(const std::string& what) const {
    throw Refusal(ErrorCode::badvalue, "line " + std::to_string(line_) + ": " + what);
  }

  char peek() const { return at_ < text_.size() ? text_[at_] : '\0'; }

  void skip_blanks() {
    for (; at_ < text_.size(); ++at_) {
      const char c = text_[at_];
      if (c == '\n') ++line_;
      if (c != ' ' && c != '\t' && c != '\r' && c != '\n') return;
    }
  }

  bool take(char c) {
    skip_blanks();
    if (peek() != c || at_ >= text_.size()) return false;
    ++at_;
    return true;
  }

  void expect(char c) {
    if (!take(c)) fail(std::string("expected \"") + c + "\"");
  }

  Json value(int depth) {
    if (depth > kDeepest) fail("nested too deeply");
    skip_blanks();
    Json j;
    j.line = line_;
    switch (peek()) {
      case '{':
        object(j, depth);
        break;
      case '[':
        array(j, depth);
        break;
      case '"':
        j.kind = Json::Kind::string;
        j.text = string();
        break;
      default:
        word(j);
    }
    return j;
  }

  void object(Json& j, int depth) {
    j.kind = Json::Kind::object;
    expect('{');
    if (take('}')) return;
    do {
      skip_blanks();
      if (peek() != '"') fail("expected a name in quotes");
      std::string name = string();
      for (const auto& member : j.members) {
        if (member.name == name) fail("\"" + name + "\" stands twice");
      }
      expect(':');
      j.members.push_back({std::move(name), value(depth + 1)});
    } while (take(','));
    expect('}');
  }

  void array(Json& j, int depth) {
    j.kind = Json::Kind::array;
    expect('[');
    if (take(']')) return;
    do {
      j.items.push_back(value(depth + 1));
    } while (take(','));
    expect(']');
  }

  void word(Json& j) {
    const std::size_t from = at_;
    while (at_ < text_.size() &&
           std::string_view(" \t\r\n,]}:{[\"").find(text_[at_]) == std::string_view::npos) {
      ++at_;
    }
    j.text = text_.substr(from, at_ - from);
    if (j.text == "null") {
      j.kind = Json::Kind::null;
    } else if (j.text == "true" || j.text == "false") {
      j.kind = Json::Kind::boolean;
    } else if (is_number(j.text)) {
      j.kind = Json::Kind::number;
    } else {
      fail(j.text.empty() ? "expected a value" : "this is no value");
    }
  }

  static bool is_number(std::string_view t) {
    const auto digits = [&t] {
      std::size_t n = 0;
      while (n < t.size() && t[n] >= '0' && t[n] <= '9') ++n;
      t.remove_prefix(n);
      return n;
    };
    if (!t.empty() && t.front() == '-') t.remove_prefix(1);
    const bool zero = !t.empty() && t.front() == '0';
    const std::size_t whole = digits();
    if (whole == 0 || (zero && whole > 1)) return false;
    if (!t.empty() && t.front() == '.') {
      t.remove_prefix(1);
      if (digits() == 0) return false;
    }
    if (!t.empty() && (t.front() == 'e' || t.front() == 'E')) {
      t.remove_prefix(1);
      if (!t.empty() && (t.front() == '+' || t.front() == '-')) t.remove_prefix(1);
      if (digits() == 0) return false;
    }
    return t.empty();
  }

  std::string string() {
    ++at_;  // the quote
    std::string out;
    while (true) {
      if (at_ >= text_.size()) fail("a text without its closing quote");
      const char c = text_[at_++];
      if (c == '"') return out;
      if (static_cast<unsigned char>(c) < 0x20) fail("a control character inside a text");
      if (c == '\\') {
        escape(out);
      } else {
        out += c;
      }
    }
  }

  void escape(std::string& out) {
    constexpr std::string_view kLetters = "\"\\/bfnrt";
    constexpr std::string_view kMeanings = "\"\\/\b\f\n\r\t";
    const char c = peek();
    ++at_;
    if (const auto i = kLetters.find(c); c != '\0' && i != std::string_view::npos) {
      out += kMeanings[i];
    } else if (c == 'u') {
      utf8(out, code_point());
    } else {
      fail("an unknown escape inside a text");
    }
  }

  std::uint32_t hex4() {
    std::uint32_t n = 0;
    for (int i = 0; i < 4; ++i) {
      const char c = peek();
      ++at_;
      n <<= 4;
      if (c >= '0' && c <= '9') {
        n |= static_cast<std::uint32_t>(c - '0');
      } else if (c >= 'a' && c <= 'f') {
        n |= static_cast<std::uint32_t>(c - 'a' + 10);
      } else if (c >= 'A' && c <= 'F') {
        n |= static_cast<std::uint32_t>(c - 'A' + 10);
      } else {
        fail("\\u needs four hexadecimal digits");
      }
    }
    return n;
  }

  std::uint32_t code_point() {
    const std::uint32_t high = hex4();
    if (high < 0xd800 || high > 0xdfff) return high;
    if (high > 0xdbff || text_.substr(at_, 2) != "\\u") fail("half of a surrogate pair");
    at_ += 2;
    const std::uint32_t low = hex4();
    if (low < 0xdc00 || low > 0xdfff) fail("half of a surrogate pair");
    return 0x10000 + ((high - 0xd800) << 10) + (low - 0xdc00);
  }

  static void utf8(std::string& out, std::uint32_t c) {
    const auto tail = [&out, c](int shift) {
      out += static_cast<char>(0x80 | ((c >> shift) & 0x3f));
    };
    if (c < 0x80) {
      out += static_cast<char>(c);
    } else if (c < 0x800) {
      out += static_cast<char>(0xc0 | (c >> 6));
      tail(0);
    } else if (c < 0x10000) {
      out += static_cast<char>(0xe0 | (c >> 12));
      tail(6);
      tail(0);
    } else {
      out += static_cast<char>(0xf0 | (c >> 18));
      tail(12);
      tail(6);
      tail(0);
    }
  }

  std::string_view text_;
  std::size_t at_ = 0;
  int line_ = 1;
};

}  // namespace

Json::Kind json_kind(Type type) {
  switch (type) {
    case Type::int8:
    case Type::int16:
    case Type::int32:
    case Type::uint8:
    case Type::uint16:
    case Type::uint32:
      return Json::Kind::number;
    case Type::boolean:
      return Json::Kind::boolean;
    default:
      return Json::Kind::string;
  }
}

Json parse_json(std::string_view text) { return Parser(text).document(); }

}  // namespace standin
