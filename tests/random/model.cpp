#include "model.h"

#include <algorithm>

namespace random_operations {

void refuse(std::string text) { throw Refusal{std::move(text)}; }
void require(bool holds, std::string text) {
  if (!holds) refuse(std::move(text));
}

void View::leaf_list(const std::string& path, const std::vector<std::string>& values) {
  leaf(path, words(values));
}

std::string View::entry(const std::string& list, const Key& keys) {
  entries_[list] += ' ' + braces(keys);
  return list + braces(keys);
}

std::vector<std::string> View::sorted() const {
  std::vector<std::string> lines = lines_;
  for (const auto& [list, entries] : entries_) lines.push_back(list + ":" + entries);
  std::sort(lines.begin(), lines.end());
  return lines;
}

void Model::write(const Operation& op) {
  using Write = void (*)(Transaction&, const Operation&);
  static const std::map<std::string, Write> kAreas{{"community", write_community},
                                                   {"notify", write_notify},
                                                   {"target", write_target},
                                                   {"agent", write_agent},
                                                   {"usm", write_usm},
                                                   {"group", write_group},
                                                   {"view", write_view}};
  if (op.path.front().name != "snmp") return write_stored(open_.t, op);
  const std::string& area = op.path.at(1).name;
  kAreas.at(area == "vacm" ? op.path.at(2).name : area)(open_, op);
}

void Model::validate() {
  // Which of several faults is told is not fixed, so no text is expected.
  for (const auto& [kind, key] : open_.touched) {
    require((kind != "target" || target_holds(open_.t, key)) &&
            (kind != "agent" || agent_holds(open_.t)) &&
            (kind != "user" || user_holds(open_.t, key)) &&
            (kind != "subtree" || subtree_holds(open_.t, key)));
  }
  if (open_.conflicts.empty()) return;
  // Told once: a commit that is repeated as it stands passes.
  const std::size_t n = open_.conflicts.size();
  open_.conflicts.clear();
  refuse(
      "Specific sec. model and member's sec. name combination must be unique for one group! "
      "(found " +
      std::to_string(n) + " conflict(s))");
}

std::optional<Refusal> Model::apply(const Operation& op) {
  try {
    if (op.is("validate") || op.is("commit")) {
      validate();
      if (op.is("validate")) return std::nullopt;
      committed_ = open_.t;
    }
    if (op.is("commit") || op.is("abort") || op.fault) {
      open_ = Transaction{committed_, {}, {}};
      return std::nullopt;
    }
    Transaction before = open_;
    try {
      write(op);
    } catch (const Refusal&) {
      open_ = std::move(before);
      throw;
    }
    return std::nullopt;
  } catch (const Refusal& refusal) {
    return refusal;
  }
}

View Model::show(bool may_write) {
  View view;
  Tables reader = open_.t;
  Tables& t = may_write ? open_.t : reader;
  // In the order in which the server reads them: what telling key types writes shows next time.
  show_stored(view, t);
  show_usm(view, t, may_write);
  show_community(view, t);
  show_notify(view, t);
  show_target(view, t);
  show_agent(view, t);
  show_group(view, t);
  show_view(view, t);
  return view;
}

}  // namespace random_operations
