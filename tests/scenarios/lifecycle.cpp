#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <signal.h>

#include <atomic>
#include <thread>

#include "platform/wire/path.h"
#include "world.h"

namespace scenario {
namespace {

using namespace std::chrono_literals;
using standin::parse_path;

class Lifecycle : public World {
 protected:
  static std::string entry(int i) { return kCommunities + "{c" + std::to_string(i) + "}"; }

  // Each status request is a round trip; the server's own count is the event that is waited for.
  bool transactions_come_to(NorthboundSession& watcher, std::uint64_t wanted) {
    const auto deadline = Clock::now() + kPatience;
    while (Clock::now() < deadline) {
      if (watcher.status().transactions == wanted) return true;
    }
    return false;
  }
};

TEST_F(Lifecycle, KilledServerHasEveryAcknowledgedCommitAndNoneHalf) {
  constexpr int kEnough = 40;
  start_both();
  std::atomic<int> acknowledged{0};
  std::thread writer([this, &acknowledged] {
    try {
      const auto client = session();
      for (int i = 0;; ++i) {
        client->set(parse_path(entry(i) + "/name"), {"n" + std::to_string(i)});
        client->set(parse_path(entry(i) + "/context-name"), {"x" + std::to_string(i)});
        client->commit();
        acknowledged = i + 1;
        acknowledged.notify_one();
      }
    } catch (const standin::ConnectionLost&) {
    }
  });
  for (int seen = 0; seen < kEnough; seen = acknowledged) acknowledged.wait(seen);
  server_->signal(SIGKILL);
  writer.join();
  server_->wait();
  // Caught inside a transaction's attach or a walk, the daemon aborts with a message of its own;
  // anywhere else its loop ends it, on the end of a socket or on an answer that cannot be sent.
  if (const int status = daemon_ends(); status == 128 + SIGABRT) {
    EXPECT_THAT(daemon_->errors(), testing::HasSubstr("error not CONFD_OK"));
  } else {
    EXPECT_EQ(status, 1);
    EXPECT_THAT(daemon_->errors(), testing::AnyOf(testing::HasSubstr(" socket closed"),
                                                  testing::HasSubstr(" socket request: ")));
  }
  daemon_.reset();

  start_both();
  const auto reader = session(NorthboundSession::Access::read);
  const auto keys = reader->keys(parse_path(kCommunities));
  EXPECT_GE(keys.size(), static_cast<std::size_t>(acknowledged));
  EXPECT_LE(keys.size(), static_cast<std::size_t>(acknowledged) + 1);
  for (int i = 0; i < static_cast<int>(keys.size()); ++i) {
    SCOPED_TRACE(i);
    const auto name = reader->get(parse_path(entry(i) + "/name"));
    const auto context = reader->get(parse_path(entry(i) + "/context-name"));
    ASSERT_TRUE(name && context);
    EXPECT_EQ(name->texts, Strings{"n" + std::to_string(i)});
    EXPECT_EQ(context->texts, Strings{"x" + std::to_string(i)});
  }
}

TEST_F(Lifecycle, ServerThatIsAskedToEndDoesSoCleanly) {
  for (const int asked : {SIGTERM, SIGINT}) {
    start_both();
    EXPECT_EQ(cli({"set", entry(asked) + "/name", "x"}).status, 0);
    server_->signal(asked);
    EXPECT_EQ(server_->wait(), 0);
    EXPECT_EQ(daemon_ends(), 1);
    daemon_.reset();
  }
  start_both();
  EXPECT_EQ(session()->keys(parse_path(kCommunities)).size(), 2U);
}

TEST_F(Lifecycle, DaemonKilledInsideACallbackIsToldAndItsSuccessorServes) {
  start_both();
  EXPECT_EQ(cli({"create", entry(1)}).status, 0);
  daemon_->signal(SIGSTOP);
  const auto writer = start_cli({"set", entry(1) + "/name", "x"});
  EXPECT_FALSE(writer->wait(200ms)) << "answered by a daemon that is stopped";
  daemon_->signal(SIGKILL);
  daemon_ends();
  daemon_.reset();
  EXPECT_EQ(writer->wait(), 2);
  EXPECT_THAT(writer->errors(), testing::MatchesRegex("error: [^\n]+\n"));
  const Ran gone = cli({"get", entry(1) + "/sec-name"});
  EXPECT_EQ(gone.status, 2) << gone;
  EXPECT_THAT(gone.err, testing::MatchesRegex("error: [^\n]+\n"));
  EXPECT_EQ(get(kRows + "{c1}/snmpCommunityName"), "c1\n");
  start_daemon();
  EXPECT_EQ(answers({"get " + entry(1) + "/sec-name", "exists " + entry(1) + "/name"}),
            "c1\nfalse\n");
}

TEST_F(Lifecycle, SecondDaemonOfTheSameNameIsRefused) {
  start_both();
  // On a status port of its own it gets as far as the server.
  const auto second = start_transform({"--status-port", "0", "-P", port(), "-s"});
  EXPECT_EQ(second->wait(), 1);
  EXPECT_NE(second->errors(), "");
  EXPECT_EQ(cli({"create", entry(1)}), (Ran{0, "", ""}));
}

TEST_F(Lifecycle, TwoClientsAtOnceBothFinish) {
  constexpr int kEach = 30;
  start_both();
  const auto work = [this](int first) {
    const auto client = session();
    for (int i = first; i < first + kEach; ++i) {
      client->set(parse_path(entry(i) + "/context-name"), {"x"});
      client->commit();
      client->keys(parse_path(kCommunities));
    }
  };
  std::thread other(work, 1000);
  work(0);
  other.join();
  EXPECT_EQ(session()->keys(parse_path(kCommunities)).size(), 2U * kEach);
}

TEST_F(Lifecycle, ClientKilledWhileWalkingLeavesTheDaemonServing) {
  start_both();
  Strings lines;
  for (int i = 0; i < 300; ++i) lines.push_back("create " + entry(i));
  answers(lines);
  const auto watcher = session(NorthboundSession::Access::none);
  ASSERT_TRUE(transactions_come_to(*watcher, 0));
  daemon_->signal(SIGSTOP);
  const auto walker = start_cli({"show", "/snmp:snmp/community"});
  EXPECT_TRUE(transactions_come_to(*watcher, 1));
  EXPECT_FALSE(walker->wait(200ms)) << "answered by a daemon that is stopped";
  walker->signal(SIGKILL);
  walker->wait();
  daemon_->signal(SIGCONT);
  EXPECT_TRUE(transactions_come_to(*watcher, 0));
  EXPECT_EQ(get(entry(7) + "/sec-name"), "c7\n");
}

TEST_F(Lifecycle, DaemonAndClientWithoutAServerSaySo) {
  start_server();
  server_->signal(SIGTERM);
  server_->wait();
  server_.reset();
  const auto daemon = start_transform({"-P", port(), "-s"});
  EXPECT_EQ(daemon->wait(), 1);
  EXPECT_THAT(daemon->errors(), testing::HasSubstr("Failed to confd_connect() to confd"));
  const Ran ran = cli({"status"});
  EXPECT_EQ(ran.status, 3);
  EXPECT_THAT(ran.err, testing::MatchesRegex("error: [^\n]+\n"));
}

}  // namespace
}  // namespace scenario
