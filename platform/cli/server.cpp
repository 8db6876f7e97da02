#include "server.h"

namespace standin::cli {
namespace {

std::unique_ptr<NorthboundSession> connected_to(std::uint16_t port, Server::Access access) {
  try {
    return std::make_unique<NorthboundSession>(port, kClientName, access);
  } catch (const ConnectionLost& e) {
    throw ConnectionLost(std::string(e.what()) + "; start confd-standin, or name its port with -P");
  }
}

}  // namespace

NorthboundSession& Server::session() {
  if (!session_) {
    session_ = connected_to(port_, access_);
    if (wait_) session_->while_waiting([this] { wait_(*session_); });
  }
  return *session_;
}

}  // namespace standin::cli
