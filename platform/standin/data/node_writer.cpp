#include "node_writer.h"

#include <algorithm>
#include <exception>

namespace standin {
namespace {

NodePath prefix(const NodePath& path, std::size_t n) {
  NodePath head;
  head.steps.assign(path.steps.begin(), path.steps.begin() + static_cast<std::ptrdiff_t>(n));
  return head;
}

bool has_marker(const NodePath& path) {
  return path.is_entry() || path.node().kind == Node::Kind::presence;
}

// What to do instead.
const char* not_created(const Node& node) {
  switch (node.kind) {
    case Node::Kind::list:
    case Node::Kind::leaf_list:
      return "an entry can be created: name one in braces";
    case Node::Kind::leaf:
      return "cannot be created, only set";
    default:
      return "cannot be created: it comes with what is set below it";
  }
}

bool can_be_created(const NodePath& path) {
  const Node& node = path.node();
  switch (node.kind) {
    case Node::Kind::container:
      return node.is_external();  // creating it selects its case
    case Node::Kind::presence:
      return true;
    case Node::Kind::list:
    case Node::Kind::leaf_list:
      return path.is_entry();
    case Node::Kind::leaf:
      return node.type == Type::xmltag;
  }
  return false;
}

// A check that is refused by the callback itself; a lost daemon is never passed over.
bool can_be_handed_on(const Refusal& refused) { return refused.code == ErrorCode::failed; }

}  // namespace

void NodeWriter::not_there(const NodePath& path) const {
  throw Refusal(ErrorCode::noexists, schema_.to_text(path) + ": not there");
}

std::vector<NodeWriter::CaseChange> NodeWriter::note_cases(const NodePath& path,
                                                           bool holder_missing) {
  std::vector<CaseChange> changes;
  const Node& node = path.node();
  if (!node.choice || !node.transform) return changes;
  std::vector<std::pair<const Choice*, std::string>> chain{{node.choice, node.case_name}};
  for (const Choice* c = node.choice; c->outer; c = c->outer)
    chain.emplace_back(c->outer, c->outer_case);
  std::reverse(chain.begin(), chain.end());

  const NodePath holder = path.parent();
  for (const auto& [choice, name] : chain) {
    CaseChange change{holder, choice, nullptr, {}};
    for (const Choice::Case& c : choice->cases) {
      if (c.name == name) change.to = &c;
    }
    const bool outer_changes = !changes.empty();
    if (!holder_missing && !outer_changes) {
      try {
        const Choice::Case* now = reader_.selected(holder, *choice);
        if (now == change.to) continue;
        if (now) {
          for (const Node* old : now->nodes) {
            auto pieces = reader_.pieces(holder.child(*old));
            change.old.insert(change.old.end(), pieces.begin(), pieces.end());
          }
        }
      } catch (const Refusal& refused) {
        if (!can_be_handed_on(refused)) throw;
      }
    }
    changes.push_back(std::move(change));
  }
  return changes;
}

// Decides whether the ancestor has to be created; answers whether it is there.
bool NodeWriter::note_ancestor(Step& step, bool parent_missing, Data::Ancestors ancestors) {
  if (ancestors == Data::Ancestors::present && step.changes.empty()) return true;
  // Entries are asked for even below what does not read as present: a group without rows may
  // have access entries.
  const bool known_missing =
      (parent_missing && !step.path.is_entry()) || (!step.changes.empty() && !step.path.is_entry());
  if (!known_missing && reader_.exists(step.path, true)) return true;
  if (ancestors == Data::Ancestors::require) not_there(step.path);
  step.create = true;
  return false;
}

NodeWriter::Plan NodeWriter::note(const NodePath& path, Data::Ancestors ancestors, bool repairs) {
  Plan plan;
  std::exception_ptr failed_check;
  bool changes_case = false;
  for (std::size_t n = 1; n <= path.steps.size(); ++n) {
    Step step{prefix(path, n), {}, false};
    step.changes = note_cases(step.path, plan.parent_missing);
    if (!step.changes.empty()) changes_case = true;
    if (n < path.steps.size() && has_marker(step.path)) {
      // Writes from MAAPI to stored nodes are judged by the store itself.
      const bool judged_here = step.path.node().transform || ancestors != Data::Ancestors::require;
      try {
        if (judged_here) plan.parent_missing = !note_ancestor(step, plan.parent_missing, ancestors);
      } catch (const Refusal& refused) {
        if (!can_be_handed_on(refused)) throw;
        // Only a change of case further in lets a broken row be repaired.
        failed_check = std::current_exception();
        changes_case = false;
        plan.parent_missing = false;
      }
    }
    plan.steps.push_back(std::move(step));
  }
  if (failed_check && !(repairs && changes_case)) std::rethrow_exception(failed_check);
  return plan;
}

void NodeWriter::prepare(const Plan& plan) {
  for (const Step& step : plan.steps) {
    for (const CaseChange& change : step.changes) {
      callbacks_.set_case(change.holder, *change.choice, change.to);
      for (const NodePath& old : change.old) do_remove(old);
    }
    if (step.create) do_create(step.path);
  }
}

bool NodeWriter::ensure(const NodePath& path, Data::Ancestors ancestors) {
  if (!can_be_created(path)) {
    throw Refusal(ErrorCode::badpath, schema_.to_text(path) + ": " + not_created(path.node()));
  }
  const Node& node = path.node();
  callbacks_.require_daemons(path);
  const Plan plan = note(path, ancestors, false);
  const bool selects_case = is_plain(node) && node.choice;
  const bool callback_decides = node.kind == Node::Kind::leaf_list && node.is_external();
  if (selects_case) {
    if (plan.steps.back().changes.empty()) return false;
  } else if (!callback_decides && (path.is_entry() || !plan.parent_missing)) {
    if (reader_.exists(path, true)) return false;
  }
  prepare(plan);
  do_create(path);
  return true;
}

void NodeWriter::set(const NodePath& path, const Value& v, Data::Ancestors ancestors) {
  const Node& node = path.node();
  if (!node.has_value() || path.is_entry()) {
    throw Refusal(ErrorCode::badpath, schema_.to_text(path) + ": has no value to set");
  }
  if (node.is_leaf() && node.type == Type::xmltag) {
    ensure(path, ancestors);
    return;
  }
  // The store checks what is its own. A callback is given a leaf-list whole, as a list.
  Value checked = node.transform ? schema_.check(node, v) : v;
  if (node.transform && !node.is_leaf() && !checked.is(Type::list))
    checked = Value::list({std::move(checked)});
  callbacks_.require_daemons(path);
  prepare(note(path, ancestors, true));
  do_set(path, checked);
}

void NodeWriter::remove(const NodePath& path, Data::Ancestors ancestors) {
  const Node& node = path.node();
  const bool northbound = ancestors != Data::Ancestors::require;
  const bool in_pieces = is_list_whole(path) || (is_plain(node) && node.reaches_callbacks());
  if (!node.transform && !in_pieces) {
    if (northbound && !reader_.exists(path, true)) not_there(path);
    do_remove(path);
    return;
  }
  callbacks_.require_daemons(path);
  const Choice::Case* own = case_of(node);
  const bool makes_up_case = own && own->nodes.size() == 1;
  if (in_pieces && !makes_up_case) return remove_pieces(path, ancestors);
  try {
    if (!reader_.exists_to_remove(path)) {
      if (!northbound && node.has_value()) return;
      not_there(path);
    }
  } catch (const Refusal& refused) {
    if (!can_be_handed_on(refused)) throw;
  }
  if (makes_up_case) return remove_case(path);
  do_remove(path);
}

void NodeWriter::remove_case(const NodePath& path) {
  const std::vector<NodePath> content =
      is_plain(path.node()) ? reader_.pieces(path) : std::vector<NodePath>{path};
  callbacks_.set_case(path.parent(), *path.node().choice, nullptr);
  for (const NodePath& piece : content) do_remove(piece);
  if (is_plain(path.node())) touched_.push_back({path, true});
}

void NodeWriter::remove_pieces(const NodePath& path, Data::Ancestors ancestors) {
  const std::vector<NodePath> content = reader_.pieces(path);
  if (content.empty() && ancestors != Data::Ancestors::require) not_there(path);
  for (const NodePath& piece : content) do_remove(piece);
}

void NodeWriter::do_create(const NodePath& path) {
  const Node& node = path.node();
  callbacks_.require_daemons(path);
  touched_.push_back({path, false});  // before what hooks write below it
  if (!is_plain(node)) {              // a container without presence is never passed to a callback
    if (!node.is_external()) stored_.create(path);
    callbacks_.create(path);
  }
}

void NodeWriter::do_set(const NodePath& path, const Value& v) {
  callbacks_.require_daemons(path);
  if (!path.node().is_external()) stored_.set(path, v);
  callbacks_.set(path, v);
  touched_.push_back({path, false});
}

void NodeWriter::do_remove(const NodePath& path) {
  callbacks_.require_daemons(path);
  if (!path.node().is_external()) stored_.remove(path);
  callbacks_.remove(path);
  touched_.push_back({path, true});
}

}  // namespace standin
