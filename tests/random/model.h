// What the two sides must be after each operation, told from the mapping's rules alone: it shares
// no code with the daemon.
#pragma once

#include <map>
#include <optional>
#include <string>
#include <tuple>
#include <vector>

#include "tables.h"

namespace random_operations {

// Thrown by a write that must be refused; `text` is part of the answer where the rules give one.
struct Refusal {
  std::string text;
};
[[noreturn]] void refuse(std::string text = {});
void require(bool holds, std::string text = {});
inline constexpr const char* kThere = "already exists";
inline constexpr const char* kNotThere = "not there";

// A tree as lines: one for each leaf, for each list with its keys in order, for each container that
// is there without content, and for each node that cannot be read.
class View {
 public:
  void leaf(const std::string& path, const std::string& value) { add(path + " = " + value); }
  void leaf_list(const std::string& path, const std::vector<std::string>& values);
  // An entry of the list, after those before it; its path.
  std::string entry(const std::string& list, const Key& keys);
  void empty(const std::string& path) { add(path + " {}"); }
  void error(const std::string& path, const std::string& text) { add(path + " error: " + text); }
  void optional(const std::string& path, const std::optional<std::string>& value) {
    if (value) leaf(path, *value);
  }
  std::vector<std::string> sorted() const;

 private:
  void add(std::string line) { lines_.push_back(std::move(line)); }
  std::vector<std::string> lines_;
  std::map<std::string, std::string> entries_;  // by list
};

// What a transaction holds beside the tables.
struct Transaction {
  Tables t;
  // Rows of groups that were taken away: model, name and loser; the winner.
  std::map<std::tuple<std::string, std::string, std::string>, std::string> conflicts;
  // Entries, by kind and keys, whose constraints a commit asks for.
  std::vector<std::pair<std::string, Key>> touched;

  void touch(const std::string& kind, Key key) { touched.emplace_back(kind, std::move(key)); }
};

// One area of the model each; `op` lies below it. Refusals are thrown.
void write_community(Transaction& tx, const Operation& op);
void write_notify(Transaction& tx, const Operation& op);
void write_target(Transaction& tx, const Operation& op);
void write_agent(Transaction& tx, const Operation& op);
void write_usm(Transaction& tx, const Operation& op);
void write_group(Transaction& tx, const Operation& op);
void write_view(Transaction& tx, const Operation& op);
void write_stored(Tables& t, const Operation& op);  // the MIB tables and the agent's settings

void show_community(View& view, const Tables& t);
void show_notify(View& view, const Tables& t);
void show_target(View& view, const Tables& t);
void show_agent(View& view, const Tables& t);
// Telling keys from passwords brings copies of keys up to date, where the transaction may write.
void show_usm(View& view, Tables& t, bool may_write);
void show_group(View& view, const Tables& t);
void show_view(View& view, const Tables& t);
void show_stored(View& view, const Tables& t);

// Constraints at commit, of an entry if it is still there.
bool target_holds(const Tables& t, const Key& key);
bool agent_holds(const Tables& t);
bool user_holds(Tables t, const Key& key);
bool subtree_holds(const Tables& t, const Key& key);

class Model {
 public:
  // Nothing, or the refusal; a refused operation leaves nothing.
  std::optional<Refusal> apply(const Operation& op);
  // Both sides as the open transaction shows them, or as a reader does.
  View show(bool may_write);
  const Tables& tables() const { return open_.t; }

 private:
  void write(const Operation& op);
  void validate();
  Transaction open_;
  Tables committed_;
};

}  // namespace random_operations
