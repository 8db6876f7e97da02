// What is there, and with which value: stored nodes from the store, nodes behind callpoints by
// asking the callback that answers for their kind.
#pragma once

#include <functional>
#include <optional>
#include <vector>

#include "callbacks.h"
#include "platform/standin/store/stored_tree.h"

namespace standin {

class NodeReader {
 public:
  NodeReader(const Schema& schema, StoredTree& stored, Callbacks& callbacks)
      : schema_(schema), stored_(stored), callbacks_(callbacks) {}

  // `note`: a single read of a stored node, which the commit compares.
  bool exists(const NodePath& path, bool note);
  // As `delete` asks: an entry is there, too, when one of its child lists has an entry.
  bool exists_to_remove(const NodePath& path);
  std::optional<Value> get(const NodePath& path, bool note);
  // `after`: rows of a stored list up to this one may be passed over.
  void walk(const NodePath& list, const std::function<bool(const Level&)>& each,
            const Level* after = nullptr);
  const Choice::Case* selected(const NodePath& holder, const Choice& choice);

  // What has to be removed one by one to remove `path`: entries of a list, what stands in a
  // container without presence, else the node itself when it is there. A node whose own check is
  // refused is taken as there, so that what is broken can be removed.
  std::vector<NodePath> pieces(const NodePath& path);

 private:
  bool external_exists(const NodePath& path);
  bool has_entries(const NodePath& list);
  void collect(const NodePath& path, std::vector<NodePath>& out);

  const Schema& schema_;
  StoredTree& stored_;
  Callbacks& callbacks_;
};

// The case that the node stands in, of its innermost choice; null outside of choices.
const Choice::Case* case_of(const Node& node);
// A container without presence.
inline bool is_plain(const Node& node) { return node.kind == Node::Kind::container; }
inline bool is_list_whole(const NodePath& path) {
  return path.node().kind == Node::Kind::list && !path.is_entry();
}

}  // namespace standin
