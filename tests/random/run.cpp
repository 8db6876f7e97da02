#include "run.h"

#include <algorithm>
#include <iterator>
#include <stdexcept>

namespace random_operations {
namespace {

std::string difference(const std::vector<std::string>& is, const std::vector<std::string>& should) {
  std::vector<std::string> more, less;
  std::set_difference(is.begin(), is.end(), should.begin(), should.end(), std::back_inserter(more));
  std::set_difference(should.begin(), should.end(), is.begin(), is.end(), std::back_inserter(less));
  std::string text;
  for (const std::string& line : less) text += "  should be: " + line + "\n";
  for (const std::string& line : more) text += "  is:        " + line + "\n";
  return text;
}

bool matches(const std::optional<std::string>& is, const std::optional<Refusal>& should) {
  if (!is || !should) return !is && !should;
  return is->find(should->text) != std::string::npos;
}

}  // namespace

bool Run::step(const Operation& op) {
  try {
    const bool accepted = op.fault || step_in_transaction(op);
    if (op.fault) fault(op);
    const bool ends = op.fault || (accepted && (op.is("commit") || op.is("abort")));
    if (ends) {
      since_.clear();
    } else {
      since_.push_back(op);
    }
    return accepted;
  } catch (const std::runtime_error& e) {
    throw Disagreement{std::string("  ") + e.what() + "\n"};
  }
}

bool Run::step_in_transaction(const Operation& op) {
  if (!op.is("show")) return both(op);
  compare(system_.show_open(), model_.show(true));
  return true;
}

bool Run::both(const Operation& op) {
  const std::optional<Refusal> should = model_.apply(op);
  const std::optional<std::string> is = system_.run(op);
  if (!matches(is, should)) {
    throw Disagreement{"  should be " + (should ? "refused: " + should->text : "accepted") +
                       "\n  is " + (is ? "refused: " + *is : "accepted") + "\n"};
  }
  const bool ends = !should && (op.is("commit") || op.is("abort"));
  if (ends) compare(system_.show_committed(), model_.show(false));
  return !should;
}

void Run::fault(const Operation& op) {
  Model committed = model_;
  const bool may_commit =
      op.verb.starts_with("server-killed-in-commit") && !committed.apply(parse("commit"));
  model_.apply(op);
  system_.run(op);
  const std::vector<std::string> is = system_.show_committed();
  // Acknowledged: it must be there. Not acknowledged: it may be, but whole.
  const bool must = may_commit && !system_.interrupted();
  if (must || (may_commit && is == committed.show(false).sorted())) {
    compare(is, committed.show(false));
    model_ = std::move(committed);
    return;
  }
  compare(is, model_.show(false));
  if (!may_commit) return;
  // What was lost is done again, so that the way on does not depend on when the server died.
  for (const Operation& lost : since_) step_in_transaction(lost);
  step_in_transaction(parse("commit"));
}

void Run::compare(const std::vector<std::string>& is, const View& should) {
  const std::vector<std::string> lines = should.sorted();
  if (is != lines) throw Disagreement{difference(is, lines)};
}

}  // namespace random_operations
