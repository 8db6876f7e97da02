#include "patience.h"

#include <poll.h>
#include <sys/socket.h>

#include <cerrno>
#include <iostream>

#include "interrupt.h"

namespace standin::cli {
namespace {

constexpr int kTick = 100;        // milliseconds between looks for an interrupt
constexpr int kTicksOfGrace = 5;  // before anything is shown
constexpr int kTicksBetween = 3;

// True when there is something to read, or nothing to wait for.
bool ready(int fd) {
  pollfd entry{fd, POLLIN, 0};
  const int result = ::poll(&entry, 1, kTick);
  return result > 0 || (result < 0 && errno != EINTR);
}

}  // namespace

void Patience::operator()(NorthboundSession& session) {
  bool stopped = false;
  for (int ticks = 1; !ready(session.fd()); ++ticks) {
    if (interrupt_pending()) {
      clear_interrupt();
      if (stopped) ::shutdown(session.fd(), SHUT_RDWR);
      stopped = true;
      look(session.handle(), true);
    } else if (ticks >= kTicksOfGrace && ticks % kTicksBetween == 0) {
      look(session.handle(), false);
    }
  }
  clear();
}

// Without a second connection the first one goes on unseen.
void Patience::look(int handle, bool stop) {
  try {
    if (!watcher_) {
      watcher_ =
          std::make_shared<NorthboundSession>(port_, kClientName, NorthboundSession::Access::none);
    }
    show(watcher_->watch(handle, stop));
  } catch (const std::exception&) {
    watcher_.reset();
  }
}

void Patience::show(const NorthboundSession::Watched& watched) {
  if (watched.total == 0) return;
  std::cerr << "\r" << watched.done << " of " << watched.total << " entries loaded" << std::flush;
  shown_ = true;
}

void Patience::clear() {
  if (shown_) std::cerr << "\r\x1b[K" << std::flush;
  shown_ = false;
}

}  // namespace standin::cli
