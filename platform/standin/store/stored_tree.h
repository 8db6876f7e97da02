// The nodes that the store keeps, as a tree: what MAAPI does on MIB tables, the dynamic
// configuration, stored subtrees and the attribute list. Never calls a daemon.
#pragma once

#include <functional>
#include <map>
#include <optional>
#include <string_view>
#include <utility>
#include <vector>

#include "platform/standin/schema/schema.h"
#include "secrets.h"
#include "write_set.h"

namespace standin {

// Numbers to values.
using Attributes = std::map<std::uint32_t, Value>;
using TaggedValues = std::vector<std::pair<Tag, Value>>;

// All refusals are Refusal with the path and the reason in the text.
class StoredTree {
 public:
  StoredTree(const Schema& schema, WriteSet& writes, const Secrets& secrets)
      : schema_(schema), writes_(writes), secrets_(secrets) {}

  // There: a leaf with a value, or with a default while its parent is; an entry or presence
  // container by its marker; a container without presence when something is below; a leaf-list
  // entry when it is in the list. `note`: a single read, which the commit compares.
  bool exists(const NodePath& path, bool note = true);
  // A leaf's value or default; a leaf-list as a list, nothing when it was never written (or is
  // not there). Empty leaves answer their tag.
  std::optional<Value> get(const NodePath& path, bool note = true);
  // List entries in key order: the first one after `after` (null: the first one).
  std::optional<Level> next(const NodePath& list, const Level* after);
  // The values of the leaves directly in an entry that is there, by one pass over its records.
  TaggedValues leaves(const NodePath& entry);
  std::optional<const Choice::Case*> selected(const NodePath& holder, const Choice& choice);

  // The value is checked, text is read by the type, an encrypted leaf is encrypted. A write of a
  // node of another case removes the old case's nodes. Refuses an absent ancestor entry or
  // presence container (noexists), and a key leaf but with its own value.
  void set(const NodePath& path, const Value& v);
  // Entry, presence container, empty leaf, leaf-list entry. Refuses what is there already, and an
  // absent ancestor.
  void create(const NodePath& path);
  // With all below, attributes included. A leaf that is absent: done. Entry or presence container
  // absent: refused (noexists); key leaf: refused.
  void remove(const NodePath& path);
  void move(const NodePath& entry, const Level& keys);

  std::vector<Value> get_object(const NodePath& entry, std::size_t n);
  void set_object(const NodePath& entry, const std::vector<Value>& values);

  Attributes attributes(const NodePath& path);
  void set_attribute(const NodePath& path, std::uint32_t number, const Value* v);  // null removes

 private:
  using Items = std::vector<Value>;

  std::optional<Value> read(const NodePath& path, bool note);
  Value unpacked(const NodePath& path, std::string_view octets) const;
  std::optional<Items> leaf_list(const NodePath& path, bool note);
  bool parent_there(const NodePath& path, bool note);
  bool has_content(const NodePath& path);

  void require_parents(const NodePath& path);
  void require_entry_keys(const NodePath& path) const;
  Value checked(const NodePath& path, const Value& v) const;
  Level checked_keys(const NodePath& list, const Level& keys) const;
  void set_key_leaf(const NodePath& path, const Value& v);
  void set_leaf_list(const NodePath& path, Items items);
  void create_leaf_list_entry(const NodePath& path);
  void remove_leaf_list_entry(const NodePath& path);
  void select_cases(const NodePath& path);
  void clear_other_cases(const NodePath& holder, const Node& node);
  void erase_all(const NodePath& path);
  void drop_attributes_of_emptied(NodePath path);
  [[noreturn]] void refuse(ErrorCode code, const NodePath& path, const std::string& reason) const;

  const Schema& schema_;
  WriteSet& writes_;
  const Secrets& secrets_;
};

}  // namespace standin
