// What a commit asks before it writes: the model's constraints, then the validation points.
#include <algorithm>
#include <map>

#include "constraints.h"
#include "data_impl.h"

namespace standin {
namespace {

struct PointCalls {
  std::string point;
  std::vector<Touched> nodes;
};

// The names of the points that stand below the node.
void points_below(const Node& node, std::vector<std::string>& out) {
  for (const Node* c : node.children) {
    if (!c->valpoint.empty()) out.push_back(c->valpoint);
    points_below(*c, out);
  }
}

std::vector<std::string> points_of(const Touched& t) {
  std::vector<std::string> out;
  const Node& n = t.path.node();
  if (n.validated) out.push_back(n.validated->valpoint);
  if (t.removed) points_below(n, out);
  return out;
}

// Each node once, at the place of its first write, in the state of its last.
std::vector<PointCalls> calls_of(const Schema& schema, const std::vector<Touched>& touched) {
  std::vector<PointCalls> calls;
  std::map<std::pair<std::string, std::string>, std::size_t> known;
  for (const Touched& t : touched) {
    for (const std::string& point : points_of(t)) {
      auto of_point =
          std::find_if(calls.begin(), calls.end(), [&](const auto& c) { return c.point == point; });
      if (of_point == calls.end()) of_point = calls.insert(calls.end(), {point, {}});
      const auto [at, is_new] =
          known.try_emplace({point, schema.to_text(t.path)}, of_point->nodes.size());
      if (is_new) {
        of_point->nodes.push_back(t);
      } else {
        of_point->nodes[at->second].removed = t.removed;
      }
    }
  }
  return calls;
}

class ValidationRun {
 public:
  ValidationRun(Callouts& callouts, const std::string& point) : callouts_(callouts), point_(point) {
    callouts_.validation(point_, true);
  }
  // The end of a validation is told also after a refusal; that it cannot be told changes nothing.
  ~ValidationRun() {
    try {
      callouts_.validation(point_, false);
    } catch (const Refusal&) {
    }
  }
  ValidationRun(const ValidationRun&) = delete;
  ValidationRun& operator=(const ValidationRun&) = delete;

 private:
  Callouts& callouts_;
  const std::string& point_;
};

struct Flag {
  explicit Flag(bool& f) : flag(f) { flag = true; }
  ~Flag() { flag = false; }
  Flag(const Flag&) = delete;
  Flag& operator=(const Flag&) = delete;
  bool& flag;
};

}  // namespace

void Data::Impl::ask_validation_point(Data& data, const std::string& point,
                                      const std::vector<Touched>& nodes) {
  switch (callouts.serving(point)) {
    case Serving::live:
      break;
    case Serving::never_registered:
      throw Refusal(ErrorCode::failed, schema.to_text(nodes.front().path) +
                                           ": no daemon has registered validation point \"" +
                                           point + "\"");
    case Serving::gone:
      throw Refusal(ErrorCode::gone, schema.to_text(nodes.front().path) +
                                         ": the daemon of validation point \"" + point +
                                         "\" has gone");
  }
  if (!callouts.has(point, Op::cb_validate)) return;
  const ValidationRun run(callouts, point);
  for (const Touched& t : nodes) {
    Callouts::Arguments arguments;
    if (!t.removed && t.path.node().has_value()) {
      arguments.value = t.path.is_entry() ? t.path.steps.back().keys.front()
                                          : data.get(t.path, false).value_or(Value());
    }
    try {
      callouts.call(point, Op::cb_validate, t.path, arguments);
    } catch (const Refusal& refused) {
      if (refused.code != ErrorCode::failed) throw;
      throw Refusal(ErrorCode::failed, schema.to_text(t.path) + ": " + refused.what());
    }
  }
}

void Data::validate() {
  if (impl_->touched.empty()) return;
  const Flag validating(impl_->validating);
  const std::vector<Touched> touched = impl_->touched;
  Constraints(*this, impl_->schema).check(touched);
  for (const PointCalls& calls : calls_of(impl_->schema, touched)) {
    impl_->ask_validation_point(*this, calls.point, calls.nodes);
  }
}

}  // namespace standin
