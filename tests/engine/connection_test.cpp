// Connections: greetings, frames that are none, limits.
#include <sys/socket.h>

#include <filesystem>
#include <random>

#include "world.h"

namespace standin {
namespace {

class Connections : public ServerTest {
 protected:
  void expect_serving() {
    NorthboundSession session(port(), "test", Access::write);
    session.set(at(kSysName), {"still here"});
    EXPECT_EQ(session.get(at(kSysName))->texts.front(), "still here");
  }
};

std::size_t open_descriptors() {
  const std::filesystem::directory_iterator all("/proc/self/fd");
  return static_cast<std::size_t>(std::distance(begin(all), end(all)));
}

TEST_F(Connections, BadGreetingIsAnsweredAndTheConnectionClosed) {
  struct Case {
    const char* what;
    Op op;
    std::uint64_t version, kind, daemon;
  };
  const Case cases[] = {
      {"not a greeting", Op::nb_status, 1, 2, 0},
      {"another version", Op::hello, 2, 2, 0},
      {"unknown kind", Op::hello, 1, 4, 0},
      {"worker of no daemon", Op::hello, 1, 1, 12345},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.what);
    RawClient client(port());
    FrameWriter hello = message(c.op);
    hello.put(c.version).put(c.kind).put("test").put(c.daemon);
    EXPECT_THROW(client.request(hello), Refused);
    EXPECT_TRUE(client.closed());
  }
  expect_serving();
}

// On every kind of socket, before and after the greeting.
TEST_F(Connections, FramesThatAreNoneCostOnlyTheirConnection) {
  std::mt19937 random(7);
  std::vector<std::string> bad = {
      std::string("\xff\xff\xff\xff garbage", 12),             // longer than any frame
      std::string("\0\0\0\x40short", 9),                       // cut
      std::string("\0\0\0\0", 4),                              // empty
      std::string("\0\0\0\x01\xc1", 5),                        // no msgpack
      std::string("\0\0\0\x05\xdd\xff\xff\xff\xff", 9),        // array of four thousand million
      std::string("\0\0\0\x28", 4) + std::string(40, '\x91'),  // nested past the limit
  };
  for (int i = 0; i < 40; ++i) {
    std::string octets(4 + random() % 60, '\0');
    for (std::size_t k = 4; k < octets.size(); ++k) octets[k] = static_cast<char>(random());
    octets[3] = static_cast<char>(octets.size() - 4);
    bad.push_back(std::move(octets));
  }
  for (const std::string& octets : bad) {
    const RawClient owner(port(), SocketKind::control, "owner of the worker");
    for (int kind = -1; kind <= 3; ++kind) {
      auto client = kind < 0 ? std::make_unique<RawClient>(port())
                             : std::make_unique<RawClient>(port(), static_cast<SocketKind>(kind),
                                                           "bad", kind == 1 ? owner.id() : 0);
      ASSERT_EQ(::send(client->fd(), octets.data(), octets.size(), MSG_NOSIGNAL),
                static_cast<ssize_t>(octets.size()));
      ::shutdown(client->fd(), SHUT_WR);
      if (kind != 1) {
        EXPECT_TRUE(client->closed());
      }
    }
  }
  expect_serving();
}

TEST_F(Connections, RequestsForUnknownHandlesAreRefusedAndTheConnectionLives) {
  NorthboundSession other(port(), "other", Access::write);
  RawClient client(port(), SocketKind::maapi, "test");
  const auto handle = static_cast<std::uint64_t>(other.handle());
  for (const Op op : {Op::nb_commit, Op::nb_diff, Op::nb_close, Op::nb_validate}) {
    FrameWriter frame = message(op);
    frame.put(handle);
    try {
      client.request(frame);
      ADD_FAILURE() << "served another connection's transaction";
    } catch (const Refused& e) {
      EXPECT_EQ(e.code, ErrorCode::nosession);
    }
  }
  EXPECT_EQ(client.request(message(Op::nb_status)).number(), 0U);
}

TEST_F(Connections, RootIsNoNodeToAskAbout) {
  NorthboundSession session(port(), "test", Access::write);
  EXPECT_THROW(session.get(at("/")), Refused);
  EXPECT_THROW(session.keys(at("/")), Refused);
  EXPECT_THROW(session.selected_case(at("/"), "params"), Refused);
  EXPECT_THROW(session.attributes(at("/")), Refused);
  EXPECT_THROW(session.remove(at("/")), Refused);
  EXPECT_TRUE(session.exists(at("/")));
  using Wanted = NorthboundSession::Wanted;
  for (const Wanted wanted : {Wanted::key, Wanted::value})
    EXPECT_TRUE(session.complete(at("/"), wanted, {"a"}, "").empty());
  EXPECT_EQ(session.describe(at("/")).children.back().name, "snmp:snmp");
  expect_serving();
}

TEST_F(Connections, PastTheLimitAreClosedAtOnce) {
  std::vector<std::unique_ptr<RawClient>> all;
  for (int i = 0; i < kMostConnections; ++i)
    all.push_back(std::make_unique<RawClient>(port(), SocketKind::cdb, "many"));
  RawClient one_more(port());
  EXPECT_TRUE(one_more.closed());
  all.clear();
  // Room comes back when the server has seen them end.
  const auto end = std::chrono::steady_clock::now() + kPatience;
  bool served = false;
  while (!served && std::chrono::steady_clock::now() < end) try {
      RawClient(port(), SocketKind::cdb, "again");
      served = true;
    } catch (const std::runtime_error&) {
    }
  EXPECT_TRUE(served);
}

TEST_F(Connections, EndedOnesLeaveNoDescriptor) {
  const auto round = [this] {
    const RawClient control(port(), SocketKind::control, "short-lived");
    const RawClient worker(port(), SocketKind::worker, "short-lived", control.id());
    const RawClient cdb(port(), SocketKind::cdb, "short-lived");
    NorthboundSession session(port(), "short-lived", Access::write);
    session.set(at(kSysName), {"x"});
  };
  round();
  const std::size_t before = open_descriptors();
  const auto end = std::chrono::steady_clock::now() + kPatience;
  for (int i = 0; i < 50;) try {
      round();
      ++i;
    } catch (const Refused& e) {
      // The name is free once the server has seen the control socket close.
      ASSERT_EQ(e.code, ErrorCode::inuse);
      ASSERT_LT(std::chrono::steady_clock::now(), end);
    }
  std::size_t after = open_descriptors();
  while (after > before && std::chrono::steady_clock::now() < end) after = open_descriptors();
  EXPECT_LE(after, before);
}

}  // namespace
}  // namespace standin
