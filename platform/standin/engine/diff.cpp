#include "platform/standin/engine/diff.h"

#include <set>

#include "platform/wire/messages.h"

namespace standin {
namespace {

struct State {
  bool there = false;
  std::optional<Value> value;
};

// A read that is refused is as good as nothing there: the other side still shows.
State state_of(Data& data, const NodePath& path) {
  try {
    if (!path.node().has_value() || path.is_entry()) return {data.exists(path), std::nullopt};
    std::optional<Value> value = data.get(path);
    return {value.has_value(), std::move(value)};
  } catch (const Refusal&) {
    return {};
  }
}

std::optional<std::string> shown(const Schema& schema, const Node& node, const State& state) {
  if (!state.value || node.type == Type::xmltag) return std::nullopt;
  if (node.secret) return std::string(kSecretMask);
  if (!state.value->is(Type::list)) return schema.print(node, *state.value);
  std::string text;
  for (const Value& item : state.value->items())
    text += (text.empty() ? "" : " ") + quote_word(schema.print(node, item));
  return text;
}

std::optional<Difference> compare(const Schema& schema, const NodePath& path, const State& before,
                                  const State& after) {
  if (before.there == after.there && before.value == after.value) return std::nullopt;
  Difference difference;
  difference.kind = !before.there ? '+' : !after.there ? '-' : '~';
  difference.path = schema.to_text(path);
  difference.before = shown(schema, path.node(), before);
  difference.after = shown(schema, path.node(), after);
  return difference;
}

// Closes the transaction that looks at the state before, whatever happens meanwhile.
class Before {
 public:
  explicit Before(Engine& engine)
      : engine_(engine), transaction_(engine.open(Transaction::Kind::read, nullptr)) {}
  ~Before() { engine_.close(transaction_); }
  Before(const Before&) = delete;
  Before& operator=(const Before&) = delete;
  Transaction& operator*() { return *transaction_; }

 private:
  Engine& engine_;
  TransactionPtr transaction_;
};

}  // namespace

std::vector<Difference> differences(Engine& engine, Transaction& transaction) {
  const Schema& schema = engine.schema();
  // Copied: the reads below let go of the lock.
  const std::vector<Touched> touched = transaction.data().touched();
  std::vector<Difference> found;
  std::set<std::string> seen;
  Before before(engine);
  const Operation operation(engine.monitor(), *before);
  for (const Touched& t : touched) {
    transaction.require_going_on();
    if (!seen.insert(schema.to_text(t.path)).second) continue;
    const State old_state = state_of((*before).data(), t.path);
    if (auto d = compare(schema, t.path, old_state, state_of(transaction.data(), t.path)))
      found.push_back(std::move(*d));
  }
  return found;
}

}  // namespace standin
