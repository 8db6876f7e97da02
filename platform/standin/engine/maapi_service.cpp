#include <algorithm>
#include <optional>

#include "platform/standin/engine/rows.h"
#include "platform/standin/engine/service.h"

namespace standin {
namespace {

constexpr auto kRequire = Data::Ancestors::require;

Refusal absent(const Schema& schema, const NodePath& path) {
  return {ErrorCode::noexists, schema.to_text(path) + ": does not exist"};
}

const Choice& choice_of(const Schema& schema, const NodePath& holder, const std::string& name) {
  if (const Choice* choice = schema.find_choice(holder.node(), name)) return *choice;
  throw Refusal(ErrorCode::badpath, schema.to_text(holder) + ": no choice named " + name);
}

NodePath named_node(const Schema& schema, FrameReader& in) {
  NodePath path = schema.resolve(in.path());
  if (path.empty()) throw Refusal(ErrorCode::badpath, "the path names no node");
  return path;
}

void require_entry(const Schema& schema, const NodePath& path) {
  if (path.node().kind != Node::Kind::list || !path.is_entry())
    throw Refusal(ErrorCode::badpath, schema.to_text(path) + ": not a list entry");
}

// Daemons are behind some leaves of the entry, or are told of its writes: leaf by leaf then.
bool kept_here(const NodePath& path) { return path.node().transform == nullptr; }

std::vector<const Node*> leaves_of(const Node& list) {
  std::vector<const Node*> leaves;
  for (const Node* child : list.children)
    if (child->is_leaf()) leaves.push_back(child);
  return leaves;
}

std::vector<Value> get_object(Transaction& t, const Schema& schema, const NodePath& entry,
                              std::size_t count) {
  require_entry(schema, entry);
  if (kept_here(entry)) return t.stored().get_object(entry, count);
  if (!t.data().exists(entry)) throw absent(schema, entry);
  std::vector<Value> values;
  for (const Node* leaf : leaves_of(entry.node())) {
    if (values.size() == count) break;
    values.push_back(t.data().get(entry.child(*leaf)).value_or(Value()));
  }
  return values;
}

void set_object(Transaction& t, const Schema& schema, const NodePath& entry,
                const std::vector<Value>& values) {
  require_entry(schema, entry);
  if (kept_here(entry)) return t.stored().set_object(entry, values);
  const auto leaves = leaves_of(entry.node());
  if (values.size() > leaves.size())
    throw Refusal(ErrorCode::badvalue, schema.to_text(entry) + ": more values than leaves");
  for (std::size_t i = 0; i < values.size(); ++i)
    if (!leaves[i]->is_key && values[i].exists())
      t.data().set(entry.child(*leaves[i]), values[i], kRequire);
}

void move_entry(Transaction& t, const Schema& schema, const NodePath& entry, const Level& keys) {
  require_entry(schema, entry);
  if (!kept_here(entry))
    throw Refusal(ErrorCode::access, schema.to_text(entry) + ": cannot be moved");
  t.stored().move(entry, keys);
}

Value parse_text(const Schema& schema, const Node& node, const std::string& text) {
  if (node.kind != Node::Kind::leaf_list) return schema.parse(node, text);
  std::vector<Value> items;
  for (const std::string& word : split_words(text)) items.push_back(schema.parse(node, word));
  return Value::list(std::move(items));
}

Attributes wanted_attributes(Transaction& t, const NodePath& path,
                             const std::vector<std::uint32_t>& wanted) {
  Attributes attributes = t.data().attributes(path);
  if (!wanted.empty())
    std::erase_if(attributes, [&](const auto& attribute) {
      return std::find(wanted.begin(), wanted.end(), attribute.first) == wanted.end();
    });
  return attributes;
}

std::vector<std::uint32_t> numbers(FrameReader& in) {
  std::vector<std::uint32_t> all(in.array());
  for (auto& n : all) n = static_cast<std::uint32_t>(in.number());
  return all;
}

std::optional<Value> value_or_nil(FrameReader& in) {
  if (in.skip_nil()) return std::nullopt;
  return in.value();
}

FrameWriter serve_read(Session& session, Op op, FrameReader& in) {
  const Schema& schema = session.engine().schema();
  return in_transaction(session, in, [&](Transaction& t) {
    if (op == Op::xpath) return put_hits(t, evaluate_xpath(t.data(), schema, in.text()));
    const NodePath path = named_node(schema, in);
    switch (op) {
      case Op::exists: {
        const bool there = t.data().exists(path);
        return std::move(answer(t).put(there));
      }
      case Op::get_elem: {
        const std::optional<Value> value = t.data().get(path);
        if (!value) throw absent(schema, path);
        return std::move(answer(t).put(*value));
      }
      case Op::get_case: {
        const Choice::Case* selected = t.data().selected(path, choice_of(schema, path, in.text()));
        if (!selected) throw absent(schema, path);
        return std::move(answer(t).put(Value::tag(selected->tag)));
      }
      case Op::get_object: {
        const auto values = get_object(t, schema, path, in.number());
        return std::move(answer(t).put(Level(values)));
      }
      case Op::next_rows: {
        RowsRequest request{path, std::nullopt, 0, false};
        if (!in.skip_nil()) request.after = in.level();
        request.most = in.number();
        request.with_leaves = in.boolean();
        return put_rows(t, schema, request);
      }
      case Op::get_attrs:
        return put_attributes(t, wanted_attributes(t, path, numbers(in)));
      default:
        throw WireError("not a request of this connection");
    }
  });
}

FrameWriter serve_write(Session& session, Op op, FrameReader& in) {
  const Schema& schema = session.engine().schema();
  return writing(session, in, [&](Transaction& t) {
    const NodePath path = named_node(schema, in);
    switch (op) {
      case Op::create:
        return t.data().create(path, kRequire);
      case Op::remove:
        return t.data().remove(path, kRequire);
      case Op::set_elem:
        return t.data().set(path, in.value(), kRequire);
      case Op::set_elem_text:
        return t.data().set(path, parse_text(schema, path.node(), in.text()), kRequire);
      case Op::set_object:
        return set_object(t, schema, path, in.level());
      case Op::move:
        return move_entry(t, schema, path, in.level());
      case Op::set_attr: {
        const auto number = static_cast<std::uint32_t>(in.number());
        const std::optional<Value> value = value_or_nil(in);
        return t.data().set_attribute(path, number, value && value->exists() ? &*value : nullptr);
      }
      default:
        throw WireError("not a request of this connection");
    }
  });
}

}  // namespace

FrameWriter answer(std::uint64_t changes) {
  FrameWriter out;
  out.put(std::uint64_t{0}).put(changes);
  return out;
}

FrameWriter serve_maapi(Session& session, Op op, FrameReader& in) {
  switch (op) {
    case Op::attach:
      session.attach(in.number());
      return answer();
    case Op::attach_init:
      return std::move(answer().put(session.attach_initial()));
    case Op::detach:
      session.detach(in.number());
      return answer();
    case Op::schema_path:
      return std::move(answer().put(std::string_view(session.engine().repository().schema_file())));
    case Op::crypto_keys:
      return std::move(
          answer().put(std::string_view(session.engine().repository().secrets().key())));
    case Op::create:
    case Op::remove:
    case Op::set_elem:
    case Op::set_elem_text:
    case Op::set_object:
    case Op::move:
    case Op::set_attr:
      return serve_write(session, op, in);
    default:
      return serve_read(session, op, in);
  }
}

}  // namespace standin
