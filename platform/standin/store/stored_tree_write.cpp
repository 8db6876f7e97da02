#include <algorithm>

#include "key_codec.h"
#include "platform/wire/cipher.h"
#include "platform/wire/frame.h"
#include "stored_tree.h"

namespace standin {
namespace {

// Kept by a record of its own rather than by what is below.
bool has_marker(const Node& node) {
  return node.kind == Node::Kind::list || node.kind == Node::Kind::presence;
}

std::string sort_key(const Value& v) {
  std::string key;
  append_value(key, v);
  return key;
}

}  // namespace

// Each ancestor's marker is read singly, so that a commit that takes one away meanwhile is a
// conflict. What stands above a stored subtree belongs to a daemon and is asked elsewhere.
void StoredTree::require_parents(const NodePath& path) {
  NodePath ancestor;
  for (std::size_t i = 0; i + 1 < path.steps.size(); ++i) {
    ancestor.steps.push_back(path.steps[i]);
    const Node& node = ancestor.node();
    if (!has_marker(node) || node.is_external()) continue;
    require_entry_keys(ancestor);
    if (!exists(ancestor))
      refuse(ErrorCode::noexists, path, ": " + schema_.to_text(ancestor) + " does not exist");
  }
}

void StoredTree::require_entry_keys(const NodePath& path) const {
  if (path.node().kind == Node::Kind::list && !path.is_entry())
    refuse(ErrorCode::badpath, path, " names no entry of the list");
}

Value StoredTree::checked(const NodePath& path, const Value& v) const {
  const Node& node = path.node();
  if (!node.encrypted) return schema_.check(node, v);
  const bool text = v.is(Type::str) || v.is(Type::buf);
  if (text && in_encrypted_form(v.bytes())) {
    // The type's length and pattern are those of the clear text.
    try {
      return Value::buf(secrets_.encrypt(v.bytes()));
    } catch (const Refusal& r) {
      refuse(r.code, path, std::string(": ") + r.what());
    }
  }
  Value clear = schema_.check(node, v);
  Value secret = Value::buf(secrets_.encrypt(clear.bytes()));
  cleanse(const_cast<std::string&>(clear.bytes()));  // `clear` is ours and not const
  return secret;
}

Level StoredTree::checked_keys(const NodePath& list, const Level& keys) const {
  const auto& leaves = list.node().keys;
  if (keys.size() != leaves.size())
    refuse(ErrorCode::badpath, list.with_keys({}),
           " has " + std::to_string(leaves.size()) + " keys, not " + std::to_string(keys.size()));
  Level good;
  for (std::size_t i = 0; i < keys.size(); ++i) good.push_back(schema_.check(*leaves[i], keys[i]));
  return good;
}

void StoredTree::set(const NodePath& path, const Value& v) {
  const Node& node = path.node();
  if (!node.has_value() || path.is_entry())
    refuse(ErrorCode::badtype, path, " is not a leaf or leaf-list");
  require_parents(path);
  if (node.is_key) return set_key_leaf(path, v);
  Value good = checked(path, v);
  if (node.kind == Node::Kind::leaf_list)
    return set_leaf_list(path, good.is(Type::list) ? good.items() : Items{std::move(good)});
  select_cases(path);
  writes_.put(store_key(path), node.type == Type::xmltag ? std::string() : pack_value(good));
}

void StoredTree::set_key_leaf(const NodePath& path, const Value& v) {
  if (schema_.check(path.node(), v) != get(path))
    refuse(ErrorCode::badvalue, path, ": the key of an entry cannot be changed");
}

// Values whose order says nothing are kept in key order. An entry's attributes go with it.
void StoredTree::set_leaf_list(const NodePath& path, Items items) {
  if (!path.node().user_ordered)
    std::sort(items.begin(), items.end(),
              [](const Value& a, const Value& b) { return sort_key(a) < sort_key(b); });
  select_cases(path);
  if (const auto old = leaf_list(path, false))
    for (const Value& v : *old)
      if (std::find(items.begin(), items.end(), v) == items.end()) erase_all(path.with_keys({v}));
  writes_.put(store_key(path), pack_value(Value::list(std::move(items))));
}

void StoredTree::create(const NodePath& path) {
  const Node& node = path.node();
  require_parents(path);
  if (node.kind == Node::Kind::leaf_list && path.is_entry()) return create_leaf_list_entry(path);
  const bool empty_leaf = node.is_leaf() && node.type == Type::xmltag;
  if (!has_marker(node) && !empty_leaf)
    refuse(ErrorCode::badtype, path, " cannot be created, only written");
  require_entry_keys(path);
  const NodePath good = node.kind == Node::Kind::list
                            ? path.with_keys(checked_keys(path, path.steps.back().keys))
                            : path;
  if (exists(good)) refuse(ErrorCode::already_exists, good, " already exists");
  select_cases(good);
  writes_.put(store_key(good), std::string());
}

void StoredTree::create_leaf_list_entry(const NodePath& path) {
  const NodePath whole = path.with_keys({});
  const Value v = schema_.check(path.node(), path.steps.back().keys[0]);
  const Value entry = v.is(Type::list) ? v.items().at(0) : v;
  Items items = leaf_list(whole, true).value_or(Items{});
  if (std::find(items.begin(), items.end(), entry) != items.end())
    refuse(ErrorCode::already_exists, path, " already exists");
  items.push_back(entry);
  set_leaf_list(whole, std::move(items));
}

void StoredTree::remove(const NodePath& path) {
  const Node& node = path.node();
  require_parents(path);
  if (node.is_key) refuse(ErrorCode::access, path, ": the key of an entry cannot be deleted");
  if (node.kind == Node::Kind::leaf_list && path.is_entry()) return remove_leaf_list_entry(path);
  const bool marked = node.kind == Node::Kind::presence || path.is_entry();
  if (marked && !exists(path)) refuse(ErrorCode::noexists, path, " does not exist");
  erase_all(path);
  drop_attributes_of_emptied(path);
}

void StoredTree::remove_leaf_list_entry(const NodePath& path) {
  const NodePath whole = path.with_keys({});
  Items items = leaf_list(whole, true).value_or(Items{});
  if (std::erase(items, path.steps.back().keys[0]) == 0)
    refuse(ErrorCode::noexists, path, " does not exist");
  if (items.empty()) return remove(whole);
  set_leaf_list(whole, std::move(items));
}

void StoredTree::erase_all(const NodePath& path) {
  const std::string key = store_key(path);
  writes_.erase_range(key, range_end(key));
}

// Containers without presence, and lists, go with the last of their content.
void StoredTree::drop_attributes_of_emptied(NodePath path) {
  while (true) {
    const bool entry = path.node().kind == Node::Kind::list && path.is_entry();
    path = entry ? path.with_keys({}) : path.parent();
    if (path.empty() || path.node().kind == Node::Kind::presence || path.is_entry()) return;
    if (exists(path, false)) return;
    const std::string key = store_key(path);
    writes_.erase_range(content_end(key), range_end(key));
  }
}

// Only below the innermost ancestor with a marker: what is there has its case already.
void StoredTree::select_cases(const NodePath& path) {
  std::size_t first = path.steps.size() - 1;
  while (first > 0 && !has_marker(*path.steps[first - 1].node)) --first;
  NodePath holder;
  holder.steps.assign(path.steps.begin(), path.steps.begin() + static_cast<std::ptrdiff_t>(first));
  for (; first < path.steps.size(); ++first) {
    clear_other_cases(holder, *path.steps[first].node);
    holder.steps.push_back(path.steps[first]);
  }
}

// From the outside in. The other cases' ranges are erased although they may be empty: a commit
// that selects one of them meanwhile is then a conflict.
void StoredTree::clear_other_cases(const NodePath& holder, const Node& node) {
  std::vector<std::pair<const Choice*, std::string_view>> chain;
  std::string_view own_case = node.case_name;
  for (const Choice* c = node.choice; c; c = c->outer) {
    chain.emplace_back(c, own_case);
    own_case = c->outer_case;
  }
  for (auto it = chain.rbegin(); it != chain.rend(); ++it)
    for (const Choice::Case& other : it->first->cases)
      if (other.name != it->second)
        for (const Node* n : other.nodes) erase_all(holder.child(*n));
}

void StoredTree::move(const NodePath& entry, const Level& keys) {
  if (entry.node().kind != Node::Kind::list || !entry.is_entry())
    refuse(ErrorCode::badpath, entry, " names no entry of a list");
  const NodePath target = entry.with_keys(checked_keys(entry, keys));
  if (!exists(entry)) refuse(ErrorCode::noexists, entry, " does not exist");
  if (exists(target)) refuse(ErrorCode::already_exists, target, " already exists");
  const std::string from = store_key(entry);
  const std::string to = store_key(target);
  std::vector<Record> records;
  for (auto r = writes_.seek(from); r && r->first <= range_end(from); r = writes_.next(r->first))
    records.push_back(*r);
  writes_.erase_range(from, range_end(from));
  for (Record& r : records) writes_.put(to + r.first.substr(from.size()), std::move(r.second));
}

void StoredTree::set_object(const NodePath& entry, const std::vector<Value>& values) {
  if (!exists(entry)) refuse(ErrorCode::noexists, entry, " does not exist");
  const std::size_t mark = writes_.mark();
  try {
    auto value = values.begin();
    for (const Node* child : entry.node().children) {
      if (value == values.end()) return;
      if (!child->has_value()) continue;
      if (!child->is_key && value->exists()) set(entry.child(*child), *value);
      ++value;
    }
    if (value != values.end()) refuse(ErrorCode::badvalue, entry, " has fewer leaves than values");
  } catch (...) {
    writes_.rollback(mark);
    throw;
  }
}

}  // namespace standin
