#include "platform/wire/path.h"

#include <utility>

namespace standin {
namespace {

bool is_blank(char c) {
  return c == ' ' || c == '\t' || c == '\n' || c == '\r' || c == '\v' || c == '\f';
}

// What a word may hold only inside double quotes.
bool needs_quotes(char c) { return is_blank(c) || c == '"' || c == '{' || c == '}' || c == '\\'; }

bool is_name_char(char c) {
  return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') || c == '_' ||
         c == '-' || c == '.' || c == ':';
}

// A position in the text, and the rule for words, which paths and command lines share.
class Scanner {
 public:
  enum class Source : bool { path, line };

  Scanner(std::string_view text, Source source) : text_(text), source_(source) {}

  bool done() const { return at_ == text_.size(); }
  char peek() const { return text_[at_]; }
  bool at(char c) const { return !done() && peek() == c; }
  void advance() { ++at_; }
  bool accept(char c) {
    if (!at(c)) return false;
    ++at_;
    return true;
  }
  void skip_blanks() {
    while (!done() && is_blank(peek())) ++at_;
  }
  template <typename Predicate>
  std::string_view take_while(Predicate wanted) {
    const std::size_t start = at_;
    while (!done() && wanted(peek())) ++at_;
    return text_.substr(start, at_ - start);
  }
  std::size_t position() const { return at_; }
  std::string_view since(std::size_t start) const { return text_.substr(start, at_ - start); }

  // What stands between double quotes, the position being on the first of them.
  std::string quoted() {
    const std::size_t start = at_++;
    std::string word;
    while (!done()) {
      const char c = text_[at_++];
      if (c == '"') return word;
      if (c != '\\') {
        word += c;
        continue;
      }
      if (done()) break;
      const char escaped = text_[at_++];
      if (escaped != '"' && escaped != '\\') {
        at_ -= 2;
        fail("backslash before neither a quote nor a backslash");
      }
      word += escaped;
    }
    at_ = start;
    fail("quote without an end");
  }

  [[noreturn]] void fail(std::string_view what) const {
    // A line may hold a password, so only paths are repeated.
    throw PathError(std::string(what) + " at character " + std::to_string(at_ + 1) + " of " +
                    (source_ == Source::line ? "the line" : "'" + std::string(text_) + "'"));
  }

 private:
  std::string_view text_;
  Source source_;
  std::size_t at_ = 0;
};

std::string read_key(Scanner& in) {
  std::string word = in.at('"')
                         ? in.quoted()
                         : std::string(in.take_while([](char c) { return !needs_quotes(c); }));
  if (!in.done() && !is_blank(in.peek()) && in.peek() != '}') {
    in.fail(std::string("'") + in.peek() + "' inside a key outside quotes");
  }
  return word;
}

PathStep read_keys(Scanner& in) {
  const Scanner start = in;
  in.advance();
  PathStep step{PathStep::Kind::keys, {}, {}, {}};
  for (;;) {
    in.skip_blanks();
    if (in.done()) start.fail("brace without an end");
    if (in.accept('}')) break;
    step.keys.push_back(Value::text(read_key(in)));
  }
  if (step.keys.empty()) start.fail("braces without a key");
  return step;
}

PathStep read_name(Scanner& in) {
  const Scanner start = in;
  const std::string_view name = in.take_while(is_name_char);
  if (name.empty()) in.fail("no element name");
  const std::size_t colon = name.find(':');
  if (colon != std::string_view::npos &&
      (colon == 0 || colon + 1 == name.size() || name.find(':', colon + 1) != name.npos)) {
    start.fail("misplaced colon");
  }
  return {PathStep::Kind::name, std::string(name), {}, {}};
}

// A word of a command line that does not begin with a quote: as it stands, braces, and quotes
// inside them, included, so that a path is one word.
std::string read_bare_word(Scanner& in) {
  const Scanner start = in;
  bool in_braces = false;
  while (!in.done() && (in_braces || !is_blank(in.peek()))) {
    const char c = in.peek();
    if (c == '"' && in_braces) {
      in.quoted();
      continue;
    }
    if (c == '"' || c == '\\') in.fail(std::string("'") + c + "' inside a word outside quotes");
    if ((c == '{') == in_braces && (c == '{' || c == '}')) in.fail("misplaced brace");
    if (!in_braces && c == '}') in.fail("misplaced brace");
    if (c == '{') in_braces = true;
    if (c == '}') in_braces = false;
    in.advance();
  }
  if (in_braces) start.fail("brace without an end in the word");
  return std::string(in.since(start.position()));
}

}  // namespace

Path parse_path(std::string_view text) {
  Scanner in(text, Scanner::Source::path);
  if (!in.at('/')) in.fail("no slash at the beginning of the path");
  Path path;
  while (!in.done()) {
    if (!in.at('/')) in.fail(std::string("unexpected '") + in.peek() + "'");
    while (in.accept('/')) {
    }
    if (in.done()) break;
    path.push_back(read_name(in));
    if (in.at('{')) path.push_back(read_keys(in));
  }
  return path;
}

std::vector<std::string> split_words(std::string_view line) {
  Scanner in(line, Scanner::Source::line);
  std::vector<std::string> words;
  for (in.skip_blanks(); !in.done(); in.skip_blanks()) {
    if (!in.at('"')) {
      words.push_back(read_bare_word(in));
      continue;
    }
    words.push_back(in.quoted());
    if (!in.done() && !is_blank(in.peek())) in.fail("no blank after a quoted word");
  }
  return words;
}

std::string quote_word(std::string_view word) {
  bool plain = !word.empty();
  for (const char c : word) plain = plain && !needs_quotes(c);
  if (plain) return std::string(word);
  std::string out = "\"";
  for (const char c : word) {
    if (c == '"' || c == '\\') out += '\\';
    out += c;
  }
  return out += '"';
}

Path to_path(const Keypath& kp) {
  Path path;
  path.reserve(kp.size());
  for (const Level& level : kp) {
    if (level.size() == 1 && level.front().is(Type::xmltag)) {
      path.push_back({PathStep::Kind::tag, {}, level.front().tag(), {}});
    } else {
      path.push_back({PathStep::Kind::keys, {}, {}, level});
    }
  }
  return path;
}

}  // namespace standin
