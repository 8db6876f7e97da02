// The server's state: what it keeps, who is connected, which transactions are open, its phase.
#pragma once

#include <chrono>
#include <cstdint>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include "platform/standin/engine/daemon.h"
#include "platform/standin/engine/monitor.h"
#include "platform/standin/engine/repository.h"
#include "platform/standin/engine/transaction.h"

namespace standin {

struct EngineOptions {
  std::string directory;
  std::vector<std::string> yang;  // directories
  std::string init_file;          // empty: none
  std::chrono::milliseconds timeout{30000};
};

class Engine {
 public:
  // Throws std::runtime_error with one line: what the directory, the modules or the file lack.
  explicit Engine(const EngineOptions& options);
  Engine(const Engine&) = delete;
  Engine& operator=(const Engine&) = delete;

  Monitor& monitor() { return monitor_; }

  // ---- everything below: REQUIRES the lock
  Repository& repository() { return repository_; }
  const Schema& schema() const { return repository_.schema(); }
  Daemons& daemons() { return daemons_; }

  TransactionPtr open(Transaction::Kind kind, SocketPtr client);
  // Null when there is no open transaction of that number.
  TransactionPtr find(std::uint64_t id) const;
  // Of a client's handle, which outlives the transactions that it names.
  TransactionPtr find_handle(std::uint64_t handle) const;
  std::size_t open_transactions() const { return transactions_.size(); }
  // Validates, and makes the writes durable. Throws Refusal, and the transaction goes on. May let
  // go of the lock; commits wait for each other.
  void commit(Transaction& transaction);
  void close(const TransactionPtr& transaction);

  // The initial transaction, while it is open.
  TransactionPtr initial() const { return initial_; }
  // Commits it. False when there is none.
  bool start();
  unsigned phase() const { return initial_ ? 0 : 2; }

  // Wakes whoever waits; from now on nobody is called.
  void stop();

 private:
  class CommitTurn;

  void load_initial(const std::string& file);

  Monitor monitor_;
  Repository repository_;
  Daemons daemons_;
  std::chrono::milliseconds timeout_;
  std::uint64_t next_id_ = 1;
  std::map<std::uint64_t, TransactionPtr> transactions_;
  TransactionPtr initial_;
  bool committing_ = false;
};

}  // namespace standin
