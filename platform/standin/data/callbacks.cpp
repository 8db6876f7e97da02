#include "callbacks.h"

namespace standin {
namespace {

// Text goes out of a daemon anywhere; here it becomes what the node's type makes of it, and stays
// text where the type does not admit it, since a read never fails because of a value.
Value arrived(const Schema& schema, const Node& node, const Value& v) {
  if (v.is(Type::list)) {
    std::vector<Value> items;
    for (const Value& item : v.items()) items.push_back(arrived(schema, node, item));
    return Value::list(std::move(items));
  }
  if (!v.is(Type::str)) return v;
  if (node.type == Type::buf) return Value::buf(v.bytes());
  try {
    return schema.parse(node, v.bytes());
  } catch (const Refusal&) {
    return Value::buf(v.bytes());
  }
}

}  // namespace

std::optional<Answer> Callbacks::ask(const NodePath& path, Op op,
                                     const Callouts::Arguments& arguments) {
  const std::string& point = path.node().transform->callpoint;
  if (callouts_.serving(point) == Serving::never_registered) return std::nullopt;
  require_live(point, path);
  if (!callouts_.has(point, op)) return std::nullopt;
  return callouts_.call(point, op, path, arguments);
}

void Callbacks::require_live(const std::string& point, const NodePath& path) {
  switch (callouts_.serving(point)) {
    case Serving::live:
      return;
    case Serving::never_registered:
      throw Refusal(
          ErrorCode::failed,
          schema_.to_text(path) + ": no daemon has registered callpoint \"" + point + "\"");
    case Serving::gone:
      throw Refusal(
          ErrorCode::gone,
          schema_.to_text(path) + ": the daemon that serves callpoint \"" + point + "\" has gone");
  }
}

void Callbacks::require_daemons(const NodePath& path) {
  const Node& node = path.node();
  if (node.transform) require_live(node.transform->callpoint, path);
  if (!node.hook.empty()) require_live(node.hook, path);
}

void Callbacks::order(const NodePath& path, Op op, const Callouts::Arguments& arguments) {
  const Node& node = path.node();
  require_daemons(path);
  if (node.transform) {
    const std::string& point = node.transform->callpoint;
    if (callouts_.has(point, op)) callouts_.call(point, op, path, arguments);
  }
  if (node.hook.empty()) return;
  require_live(node.hook, path);  // the transform may have outlived it
  if (callouts_.has(node.hook, op)) callouts_.call(node.hook, op, path, arguments);
}

bool Callbacks::found(const NodePath& path) {
  const auto answer = ask(path, Op::cb_exists_optional, {});
  return answer && answer->kind == Answer::Kind::found;
}

std::optional<Value> Callbacks::value(const NodePath& leaf) {
  auto answer = ask(leaf, Op::cb_get_elem, {});
  if (!answer || answer->kind != Answer::Kind::value || !answer->value.exists())
    return std::nullopt;
  return arrived(schema_, leaf.node(), answer->value);
}

std::optional<std::pair<Level, std::int64_t>> Callbacks::next(const NodePath& list,
                                                              std::int64_t next) {
  Callouts::Arguments arguments;
  arguments.next = next;
  auto answer = ask(list, Op::cb_get_next, arguments);
  if (!answer || answer->kind != Answer::Kind::keys || answer->keys.empty()) return std::nullopt;
  const Node& node = list.node();
  Level keys;
  for (std::size_t i = 0; i < answer->keys.size(); ++i) {
    const Node& key = i < node.keys.size() ? *node.keys[i] : node;
    keys.push_back(arrived(schema_, key, answer->keys[i]));
  }
  return std::pair{std::move(keys), answer->next};
}

const Choice::Case* Callbacks::selected(const NodePath& holder, const Choice& choice) {
  Callouts::Arguments arguments;
  arguments.choice = Value::tag(choice.tag);
  const auto answer = ask(holder, Op::cb_get_case, arguments);
  if (!answer || answer->kind != Answer::Kind::value || !answer->value.is(Type::xmltag))
    return nullptr;
  for (const Choice::Case& c : choice.cases) {
    if (c.tag == answer->value.tag()) return &c;
  }
  return nullptr;
}

Attributes Callbacks::attributes(const NodePath& path) {
  auto answer = ask(path, Op::cb_get_attrs, {});
  return answer ? std::move(answer->attributes) : Attributes{};
}

void Callbacks::create(const NodePath& path) { order(path, Op::cb_create, {}); }

void Callbacks::set(const NodePath& path, const Value& v) {
  Callouts::Arguments arguments;
  arguments.value = v;
  order(path, Op::cb_set_elem, arguments);
}

void Callbacks::remove(const NodePath& path) { order(path, Op::cb_remove, {}); }

void Callbacks::set_case(const NodePath& holder, const Choice& choice, const Choice::Case* to) {
  const std::string& point = holder.node().transform->callpoint;
  require_live(point, holder);
  if (!callouts_.has(point, Op::cb_set_case)) return;
  Callouts::Arguments arguments;
  arguments.choice = Value::tag(choice.tag);
  if (to) arguments.case_value = Value::tag(to->tag);
  callouts_.call(point, Op::cb_set_case, holder, arguments);
}

void Callbacks::set_attribute(const NodePath& path, std::uint32_t number, const Value* v) {
  const std::string& point = path.node().transform->callpoint;
  require_live(point, path);
  if (!callouts_.has(point, Op::cb_set_attr)) {
    throw Refusal(ErrorCode::failed,
                  schema_.to_text(path) + ": callpoint \"" + point + "\" keeps no attributes");
  }
  Callouts::Arguments arguments;
  arguments.attribute = number;
  if (v) arguments.value = *v;
  callouts_.call(point, Op::cb_set_attr, path, arguments);
}

}  // namespace standin
