// Reads a part of the tree into memory, following only the selected cases. What reads it decides
// through a visitor what is wanted, and hears what is missing on the way.
#pragma once

#include <string>
#include <vector>

#include "data.h"

namespace standin {

class TreeVisitor {
 public:
  virtual ~TreeVisitor() = default;
  virtual bool wanted(const NodePath& /*path*/) { return true; }
  // The only entry of the list to be read; nothing: all of them.
  virtual std::optional<Level> only_entry(const NodePath& /*list*/) { return std::nullopt; }
  virtual void no_case(const NodePath& /*holder*/, const Choice& /*choice*/) {}
  virtual void absent(const NodePath& /*path*/) {}
  virtual void leaf(const NodePath& /*path*/, const Value& /*value*/) {}
  // A read was refused. Rethrows unless the tree shall hold the text in its place.
  virtual void refused(const NodePath& path, const Refusal& refusal) = 0;
};

class TreeReader {
 public:
  TreeReader(Data& data, const Schema& schema, TreeVisitor& visitor)
      : data_(data), schema_(schema), visitor_(visitor) {}

  // What is there of the holder's children; the empty path: of the top.
  std::vector<TreeNode> children(const NodePath& holder);
  // The node itself: an entry, or every entry of a list; nothing when it is not there.
  void node(const NodePath& path, std::vector<TreeNode>& out);
  // The node with its children, without asking whether it is there.
  TreeNode subtree(const NodePath& path);

 private:
  // A child that is to be read, or the refusal that stands in the place of a choice's nodes.
  struct Child {
    const Node* node;
    std::string error;
  };
  std::vector<Child> active(const NodePath& holder, const std::vector<const Node*>& nodes);
  bool case_selected(const NodePath& holder, const Choice& choice, const std::string& name,
                     std::vector<std::pair<const Choice*, const Choice::Case*>>& known,
                     std::vector<Child>& out);
  void entries(const NodePath& list, std::vector<TreeNode>& out);
  void read(const NodePath& path, std::vector<TreeNode>& out);

  Data& data_;
  const Schema& schema_;
  TreeVisitor& visitor_;
};

}  // namespace standin
