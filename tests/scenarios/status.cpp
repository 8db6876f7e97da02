#include <gtest/gtest.h>
#include <netinet/in.h>
#include <poll.h>
#include <signal.h>
#include <sys/socket.h>
#include <unistd.h>

#include <array>
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
  // Nothing when the peer has closed, without an answer before.
  static bool closed_by_peer(const Descriptor& connection) {
    pollfd ready{connection.get(), POLLIN, 0};
    char octet = 0;
    return ::poll(&ready, 1, 30000) == 1 && ::recv(connection.get(), &octet, 1, 0) <= 0;
  }
  long context_switches() {
    std::ifstream status("/proc/" + std::to_string(daemon_->pid()) + "/status");
    const std::string name = "voluntary_ctxt_switches:";
    for (std::string line; std::getline(status, line);) {
      if (line.starts_with(name)) return std::stol(line.substr(name.size()));
    }
    return -1;
  }
};

TEST_F(StatusPort, EleventhClientIsClosedAndASlotIsUsedAgain) {
  start_both();
  std::vector<Descriptor> clients;
  for (int i = 0; i < kSlots; ++i) {
    clients.push_back(status_connection());
    ASSERT_EQ(status_query(clients.back()), kRunning) << "client " << i;
  }
  EXPECT_TRUE(closed_by_peer(status_connection()));
  for (const Descriptor& client : clients) EXPECT_EQ(status_query(client), kRunning);
  clients[3].reset();
  // The daemon sees the end of one connection and the next one in whatever order; a refused
  // client tries again.
  std::optional<int> answer;
  for (int tries = 0; tries < 1000 && !answer; ++tries) answer = status_query(status_connection());
  EXPECT_EQ(answer, kRunning);
}

TEST_F(StatusPort, ClientThatResetsCostsNothing) {
  start_both();
  for (int i = 0; i < 3 * kSlots; ++i) {
    Descriptor client = status_connection();
    const linger at_once{1, 0};
    ASSERT_EQ(::setsockopt(client.get(), SOL_SOCKET, SO_LINGER, &at_once, sizeof at_once), 0);
    ASSERT_EQ(::send(client.get(), "\n\n\n", 3, MSG_NOSIGNAL), 3);
    client.reset();
  }
  std::optional<int> answer;
  for (int tries = 0; tries < 1000 && !answer; ++tries) answer = status_query(status_connection());
  EXPECT_EQ(answer, kRunning);
  EXPECT_TRUE(daemon_->alive());
}

TEST_F(StatusPort, OnlyNewlinesAreAnswered) {
  start_both();
  const Descriptor client = status_connection();
  ASSERT_EQ(::send(client.get(), "a\n", 2, MSG_NOSIGNAL), 2);
  EXPECT_EQ(status_query(client), kRunning);
  unsigned char answer = 0;
  EXPECT_EQ(::recv(client.get(), &answer, 1, 0), 1);
  EXPECT_EQ(answer, kRunning);
  EXPECT_EQ(::recv(client.get(), &answer, 1, MSG_DONTWAIT), -1);
}

TEST_F(StatusPort, WaitForInitEndsWithZeroOnceTheDaemonRuns) {
  start_both();
  EXPECT_EQ(start_transform({"--wait-for-init"})->wait(), 0);
  daemon_->signal(SIGSTOP);
  const auto waiting = start_transform({"--wait-for-init"});
  EXPECT_FALSE(waiting->wait(300ms)) << "answered by a daemon that is stopped";
  daemon_->signal(SIGCONT);
  EXPECT_EQ(waiting->wait(), 0);
}

TEST_F(StatusPort, WaitForInitWithoutADaemonEndsWithTwo) {
  const auto waiting = start_transform({"--wait-for-init"});
  EXPECT_EQ(waiting->wait(60s), 2);
  EXPECT_NE(waiting->errors().find("Connection refused"), std::string::npos) << waiting->errors();
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
  start_daemon({}, Process::Input::pipe);
  daemon_->close_input();
  EXPECT_EQ(cli({"create", kCommunities + "{c}"}), (Ran{0, "", ""}));
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
