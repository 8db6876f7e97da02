#include "stored_tree.h"

#include <algorithm>

#include "key_codec.h"
#include "platform/wire/frame.h"

namespace standin {
namespace {

// Index of a key leaf among its list's keys.
std::size_t key_index(const Node& leaf) {
  const auto& keys = leaf.parent->keys;
  return static_cast<std::size_t>(std::find(keys.begin(), keys.end(), &leaf) - keys.begin());
}

}  // namespace

void StoredTree::refuse(ErrorCode code, const NodePath& path, const std::string& reason) const {
  throw Refusal(code, schema_.to_text(path) + reason);
}

std::optional<Value> StoredTree::read(const NodePath& path, bool note) {
  const auto octets = writes_.get(store_key(path), note);
  return octets ? std::optional(unpacked(path, *octets)) : std::nullopt;
}

Value StoredTree::unpacked(const NodePath& path, std::string_view octets) const {
  try {
    return unpack_value(octets);
  } catch (const WireError&) {
    refuse(ErrorCode::failed, path, ": its record in the database is damaged");
  }
}

std::optional<StoredTree::Items> StoredTree::leaf_list(const NodePath& path, bool note) {
  const auto v = read(path.with_keys({}), note);
  if (!v) return std::nullopt;
  if (!v->is(Type::list))
    refuse(ErrorCode::failed, path, ": its record in the database is damaged");
  return v->items();
}

// Something at or below the node, not counting its own attributes and defaults.
bool StoredTree::has_content(const NodePath& path) {
  const std::string key = store_key(path);
  return writes_.any_in(key, content_end(key));
}

// Containers without presence are passed over: a default below them needs no more than the entry
// or presence container around them.
bool StoredTree::parent_there(const NodePath& path, bool note) {
  for (NodePath p = path.parent(); !p.empty(); p = p.parent())
    if (p.node().kind != Node::Kind::container) return exists(p, note);
  return true;
}

bool StoredTree::exists(const NodePath& path, bool note) {
  if (path.empty()) return true;
  const Node& node = path.node();
  switch (node.kind) {
    case Node::Kind::container:  // what callbacks answer below it is not for the store to know
      return node.reaches_callbacks() || has_content(path);
    case Node::Kind::list:
      if (!path.is_entry()) return has_content(path);
      return writes_.get(store_key(path), note).has_value();
    case Node::Kind::presence:
      return writes_.get(store_key(path), note).has_value();
    case Node::Kind::leaf_list: {
      const auto items = leaf_list(path, note);
      if (!items || !path.is_entry()) return items && !items->empty();
      return std::find(items->begin(), items->end(), path.steps.back().keys[0]) != items->end();
    }
    case Node::Kind::leaf:
      break;
  }
  if (node.is_key) return exists(path.parent(), note);
  if (writes_.get(store_key(path), note)) return true;
  return node.dflt && parent_there(path, note);
}

std::optional<Value> StoredTree::get(const NodePath& path, bool note) {
  const Node& node = path.node();
  if (node.kind == Node::Kind::leaf_list) {
    if (path.is_entry())
      return exists(path, note) ? std::optional(path.steps.back().keys[0]) : std::nullopt;
    auto items = leaf_list(path, note);
    return items ? std::optional(Value::list(std::move(*items))) : std::nullopt;
  }
  if (!node.is_leaf()) return std::nullopt;
  if (node.is_key) {
    const NodePath entry = path.parent();
    if (!entry.is_entry() || !exists(entry, note)) return std::nullopt;
    return entry.steps.back().keys.at(key_index(node));
  }
  if (node.type == Type::xmltag)
    return exists(path, note) ? std::optional(Value::tag(node.tag)) : std::nullopt;
  auto v = read(path, note);
  if (!v && node.dflt && parent_there(path, note)) v = node.dflt;
  return v;
}

std::optional<Level> StoredTree::next(const NodePath& list, const Level* after) {
  const NodePath all = list.with_keys({});
  if (list.node().kind == Node::Kind::leaf_list) {
    const auto items = leaf_list(all, false);
    if (!items) return std::nullopt;
    auto it = items->begin();
    if (after) it = std::find(it, items->end(), after->at(0));
    if (after && it != items->end()) ++it;
    return it == items->end() ? std::nullopt : std::optional(Level{*it});
  }
  // One seek past all that the row before holds, however many leaves it has.
  const std::string list_key = store_key(all);
  const auto record = writes_.seek(after ? range_end(store_key(all.with_keys(*after))) : list_key);
  if (!record) return std::nullopt;
  return entry_keys(record->first, list_key, list.node().keys.size());
}

TaggedValues StoredTree::leaves(const NodePath& entry) {
  const std::string entry_key = store_key(entry);
  std::map<std::string, std::string> records;  // by what follows the entry's key
  for (auto r = writes_.next(entry_key); r && r->first.starts_with(entry_key);
       r = writes_.next(r->first))
    records.emplace(r->first.substr(entry_key.size()), std::move(r->second));
  TaggedValues values;
  for (const Node* child : entry.node().children) {
    if (!child->is_leaf()) continue;
    std::string id;
    append_id(id, child->id);
    if (child->is_key)
      values.emplace_back(child->tag, entry.steps.back().keys.at(key_index(*child)));
    else if (const auto record = records.find(id); record != records.end())
      values.emplace_back(child->tag, child->type == Type::xmltag
                                          ? Value::tag(child->tag)
                                          : unpacked(entry.child(*child), record->second));
    else if (child->dflt)
      values.emplace_back(child->tag, *child->dflt);
  }
  return values;
}

std::optional<const Choice::Case*> StoredTree::selected(const NodePath& holder,
                                                        const Choice& choice) {
  for (const Choice::Case& c : choice.cases)
    for (const Node* node : c.nodes)
      if (has_content(holder.child(*node))) return &c;
  return std::nullopt;
}

std::vector<Value> StoredTree::get_object(const NodePath& entry, std::size_t n) {
  if (!exists(entry)) refuse(ErrorCode::noexists, entry, " does not exist");
  std::vector<Value> values;
  for (const Node* child : entry.node().children) {
    if (values.size() == n) break;
    if (child->has_value()) values.push_back(get(entry.child(*child)).value_or(Value()));
  }
  return values;
}

}  // namespace standin
