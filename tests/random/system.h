// The real programs, driven as an operator drives them, and what befalls them.
#pragma once

#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "operation.h"
#include "tests/scenarios/machine.h"

namespace random_operations {

// A new database with its server, daemon and one northbound session. Throws std::runtime_error when
// a program does not do its part.
class System : private scenario::Machine {
 public:
  System();

  // Nothing, or the text of the refusal. A fault is never refused; `interrupted` tells of a commit
  // that was not acknowledged.
  std::optional<std::string> run(const Operation& op);
  // The whole tree as the open transaction shows it, or as a reader sees it: View's lines, sorted.
  std::vector<std::string> show_open();
  std::vector<std::string> show_committed();
  bool interrupted() const { return interrupted_; }
  // What the programs have written on standard error.
  std::string complaints();

 private:
  void befall(const Operation& op);
  void kill_server();
  void kill_daemon();
  void kill_server_in_commit(unsigned microseconds);
  void restart();

  std::unique_ptr<scenario::NorthboundSession> session_;
  bool interrupted_ = false;
};

}  // namespace random_operations
