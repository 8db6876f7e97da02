#include <optional>

#include "platform/standin/engine/completion.h"
#include "platform/standin/engine/description.h"
#include "platform/standin/engine/diff.h"
#include "platform/standin/engine/rows.h"
#include "platform/standin/engine/service.h"
#include "platform/standin/engine/show.h"
#include "platform/wire/frame_counts.h"

namespace standin {
namespace {

constexpr auto kCreate = Data::Ancestors::create;

std::string printed(const Schema& schema, const Node& node, const Value& v) {
  return node.type == Type::xmltag ? std::string() : schema.print(node, v);
}

FrameWriter put_nothing(Transaction& t) { return std::move(answer(t).put_nil().put(false)); }

FrameWriter get(Transaction& t, const Schema& schema, const NodePath& path) {
  const Node* node = path.empty() ? nullptr : &path.node();
  if (!node || !node->has_value())
    throw Refusal(ErrorCode::badpath,
                  schema.to_text(path) + ": not a leaf: show prints what is below it");
  if (path.is_entry()) {
    if (!t.data().exists(path)) return put_nothing(t);
    return std::move(answer(t).put(schema.print(*node, path.steps.back().keys.front())).put(false));
  }
  const std::optional<Value> value = t.data().get(path);
  if (!value) return put_nothing(t);
  if (node->kind == Node::Kind::leaf)
    return std::move(answer(t).put(printed(schema, *node, *value)).put(false));
  std::vector<std::string> texts;
  if (value->is(Type::list))
    for (const Value& item : value->items()) texts.push_back(schema.print(*node, item));
  return std::move(answer(t).put(texts).put(true));
}

FrameWriter keys(Transaction& t, const Schema& schema, const NodePath& path) {
  const Node* node = path.empty() ? nullptr : &path.node();
  const bool listed =
      node && (node->kind == Node::Kind::list || node->kind == Node::Kind::leaf_list);
  if (!listed || path.is_entry())
    throw Refusal(ErrorCode::badpath, schema.to_text(path) + ": not a list");
  std::vector<Level> entries;
  t.data().walk(path, [&](const Level& entry) {
    entries.push_back(entry);
    return true;
  });
  FrameWriter out = answer(t);
  out.array(entries.size());
  for (const Level& entry : entries) {
    out.array(entry.size());
    for (std::size_t i = 0; i < entry.size(); ++i)
      out.put(schema.print(i < node->keys.size() ? *node->keys[i] : *node, entry[i]));
  }
  return out;
}

FrameWriter selected(Transaction& t, const Schema& schema, const NodePath& holder,
                     const std::string& name) {
  const Choice* choice = holder.empty() ? nullptr : schema.find_choice(holder.node(), name);
  if (!choice)
    throw Refusal(ErrorCode::badpath, schema.to_text(holder) + ": no choice named " + name);
  const Choice::Case* chosen = t.data().selected(holder, *choice);
  FrameWriter out = answer(t);
  if (chosen)
    out.put(chosen->name);
  else
    out.put_nil();
  return out;
}

FrameWriter show(Transaction& t, const Schema& schema, const NodePath& path) {
  const std::vector<TreeNode> tree = read_tree(t.data(), schema, path, false);
  FrameWriter out = answer(t);
  const bool complete = put_tree(out, schema, tree);
  return std::move(out.put(complete));
}

FrameWriter diff(Session& session, Transaction& t) {
  const std::vector<Difference> all = differences(session.engine(), t);
  FrameWriter out = answer(t);
  const auto put_text = [&](const std::optional<std::string>& text) {
    if (text)
      out.put(*text);
    else
      out.put_nil();
  };
  out.array(all.size());
  for (const Difference& d : all) {
    out.array(4).put(std::string(1, d.kind)).put(d.path);
    put_text(d.before);
    put_text(d.after);
  }
  return out;
}

// The transaction may be of any connection; one that is not open has nothing to tell.
FrameWriter watch(Engine& engine, FrameReader& in) {
  const TransactionPtr transaction = engine.find_handle(in.number());
  const bool stop = in.boolean();
  if (!transaction) return std::move(answer().put(std::uint64_t{0}).put(std::uint64_t{0}));
  Transaction::Work& work = transaction->work();
  if (stop) work.stop = true;
  return std::move(answer().put(work.done).put(work.total));
}

FrameWriter status(Engine& engine, std::uint16_t port) {
  FrameWriter out = answer();
  out.put(std::uint64_t{port}).put(std::uint64_t{engine.phase()});
  out.array(engine.daemons().all().size());
  for (const auto& [name, daemon] : engine.daemons().all()) {
    std::vector<std::string> points;
    for (const auto& [point, bits] : daemon->serves.callpoints) points.push_back(point);
    out.array(3).put(name).put(daemon->alive()).put(points);
  }
  const FrameCounts traffic = frame_counts();
  return std::move(out.put(std::uint64_t{engine.open_transactions()})
                       .put(traffic.frames_received)
                       .put(traffic.frames_sent)
                       .put(traffic.octets_received)
                       .put(traffic.octets_sent));
}

FrameWriter serve_read(Session& session, Op op, FrameReader& in) {
  const Schema& schema = session.engine().schema();
  return in_transaction(session, in, [&](Transaction& t) {
    if (op == Op::nb_diff) return diff(session, t);
    const NodePath path = schema.resolve(in.path());
    switch (op) {
      case Op::nb_get:
        return get(t, schema, path);
      case Op::nb_exists: {
        const bool there = path.empty() || t.data().exists(path);
        return std::move(answer(t).put(there));
      }
      case Op::nb_keys:
        return keys(t, schema, path);
      case Op::nb_case:
        return selected(t, schema, path, in.text());
      case Op::nb_show:
        return show(t, schema, path);
      case Op::nb_complete: {
        const bool entry = in.boolean();
        const std::vector<std::string> given = in.texts();
        return std::move(answer(t).put(complete(t, schema, path, entry, given, in.text())));
      }
      case Op::nb_get_attrs:
        return put_attributes(t, t.data().attributes(path));
      default:
        throw WireError("not a request of this connection");
    }
  });
}

void set(Transaction& t, const Schema& schema, const NodePath& path,
         const std::vector<std::string>& texts) {
  const Node* node = path.empty() ? nullptr : &path.node();
  if (!node || !node->has_value() || path.is_entry())
    throw Refusal(ErrorCode::badpath,
                  schema.to_text(path) + ": not a leaf, which alone can be set");
  if (node->kind == Node::Kind::leaf_list) {
    std::vector<Value> items;
    items.reserve(texts.size());
    for (const std::string& text : texts) items.push_back(schema.parse(*node, text));
    return t.data().set(path, Value::list(std::move(items)), kCreate);
  }
  if (node->type == Type::xmltag) {
    if (!texts.empty())
      throw Refusal(ErrorCode::badvalue, schema.to_text(path) + ": takes no value");
    return t.data().create(path, kCreate);
  }
  if (texts.size() != 1)
    throw Refusal(ErrorCode::badvalue, schema.to_text(path) + ": takes one value");
  t.data().set(path, schema.parse(*node, texts.front()), kCreate);
}

void set_attribute(Transaction& t, const NodePath& path, FrameReader& in) {
  const auto number = static_cast<std::uint32_t>(in.number());
  if (in.skip_nil()) return t.data().set_attribute(path, number, nullptr);
  const Value value = in.value();
  t.data().set_attribute(path, number, value.exists() ? &value : nullptr);
}

FrameWriter serve_write(Session& session, Op op, FrameReader& in) {
  const Schema& schema = session.engine().schema();
  return writing(session, in, [&](Transaction& t) {
    const NodePath path = schema.resolve(in.path());
    if (path.empty()) throw Refusal(ErrorCode::badpath, "/: cannot be written");
    switch (op) {
      case Op::nb_set:
        return set(t, schema, path, in.texts());
      case Op::nb_create:
        return t.data().create(path, kCreate);
      case Op::nb_delete:
        return t.data().remove(path, kCreate);
      case Op::nb_set_attr:
        return set_attribute(t, path, in);
      default:
        throw WireError("not a request of this connection");
    }
  });
}

FrameWriter load(Session& session, FrameReader& in) {
  std::size_t written = 0;
  FrameWriter out = in_transaction(session, in, [&](Transaction& t) {
    t.require_writable();
    const auto watch = [&t](std::uint64_t done, std::uint64_t total) {
      t.work().done = done;
      t.work().total = total;
      t.require_going_on();
    };
    written = load_json(t.data(), session.engine().schema(), in.text(), {}, watch);
    return answer(t);
  });
  return std::move(out.put(std::uint64_t{written}));
}

// A refused commit keeps the transaction; otherwise the handle names a new one afterwards.
FrameWriter end_transaction(Session& session, Op op, FrameReader& in) {
  const std::uint64_t handle = in.number();
  const TransactionPtr transaction = session.opened(handle);
  if (op == Op::nb_commit) {
    const Operation operation(session.engine().monitor(), *transaction);
    session.engine().commit(*transaction);
  }
  session.renew(handle);
  return answer();
}

}  // namespace

FrameWriter serve_northbound(Session& session, Op op, FrameReader& in, std::uint16_t port) {
  switch (op) {
    case Op::nb_open:
      return std::move(answer().put(session.open(in.boolean())));
    case Op::nb_close:
      session.close(in.number());
      return answer();
    case Op::nb_set:
    case Op::nb_create:
    case Op::nb_delete:
    case Op::nb_set_attr:
      return serve_write(session, op, in);
    case Op::nb_load:
      return load(session, in);
    case Op::nb_validate:
      return in_transaction(session, in, [](Transaction& t) {
        t.require_daemons();
        t.data().validate();
        return answer(t);
      });
    case Op::nb_commit:
    case Op::nb_abort:
      return end_transaction(session, op, in);
    case Op::nb_start:
      return std::move(answer().put(session.engine().start()));
    case Op::nb_status:
      return status(session.engine(), port);
    case Op::nb_describe:
      return std::move(put_description(answer(), session.engine().schema(), in.path()));
    case Op::nb_watch:
      return watch(session.engine(), in);
    default:
      return serve_read(session, op, in);
  }
}

}  // namespace standin
