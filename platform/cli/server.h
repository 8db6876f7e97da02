// The client's connection: made when it is first needed, and again after it was lost.
#pragma once

#include <cstdint>
#include <functional>
#include <memory>

#include "platform/client/northbound.h"

namespace standin::cli {

inline constexpr const char* kClientName = "standin-cli";

class Server {
 public:
  using Access = NorthboundSession::Access;
  // Runs while an answer is due; see NorthboundSession::while_waiting().
  using Wait = std::function<void(NorthboundSession&)>;

  Server(std::uint16_t port, Access access) : port_(port), access_(access) {}

  // Throws ConnectionLost, Refused.
  NorthboundSession& session();
  bool connected() const { return session_ != nullptr; }
  // What was not committed is forgotten.
  void drop() { session_.reset(); }

  void while_waiting(Wait wait) { wait_ = std::move(wait); }
  std::uint16_t port() const { return port_; }

 private:
  std::uint16_t port_;
  Access access_;
  Wait wait_;
  std::unique_ptr<NorthboundSession> session_;
};

}  // namespace standin::cli
