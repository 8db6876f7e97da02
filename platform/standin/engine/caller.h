// Calls one transaction's callbacks in the daemons: turns, first touch, time-outs.
#pragma once

#include <map>
#include <string>
#include <string_view>

#include "platform/standin/data/callouts.h"
#include "platform/standin/engine/daemon.h"
#include "platform/standin/engine/transaction.h"

namespace standin {

// Used under the server's lock, which every call lets go of while the daemon works.
class Caller : public Callouts {
 public:
  Caller(Transaction& transaction, const Surroundings& around)
      : transaction_(transaction), around_(around) {}

  Serving serving(const std::string& point) override;
  bool has(const std::string& point, Op callback) override;
  Answer call(const std::string& point, Op callback, const NodePath& path,
              const Arguments& arguments) override;
  void validation(const std::string& point, bool start) override;

  // Tells every daemon that was touched and lives.
  void finish();
  void require_daemons() const;

 private:
  // What a daemon knows of the transaction.
  struct Touch {
    DaemonPtr daemon;
    std::uint64_t worker = 0;
    bool written = false;  // it took writes, which would be lost with it
  };

  // A daemon works on one request at a time, in the order in which they came. Throws Refusal:
  // deadlock when waiting could never end, gone when the daemon ends meanwhile.
  class Turn;

  Touch& touch(const DaemonPtr& daemon, const std::string& point);
  DaemonPtr daemon_behind(const std::string& point) const;
  // Sends on the daemon's socket and receives the answer's payload.
  std::string exchange(Daemon& daemon, const SocketPtr& socket, std::string_view frame,
                       const std::string& what);
  std::string receive(const Socket& socket, std::size_t depth, std::string& failure);
  bool silent_too_long(Clock::time_point& deadline, std::size_t depth);
  [[noreturn]] void lose(Daemon& daemon, const std::string& what, const std::string& failure);
  // A request on the control socket; answers the worker number. Throws Refusal (failed, gone).
  std::uint64_t control(Daemon& daemon, Op op, const std::string& what);

  Transaction& transaction_;
  Surroundings around_;
  std::map<std::string, Touch> touched_;  // by the daemon's name
  bool finishing_ = false;                // no more callbacks
  std::string last_refusal_;              // of the nested calls of the callback that just ended
};

}  // namespace standin
