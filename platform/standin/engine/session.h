// What one MAAPI connection has open and attached.
#pragma once

#include <cstdint>
#include <map>

#include "platform/standin/engine/engine.h"

namespace standin {

// Used under the server's lock by the connection's thread.
class Session {
 public:
  Session(Engine& engine, SocketPtr socket) : engine_(engine), socket_(std::move(socket)) {}
  // Ends what it opened.
  void close();

  Engine& engine() { return engine_; }

  // A northbound client's transaction; the handle outlives it.
  std::uint64_t open(bool read_write);
  void close(std::uint64_t handle);
  // Ends the handle's transaction and begins another one under it.
  void renew(std::uint64_t handle);

  void attach(std::uint64_t handle);
  std::uint64_t attach_initial();
  void detach(std::uint64_t handle) { attached_.erase(handle); }

  // The open transaction behind a handle that was opened or attached here. Throws Refusal
  // (nosession).
  TransactionPtr transaction(std::uint64_t handle);
  // The same, of a handle that was opened here.
  TransactionPtr opened(std::uint64_t handle);

 private:
  struct Opened {
    Transaction::Kind kind;
    TransactionPtr transaction;
  };

  Engine& engine_;
  SocketPtr socket_;
  std::map<std::uint64_t, Opened> opened_;
  std::map<std::uint64_t, std::weak_ptr<Transaction>> attached_;
};

}  // namespace standin
