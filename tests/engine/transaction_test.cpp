// Transactions: isolation, conflicts, phases.
#include <fstream>

#include "world.h"

namespace standin {
namespace {

using Transactions = ServerTest;

std::optional<std::string> text_of(NorthboundSession& session, const std::string& path) {
  const auto got = session.get(at(path));
  return got ? std::optional(got->texts.front()) : std::nullopt;
}

TEST_F(Transactions, SlowerOfTwoWritersIsRefusedAndMayTryAgain) {
  for (const bool same_leaf : {true, false}) {  // the other leaf is read by the slower one
    const std::string leaf = same_leaf ? kSysName : kSysContact;
    NorthboundSession fast(port(), "fast", Access::write), slow(port(), "slow", Access::write);
    if (!same_leaf) slow.get(at(kSysName));
    slow.set(at(leaf), {"slow"});
    fast.set(at(kSysName), {"fast"});
    fast.commit();
    try {
      slow.commit();
      ADD_FAILURE() << "committed " << leaf;
    } catch (const Refused& e) {
      EXPECT_EQ(e.code, ErrorCode::conflict);
    }
    slow.abort();
    slow.set(at(leaf), {"slow"});
    slow.commit();
    EXPECT_EQ(text_of(fast, leaf), "slow");
  }
}

TEST_F(Transactions, DiffNamesWhatEndsOtherwiseThanItBegan) {
  NorthboundSession session(port(), "test", Access::write);
  session.set(at(kSysName), {"before"});
  session.commit();
  session.set(at(kSysName), {"after"});
  session.set(at(kSysContact), {"new"});
  const auto changes = session.diff();
  ASSERT_EQ(changes.size(), 2U);
  EXPECT_EQ(changes[0].kind, '~');
  EXPECT_EQ(changes[0].path, kSysName);
  EXPECT_EQ(changes[0].before, "before");
  EXPECT_EQ(changes[0].after, "after");
  EXPECT_EQ(changes[1].kind, '+');
  session.set(at(kSysName), {"before"});
  session.remove(at(kSysContact));
  EXPECT_TRUE(session.diff().empty());
}

TEST_F(Transactions, InitialConfigurationIsOpenUntilItIsStarted) {
  const std::string file = directory() + "/init.json";
  std::ofstream(file) << R"({"SNMPv2-MIB:SNMPv2-MIB": {"system": {"sysName": "initial"}}})";
  serve(std::chrono::seconds(5), file);
  NorthboundSession session(port(), "test", Access::write);
  EXPECT_EQ(session.status().phase, 0U);
  RawClient cdb(port(), SocketKind::cdb, "test");
  FrameReader phase = cdb.request(message(Op::cdb_phase));
  EXPECT_EQ(phase.number(), 0U);
  EXPECT_EQ(phase.number(), 1U);

  RawClient daemon(port(), SocketKind::maapi, "daemon");
  const std::uint64_t handle = daemon.maapi(message(Op::attach_init)).number();
  const auto get = [&](const std::string& path) {
    FrameWriter frame = message(Op::get_elem);
    frame.put(handle).put(at(path));
    return to_text(daemon.maapi(frame).value());
  };
  EXPECT_EQ(get(kSysName), "initial");
  daemon.request(
      std::move(message(Op::set_elem).put(handle).put(at(kSysContact)).put(Value::buf("daemon"))));

  EXPECT_TRUE(session.start());
  EXPECT_FALSE(session.start());
  EXPECT_EQ(session.status().phase, 2U);
  EXPECT_EQ(text_of(session, kSysContact), "daemon");
  EXPECT_THROW(get(kSysName), Refused);
  EXPECT_THROW(daemon.maapi(message(Op::attach_init)), Refused);
}

TEST_F(Transactions, InitialFileWithWhatDaemonsServeIsRefused) {
  const std::string file = directory() + "/init.json";
  std::ofstream(file) << R"({"snmp:snmp": {"community": [{"index": "public"}]}})";
  EXPECT_THROW(serve(std::chrono::seconds(5), file), std::runtime_error);
}

}  // namespace
}  // namespace standin
