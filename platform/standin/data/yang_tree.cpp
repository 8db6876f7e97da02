#include "yang_tree.h"

#include <libyang/libyang.h>

#include <algorithm>
#include <array>

namespace standin {
namespace {

constexpr std::size_t kMostKeys = 8;

void index(const std::vector<const Node*>& nodes,
           std::unordered_map<const lysc_node*, const Node*>& places) {
  for (const Node* n : nodes) {
    places.emplace(n->lysc, n);
    index(n->children, places);
  }
}

}  // namespace

void LySetFree::operator()(ly_set* set) const { ly_set_free(set, nullptr); }

std::set<const Node*> nodes_of(const Schema& schema, const ly_set& atoms) {
  std::unordered_map<const lysc_node*, const Node*> places;
  index(schema.top(), places);
  std::set<const Node*> found;
  for (std::uint32_t i = 0; i < atoms.count; ++i) {
    const auto it = places.find(atoms.snodes[i]);
    if (it != places.end()) found.insert(it->second);
  }
  return found;
}

bool is_below(const Node& node, const Node& above) {
  const Node* n = &node;
  while (n && n != &above) n = n->parent;
  return n != nullptr;
}

YangTree::YangTree(const Schema& schema, const std::vector<TreeNode>& nodes) : schema_(schema) {
  for (const TreeNode& n : nodes) add(nullptr, n);
}

YangTree::~YangTree() { lyd_free_all(root_); }

const lyd_node* YangTree::find(const TreeNode& node) const {
  const auto it = places_.find(&node);
  return it == places_.end() ? nullptr : it->second;
}

void YangTree::link(lyd_node* parent, lyd_node* made, const TreeNode& node, Level item) {
  if (!parent) lyd_insert_sibling(root_, made, &root_);
  instances_[made] = {&node, std::move(item)};
  places_.emplace(&node, made);
}

void YangTree::add_value(lyd_node* parent, const TreeNode& node, const Value& v, Level item) {
  const Node& n = *node.node;
  lyd_node* made = nullptr;
  const std::string text = n.type == Type::xmltag ? std::string() : schema_.to_yang(n, v);
  if (lyd_new_term(parent, n.lysc->module, n.name.c_str(), text.c_str(), 0, &made) != LY_SUCCESS)
    return;
  link(parent, made, node, std::move(item));
}

lyd_node* YangTree::add_entry(lyd_node* parent, const TreeNode& node) {
  const Node& n = *node.node;
  if (n.keys.size() > kMostKeys || node.keys.size() != n.keys.size()) return nullptr;
  std::array<std::string, kMostKeys> k;
  for (std::size_t i = 0; i < node.keys.size(); ++i)
    k[i] = schema_.to_yang(*n.keys[i], node.keys[i]);
  lyd_node* made = nullptr;
  // As many key values as the list has keys are taken from the arguments.
  if (lyd_new_list(parent, n.lysc->module, n.name.c_str(), 0, &made, k[0].c_str(), k[1].c_str(),
                   k[2].c_str(), k[3].c_str(), k[4].c_str(), k[5].c_str(), k[6].c_str(),
                   k[7].c_str()) != LY_SUCCESS) {
    return nullptr;
  }
  link(parent, made, node, {});
  return made;
}

void YangTree::add(lyd_node* parent, const TreeNode& node) {
  const Node& n = *node.node;
  if (!node.error.empty()) return;
  if (n.kind == Node::Kind::leaf) {
    if (node.value && !n.is_key) add_value(parent, node, *node.value, {});
    return;
  }
  if (n.kind == Node::Kind::leaf_list) {
    if (!node.value || !node.value->is(Type::list)) return;
    for (const Value& item : node.value->items()) add_value(parent, node, item, {item});
    return;
  }
  lyd_node* made = nullptr;
  if (n.kind == Node::Kind::list) {
    made = add_entry(parent, node);
    if (!made) return;
    // Key leaves came with the entry.
    for (const TreeNode& child : node.children) {
      if (!child.node->is_key) continue;
      for (lyd_node* key = lyd_child(made); key; key = key->next) {
        if (key->schema != child.node->lysc) continue;
        instances_[key] = {&child, {}};
        places_.emplace(&child, key);
      }
    }
  } else {
    if (lyd_new_inner(parent, n.lysc->module, n.name.c_str(), 0, &made) != LY_SUCCESS) return;
    link(parent, made, node, {});
  }
  for (const TreeNode& child : node.children) add(made, child);
}

XPathHit YangTree::hit(const lyd_node* node) const {
  XPathHit result;
  for (const lyd_node* n = node; n; n = lyd_parent(n)) {
    const Instance& at = instances_.at(n);
    NodePath::Step step{at.node->node, at.node->keys};
    if (!at.item.empty()) step.keys = at.item;
    result.path.steps.push_back(std::move(step));
  }
  std::reverse(result.path.steps.begin(), result.path.steps.end());
  const Instance& own = instances_.at(node);
  if (!own.item.empty()) {
    result.value = own.item.front();
  } else {
    result.value = own.node->value;
  }
  return result;
}

}  // namespace standin
