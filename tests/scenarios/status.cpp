#include <gtest/gtest.h>
#include <poll.h>
#include <signal.h>
#include <sys/socket.h>

#include <fstream>
#include <vector>

#include "world.h"

namespace scenario {
namespace {

using namespace std::chrono_literals;

constexpr int kRunning = 2;
constexpr int kSlots = 10;

class StatusPort : public World {
 protected:
  long context_switches() {
    std::ifstream status("/proc/" + std::to_string(daemon_->pid()) + "/status");
    const std::string name = "voluntary_ctxt_switches:";
    for (std::string line; std::getline(status, line);) {
      if (line.starts_with(name)) return std::stol(line.substr(name.size()));
    }
    return -1;
  }
};

TEST_F(StatusPort, EleventhClientIsClosedAndTheSlotsOfClientsThatResetAreUsedAgain) {
  start_both();
  std::vector<Descriptor> clients;
  for (int i = 0; i < kSlots; ++i) {
    clients.push_back(status_connection());
    ASSERT_EQ(status_query(clients.back()), kRunning) << "client " << i;
  }
  EXPECT_EQ(status_query(status_connection()), std::nullopt);
  for (const Descriptor& client : clients) EXPECT_EQ(status_query(client), kRunning);
  const linger at_once{1, 0};
  for (Descriptor& client : clients) {
    ASSERT_EQ(::setsockopt(client.get(), SOL_SOCKET, SO_LINGER, &at_once, sizeof at_once), 0);
    ASSERT_EQ(::send(client.get(), "\n\n\n", 3, MSG_NOSIGNAL), 3);
    client.reset();
  }
  // The daemon sees the ends and the next connection in whatever order; a refused client tries
  // again.
  std::optional<int> answer;
  for (int tries = 0; tries < 1000 && !answer; ++tries) answer = status_query(status_connection());
  EXPECT_EQ(answer, kRunning);
}

TEST_F(StatusPort, WaitForInitEndsOnceTheDaemonRuns) {
  const auto early = start_transform({"--wait-for-init"});
  start_both();
  EXPECT_EQ(early->wait(60s), 0);
  EXPECT_EQ(start_transform({"--wait-for-init"})->wait(), 0);
  daemon_->signal(SIGSTOP);
  const auto waiting = start_transform({"--wait-for-init"});
  EXPECT_FALSE(waiting->wait(300ms)) << "answered by a daemon that is stopped";
  daemon_->signal(SIGCONT);
  EXPECT_EQ(waiting->wait(), 0);
}

TEST_F(StatusPort, WaitForInitEndsWithTwoWhenTheDaemonGoes) {
  start_both();
  daemon_->signal(SIGSTOP);
  const auto waiting = start_transform({"--wait-for-init"});
  EXPECT_FALSE(waiting->wait(300ms));
  daemon_->signal(SIGKILL);
  daemon_ends();
  daemon_.reset();
  EXPECT_EQ(waiting->wait(60s), 2);
}

TEST_F(StatusPort, ClosedPipeEndsTheDaemonOnlyWithC) {
  start_server();
  start_daemon({"-c"}, Process::Input::pipe);
  daemon_->close_input();
  EXPECT_EQ(daemon_ends(), 0);
  daemon_.reset();
  EXPECT_EQ(start_transform({"-P", port(), "-s", "-c"}, Process::Input::closed)->wait(), 0);
}

TEST_F(StatusPort, ClosedStandardInputKeepsNothingAwake) {
  start_server();
  for (const auto input : {Process::Input::closed, Process::Input::pipe}) {
    start_daemon({}, input);
    daemon_->close_input();
    const Descriptor client = status_connection();
    ASSERT_EQ(status_query(client), kRunning);
    const long before = context_switches();
    ASSERT_GE(before, 0);
    pollfd nothing{client.get(), POLLIN, 0};
    ASSERT_EQ(::poll(&nothing, 1, 500), 0);
    EXPECT_LE(context_switches() - before, 5);
    daemon_.reset();
  }
}

}  // namespace
}  // namespace scenario
