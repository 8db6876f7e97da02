// read_tree: what `show` and JSON print.
#include "data.h"
#include "tree_reader.h"

namespace standin {
namespace {

// Passes over defaults unless they are asked for; keeps refused reads as nodes.
class ShowVisitor : public TreeVisitor {
 public:
  ShowVisitor(Data& data, bool defaults) : data_(data), defaults_(defaults) {}
  bool wanted(const NodePath& path) override {
    const Node& n = path.node();
    return defaults_ || !n.dflt || n.is_external() || data_.is_written(path);
  }
  void refused(const NodePath&, const Refusal&) override {}

 private:
  Data& data_;
  bool defaults_;
};

// The node with what names it, so that it can be written back from the tree alone.
TreeNode named(const NodePath& path) {
  const Node& n = path.node();
  TreeNode t;
  t.node = &n;
  if (n.kind != Node::Kind::list) return t;
  t.keys = path.steps.back().keys;
  for (std::size_t i = 0; i < n.keys.size(); ++i) {
    TreeNode key;
    key.node = n.keys[i];
    key.value = t.keys.at(i);
    t.children.push_back(std::move(key));
  }
  return t;
}

}  // namespace

std::vector<TreeNode> read_tree(Data& data, const Schema& schema, const NodePath& path,
                                bool defaults) {
  ShowVisitor visitor(data, defaults);
  TreeReader reader(data, schema, visitor);
  if (path.empty()) return reader.children(path);
  std::vector<TreeNode> tree;
  reader.node(path, tree);
  if (tree.empty()) return tree;
  for (NodePath above = path.parent(); !above.empty(); above = above.parent()) {
    TreeNode parent = named(above);
    const bool names_key = path.node().is_key && above == path.parent();
    if (!names_key) {
      for (TreeNode& child : tree) parent.children.push_back(std::move(child));
    }
    tree.clear();
    tree.push_back(std::move(parent));
  }
  return tree;
}

}  // namespace standin
