#include "server.h"

namespace standin::cli {

NorthboundSession& Server::session() {
  if (!session_) {
    session_ = std::make_unique<NorthboundSession>(port_, kClientName, access_);
    if (wait_) session_->while_waiting([this] { wait_(*session_); });
  }
  return *session_;
}

}  // namespace standin::cli
