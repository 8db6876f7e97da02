// Northbound writes: missing ancestors first, cases from the outside in, the store before the
// callpoint where a subtree is kept in both.
#pragma once

#include <vector>

#include "data.h"
#include "node_reader.h"

namespace standin {

// No undo of its own: the caller rolls the write-set back when a member throws.
class NodeWriter {
 public:
  NodeWriter(const Schema& schema, StoredTree& stored, Callbacks& callbacks, NodeReader& reader,
             std::vector<Touched>& touched)
      : schema_(schema),
        stored_(stored),
        callbacks_(callbacks),
        reader_(reader),
        touched_(touched) {}

  // False: it was there already, and nothing was done.
  bool ensure(const NodePath& path, Data::Ancestors ancestors);
  void set(const NodePath& path, const Value& v, Data::Ancestors ancestors);
  void remove(const NodePath& path, Data::Ancestors ancestors);

 private:
  // A choice that has to change before a node of another case can be written.
  struct CaseChange {
    NodePath holder;
    const Choice* choice = nullptr;
    const Choice::Case* to = nullptr;
    std::vector<NodePath> old;  // what stands in the case that is left
  };
  // One element on the way to the written node, the node itself last.
  struct Step {
    NodePath path;
    std::vector<CaseChange> changes;  // outer choices first
    bool create = false;
  };
  // What is there before the write, noted before anything is changed.
  struct Plan {
    std::vector<Step> steps;
    bool parent_missing = false;  // nothing without keys of its own can be below the parent
  };

  Plan note(const NodePath& path, Data::Ancestors ancestors, bool repairs);
  std::vector<CaseChange> note_cases(const NodePath& path, bool holder_missing);
  bool note_ancestor(Step& step, bool parent_missing, Data::Ancestors ancestors);
  void prepare(const Plan& plan);
  void remove_case(const NodePath& path);
  void remove_pieces(const NodePath& path, Data::Ancestors ancestors);
  [[noreturn]] void not_there(const NodePath& path) const;

  // One node each, stored and handed on as its place asks.
  void do_create(const NodePath& path);
  void do_set(const NodePath& path, const Value& v);
  void do_remove(const NodePath& path);

  const Schema& schema_;
  StoredTree& stored_;
  Callbacks& callbacks_;
  NodeReader& reader_;
  std::vector<Touched>& touched_;
};

}  // namespace standin
