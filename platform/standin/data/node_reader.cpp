#include "node_reader.h"

#include <algorithm>

namespace standin {

const Choice::Case* case_of(const Node& node) {
  if (!node.choice) return nullptr;
  for (const Choice::Case& c : node.choice->cases) {
    if (c.name == node.case_name) return &c;
  }
  return nullptr;
}

bool NodeReader::exists(const NodePath& path, bool note) {
  const Node& node = path.node();
  if (node.is_external()) return external_exists(path);
  if (is_list_whole(path)) return has_entries(path);
  return stored_.exists(path, note);
}

bool NodeReader::external_exists(const NodePath& path) {
  const Node& node = path.node();
  switch (node.kind) {
    case Node::Kind::container:
      return !node.choice || selected(path.parent(), *node.choice) == case_of(node);
    case Node::Kind::presence:
      return callbacks_.found(path);
    case Node::Kind::list:
      return path.is_entry() ? callbacks_.value(path.child(*node.keys.front())).has_value()
                             : has_entries(path);
    case Node::Kind::leaf:
      return node.type == Type::xmltag ? callbacks_.found(path)
                                       : callbacks_.value(path).has_value();
    case Node::Kind::leaf_list: {
      if (path.is_entry()) return callbacks_.found(path);
      const auto whole = callbacks_.value(path);
      return whole && (!whole->is(Type::list) || !whole->items().empty());
    }
  }
  return false;
}

bool NodeReader::exists_to_remove(const NodePath& path) {
  if (exists(path, true)) return true;
  const Node& node = path.node();
  if (node.kind != Node::Kind::list || !path.is_entry()) return false;
  return std::any_of(node.children.begin(), node.children.end(), [&](const Node* c) {
    return c->kind == Node::Kind::list && has_entries(path.child(*c));
  });
}

bool NodeReader::has_entries(const NodePath& list) {
  if (list.node().is_external()) return callbacks_.next(list, -1).has_value();
  return stored_.next(list, nullptr).has_value();
}

std::optional<Value> NodeReader::get(const NodePath& path, bool note) {
  const Node& node = path.node();
  if (!node.has_value()) return std::nullopt;
  if (!node.is_external()) return stored_.get(path, note);
  if (node.is_leaf() && node.type == Type::xmltag) {
    return callbacks_.found(path) ? std::optional(Value::tag(node.tag)) : std::nullopt;
  }
  if (path.is_entry()) {  // one value of a leaf-list
    return callbacks_.found(path) ? std::optional(path.steps.back().keys.front()) : std::nullopt;
  }
  return callbacks_.value(path);
}

void NodeReader::walk(const NodePath& list, const std::function<bool(const Level&)>& each,
                      const Level* after) {
  if (list.node().is_external()) {
    std::int64_t next = -1;
    while (auto entry = callbacks_.next(list, next)) {
      if (!each(entry->first)) return;
      next = entry->second;
    }
    return;
  }
  if (list.node().kind == Node::Kind::leaf_list) {
    const auto whole = stored_.get(list, false);
    if (!whole || !whole->is(Type::list)) return;
    for (const Value& item : whole->items()) {
      if (!each({item})) return;
    }
    return;
  }
  // Each step seeks anew from the last key: rows may come and go while `each` calls out.
  auto keys = stored_.next(list, after);
  while (keys && each(*keys)) keys = stored_.next(list, &*keys);
}

const Choice::Case* NodeReader::selected(const NodePath& holder, const Choice& choice) {
  if (!holder.empty() && is_list_whole(holder))
    throw Refusal(ErrorCode::badpath, schema_.to_text(holder) + ": names no entry of the list");
  if (!holder.empty() && holder.node().is_external()) return callbacks_.selected(holder, choice);
  return stored_.selected(holder, choice).value_or(nullptr);
}

std::vector<NodePath> NodeReader::pieces(const NodePath& path) {
  std::vector<NodePath> out;
  collect(path, out);
  return out;
}

void NodeReader::collect(const NodePath& path, std::vector<NodePath>& out) {
  const Node& node = path.node();
  if (is_list_whole(path)) {
    walk(path, [&](const Level& keys) {
      out.push_back(path.with_keys(keys));
      return true;
    });
  } else if (is_plain(node)) {
    for (const Node* c : node.children) {
      if (is_plain(*c) && c->choice && !exists(path.child(*c), true)) continue;
      collect(path.child(*c), out);
    }
  } else {
    bool there = true;
    try {
      there = exists(path, true);
    } catch (const Refusal& refused) {
      if (refused.code != ErrorCode::failed) throw;
    }
    if (there) out.push_back(path);
  }
}

}  // namespace standin
