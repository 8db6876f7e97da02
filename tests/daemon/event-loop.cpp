#include "core/event-loop.h"

#include <gtest/gtest.h>
#include <sys/wait.h>

#include <chrono>
#include <csignal>
#include <fstream>
#include <string>
#include <thread>
#include <utility>

#include "core/daemon-sockets.h"
#include "core/log.h"
#include "core/standard-descriptors.h"
#include "status/daemon-status.h"
#include "tests/daemon/test-sockets.h"

namespace quillet {
namespace {

using namespace testing_sockets;

// The loop in a process of its own, on socket pairs instead of a server, with a pipe (or nothing)
// as its standard input.
class LoopProcess {
 public:
  enum class Stdin { pipe, closed };

  LoopProcess(int watch_stdin, Stdin input) {
    status_set_port(0);
    status_clients_init();
    EXPECT_EQ(status_server_open(), 0);
    port_ = port_of(status_listen_fd());
    EXPECT_EQ(pipe(stdin_), 0);
    EXPECT_EQ(socketpair(AF_UNIX, SOCK_STREAM, 0, control_), 0);
    EXPECT_EQ(socketpair(AF_UNIX, SOCK_STREAM, 0, worker_), 0);
    pid_ = fork();
    if (pid_ == 0) run(watch_stdin, input);
    close(stdin_[0]);
    close(status_listen_fd());
  }
  ~LoopProcess() {
    if (pid_ > 0) {
      kill(pid_, SIGKILL);
      waitpid(pid_, nullptr, 0);
    }
    close_stdin();
    for (const int fd : {control_[0], control_[1], worker_[0], worker_[1]}) close(fd);
  }

  int port() const { return port_; }
  void write_stdin(const std::string& text) {
    ASSERT_EQ(write(stdin_[1], text.data(), text.size()), static_cast<ssize_t>(text.size()));
  }
  void close_stdin() {
    if (stdin_[1] != -1) close(std::exchange(stdin_[1], -1));
  }
  int exit_status() {
    int status = 0;
    waitpid(std::exchange(pid_, -1), &status, 0);
    return WIFEXITED(status) ? WEXITSTATUS(status) : 1000 + WTERMSIG(status);
  }

  // One status query; its answer shows that the loop has been round.
  std::string query() const {
    const int client = connected(port_);
    send(client, "\n", 1, MSG_NOSIGNAL);
    std::string answer = received(client, 1);
    close(client);
    return answer;
  }

  // Nanoseconds that the process has had of a processor.
  long long run_time() const {
    long long nanoseconds = -1;
    std::ifstream("/proc/" + std::to_string(pid_) + "/schedstat") >> nanoseconds;
    return nanoseconds;
  }

 private:
  [[noreturn]] void run(int watch_stdin, Stdin input) {
    alarm(30);
    log_set_console_level(LOG_LEVEL_OFF);
    close(stdin_[1]);
    dup2(stdin_[0], STDIN_FILENO);
    close(stdin_[0]);
    if (input == Stdin::closed) {
      close(STDIN_FILENO);
      open_standard_descriptors();
    }
    DaemonSockets sockets{.ctl_sock = control_[0], .worker_sock = worker_[0], .maapi_sock = -1};
    confd_daemon_ctx dctx{.d_opaque = &sockets, .impl = nullptr};
    run_event_loop(&dctx, watch_stdin, 1);
  }

  pid_t pid_ = -1;
  int port_ = 0;
  int stdin_[2] = {-1, -1};
  int control_[2] = {-1, -1};
  int worker_[2] = {-1, -1};
};

TEST(EventLoop, ClosedPipeOnWatchedStandardInputEndsWithZero) {
  LoopProcess loop(1, LoopProcess::Stdin::pipe);
  loop.write_stdin("dropped");
  EXPECT_EQ(loop.query(), "\x02");
  loop.close_stdin();
  EXPECT_EQ(loop.exit_status(), 0);
}

TEST(EventLoop, ClosedWatchedStandardInputEndsWithZero) {
  LoopProcess loop(1, LoopProcess::Stdin::closed);
  EXPECT_EQ(loop.exit_status(), 0);
}

// A loop that is woken for ever takes a processor for itself; an idle one takes nothing.
TEST(EventLoop, ClosedStandardInputThatIsNotWatchedNeverWakesTheLoop) {
  LoopProcess loop(0, LoopProcess::Stdin::pipe);
  loop.close_stdin();
  ASSERT_EQ(loop.query(), "\x02");
  using Clock = std::chrono::steady_clock;
  const auto deadline = Clock::now() + std::chrono::milliseconds(kDeadlineMs);
  long long spent = 0;
  do {  // an observation in which the end of the query falls does not count against it
    const auto end = Clock::now() + std::chrono::milliseconds(200);
    const long long before = loop.run_time();
    ASSERT_GT(before, 0);
    while (Clock::now() < end) std::this_thread::yield();
    spent = loop.run_time() - before;
  } while (spent > 0 && Clock::now() < deadline);
  EXPECT_EQ(spent, 0);
}

TEST(EventLoop, ClientsThatVanishInEveryWayAreFreed) {
  LoopProcess loop(0, LoopProcess::Stdin::pipe);
  for (int i = 0; i < 50; ++i) {
    const int client = connected(loop.port());
    send(client, "\n\n\n", 3, MSG_NOSIGNAL);
    if (i % 2 == 0) {
      reset(client);
    } else {
      close(client);
    }
  }
  EXPECT_EQ(loop.query(), "\x02");
}

}  // namespace
}  // namespace quillet
