#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <vector>

#include "core/log.h"
#include "status/daemon-status.h"
#include "tests/daemon/test-sockets.h"

namespace quillet {
namespace {

using namespace testing_sockets;

// The server on a free port, driven step by step as the event loop would.
class StatusServer : public ::testing::Test {
 protected:
  void SetUp() override {
    log_set_console_level(LOG_LEVEL_OFF);
    status_set_port(0);
    status_clients_init();
    ASSERT_EQ(status_server_open(), 0);
    daemon_status = STATUS_RUNNING;
  }
  void TearDown() override {
    for (const int fd : status_client_fds()) {
      if (fd > 0) close(fd);
    }
    close(status_listen_fd());
    log_set_console_level(LOG_LEVEL_ERR);
  }

  // A client whose connection the server has accepted.
  int accepted_client() {
    const int client = connected(port_of(status_listen_fd()));
    EXPECT_TRUE(readable(status_listen_fd()));
    EXPECT_EQ(handle_status_sock(), 0);
    return client;
  }
  static long taken_slots() {
    const auto& slots = status_client_fds();
    return std::count_if(slots.begin(), slots.end(), [](int fd) { return fd != -1; });
  }
};

TEST_F(StatusServer, AnswersEachNewlineAndNothingElse) {
  const int client = accepted_client();
  const int served = status_client_fds()[0];
  ASSERT_EQ(send(client, "a\n\n", 3, 0), 3);
  for (int i = 0; i < 3; ++i) {
    ASSERT_TRUE(readable(served));
    EXPECT_EQ(handle_status_client_event(served), 0);
  }
  EXPECT_EQ(received(client, 2), "\x02\x02");
  daemon_status = STATUS_STARTING;
  ASSERT_EQ(send(client, "\n", 1, 0), 1);
  ASSERT_TRUE(readable(served));
  EXPECT_EQ(handle_status_client_event(served), 0);
  EXPECT_EQ(received(client, 1), "\x01");
  close(client);
}

TEST_F(StatusServer, EventWithoutAnOctetDoesNotBlock) {
  const int client = accepted_client();
  EXPECT_EQ(handle_status_client_event(status_client_fds()[0]), 0);
  EXPECT_EQ(taken_slots(), 1);
  close(client);
}

TEST_F(StatusServer, ClientPastTheTenthIsClosedAndAFreedSlotIsUsedAgain) {
  std::vector<int> clients;
  for (std::size_t i = 0; i < STATUS_MAX_CLIENTS; ++i) clients.push_back(accepted_client());
  const int refused = accepted_client();
  EXPECT_EQ(received(refused, 1), "");
  close(refused);

  const int served = status_client_fds()[3];
  close(clients[3]);
  ASSERT_TRUE(readable(served));
  EXPECT_EQ(handle_status_client_event(served), 0);
  EXPECT_EQ(taken_slots(), 9);
  clients[3] = accepted_client();
  EXPECT_NE(status_client_fds()[3], -1);
  EXPECT_EQ(taken_slots(), 10);
  for (const int fd : clients) close(fd);
}

// Answers pile up until the sockets' buffers are full; then the client is given up.
TEST_F(StatusServer, ClientThatNeverReadsIsClosedAndNeverBlocks) {
  const int client = accepted_client();
  const int served = status_client_fds()[0];
  const int small = 1;
  setsockopt(client, SOL_SOCKET, SO_RCVBUF, &small, sizeof small);
  setsockopt(served, SOL_SOCKET, SO_SNDBUF, &small, sizeof small);
  const std::string queries(4096, '\n');
  int answered = 0;
  while (taken_slots() > 0 && answered < 1000000) {
    send(client, queries.data(), queries.size(), MSG_DONTWAIT | MSG_NOSIGNAL);
    ASSERT_TRUE(readable(served));
    if (handle_status_client_event(served) == 0) ++answered;
  }
  EXPECT_EQ(taken_slots(), 0);
  EXPECT_GT(answered, 0);
  close(client);
}

TEST_F(StatusServer, TenThousandConnectionsResetBeforeTheirAnswerLeakNothing) {
  const auto open_descriptors = [] {
    return std::distance(std::filesystem::directory_iterator("/proc/self/fd"), {});
  };
  const auto before = open_descriptors();
  for (int i = 0; i < 10000; ++i) {
    const int client = accepted_client();
    const int served = status_client_fds()[0];
    ASSERT_EQ(send(client, "\n", 1, 0), 1);
    ASSERT_TRUE(readable(served));
    reset(client);
    while (taken_slots() > 0) {
      ASSERT_TRUE(readable(served));
      handle_status_client_event(served);
    }
  }
  EXPECT_EQ(open_descriptors(), before);
}

TEST_F(StatusServer, PortInUseIsTriedAgainAndThenGivenUp) {
  status_set_port(port_of(status_listen_fd()));
  const int first = status_listen_fd();
  EXPECT_EQ(status_server_open({.bind_retry = std::chrono::milliseconds(0)}), -1);
  EXPECT_EQ(status_listen_fd(), first);
}

}  // namespace
}  // namespace quillet
