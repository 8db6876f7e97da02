// The model's own constraints over what a transaction touched, as the callbacks answer it after
// the writes: mandatory leaves and choices, numbers of entries, types, must expressions.
#pragma once

#include <map>
#include <set>
#include <string>
#include <vector>

#include "data.h"
#include "tree_reader.h"

namespace standin {

class Constraints {
 public:
  Constraints(Data& data, const Schema& schema) : data_(data), schema_(schema) {}

  // Throws Refusal (failed) with the path and the reason.
  void check(const std::vector<Touched>& touched);

 private:
  // What the must expressions at and below a schema node look at.
  struct Rules {
    bool has_musts = false;
    std::set<const Node*> elsewhere;  // outside of the unit, with all above
  };
  class Visitor;

  // The entries, or the container for what stands in none, that have to be judged.
  std::vector<NodePath> units(const std::vector<Touched>& touched);
  void check_unit(const NodePath& unit, const std::set<std::string>& written);
  void check_musts(const NodePath& path, const std::vector<TreeNode>& nodes, const NodePath& unit,
                   const class YangTree& yang);
  const Rules& rules(const Node& unit);
  void gather_rules(const Node& node, const Node& unit, Rules& rules) const;

  Data& data_;
  const Schema& schema_;
  std::map<const Node*, Rules> rules_;
};

}  // namespace standin
