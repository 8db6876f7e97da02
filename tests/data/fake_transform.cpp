#include "fake_transform.h"

#include <utility>

namespace standin::test {
namespace {

std::string name_of(Op op) {
  static const std::map<Op, std::string> names = {
      {Op::cb_exists_optional, "exists"}, {Op::cb_get_elem, "get"},
      {Op::cb_get_next, "next"},          {Op::cb_set_elem, "set"},
      {Op::cb_create, "create"},          {Op::cb_remove, "remove"},
      {Op::cb_get_case, "get_case"},      {Op::cb_set_case, "set_case"},
      {Op::cb_get_attrs, "get_attrs"},    {Op::cb_set_attr, "set_attr"},
      {Op::cb_validate, "validate"}};
  return names.at(op);
}

std::string tag_name(const NodePath& holder, const Value& choice, const Value& which) {
  for (const Choice* c : holder.node().choices) {
    if (c->tag != choice.tag()) continue;
    if (!which.exists()) return c->name + " none";
    for (const auto& k : c->cases) {
      if (k.tag == which.tag()) return c->name + " " + k.name;
    }
  }
  return "?";
}

}  // namespace

Serving FakeTransform::serving(const std::string& point) {
  const auto it = not_live.find(point);
  return it == not_live.end() ? Serving::live : it->second;
}

bool FakeTransform::has(const std::string& point, Op callback) {
  if (point == "community-hook" && callback != Op::cb_create) return false;
  return lacks.count({point, callback}) == 0;
}

Answer FakeTransform::call(const std::string& point, Op callback, const NodePath& path,
                           const Arguments& arguments) {
  const std::string text = schema_.to_text(path);
  std::string line = name_of(callback) + " " + text;
  if (callback == Op::cb_set_elem) line += " = " + schema_.print(path.node(), arguments.value);
  if (callback == Op::cb_set_case)
    line += " " + tag_name(path, arguments.choice, arguments.case_value);
  if (callback == Op::cb_validate && arguments.value.exists()) {
    line += " = " + schema_.print(path.node(), arguments.value);
  }
  if (point == "community-hook") line = "hook " + line;
  calls.push_back(line);
  if (during) during(line);
  if (const auto it = refuse.find(line); it != refuse.end()) {
    throw Refusal(ErrorCode::failed, it->second);
  }
  Answer answer;
  if (point != "community-hook") act(callback, path, arguments, answer);
  return answer;
}

void FakeTransform::act(Op callback, const NodePath& path, const Arguments& arguments,
                        Answer& answer) {
  const std::string text = schema_.to_text(path);
  answer.kind = Answer::Kind::ok;
  switch (callback) {
    case Op::cb_exists_optional:
      answer.kind = there(text) ? Answer::Kind::found : Answer::Kind::not_found;
      break;
    case Op::cb_get_elem: {
      answer.kind = Answer::Kind::not_found;
      if (const auto it = answers.find(text); it != answers.end()) {
        answer.kind = Answer::Kind::value;
        answer.value = it->second;
      } else if (path.node().is_key) {
        const std::string entry = schema_.to_text(path.parent());
        if (!there(entry) || hidden.count(entry) != 0) return;
        answer.kind = Answer::Kind::value;
        answer.value = path.parent().steps.back().keys.front();
      } else if (there(text)) {
        answer.kind = Answer::Kind::value;
        answer.value = nodes_.at(text).second;
      }
      break;
    }
    case Op::cb_get_next:
      next(path, arguments.next, answer);
      break;
    case Op::cb_set_elem:
      nodes_[text] = {path, arguments.value};
      break;
    case Op::cb_create:
      nodes_[text] = {path, {}};
      break;
    case Op::cb_remove:
      std::erase_if(nodes_, [&](const auto& n) {
        return n.first == text || n.first.compare(0, text.size() + 1, text + "/") == 0;
      });
      break;
    case Op::cb_get_case: {
      const auto it = cases_.find(text + tag_name(path, arguments.choice, {}));
      answer.kind = it == cases_.end() ? Answer::Kind::not_found : Answer::Kind::value;
      if (it != cases_.end()) answer.value = it->second;
      break;
    }
    case Op::cb_set_case:
      cases_.erase(text + tag_name(path, arguments.choice, {}));
      if (arguments.case_value.exists()) {
        cases_[text + tag_name(path, arguments.choice, {})] = arguments.case_value;
      }
      break;
    default:
      break;
  }
}

void FakeTransform::next(const NodePath& list, std::int64_t after, Answer& answer) const {
  answer.kind = Answer::Kind::keys;
  std::int64_t place = 0;
  for (const auto& [text, node] : nodes_) {
    if (!node.first.is_entry() || node.first.with_keys({}) != list || place++ <= after) continue;
    answer.keys = node.first.steps.back().keys;
    answer.next = place - 1;
    return;
  }
}

void FakeTransform::validation(const std::string& point, bool start) {
  calls.push_back((start ? "validation starts " : "validation ends ") + point);
}

std::vector<std::string> FakeTransform::take_calls() { return std::exchange(calls, {}); }

Schema& DataTest::schema() {
  static const auto loaded = Schema::load({QUILLET_MODEL_DIR, QUILLET_YANG_DIR});
  return *loaded;
}

void DataTest::open() {
  store = Store::open(directory_ / "db");
  assign_node_ids(schema().all(), *store);
  writes = std::make_unique<WriteSet>(*store, log);
  secrets = std::make_unique<Secrets>(directory_ / "key", false);
  stored = std::make_unique<StoredTree>(schema(), *writes, *secrets);
}

DataTest::DataTest() : daemon((open(), schema())), data(schema(), *writes, *stored, daemon) {}

void DataTest::set_list(const std::string& path, const std::vector<std::string>& texts) {
  std::vector<Value> items;
  for (const std::string& t : texts) items.push_back(Value::text(t));
  data.set(at(path), Value::list(std::move(items)), Data::Ancestors::create);
}

std::string DataTest::get(const std::string& path) {
  const NodePath p = at(path);
  const auto v = data.get(p);
  return v ? schema().print(p.node(), *v) : "not there";
}

std::string DataTest::refusal(const std::function<void()>& body) {
  try {
    body();
  } catch (const Refusal& refused) {
    return refused.what();
  }
  return "";
}

}  // namespace standin::test
