#include "xpath_text.h"

#include <cctype>
#include <map>
#include <set>

namespace standin {
namespace {

bool starts_name(char c) { return std::isalpha(static_cast<unsigned char>(c)) != 0 || c == '_'; }
bool continues_name(char c) {
  return starts_name(c) || std::isdigit(static_cast<unsigned char>(c)) != 0 || c == '-' || c == '.';
}

void gather_prefixes(const std::vector<const Node*>& nodes,
                     std::map<std::string, std::string>& out) {
  for (const Node* n : nodes) {
    out.emplace(n->prefix, n->module);
    out.emplace(n->module, n->module);
    gather_prefixes(n->children, out);
  }
}

// One pass over the expression, copying it.
class Rewriter {
 public:
  Rewriter(const Schema& schema, std::string_view in) : schema_(schema), in_(in) {
    gather_prefixes(schema.top(), modules_);
  }

  std::string run() {
    while (at_ < in_.size()) {
      const char c = in_[at_];
      if (c == '"' || c == '\'') {
        literal(c);
      } else if (starts_name(c)) {
        name();
      } else {
        symbol(c);
      }
    }
    return out_;
  }

 private:
  [[noreturn]] static void fail(const std::string& what) {
    throw Refusal(ErrorCode::xpath, "XPath: " + what);
  }

  void literal(char quote) {
    const std::size_t end = in_.find(quote, at_ + 1);
    if (end == std::string_view::npos) fail("a literal without its closing quote");
    out_ += in_.substr(at_, end + 1 - at_);
    at_ = end + 1;
    operand_ = true;
    first_ = false;
  }

  std::string_view ncname() {
    const std::size_t from = at_;
    while (at_ < in_.size() && continues_name(in_[at_])) ++at_;
    return in_.substr(from, at_ - from);
  }

  // What stands behind blanks.
  char ahead(std::size_t skip = 0) const {
    std::size_t i = at_ + skip;
    while (i < in_.size() && std::isspace(static_cast<unsigned char>(in_[i])) != 0) ++i;
    return i < in_.size() ? in_[i] : '\0';
  }

  void name() {
    static const std::set<std::string_view> kOperators{"and", "or", "div", "mod"};
    const std::string_view word = ncname();
    if (operand_ && kOperators.count(word) != 0) {
      out_ += word;
      operand_ = false;
      return;
    }
    const bool axis = in_.substr(at_, 2) == "::";
    const bool prefix = !axis && at_ + 1 < in_.size() && in_[at_] == ':';
    if (prefix) {
      const auto module = modules_.find(std::string(word));
      if (module == modules_.end()) fail("unknown prefix \"" + std::string(word) + "\"");
      out_ += module->second + ":";
      ++at_;
      out_ += in_[at_] == '*' ? in_.substr(at_++, 1) : ncname();
    } else if (axis || ahead() == '(') {
      out_ += word;
      operand_ = false;
      return;
    } else {
      if (first_ || (!operand_ && depth_ == 0 && !after_slash_)) out_ += module_of(word) + ":";
      out_ += word;
    }
    operand_ = true;
    first_ = after_slash_ = false;
  }

  std::string module_of(std::string_view word) const {
    std::string module;
    for (const Node* n : schema_.top()) {
      if (n->name != word) continue;
      if (!module.empty()) fail("\"" + std::string(word) + "\" needs a prefix");
      module = n->module;
    }
    if (module.empty()) fail("unknown node \"" + std::string(word) + "\"");
    return module;
  }

  void symbol(char c) {
    out_ += c;
    ++at_;
    if (std::isspace(static_cast<unsigned char>(c)) != 0) return;
    // A slash that follows nothing stands for the root, unless it is doubled.
    first_ = c == '/' && !operand_ && ahead() != '/' && !after_slash_;
    after_slash_ = c == '/';
    if (c == '[' || c == '(') ++depth_;
    if (c == ']' || c == ')') --depth_;
    const bool wildcard = c == '*' && !operand_;
    operand_ = wildcard || c == ')' || c == ']' || c == '.' ||
               std::isdigit(static_cast<unsigned char>(c)) != 0;
  }

  const Schema& schema_;
  std::string_view in_;
  std::map<std::string, std::string> modules_;
  std::string out_;
  std::size_t at_ = 0;
  int depth_ = 0;
  bool operand_ = false;      // an operator may follow
  bool first_ = false;        // a name here is one of the top
  bool after_slash_ = false;  // a name here belongs to a path that has begun
};

// Reads the plain shape; any member answers false when the expression is something else.
class PlainParser {
 public:
  PlainParser(const Schema& schema, std::string_view in) : schema_(schema), in_(in) {}

  std::optional<std::vector<PlainStep>> run() {
    std::vector<PlainStep> steps;
    do {
      if (!take('/')) return std::nullopt;
      PlainStep step;
      step.node = node(steps.empty() ? nullptr : steps.back().node);
      if (!step.node) return std::nullopt;
      while (take('[')) {
        if (!predicate(step) || !take(']')) return std::nullopt;
      }
      steps.push_back(std::move(step));
      skip();
    } while (at_ < in_.size());
    return steps;
  }

 private:
  void skip() {
    while (at_ < in_.size() && std::isspace(static_cast<unsigned char>(in_[at_])) != 0) ++at_;
  }
  bool take(char c) {
    skip();
    if (at_ >= in_.size() || in_[at_] != c) return false;
    ++at_;
    return true;
  }
  std::string word() {
    skip();
    std::string w;
    while (at_ < in_.size() && (continues_name(in_[at_]) || in_[at_] == ':')) w += in_[at_++];
    return w;
  }

  const Node* node(const Node* parent) { return named(parent, word()); }

  const Node* named(const Node* parent, const std::string& name) const {
    const auto colon = name.find(':');
    const std::string module = colon == std::string::npos ? std::string() : name.substr(0, colon);
    const std::string local = colon == std::string::npos ? name : name.substr(colon + 1);
    for (const Node* n : parent ? parent->children : schema_.top()) {
      if (n->name == local && (module.empty() || n->module == module)) return n;
    }
    return nullptr;
  }

  bool predicate(PlainStep& step) {
    PlainStep::Predicate p;
    const std::string name = word();
    if (name == "starts-with" && take('(')) {
      p.starts_with = true;
      p.leaf = node(step.node);
      if (!p.leaf || !take(',') || !literal(p.literal) || !take(')')) return false;
    } else {
      p.leaf = named(step.node, name);
      if (!p.leaf || !take('=') || !literal(p.literal)) return false;
    }
    if (!p.leaf->is_leaf()) return false;
    step.predicates.push_back(std::move(p));
    return true;
  }

  bool literal(std::string& out) {
    skip();
    if (at_ >= in_.size()) return false;
    const char quote = in_[at_];
    if (quote == '"' || quote == '\'') {
      const std::size_t end = in_.find(quote, at_ + 1);
      if (end == std::string_view::npos) return false;
      out += in_.substr(at_ + 1, end - at_ - 1);
      at_ = end + 1;
      return true;
    }
    if (word() != "concat" || !take('(')) return false;
    do {
      if (!literal(out)) return false;
    } while (take(','));
    return take(')');
  }

  const Schema& schema_;
  std::string_view in_;
  std::size_t at_ = 0;
};

}  // namespace

std::string with_module_names(const Schema& schema, std::string_view expression) {
  return Rewriter(schema, expression).run();
}

std::optional<std::vector<PlainStep>> plain_path(const Schema& schema,
                                                 std::string_view expression) {
  return PlainParser(schema, expression).run();
}

}  // namespace standin
