// Paths: from names, prefixes, tags and keys to nodes, and back to text.
#include <algorithm>

#include "platform/wire/nearest.h"
#include "schema_impl.h"
#include "text_rules.h"

namespace standin {
namespace {

[[noreturn]] void bad_path(const std::string& text) { throw Refusal(ErrorCode::badpath, text); }

std::string quoted(std::string_view text) { return "\"" + one_line(text) + "\""; }

std::string prefixed(const Node& top) { return top.prefix + ':' + top.name; }

struct Name {
  std::string_view prefix;  // empty: none
  std::string_view name;
};

Name split(std::string_view text) {
  const auto colon = text.find(':');
  if (colon == std::string_view::npos) return {{}, text};
  return {text.substr(0, colon), text.substr(colon + 1)};
}

std::vector<std::string> names_of(const std::vector<const Node*>& nodes) {
  std::vector<std::string> names;
  names.reserve(nodes.size());
  for (const Node* n : nodes) names.push_back(n->parent == nullptr ? prefixed(*n) : n->name);
  return names;
}

// What there is instead of an unknown name.
std::string instead_of(std::string_view wrong, const std::vector<const Node*>& nodes) {
  const std::vector<std::string> names = names_of(nodes);
  const std::string meant = nearest(wrong, names);
  return (meant.empty() ? ": there is " : ": did you mean " + meant + "? There is ") +
         listed(names);
}

// "{NAME}", the keys that a list needs.
std::string key_form(const Node& list) {
  std::string text;
  for (const Node* key : list.keys) {
    text += text.empty() ? '{' : ' ';
    for (const char c : key->name) text += c >= 'a' && c <= 'z' ? static_cast<char>(c - 32) : c;
  }
  return text + '}';
}

class Resolver {
 public:
  // `entries`: keys are read, and needed on the way; otherwise they are passed over.
  Resolver(const SchemaNodes& impl, bool entries) : impl_(impl), entries_(entries) {}

  NodePath resolve(const Path& path) {
    for (const PathStep& step : path) {
      if (step.kind == PathStep::Kind::keys) {
        if (entries_) keys(step);
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
    if (above.has_value())
      bad_path(path_of(above) + " is a " + kind(above) + ": " + above.name +
               " has nothing below it");
    if (entries_ && above.kind == Node::Kind::list && !out_.is_entry()) {
      bad_path("the list " + above.name + " needs keys before " + shown(step) + ": " +
               path_of(above) + key_form(above) + "/...");
    }
    const Node* found = below(above, step);
    if (found == nullptr) unknown(above, step);
    out_.steps.push_back({found, {}});
  }

  static const char* kind(const Node& node) { return node.is_leaf() ? "leaf" : "leaf-list"; }

  [[noreturn]] void unknown(const Node& above, const PathStep& step) const {
    const std::string what = "unknown element " + shown(step) + " in " + path_of(above);
    const auto choice = std::ranges::find(above.choices, step.name, &Choice::name);
    if (choice == above.choices.end()) bad_path(what + instead_of(step.name, above.children));
    std::string cases;
    for (const Choice::Case& c : (*choice)->cases) cases += (cases.empty() ? "" : ", ") + c.name;
    bad_path(what + ": it is a choice, which no path names; write one of " + cases);
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
    if (found.empty()) {
      bad_path("unknown element " + shown(step) + instead_of(step.name, impl_.top));
    }
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
    std::string text = node.name + " takes " + std::to_string(needed) +
                       (needed == 1 ? " key" : " keys") + ", not " + std::to_string(given);
    if (node.kind == Node::Kind::list) text += ": " + path_of(node) + key_form(node);
    throw Refusal(ErrorCode::badvalue, text);
  }

  // A tag by its name, where any node has it.
  std::string shown(const PathStep& step) const {
    if (step.kind == PathStep::Kind::name) return quoted(step.name);
    const auto found =
        std::ranges::find(impl_.nodes, step.tag.tag, [](const Node& n) { return n.tag.tag; });
    return quoted(found == impl_.nodes.end() ? std::to_string(step.tag.tag) : found->name);
  }

  const SchemaNodes& impl_;
  bool entries_;
  NodePath out_;
};

}  // namespace

std::string path_of(const Node& node) {
  if (node.parent == nullptr) return '/' + prefixed(node);
  return path_of(*node.parent) + '/' + node.name;
}

const Node* find_node(const SchemaNodes& nodes, const Path& path) {
  const NodePath found = Resolver(nodes, false).resolve(path);
  return found.empty() ? nullptr : &found.node();
}

NodePath Schema::resolve(const Path& path) const { return Resolver(*impl_, true).resolve(path); }

const Node* Schema::find(const Path& path) const { return find_node(*impl_, path); }

NodePath Schema::resolve(const Keypath& kp) const { return resolve(to_path(kp)); }

std::string Schema::to_text(const NodePath& path) const {
  if (path.empty()) return "/";
  std::string text;
  for (const auto& [node, keys] : path.steps) {
    text += '/' + (node->parent == nullptr ? prefixed(*node) : node->name);
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
