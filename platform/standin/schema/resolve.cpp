// Paths: from names, prefixes, tags and keys to nodes, and back to text.
#include <algorithm>

#include "schema_impl.h"
#include "text_rules.h"

namespace standin {
namespace {

[[noreturn]] void bad_path(const std::string& text) { throw Refusal(ErrorCode::badpath, text); }

std::string quoted(std::string_view text) { return "\"" + one_line(text) + "\""; }

struct Name {
  std::string_view prefix;  // empty: none
  std::string_view name;
};

Name split(std::string_view text) {
  const auto colon = text.find(':');
  if (colon == std::string_view::npos) return {{}, text};
  return {text.substr(0, colon), text.substr(colon + 1)};
}

class Resolver {
 public:
  explicit Resolver(const SchemaNodes& impl) : impl_(impl) {}

  NodePath resolve(const Path& path) {
    for (const PathStep& step : path) {
      if (step.kind == PathStep::Kind::keys) {
        keys(step);
      } else {
        element(step);
      }
    }
    return std::move(out_);
  }

 private:
  void element(const PathStep& step) {
    if (out_.empty()) {
      out_.steps.push_back({top(step), {}});
      return;
    }
    const Node& above = out_.node();
    if (above.has_value()) bad_path(above.name + " has nothing below it");
    if (above.kind == Node::Kind::list && !out_.is_entry()) {
      bad_path("the list " + above.name + " needs keys before " + shown(step));
    }
    const Node* found = below(above, step);
    if (found == nullptr) bad_path("unknown element " + shown(step) + " in " + above.name);
    out_.steps.push_back({found, {}});
  }

  static const Node* below(const Node& above, const PathStep& step) {
    if (step.kind == PathStep::Kind::tag) return above.child(step.tag);
    const auto [prefix, name] = split(step.name);
    const Node* found = above.child(name);
    if (found == nullptr || prefix.empty() || prefix == found->prefix) return found;
    return nullptr;
  }

  const Node* top(const PathStep& step) const {
    std::vector<const Node*> found;
    for (const Node* n : impl_.top) {
      if (matches(*n, step)) found.push_back(n);
    }
    if (found.empty()) bad_path("unknown element " + shown(step));
    if (found.size() == 1) return found.front();
    std::string choices;
    for (const Node* n : found) choices += (choices.empty() ? "" : ", ") + n->prefix;
    bad_path(shown(step) + " is ambiguous, it needs one of the prefixes " + choices);
  }

  static bool matches(const Node& n, const PathStep& step) {
    if (step.kind == PathStep::Kind::tag) {
      return n.tag.tag == step.tag.tag && (step.tag.ns == 0 || n.tag.ns == step.tag.ns);
    }
    const auto [prefix, name] = split(step.name);
    return n.name == name && (prefix.empty() || prefix == n.prefix);
  }

  void keys(const PathStep& step) {
    if (out_.empty()) bad_path("a path does not begin with keys");
    auto& last = out_.steps.back();
    const Node& node = *last.node;
    if (!last.keys.empty()) bad_path(node.name + " has keys already");
    if (node.kind == Node::Kind::leaf_list) {
      require_count(node, 1, step.keys.size());
      last.keys = {key(node, step.keys.front())};
      return;
    }
    if (node.kind != Node::Kind::list) bad_path(node.name + " takes no keys");
    require_count(node, node.keys.size(), step.keys.size());
    Level typed;
    for (std::size_t i = 0; i < node.keys.size(); ++i) {
      typed.push_back(key(*node.keys[i], step.keys[i]));
    }
    last.keys = std::move(typed);
  }

  Value key(const Node& leaf, const Value& v) const {
    Reading reading = check_value(impl_.ctx.get(), leaf, v);
    if (reading.ok()) return std::move(reading.value);
    // A key that does not fit is a bad value whatever is wrong with it.
    reading.wrong_type = false;
    throw refused_value(leaf, v, reading);
  }

  static void require_count(const Node& node, std::size_t needed, std::size_t given) {
    if (needed == given) return;
    throw Refusal(ErrorCode::badvalue, node.name + " takes " + std::to_string(needed) +
                                           (needed == 1 ? " key" : " keys") + ", not " +
                                           std::to_string(given));
  }

  // A tag by its name, where any node has it.
  std::string shown(const PathStep& step) const {
    if (step.kind == PathStep::Kind::name) return quoted(step.name);
    const auto found =
        std::ranges::find(impl_.nodes, step.tag.tag, [](const Node& n) { return n.tag.tag; });
    return quoted(found == impl_.nodes.end() ? std::to_string(step.tag.tag) : found->name);
  }

  const SchemaNodes& impl_;
  NodePath out_;
};

}  // namespace

NodePath Schema::resolve(const Path& path) const { return Resolver(*impl_).resolve(path); }

NodePath Schema::resolve(const Keypath& kp) const { return resolve(to_path(kp)); }

std::string Schema::to_text(const NodePath& path) const {
  if (path.empty()) return "/";
  std::string text;
  for (const auto& [node, keys] : path.steps) {
    text += '/';
    if (node->parent == nullptr) text += node->prefix + ":";
    text += node->name;
    if (keys.empty()) continue;
    std::string words;
    for (std::size_t i = 0; i < keys.size(); ++i) {
      const Node& leaf =
          node->kind == Node::Kind::list && i < node->keys.size() ? *node->keys[i] : *node;
      words += (i == 0 ? "" : " ") + quote_word(print(leaf, keys[i]));
    }
    text += '{' + words + '}';
  }
  return text;
}

}  // namespace standin
