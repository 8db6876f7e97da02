// load_json: RFC 7951 data merged into the tree, written in schema order whatever the order of the
// text.
#include <algorithm>

#include "data.h"
#include "json.h"
#include "node_reader.h"

namespace standin {
namespace {

// List entries: the objects that stand in arrays.
std::uint64_t entries_in(const Json& json) {
  std::uint64_t count = 0;
  for (const Json& item : json.items) {
    count += (item.kind == Json::Kind::object ? 1 : 0) + entries_in(item);
  }
  for (const auto& member : json.members) count += entries_in(member.value);
  return count;
}

class Loader {
 public:
  Loader(Data& data, const Schema& schema, const std::function<void(const NodePath&)>& allowed)
      : data_(data), schema_(schema), allowed_(allowed) {}
  // Tells `watch` of every list entry, of which there are `total`.
  void watched(const std::function<void(std::uint64_t, std::uint64_t)>& watch,
               std::uint64_t total) {
    watch_ = watch;
    total_ = total;
  }

  void object(const NodePath& holder, const std::vector<const Node*>& nodes, const Json& json);
  std::size_t written() const { return written_; }

 private:
  using Members = std::vector<std::pair<const Node*, const Json*>>;

  [[noreturn]] void fail(const Json& json, const std::string& where,
                         const std::string& what) const {
    throw Refusal(ErrorCode::badvalue, "line " + std::to_string(json.line) + ": " +
                                           (where.empty() ? "/" : where) + ": " + what);
  }
  void require(const Json& json, Json::Kind kind, const NodePath& path, const char* what) const {
    if (json.kind != kind) fail(json, schema_.to_text(path), std::string("expected ") + what);
  }

  const Node* find(const NodePath& holder, const std::vector<const Node*>& nodes,
                   const std::string& name, const Json& json) const;
  Members sorted(const NodePath& holder, const std::vector<const Node*>& nodes,
                 const Json& json) const;
  void require_one_case(const NodePath& holder, const Members& members) const;
  void node(const NodePath& path, const Json& json);
  void list(const NodePath& path, const Json& json);
  Level keys(const NodePath& list, const Json& entry) const;
  void values(const NodePath& path, const Json& json);
  std::string text(const NodePath& path, const Json& json) const;
  // One write; its refusal gets the line.
  template <class Write>
  void write(const NodePath& path, const Json& json, Write&& body);
  void ensure(const NodePath& path, const Json& json);

  Data& data_;
  const Schema& schema_;
  const std::function<void(const NodePath&)>& allowed_;
  std::function<void(std::uint64_t, std::uint64_t)> watch_;
  std::uint64_t entries_ = 0, total_ = 0;
  std::size_t written_ = 0;
};

template <class Write>
void Loader::write(const NodePath& path, const Json& json, Write&& body) {
  try {
    if (allowed_) allowed_(path);
    if (body()) ++written_;
  } catch (const Refusal& refused) {
    std::string what = refused.what();
    const std::string where = schema_.to_text(path);
    if (what.find(where) == std::string::npos) what = where + ": " + what;
    throw Refusal(refused.code, "line " + std::to_string(json.line) + ": " + what);
  }
}

void Loader::ensure(const NodePath& path, const Json& json) {
  write(path, json, [&] { return data_.ensure(path, Data::Ancestors::present); });
}

const Node* Loader::find(const NodePath& holder, const std::vector<const Node*>& nodes,
                         const std::string& name, const Json& json) const {
  const auto colon = name.find(':');
  const std::string module = colon == std::string::npos ? std::string() : name.substr(0, colon);
  const std::string local = colon == std::string::npos ? name : name.substr(colon + 1);
  const Node* found = nullptr;
  for (const Node* n : nodes) {
    if (n->name != local || (!module.empty() && n->module != module)) continue;
    if (found) fail(json, "", "\"" + name + "\" needs the name of its module before it");
    found = n;
  }
  if (!found) {
    const std::string where = holder.empty() ? std::string() : schema_.to_text(holder);
    fail(json, where, "unknown element \"" + name + "\"");
  }
  return found;
}

Loader::Members Loader::sorted(const NodePath& holder, const std::vector<const Node*>& nodes,
                               const Json& json) const {
  Members members;
  for (const auto& [name, value] : json.members) {
    members.emplace_back(find(holder, nodes, name, value), &value);
  }
  const auto place = [&nodes](const Node* n) { return std::find(nodes.begin(), nodes.end(), n); };
  std::stable_sort(members.begin(), members.end(),
                   [&](const auto& a, const auto& b) { return place(a.first) < place(b.first); });
  for (std::size_t i = 1; i < members.size(); ++i) {
    if (members[i].first == members[i - 1].first) {
      fail(*members[i].second, schema_.to_text(holder.child(*members[i].first)), "stands twice");
    }
  }
  require_one_case(holder, members);
  return members;
}

void Loader::require_one_case(const NodePath& holder, const Members& members) const {
  std::vector<std::pair<const Choice*, std::string>> seen;
  for (const auto& [n, json] : members) {
    std::string name = n->case_name;
    for (const Choice* c = n->choice; c; name = c->outer_case, c = c->outer) {
      const auto it =
          std::find_if(seen.begin(), seen.end(), [&](const auto& s) { return s.first == c; });
      if (it == seen.end()) {
        seen.emplace_back(c, name);
      } else if (it->second != name) {
        fail(*json, schema_.to_text(holder.child(*n)),
             "only one case of choice \"" + c->name + "\" can be there");
      }
    }
  }
}

void Loader::object(const NodePath& holder, const std::vector<const Node*>& nodes,
                    const Json& json) {
  for (const auto& [n, value] : sorted(holder, nodes, json)) {
    if (!n->is_key) node(holder.child(*n), *value);
  }
}

void Loader::node(const NodePath& path, const Json& json) {
  const Node& n = path.node();
  switch (n.kind) {
    case Node::Kind::list:
      return list(path, json);
    case Node::Kind::leaf:
    case Node::Kind::leaf_list:
      return values(path, json);
    case Node::Kind::presence:
      require(json, Json::Kind::object, path, "an object");
      ensure(path, json);
      return object(path, n.children, json);
    case Node::Kind::container:
      require(json, Json::Kind::object, path, "an object");
      // Its case is selected although nothing may stand in it.
      if (n.choice && n.is_external()) ensure(path, json);
      return object(path, n.children, json);
  }
}

void Loader::list(const NodePath& path, const Json& json) {
  require(json, Json::Kind::array, path, "an array of entries");
  for (const Json& item : json.items) {
    require(item, Json::Kind::object, path, "an entry, an object");
    if (watch_) watch_(entries_++, total_);
    const NodePath entry = path.with_keys(keys(path, item));
    ensure(entry, item);
    object(entry, path.node().children, item);
  }
}

Level Loader::keys(const NodePath& list, const Json& entry) const {
  Level keys;
  for (const Node* key : list.node().keys) {
    const Json* value = nullptr;
    for (const auto& [name, member] : entry.members) {
      if (name == key->name || name == key->module + ":" + key->name) value = &member;
    }
    if (!value)
      fail(entry, schema_.to_text(list), "an entry without its key \"" + key->name + "\"");
    const NodePath path = list.child(*key);
    const std::string word = text(path, *value);
    try {
      keys.push_back(schema_.parse(*key, word));
    } catch (const Refusal& refused) {
      throw Refusal(refused.code, "line " + std::to_string(value->line) + ": " + refused.what());
    }
  }
  return keys;
}

std::string Loader::text(const NodePath& path, const Json& json) const {
  if (json.kind != json_kind(path.node().type)) {
    fail(json, schema_.to_text(path), "a value of type " + path.node().type_name + " was expected");
  }
  return json.text;
}

void Loader::values(const NodePath& path, const Json& json) {
  const Node& n = path.node();
  if (n.kind == Node::Kind::leaf_list) {
    require(json, Json::Kind::array, path, "an array of values");
    std::vector<Value> items;
    for (const Json& item : json.items) items.push_back(Value::text(text(path, item)));
    write(path, json, [&] {
      data_.set(path, Value::list(std::move(items)), Data::Ancestors::present);
      return true;
    });
  } else if (n.type == Type::xmltag) {
    if (json.kind != Json::Kind::array || json.items.size() != 1 ||
        json.items.front().kind != Json::Kind::null) {
      fail(json, schema_.to_text(path), "expected [null]");
    }
    ensure(path, json);
  } else {
    const std::string word = text(path, json);
    write(path, json, [&] {
      data_.set(path, Value::text(word), Data::Ancestors::present);
      return true;
    });
  }
}

}  // namespace

std::size_t load_json(Data& data, const Schema& schema, std::string_view json,
                      const std::function<void(const NodePath&)>& allowed,
                      const std::function<void(std::uint64_t, std::uint64_t)>& watch) {
  const Json document = parse_json(json);
  if (document.kind != Json::Kind::object) {
    throw Refusal(ErrorCode::badvalue,
                  "line " + std::to_string(document.line) + ": expected an object");
  }
  Loader loader(data, schema, allowed);
  if (watch) loader.watched(watch, entries_in(document));
  data.together([&] { loader.object({}, schema.top(), document); });
  return loader.written();
}

}  // namespace standin
