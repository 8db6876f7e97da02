// The rules of the configuration tree: which operation on which node does what, over stored nodes
// and over nodes behind callpoints alike. Northbound clients and MAAPI both come here.
#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "callouts.h"
#include "platform/standin/schema/schema.h"
#include "platform/standin/store/stored_tree.h"

namespace standin {

// One entry of what a transaction did northbound, for `diff` and for validation.
struct Touched {
  NodePath path;  // the node that was written
  bool removed = false;
};

// One transaction's data. Every writing operation undoes, on refusal, whatever it had written,
// nested writes of callbacks included, and then throws the Refusal.
class Data {
 public:
  Data(const Schema& schema, WriteSet& writes, StoredTree& stored, Callouts& callouts);
  ~Data();

  // ---- reads
  // `note`: a single read of a stored node, which the commit compares; walks pass false.
  bool exists(const NodePath& path, bool note = true);
  // A leaf's value, or a leaf-list whole as a list; nothing when not there.
  std::optional<Value> get(const NodePath& path, bool note = true);
  // Entries of a list or of a leaf-list, in order. `each` answers false to stop. `after`: rows of
  // a stored list up to this one may be passed over.
  void walk(const NodePath& list, const std::function<bool(const Level&)>& each,
            const Level* after = nullptr);
  // The selected case; null when none is.
  const Choice::Case* selected(const NodePath& holder, const Choice& choice);
  Attributes attributes(const NodePath& path);
  // A stored leaf has a value of its own, other than its default.
  bool is_written(const NodePath& leaf);

  // ---- writes
  // Northbound clients; MAAPI; whoever has just made sure of them.
  enum class Ancestors : std::uint8_t { create, require, present };
  void create(const NodePath& path, Ancestors ancestors);
  // The same, but what is there already is left alone. Answers whether it was created.
  bool ensure(const NodePath& path, Ancestors ancestors);
  void set(const NodePath& path, const Value& v, Ancestors ancestors);
  // Northbound: what is not there is refused with "not there". MAAPI: an absent leaf is done.
  void remove(const NodePath& path, Ancestors ancestors);
  void set_attribute(const NodePath& path, std::uint32_t number, const Value* v);
  // Several writes as one operation: all undone when `writes` throws.
  void together(const std::function<void()>& writes);

  // Model constraints over what was touched, then the validation points, as a commit does it.
  // Throws Refusal (failed) with the path and the reason.
  void validate();
  // True while validate() runs: writes of callbacks are then refused.
  bool validating() const;

  const std::vector<Touched>& touched() const;
  void forget_touched();  // after a commit or an abort

 private:
  struct Impl;
  std::unique_ptr<Impl> impl_;
};

// ---- whole trees (data_tree.cpp)

// A tree in memory, for `show`, JSON, validation and XPath.
struct TreeNode {
  const Node* node = nullptr;
  Level keys;                      // list entry
  std::optional<Value> value;      // leaf, leaf-list (a list)
  std::vector<TreeNode> children;  // container, list entry
  std::string error;               // the read was refused: its text
};

// Everything at and below `path` that is there, with the ancestors of `path` above it; empty path:
// everything. Only selected cases. `defaults`: leaves that hold the MIB side's default too.
// A refused read becomes a node with `error` and the rest is read.
std::vector<TreeNode> read_tree(Data& data, const Schema& schema, const NodePath& path,
                                bool defaults);

// Merges RFC 7951 JSON, in schema order, entry by entry. Returns the number of nodes written.
// `allowed` may refuse a top-level or stored node by throwing (the initial file's rule).
// `watch` is told before each list entry how many there were and are in all; it may throw.
std::size_t load_json(Data& data, const Schema& schema, std::string_view json,
                      const std::function<void(const NodePath&)>& allowed = {},
                      const std::function<void(std::uint64_t, std::uint64_t)>& watch = {});

// ---- XPath (xpath.cpp)

struct XPathHit {
  NodePath path;
  std::optional<Value> value;
};
// Throws Refusal (xpath) for syntax and unknown nodes. Results in key order.
std::vector<XPathHit> evaluate_xpath(Data& data, const Schema& schema, std::string_view expression);

}  // namespace standin
