#include <gtest/gtest.h>

#include <string>
#include <thread>

#include "core/log.h"
#include "status/daemon-status.h"
#include "tests/daemon/test-sockets.h"

namespace quillet {
namespace {

using namespace testing_sockets;

constexpr StatusDelays kNoDelays{.bind_retry = std::chrono::milliseconds(0),
                                 .connect_retry = std::chrono::milliseconds(0),
                                 .query_interval = std::chrono::milliseconds(0)};

// Serves one connection: each query takes the next octet of the script; after the last it closes.
class ScriptedServer {
 public:
  explicit ScriptedServer(std::string script) : script_(std::move(script)) {
    listener_ = socket(AF_INET, SOCK_STREAM, 0);
    const sockaddr_in addr = loopback(0);
    bind(listener_, reinterpret_cast<const sockaddr*>(&addr), sizeof addr);
    listen(listener_, 1);
    status_set_port(port_of(listener_));
    thread_ = std::thread([this] { serve(); });
  }
  ~ScriptedServer() {
    thread_.join();
    close(listener_);
  }
  // REQUIRES: the client is done.
  std::size_t queries() {
    thread_.join();
    thread_ = std::thread([] {});
    return queries_;
  }

 private:
  void serve() {
    if (!readable(listener_)) return;
    const int client = accept(listener_, nullptr, nullptr);
    for (const char answer : script_) {
      if (received(client, 1) != "\n") break;
      ++queries_;
      send(client, &answer, 1, MSG_NOSIGNAL);
    }
    close(client);
  }

  std::string script_;
  std::size_t queries_ = 0;
  int listener_ = -1;
  std::thread thread_;
};

class WaitForStatus : public ::testing::Test {
 protected:
  void SetUp() override { log_set_console_level(LOG_LEVEL_OFF); }
  void TearDown() override { log_set_console_level(LOG_LEVEL_ERR); }
  static int wait() {
    const int wanted = STATUS_RUNNING;
    return wait_for_status(&wanted, 1, kNoDelays);
  }
};

TEST_F(WaitForStatus, FifteenAnswersAreWaitedForAndNoMore) {
  const struct {
    std::string answers;  // the daemon closes after the last
    int status;
    std::size_t queries;
  } cases[] = {{"\x02\x02", 0, 1},
               {std::string(14, '\x01') + "\x02", 0, 15},
               {std::string(15, '\xff') + "\x02", 1, 15},
               {"\x01\x01", 2, 2}};
  for (const auto& c : cases) {
    ScriptedServer server(c.answers);
    EXPECT_EQ(wait(), c.status);
    EXPECT_EQ(server.queries(), c.queries);
  }
}

TEST_F(WaitForStatus, NobodyListeningGivesTwoAfterTenRefusals) {
  const int unused = socket(AF_INET, SOCK_STREAM, 0);
  const sockaddr_in addr = loopback(0);
  ASSERT_EQ(bind(unused, reinterpret_cast<const sockaddr*>(&addr), sizeof addr), 0);
  status_set_port(port_of(unused));  // bound, and so nobody else's, but not listening
  log_set_console_level(LOG_LEVEL_ERR);
  ::testing::internal::CaptureStderr();
  EXPECT_EQ(wait(), 2);
  const std::string log = ::testing::internal::GetCapturedStderr();
  EXPECT_NE(log.find("connect(): Connection refused (111). Giving up."), std::string::npos) << log;
  EXPECT_NE(log.find("connect_to_sts_server() failed"), std::string::npos) << log;
  close(unused);
}

}  // namespace
}  // namespace quillet
