// One transaction: its writes, its view of the tree, the daemons it touched, and who is at work
// in it.
#pragma once

#include <chrono>
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "platform/standin/data/data.h"
#include "platform/standin/engine/daemon.h"
#include "platform/standin/engine/monitor.h"
#include "platform/standin/engine/repository.h"

namespace standin {

class Caller;

using Clock = std::chrono::steady_clock;

// What transactions need of the server around them.
struct Surroundings {
  Repository& repository;
  Monitor& monitor;
  Daemons& daemons;
  std::chrono::milliseconds timeout;  // a daemon's longest silence
};

// All members are used under the server's lock.
class Transaction {
 public:
  enum class Kind : std::uint8_t { read, read_write, initial };

  // `client`: whose connection it hangs on; null for the initial transaction and the server's own.
  Transaction(std::uint64_t id, Kind kind, Surroundings around, SocketPtr client);
  ~Transaction();
  Transaction(const Transaction&) = delete;
  Transaction& operator=(const Transaction&) = delete;

  std::uint64_t id() const { return id_; }
  // What the client calls it: the id of the first of those that followed one another.
  std::uint64_t handle() const { return handle_; }
  void follow(const Transaction& ended) { handle_ = ended.handle_; }
  Kind kind() const { return kind_; }
  WriteSet& writes() { return writes_; }
  StoredTree& stored() { return stored_; }
  Data& data() { return *data_; }
  std::uint64_t began_after() const { return began_after_; }

  // Throws Refusal (access) for writes that cannot be taken now: in a read transaction, while it
  // is validated or ends, or for a callback whose client has gone.
  void require_writable();
  // Throws Refusal (gone) when a daemon that had taken writes of this transaction has gone: what
  // it knew of them is lost.
  void require_daemons();
  bool client_gone() const { return client_ && client_->peer_gone(); }

  // What a client's operation has come to, for whoever watches it from another connection.
  struct Work {
    std::uint64_t done = 0, total = 0;  // list entries of a load
    bool stop = false;                  // it is to end where that hurts nobody
  };
  Work& work() { return work_; }
  // Throws Refusal (failed) when it has been told to stop.
  void require_going_on() const {
    if (work_.stop) throw Refusal(ErrorCode::failed, "interrupted: nothing of it was done");
  }

  // Waits for what runs, takes no more writes, and tells the daemons that it ends.
  void finish();
  bool ended() const { return ended_; }

 private:
  friend class Operation;
  friend class Caller;

  std::unique_ptr<Callouts> make_callouts();

  // A callback that a daemon is working on.
  struct Outstanding {
    std::string last_refusal;  // of its nested calls
  };

  const std::uint64_t id_;
  std::uint64_t handle_;
  const Kind kind_;
  Surroundings around_;
  SocketPtr client_;
  const std::uint64_t began_after_;
  WriteSet writes_;
  StoredTree stored_;

  Work work_;

  // Operations nest: each but the innermost waits for a daemon. So a new one may begin when there
  // are as many outstanding callbacks as operations.
  std::size_t operations_ = 0;
  std::size_t waiting_operations_ = 0;
  std::vector<Outstanding> outstanding_;
  Clock::time_point last_request_;
  const Daemon* waits_for_ = nullptr;
  bool ending_ = false;
  bool ended_ = false;

  Caller* caller_ = nullptr;  // null in the initial transaction, which calls nobody
  std::unique_ptr<Callouts> callouts_;
  std::unique_ptr<Data> data_;
};

using TransactionPtr = std::shared_ptr<Transaction>;

// One request's work in a transaction; it begins when no other is at work in it but those that
// wait for a daemon. Throws Refusal (nosession) when the transaction ends meanwhile.
class Operation {
 public:
  Operation(Monitor& monitor, Transaction& transaction);
  ~Operation();
  Operation(const Operation&) = delete;
  Operation& operator=(const Operation&) = delete;

  // No callback waits for it.
  bool outermost() const { return transaction_.operations_ == 1; }
  // Keeps the text for the callback that made this request, if one did.
  void refused(const std::string& text);

 private:
  Monitor& monitor_;
  Transaction& transaction_;
};

}  // namespace standin
