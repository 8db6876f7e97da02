// A connected daemon: its sockets, what it serves, and whose turn it is.
#pragma once

#include <cstdint>
#include <deque>
#include <map>
#include <memory>
#include <set>
#include <string>
#include <vector>

#include "platform/standin/data/callouts.h"
#include "platform/standin/engine/socket.h"
#include "platform/standin/schema/schema.h"

namespace standin {

class Transaction;

// All members are used under the server's lock. One thread of the daemon serves all its sockets,
// so it is one resource: `holder` is the transaction whose request it works on.
class Daemon {
 public:
  Daemon(std::uint64_t id, std::string name, SocketPtr control)
      : id_(id), name_(std::move(name)), control_(std::move(control)) {}

  std::uint64_t id() const { return id_; }
  const std::string& name() const { return name_; }
  // Asks the sockets; a daemon that has closed one of them is gone for good.
  bool alive();
  bool gone() const { return gone_; }
  // Its sockets are shut now and closed when nobody reads from them any more.
  void mark_gone();

  std::uint64_t add_worker(SocketPtr socket);
  SocketPtr control() const { return control_; }
  // Worker 0 stands for the first one; null when there is none.
  SocketPtr worker(std::uint64_t id) const;

  struct Registration {
    std::map<std::string, std::uint64_t> callpoints;  // name to bits
    std::set<std::string> valpoints;
    std::uint64_t hooks = 0;  // HookBit
  };
  bool registered = false;
  Registration serves;

  const Transaction* holder = nullptr;
  std::deque<const Transaction*> queue;  // who waits for a turn, in order

 private:
  const std::uint64_t id_;
  const std::string name_;
  SocketPtr control_;
  std::map<std::uint64_t, SocketPtr> workers_;
  std::uint64_t next_worker_ = 1;
  bool gone_ = false;
};

using DaemonPtr = std::shared_ptr<Daemon>;

// The daemons that are or were there, by name, number and callpoint. Used under the lock.
class Daemons {
 public:
  explicit Daemons(const Schema& schema) : schema_(schema) {}

  // A control connection. Throws Refusal (inuse) while another daemon of that name lives.
  DaemonPtr introduce(const std::string& name, SocketPtr control);
  // Throws Refusal (noexists, inuse, apiuse); nothing is registered then.
  void enroll(const DaemonPtr& daemon, Daemon::Registration registration);
  // A control connection that ended before its daemon was registered, or that must end.
  void withdraw(const DaemonPtr& daemon);
  // Null for an unknown number.
  DaemonPtr by_id(std::uint64_t id) const;
  // The live daemon behind a callpoint or validation point; null when there is none.
  DaemonPtr behind(const std::string& point) const;
  // Who serves the point or was the last to do so; its sockets are not asked. Null: nobody ever.
  DaemonPtr last_behind(const std::string& point) const;
  Serving serving(const std::string& point) const;

  const std::map<std::string, DaemonPtr>& all() const { return by_name_; }
  void shut_all();

 private:
  void check(const Daemon& daemon, const std::string& point, bool known) const;

  const Schema& schema_;
  std::uint64_t next_id_ = 1;
  std::map<std::string, DaemonPtr> by_name_;
  std::map<std::string, DaemonPtr>
      by_point_;  // kept for the server's life: tells "gone" from "never"
};

}  // namespace standin
