#include "tree_reader.h"

#include <algorithm>

#include "node_reader.h"

namespace standin {
namespace {

TreeNode refused_node(const Node& node, const std::string& text) {
  TreeNode t;
  t.node = &node;
  t.error = text;
  return t;
}

}  // namespace

bool TreeReader::case_selected(const NodePath& holder, const Choice& choice,
                               const std::string& name,
                               std::vector<std::pair<const Choice*, const Choice::Case*>>& known,
                               std::vector<Child>& out) {
  if (choice.outer && !case_selected(holder, *choice.outer, choice.outer_case, known, out))
    return false;
  auto it =
      std::find_if(known.begin(), known.end(), [&](const auto& k) { return k.first == &choice; });
  if (it == known.end()) {
    const Choice::Case* now = nullptr;
    try {
      now = data_.selected(holder, choice);
      if (!now) visitor_.no_case(holder, choice);
    } catch (const Refusal& refusal) {
      const Node& first = *choice.cases.front().nodes.front();
      visitor_.refused(holder.child(first), refusal);
      out.push_back({&first, refusal.what()});
    }
    it = known.insert(known.end(), {&choice, now});
  }
  return it->second && it->second->name == name;
}

std::vector<TreeReader::Child> TreeReader::active(const NodePath& holder,
                                                  const std::vector<const Node*>& nodes) {
  std::vector<Child> result;
  std::vector<std::pair<const Choice*, const Choice::Case*>> known;
  for (const Node* n : nodes) {
    if (!visitor_.wanted(holder.child(*n))) continue;
    if (n->choice && !holder.empty() &&
        !case_selected(holder, *n->choice, n->case_name, known, result)) {
      continue;
    }
    result.push_back({n, {}});
  }
  return result;
}

std::vector<TreeNode> TreeReader::children(const NodePath& holder) {
  std::vector<TreeNode> out;
  const auto& nodes = holder.empty() ? schema_.top() : holder.node().children;
  for (const auto& [n, error] : active(holder, nodes)) {
    if (!error.empty()) {
      out.push_back(refused_node(*n, error));
      continue;
    }
    const NodePath path = holder.child(*n);
    try {
      if (n->is_key) {  // known from the entry's keys
        const auto& keys = holder.node().keys;
        const auto at =
            static_cast<std::size_t>(std::find(keys.begin(), keys.end(), n) - keys.begin());
        TreeNode key;
        key.node = n;
        key.value = holder.steps.back().keys.at(at);
        visitor_.leaf(path, *key.value);
        out.push_back(std::move(key));
      } else {
        read(path, out);
      }
    } catch (const Refusal& refusal) {
      visitor_.refused(path, refusal);
      out.push_back(refused_node(*n, refusal.what()));
    }
  }
  return out;
}

// The case that a child stands in is known to be selected.
void TreeReader::read(const NodePath& path, std::vector<TreeNode>& out) {
  const Node& n = path.node();
  if (n.kind == Node::Kind::list) {
    entries(path, out);
  } else if (n.has_value()) {
    auto v = data_.get(path, false);
    if (!v) return visitor_.absent(path);
    visitor_.leaf(path, *v);
    TreeNode leaf;
    leaf.node = &n;
    leaf.value = std::move(v);
    out.push_back(std::move(leaf));
  } else if (n.kind == Node::Kind::presence) {
    if (!data_.exists(path, false)) return visitor_.absent(path);
    out.push_back(subtree(path));
  } else {
    TreeNode container = subtree(path);
    if (!container.children.empty() || (n.choice && n.is_external()))
      out.push_back(std::move(container));
  }
}

void TreeReader::entries(const NodePath& list, std::vector<TreeNode>& out) {
  if (const auto only = visitor_.only_entry(list)) {
    const NodePath entry = list.with_keys(*only);
    out.push_back(subtree(entry));
    return;
  }
  // Collected first: reading an entry calls out, which may change the list under the walk.
  std::vector<Level> all;
  data_.walk(list, [&](const Level& keys) {
    all.push_back(keys);
    return true;
  });
  for (const Level& keys : all) out.push_back(subtree(list.with_keys(keys)));
}

void TreeReader::node(const NodePath& path, std::vector<TreeNode>& out) {
  const Node& n = path.node();
  try {
    if (!visitor_.wanted(path)) return;
    if (path.is_entry() && n.kind == Node::Kind::list) {
      if (data_.exists(path, false)) out.push_back(subtree(path));
    } else if (path.is_entry()) {
      if (!data_.exists(path, false)) return;
      TreeNode item;
      item.node = &n;
      item.value = Value::list(path.steps.back().keys);
      out.push_back(std::move(item));
    } else if (!is_plain(n) || !n.choice || data_.exists(path, false)) {
      read(path, out);
    }
  } catch (const Refusal& refusal) {
    visitor_.refused(path, refusal);
    out.push_back(refused_node(n, refusal.what()));
  }
}

TreeNode TreeReader::subtree(const NodePath& path) {
  TreeNode t;
  t.node = &path.node();
  if (t.node->kind == Node::Kind::list) t.keys = path.steps.back().keys;
  t.children = children(path);
  return t;
}

}  // namespace standin
