// evaluate_xpath: plain paths by walks and seeks of our own; anything else by libyang, over a tree
// of what the expression touches.
#include <libyang/libyang.h>

#include <algorithm>

#include "data.h"
#include "node_reader.h"
#include "tree_reader.h"
#include "xpath_text.h"
#include "yang_tree.h"

namespace standin {
namespace {

bool begins_with(const std::string& text, const std::string& start) {
  return text.compare(0, start.size(), start) == 0;
}

class PlainWalk {
 public:
  PlainWalk(Data& data, const Schema& schema, const std::vector<PlainStep>& steps)
      : data_(data), schema_(schema), steps_(steps) {}

  std::vector<XPathHit> run() {
    below({}, 0);
    return std::move(hits_);
  }

 private:
  using Predicate = PlainStep::Predicate;

  std::string text(const Node& leaf, const Value& v) const {
    return v.is(Type::buf) ? v.bytes() : schema_.to_yang(leaf, v);
  }

  bool holds(const Predicate& p, const Value& v) const {
    const std::string value = text(*p.leaf, v);
    return p.starts_with ? begins_with(value, p.literal) : value == p.literal;
  }

  void below(const NodePath& holder, std::size_t i) {
    const Node& n = *steps_[i].node;
    if (n.choice && !holder.empty() && !in_selected_case(holder, n)) return;
    const NodePath path = holder.child(n);
    if (n.kind == Node::Kind::list) return list(path, i);
    if (n.has_value()) return value(path, i);
    if (n.kind == Node::Kind::presence && !data_.exists(path, false)) return;
    node(path, i);
  }

  bool in_selected_case(const NodePath& holder, const Node& n) {
    std::string name = n.case_name;
    for (const Choice* c = n.choice; c; name = c->outer_case, c = c->outer) {
      const Choice::Case* now = data_.selected(holder, *c);
      if (!now || now->name != name) return false;
    }
    return true;
  }

  void value(const NodePath& path, std::size_t i) {
    if (i + 1 < steps_.size() || !steps_[i].predicates.empty()) return;
    const auto v = data_.get(path, false);
    if (!v) return;
    if (!v->is(Type::list)) {
      hits_.push_back({path, v});
      return;
    }
    for (const Value& item : v->items()) hits_.push_back({path.with_keys({item}), item});
  }

  // An entry or container that is there, once its predicates hold.
  void node(const NodePath& path, std::size_t i) {
    for (const Predicate& p : steps_[i].predicates) {
      const auto& keys = path.node().keys;
      const auto key = std::find(keys.begin(), keys.end(), p.leaf);
      if (key != keys.end()) {
        if (!holds(p, path.steps.back().keys.at(static_cast<std::size_t>(key - keys.begin()))))
          return;
        continue;
      }
      if (p.leaf->choice && !in_selected_case(path, *p.leaf)) return;
      const auto v = data_.get(path.child(*p.leaf), false);
      if (!v || !holds(p, *v)) return;
    }
    if (i + 1 < steps_.size()) return below(path, i + 1);
    if (is_plain(path.node()) && !data_.exists(path, false)) return;
    hits_.push_back({path, std::nullopt});
  }

  void list(const NodePath& path, std::size_t i) {
    const PlainStep& step = steps_[i];
    if (const auto keys = all_keys(step)) {
      const NodePath entry = path.with_keys(*keys);
      if (!keys->empty() && data_.exists(entry, false)) node(entry, i);
      return;
    }
    const Predicate* start = seek_start(step);
    const auto each = [&](const Level& keys) {
      // Keys come in byte order: past the start, nothing more begins with it.
      if (start && keys.front().is(Type::buf) &&
          !begins_with(keys.front().bytes(), start->literal) &&
          keys.front().bytes() > start->literal) {
        return false;
      }
      node(path.with_keys(keys), i);
      return true;
    };
    if (!start || start->literal.empty()) return data_.walk(path, each);
    const Level first{Value::buf(start->literal)};
    if (data_.exists(path.with_keys(first), false)) each(first);
    data_.walk(path, each, &first);
  }

  // The entry's keys when predicates name them all; the empty level when no entry can have them.
  std::optional<Level> all_keys(const PlainStep& step) const {
    Level keys;
    for (const Node* key : step.node->keys) {
      const auto named =
          std::find_if(step.predicates.begin(), step.predicates.end(),
                       [&](const Predicate& p) { return p.leaf == key && !p.starts_with; });
      if (named == step.predicates.end()) return std::nullopt;
      try {
        keys.push_back(schema_.parse(*key, named->literal));
      } catch (const Refusal&) {
        return Level{};
      }
    }
    return keys;
  }

  // A stored list of one text key can be entered where the keys begin with the literal.
  static const Predicate* seek_start(const PlainStep& step) {
    const Node& n = *step.node;
    if (n.is_external() || n.keys.size() != 1 || n.keys.front()->type != Type::buf) return nullptr;
    for (const Predicate& p : step.predicates) {
      if (p.starts_with && p.leaf == n.keys.front()) return &p;
    }
    return nullptr;
  }

  Data& data_;
  const Schema& schema_;
  const std::vector<PlainStep>& steps_;
  std::vector<XPathHit> hits_;
};

// Only what the expression touches, and the way to it.
class AtomVisitor : public TreeVisitor {
 public:
  explicit AtomVisitor(std::set<const Node*> atoms) {
    for (const Node* atom : atoms) {
      for (const Node* n = atom; n; n = n->parent) wanted_.insert(n);
    }
  }
  bool wanted(const NodePath& path) override {
    return wanted_.count(&path.node()) != 0 || path.node().is_key;
  }
  void refused(const NodePath&, const Refusal&) override { throw; }

 private:
  std::set<const Node*> wanted_;
};

[[noreturn]] void not_evaluated(const Schema& schema) {
  const char* why = ly_errmsg(schema.context());
  throw Refusal(ErrorCode::xpath, std::string("XPath: ") + (why ? why : "cannot be evaluated"));
}

std::vector<XPathHit> evaluate_by_libyang(Data& data, const Schema& schema,
                                          const std::string& expression) {
  ly_set* found = nullptr;
  if (lys_find_xpath_atoms(schema.context(), nullptr, expression.c_str(), LYS_FIND_NO_MATCH_ERROR,
                           &found) != LY_SUCCESS) {
    not_evaluated(schema);
  }
  const LySet atoms(found);
  AtomVisitor visitor(nodes_of(schema, *atoms));
  const std::vector<TreeNode> nodes = TreeReader(data, schema, visitor).children({});

  const YangTree tree(schema, nodes);
  if (!tree.root()) return {};
  ly_set* matched = nullptr;
  if (lyd_find_xpath3(nullptr, tree.root(), expression.c_str(), nullptr, &matched) != LY_SUCCESS) {
    not_evaluated(schema);
  }
  const LySet matches(matched);
  std::vector<XPathHit> hits;
  for (std::uint32_t i = 0; i < matches->count; ++i) hits.push_back(tree.hit(matches->dnodes[i]));
  return hits;
}

}  // namespace

std::vector<XPathHit> evaluate_xpath(Data& data, const Schema& schema,
                                     std::string_view expression) {
  const std::string rewritten = with_module_names(schema, expression);
  if (const auto steps = plain_path(schema, rewritten))
    return PlainWalk(data, schema, *steps).run();
  return evaluate_by_libyang(data, schema, rewritten);
}

}  // namespace standin
