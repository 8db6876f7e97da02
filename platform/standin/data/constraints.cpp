#include "constraints.h"

#include <libyang/libyang.h>

#include <algorithm>

#include "node_reader.h"
#include "yang_tree.h"

namespace standin {
namespace {

[[noreturn]] void violated(const Schema& schema, const NodePath& path, const std::string& reason) {
  throw Refusal(ErrorCode::failed, schema.to_text(path) + ": " + reason);
}

NodePath head(const NodePath& path, std::size_t n) {
  NodePath result;
  result.steps.assign(path.steps.begin(), path.steps.begin() + static_cast<std::ptrdiff_t>(n));
  return result;
}

bool is_list_entry(const NodePath::Step& step) {
  return step.node->kind == Node::Kind::list && !step.keys.empty();
}

struct Bounds {
  std::uint32_t least = 0;
  std::uint32_t most = 0;  // 0: any number
};

Bounds bounds(const Node& node) {
  Bounds b;
  if (node.kind == Node::Kind::list) {
    const auto* l = reinterpret_cast<const lysc_node_list*>(node.lysc);
    b = {l->min, l->max};
  } else if (node.kind == Node::Kind::leaf_list) {
    const auto* l = reinterpret_cast<const lysc_node_leaflist*>(node.lysc);
    b = {l->min, l->max};
  }
  if (b.most == UINT32_MAX) b.most = 0;
  return b;
}

void check_number(const Schema& schema, const NodePath& path, std::size_t n) {
  const Bounds b = bounds(path.node());
  if (n < b.least) violated(schema, path, "at least " + std::to_string(b.least) + " needed");
  if (b.most != 0 && n > b.most)
    violated(schema, path, "at most " + std::to_string(b.most) + " allowed");
}

// Everything of the unit but its child lists' entries, which are units of their own.
bool in_unit(const NodePath& path, const NodePath& unit) {
  const std::size_t n = unit.steps.size();
  if (path.steps.size() < n || head(path, n) != unit) return false;
  return std::none_of(path.steps.begin() + static_cast<std::ptrdiff_t>(n), path.steps.end(),
                      is_list_entry);
}

// The innermost entry that the node stands in, or the container that carries its callpoint; for
// stored nodes in no entry, all of the container at the top.
std::optional<NodePath> unit_around(const NodePath& path, bool outside) {
  for (std::size_t n = path.steps.size() - (outside ? 1 : 0); n > 0; --n) {
    const NodePath::Step& step = path.steps[n - 1];
    if (is_list_entry(step)) return head(path, n);
    const bool has_children = !step.node->has_value() && step.node->kind != Node::Kind::list;
    if (!has_children) continue;
    if (step.node == path.node().transform || (n == 1 && !step.node->reaches_callbacks())) {
      return head(path, n);
    }
  }
  return std::nullopt;
}

}  // namespace

// Reads a unit with the way to it and with what its must expressions look at.
class Constraints::Visitor : public TreeVisitor {
 public:
  Visitor(Data& data, const Schema& schema, const NodePath& unit,
          const std::set<std::string>& written, const Rules& rules)
      : data_(data), schema_(schema), unit_(unit), written_(written), rules_(rules) {}

  bool wanted(const NodePath& path) override {
    const Node& n = path.node();
    if (n.is_key || rules_.elsewhere.count(&n) != 0) return true;
    if (is_below(unit_.node(), n)) return true;
    if (!is_below(n, unit_.node())) return false;
    if (n.kind != Node::Kind::list) return in_unit(path.parent(), unit_);
    const Bounds b = bounds(n);
    if ((b.least != 0 || b.most != 0) && in_unit(path.parent(), unit_))
      check_number(schema_, path, count(path));
    return false;
  }

  std::optional<Level> only_entry(const NodePath& list) override {
    const std::size_t n = list.steps.size();
    if (n > unit_.steps.size() || unit_.steps[n - 1].node != &list.node()) return std::nullopt;
    if (rules_.elsewhere.count(&list.node()) != 0) return std::nullopt;
    return unit_.steps[n - 1].keys;
  }

  void no_case(const NodePath& holder, const Choice& choice) override {
    if (choice.mandatory && in_unit(holder, unit_)) {
      violated(schema_, holder, "mandatory choice \"" + choice.name + "\" has no case selected");
    }
  }

  void absent(const NodePath& path) override {
    if (!in_unit(path, unit_)) return;
    if (path.node().mandatory) violated(schema_, path, "a value is mandatory");
    if (path.node().kind == Node::Kind::leaf_list) check_number(schema_, path, 0);
  }

  void leaf(const NodePath& path, const Value& value) override {
    const Node& n = path.node();
    if (!in_unit(path, unit_)) return;
    if (n.kind == Node::Kind::leaf_list && value.is(Type::list)) {
      check_number(schema_, path, value.items().size());
    }
    // What reads back encrypted was judged when it was written, in clear.
    if (n.is_key || n.secret || n.encrypted || written_.count(schema_.to_text(path)) == 0) return;
    const auto check = [&](const Value& v) {
      if (!schema_.admits(n, v)) {
        violated(schema_, path, "\"" + schema_.print(n, v) + "\" is not a value of this type");
      }
    };
    if (value.is(Type::list)) {
      std::for_each(value.items().begin(), value.items().end(), check);
    } else {
      check(value);
    }
  }

  void refused(const NodePath&, const Refusal&) override { throw; }

 private:
  // Repeated keys count once.
  std::size_t count(const NodePath& list) {
    std::vector<Level> seen;
    data_.walk(list, [&](const Level& keys) {
      if (std::find(seen.begin(), seen.end(), keys) == seen.end()) seen.push_back(keys);
      return true;
    });
    return seen.size();
  }

  Data& data_;
  const Schema& schema_;
  const NodePath& unit_;
  const std::set<std::string>& written_;
  const Rules& rules_;
};

void Constraints::check(const std::vector<Touched>& touched) {
  // The last word on a node counts: what was written and then removed is not written.
  std::set<std::string> written;
  for (const Touched& t : touched) {
    const std::string text = schema_.to_text(t.path);
    if (t.removed) {
      written.erase(text);
    } else {
      written.insert(text);
    }
  }
  for (const NodePath& unit : units(touched)) check_unit(unit, written);
}

std::vector<NodePath> Constraints::units(const std::vector<Touched>& touched) {
  std::vector<NodePath> result;
  std::set<std::string> known;
  for (const Touched& t : touched) {
    const bool is_entry = is_list_entry(t.path.steps.back());
    std::vector<NodePath> around;
    if (is_entry && !t.removed) around.push_back(t.path);
    const auto enclosing = unit_around(t.path, is_entry || t.removed);
    // What an entry was made in is judged for it only where it counts its entries.
    const Bounds b = bounds(t.path.node());
    const bool counted = b.least != 0 || b.most != 0;
    if (enclosing && (!is_entry || counted || (t.removed && enclosing->is_entry()))) {
      around.push_back(*enclosing);
    }
    for (const NodePath& unit : around) {
      if (known.insert(schema_.to_text(unit)).second) result.push_back(unit);
    }
  }
  return result;
}

void Constraints::check_unit(const NodePath& unit, const std::set<std::string>& written) {
  const Rules& of_unit = rules(unit.node());
  if (unit.is_entry() && !data_.exists(unit, false)) return;  // what is not there is not judged
  Visitor visitor(data_, schema_, unit, written, of_unit);
  TreeReader reader(data_, schema_, visitor);
  const std::vector<TreeNode> tree = reader.children({});
  if (!of_unit.has_musts) return;
  const YangTree yang(schema_, tree);
  check_musts({}, tree, unit, yang);
}

void Constraints::check_musts(const NodePath& path, const std::vector<TreeNode>& nodes,
                              const NodePath& unit, const YangTree& yang) {
  for (const TreeNode& t : nodes) {
    const NodePath at = path.child(*t.node, t.keys);
    check_musts(at, t.children, unit, yang);
    const lyd_node* lyd = yang.find(t);
    if (!lyd || !in_unit(at, unit)) continue;
    const lysc_must* musts = lysc_node_musts(t.node->lysc);
    LY_ARRAY_COUNT_TYPE u = 0;
    LY_ARRAY_FOR(musts, u) {
      ly_bool holds = 0;
      const char* expression = lyxp_get_expr(musts[u].cond);
      if (lyd_eval_xpath3(lyd, t.node->lysc->module, expression, LY_VALUE_SCHEMA_RESOLVED,
                          musts[u].prefixes, nullptr, &holds) != LY_SUCCESS) {
        violated(schema_, at, std::string("must \"") + expression + "\" cannot be evaluated");
      }
      if (holds) continue;
      violated(
          schema_, at,
          musts[u].emsg ? std::string(musts[u].emsg) : std::string("must \"") + expression + "\"");
    }
  }
}

const Constraints::Rules& Constraints::rules(const Node& unit) {
  const auto [it, is_new] = rules_.try_emplace(&unit);
  if (is_new) gather_rules(unit, unit, it->second);
  return it->second;
}

void Constraints::gather_rules(const Node& node, const Node& unit, Rules& rules) const {
  const lysc_must* musts = lysc_node_musts(node.lysc);
  LY_ARRAY_COUNT_TYPE u = 0;
  LY_ARRAY_FOR(musts, u) {
    rules.has_musts = true;
    ly_set* found = nullptr;
    if (lys_find_expr_atoms(node.lysc, node.lysc->module, musts[u].cond, musts[u].prefixes,
                            LYS_FIND_XP_SCHEMA, &found) != LY_SUCCESS) {
      continue;
    }
    const LySet atoms(found);
    for (const Node* atom : nodes_of(schema_, *atoms)) {
      // On the way to the unit, or inside of it: read with it anyway.
      if (is_below(unit, *atom)) continue;
      const Node* list = atom;  // a child list in the unit is read only when it is looked at
      while (list && list != &unit && list->kind != Node::Kind::list) list = list->parent;
      if (list == &unit) continue;
      for (const Node* n = atom; n && n != &unit; n = n->parent) {
        if (!is_below(unit, *n)) rules.elsewhere.insert(n);
      }
    }
  }
  for (const Node* c : node.children) {
    if (c->kind != Node::Kind::list) gather_rules(*c, unit, rules);
  }
}

}  // namespace standin
