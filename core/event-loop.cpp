#include "core/event-loop.h"

#include <poll.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <chrono>
#include <cstdlib>
#include <cstring>
#include <string>

#include "core/daemon-sockets.h"
#include "core/log.h"
#include "status/daemon-status.h"

namespace quillet {
namespace {

using Clock = std::chrono::steady_clock;

constexpr char kModule[] = "quillet-transform";
constexpr short kClientEvents = POLLIN | POLLRDHUP;
// Conditions that poll reports unasked. A pipe whose writer closed reports POLLHUP without POLLIN,
// and whatever of these is not acted on would wake the loop for ever.
constexpr short kUnasked = POLLHUP | POLLERR | POLLNVAL;
// After a failed accept the connection stays pending; the pause bounds the log lines about it.
constexpr std::chrono::milliseconds kAcceptPause{1000};

constexpr std::size_t kControl = 0;
constexpr std::size_t kWorker = 1;
constexpr std::size_t kListener = 2;
constexpr std::size_t kFirstClient = 3;
constexpr std::size_t kMaxEntries = kFirstClient + STATUS_MAX_CLIENTS + 1;

// Entries that are not in use hold descriptor -1, which poll passes over. (A zeroed entry would
// have it report the end of standard input, for ever.)
struct PollSet {
  std::array<pollfd, kMaxEntries> entries;
  std::size_t size;

  PollSet(bool watch_stdin, bool serve_status)
      : size(2 + (serve_status ? 1 + STATUS_MAX_CLIENTS : 0) + (watch_stdin ? 1 : 0)) {
    entries.fill({.fd = -1, .events = 0, .revents = 0});
  }

  void watch(std::size_t index, int fd, short events) {
    entries[index] = {.fd = fd, .events = events, .revents = 0};
  }
  bool ready(std::size_t index, short events) const {
    return (entries[index].revents & (events | kUnasked)) != 0;
  }
};

class Loop {
 public:
  Loop(confd_daemon_ctx* dctx, bool watch_stdin, bool serve_status)
      : dctx_(dctx),
        sockets_(daemon_sockets(dctx)),
        watch_stdin_(watch_stdin),
        serve_status_(serve_status) {}

  void pass() {
    PollSet set = build();
    if (poll(set.entries.data(), set.size, poll_timeout()) < 0) {
      const std::string text = std::string("Poll failed:: ") + std::strerror(errno) + "\n";
      log_write_stderr(text.data(), text.size());
      return;
    }
    if (set.ready(kControl, POLLIN)) serve_confd(sockets_.ctl_sock, "Control", "control");
    if (set.ready(kWorker, POLLIN)) serve_confd(sockets_.worker_sock, "Worker", "worker");
    if (serve_status_) serve_status_port(set);
    if (watch_stdin_ && set.ready(set.size - 1, POLLIN)) read_stdin();
  }

 private:
  PollSet build() const {
    PollSet set(watch_stdin_, serve_status_);
    set.watch(kControl, sockets_.ctl_sock, POLLIN);
    set.watch(kWorker, sockets_.worker_sock, POLLIN);
    if (serve_status_) {
      if (!accept_paused()) set.watch(kListener, status_listen_fd(), POLLIN);
      std::size_t index = kFirstClient;
      for (const int fd : status_client_fds()) {
        if (fd > 0) set.watch(index++, fd, kClientEvents);
      }
    }
    if (watch_stdin_) set.watch(set.size - 1, STDIN_FILENO, POLLIN);
    return set;
  }

  bool accept_paused() const { return Clock::now() < accept_again_; }

  // Milliseconds; -1 without end, which is what it is but after a failed accept.
  int poll_timeout() const {
    const auto left = std::chrono::ceil<std::chrono::milliseconds>(accept_again_ - Clock::now());
    return left.count() > 0 ? static_cast<int>(left.count()) : -1;
  }

  void serve_confd(int sock, const char* capital, const char* small) const {
    const int result = confd_fd_ready(dctx_, sock);
    if (result == CONFD_EOF) confd_fatal("%s socket closed\n", capital);
    if (result == CONFD_ERR && confd_errno != CONFD_ERR_EXTERNAL) {
      confd_fatal("Error on %s socket request: %s (%d): %s\n", small, confd_strerror(confd_errno),
                  confd_errno, confd_lasterr());
    }
  }

  void serve_status_port(const PollSet& set) {
    if (set.ready(kListener, POLLIN) && handle_status_sock() != 0) {
      log_error(LOG_LEVEL_CRIT, kModule, __LINE__, "handle_status_sock() failed");
      accept_again_ = Clock::now() + kAcceptPause;
    }
    for (std::size_t i = kFirstClient; i < kFirstClient + STATUS_MAX_CLIENTS; ++i) {
      if (set.ready(i, kClientEvents) && handle_status_client_event(set.entries[i].fd) != 0) {
        log_error(LOG_LEVEL_CRIT, kModule, __LINE__, "handle_status_client_event() failed");
      }
    }
  }

  void read_stdin() {
    char octet = 0;
    const ssize_t count = read(STDIN_FILENO, &octet, 1);
    if (count == 0) std::exit(0);
    // An error that stays (a directory, a terminal that has gone) would wake the loop for ever.
    if (count < 0 && errno != EINTR && errno != EAGAIN) watch_stdin_ = false;
  }

  confd_daemon_ctx* dctx_;
  const DaemonSockets& sockets_;
  bool watch_stdin_;
  const bool serve_status_;
  Clock::time_point accept_again_{};
};

}  // namespace

void run_event_loop(confd_daemon_ctx* dctx, int watch_stdin, int serve_status) {
  if (serve_status != 0) daemon_status = STATUS_RUNNING;
  Loop loop(dctx, watch_stdin == 1, serve_status != 0);
  for (;;) loop.pass();
}

void* hook_thread_main(void* dctx) { run_event_loop(static_cast<confd_daemon_ctx*>(dctx), 0, 0); }

}  // namespace quillet
