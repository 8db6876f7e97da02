// A private libyang tree of what was read, for must expressions and XPath. Built and used without
// a call out in between: libyang is used under the server's lock only.
#pragma once

#include <memory>
#include <set>
#include <unordered_map>
#include <vector>

#include "data.h"

struct lyd_node;
struct ly_set;

namespace standin {

class YangTree {
 public:
  // The nodes must outlive the tree. What libyang does not take (a value that its type does not
  // admit, a node that could not be read) is left out.
  YangTree(const Schema& schema, const std::vector<TreeNode>& nodes);
  ~YangTree();
  YangTree(const YangTree&) = delete;
  YangTree& operator=(const YangTree&) = delete;

  const lyd_node* root() const { return root_; }
  // Null when it was left out. A leaf-list: its first entry.
  const lyd_node* find(const TreeNode& node) const;
  XPathHit hit(const lyd_node* node) const;

 private:
  struct Instance {
    const TreeNode* node = nullptr;
    Level item;  // leaf-list entry
  };
  void add(lyd_node* parent, const TreeNode& node);
  lyd_node* add_entry(lyd_node* parent, const TreeNode& node);
  void add_value(lyd_node* parent, const TreeNode& node, const Value& v, Level item);
  void link(lyd_node* parent, lyd_node* made, const TreeNode& node, Level item);

  const Schema& schema_;
  lyd_node* root_ = nullptr;
  std::unordered_map<const lyd_node*, Instance> instances_;
  std::unordered_map<const TreeNode*, const lyd_node*> places_;
};

struct LySetFree {
  void operator()(ly_set* set) const;
};
using LySet = std::unique_ptr<ly_set, LySetFree>;

// Our nodes of a set of schema nodes; choices and cases are passed over.
std::set<const Node*> nodes_of(const Schema& schema, const ly_set& atoms);
bool is_below(const Node& node, const Node& above);  // or the same

}  // namespace standin
