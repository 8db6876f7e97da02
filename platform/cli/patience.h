// Waiting for the server where somebody looks on: how far a load is, and Ctrl-C.
#pragma once

#include <memory>

#include "platform/cli/server.h"

namespace standin::cli {

// What Server::while_waiting() calls on a terminal. After half a second a second connection asks
// how far the first one's load is, and the count stands on standard error until the answer comes.
// An interrupt that is caught stops the operation; a second one gives up the connection.
class Patience {
 public:
  explicit Patience(std::uint16_t port) : port_(port) {}
  void operator()(NorthboundSession& session);

 private:
  void look(int handle, bool stop);
  void show(const NorthboundSession::Watched& watched);
  void clear();

  std::uint16_t port_;
  std::shared_ptr<NorthboundSession> watcher_;
  bool shown_ = false;
};

}  // namespace standin::cli
