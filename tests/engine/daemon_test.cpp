// Daemons: when they are called, and what happens when they are slow, silent, dead or entangled.
#include <atomic>
#include <future>

#include "world.h"

namespace standin {
namespace {

const std::string kName = "/snmp:snmp/community{public}/name";
const std::string kTag = "/snmp:snmp/notify{all}/tag";

// Answers every read with a text, takes every write.
FrameWriter agreeable(Op op) {
  switch (op) {
    case Op::cb_get_elem:
      return reply(Value::buf("text"));
    case Op::cb_exists_optional:
      return reply(ReplyKind::found);
    case Op::cb_get_next:
      return std::move(reply(ReplyKind::next_key).put(Level{}).put(std::int64_t{-1}));
    case Op::cb_get_case:
    case Op::cb_get_attrs:
      return reply(ReplyKind::not_found);
    default:
      return reply(ReplyKind::ok);
  }
}

const ScriptedDaemon::Script always_agreeable = [](auto&, Op op, std::uint64_t) {
  return agreeable(op);
};

ErrorCode refused_with(const std::function<void()>& work, std::string* text = nullptr) {
  try {
    work();
  } catch (const Refused& e) {
    if (text) *text = e.what();
    return e.code;
  }
  return ErrorCode{0};
}

using Daemons = ServerTest;

TEST_F(Daemons, FirstTouchAndEndComeInPairsPerTransaction) {
  ScriptedDaemon touched(port(), "touched", "community", always_agreeable);
  ScriptedDaemon other(port(), "other", "notify", always_agreeable);
  {
    NorthboundSession session(port(), "test", Access::write);
    session.get(at(kName));
    session.get(at(kName));
    EXPECT_EQ(touched.count(Op::trans_init), 1U);
    session.commit();
    EXPECT_EQ(touched.count(Op::trans_finish), 1U);
    session.get(at(kName));
    session.abort();
    EXPECT_EQ(touched.count(Op::trans_finish), 2U);
    session.get(at(kName));
  }
  ASSERT_TRUE(touched.wait_for(Op::trans_finish, 3));
  std::vector<std::uint64_t> begun, ended;
  for (const Call& c : touched.calls()) {
    if (c.op == Op::trans_init) begun.push_back(c.handle);
    if (c.op == Op::trans_finish) ended.push_back(c.handle);
  }
  EXPECT_EQ(begun, ended);
  EXPECT_NE(begun[0], begun[1]);
  EXPECT_TRUE(other.calls().empty());
}

TEST_F(Daemons, SlowCallbackHindersNoOther) {
  Gate entered, leave;
  ScriptedDaemon slow(port(), "slow", "community", [&](ScriptedDaemon&, Op op, std::uint64_t) {
    entered.open();
    leave.wait();
    return agreeable(op);
  });
  ScriptedDaemon quick(port(), "quick", "notify", always_agreeable);
  auto waiting = std::async(std::launch::async, [this] {
    NorthboundSession session(port(), "patient", Access::read);
    return session.get(at(kName))->texts.front();
  });
  ASSERT_TRUE(entered.wait());
  NorthboundSession session(port(), "hasty", Access::write);
  EXPECT_EQ(session.get(at(kTag))->texts.front(), "text");
  session.set(at(kSysName), {"meanwhile"});
  session.commit();
  leave.open();
  EXPECT_EQ(waiting.get(), "text");
}

TEST_F(Daemons, DeathInACallbackRefusesItAndAnotherMayTakeItsPlace) {
  ScriptedDaemon mortal(port(), "mortal", "community",
                        [](ScriptedDaemon& self, Op op, std::uint64_t) {
                          self.die();
                          return agreeable(op);
                        });
  NorthboundSession session(port(), "test", Access::write);
  session.set(at(kSysName), {"kept"});
  std::string text;
  EXPECT_EQ(refused_with([&] { session.get(at(kName)); }, &text), ErrorCode::gone);
  EXPECT_NE(text.find("mortal"), std::string::npos) << text;
  EXPECT_NE(text.find("community"), std::string::npos) << text;
  EXPECT_EQ(refused_with([&] { session.get(at(kName)); }), ErrorCode::gone);
  ScriptedDaemon heir(port(), "mortal", "community", always_agreeable);
  EXPECT_EQ(session.get(at(kName))->texts.front(), "text");
  session.commit();
  EXPECT_EQ(heir.count(Op::trans_init), 1U);
  EXPECT_EQ(heir.count(Op::trans_finish), 1U);
}

TEST_F(Daemons, CommitIsRefusedWhenADaemonThatTookWritesHasGone) {
  auto writer = std::make_unique<ScriptedDaemon>(port(), "writer", "notify", always_agreeable);
  NorthboundSession session(port(), "test", Access::write);
  session.set(at(kSysName), {"lost"});
  session.set(at(kTag), {"tag"});
  writer.reset();
  EXPECT_EQ(refused_with([&] { session.commit(); }), ErrorCode::gone);
  session.abort();
  EXPECT_FALSE(session.get(at(kSysName)).has_value());
}

TEST_F(Daemons, NonsenseCostsTheDaemonOnlyAndAnAnswerThatDoesNotFitNothing) {
  ScriptedDaemon odd(port(), "odd", "community", [](auto&, Op, std::uint64_t) {
    return std::move(FrameWriter().put("not a kind of answer"));
  });
  ScriptedDaemon forgetful(port(), "forgetful", "notify",
                           [](auto&, Op, std::uint64_t) { return reply(ReplyKind::none); });
  NorthboundSession session(port(), "test", Access::read);
  std::string text;
  EXPECT_EQ(refused_with([&] { session.get(at(kName)); }, &text), ErrorCode::gone);
  EXPECT_NE(text.find("odd"), std::string::npos) << text;
  for (int i = 0; i < 2; ++i)
    EXPECT_EQ(refused_with([&] { session.get(at(kTag)); }), ErrorCode::failed);
  for (const auto& daemon : session.status().daemons)
    EXPECT_EQ(daemon.connected, daemon.name == "forgetful");
}

TEST_F(Daemons, SilenceEndsTheDaemonButItsOwnRequestsKeepItAlive) {
  serve(std::chrono::seconds(1));
  Gate never;
  std::atomic<bool> silent = false;
  ScriptedDaemon daemon(port(), "thinker", "community",
                        [&](ScriptedDaemon& self, Op op, std::uint64_t handle) {
                          // Three times 0.6 s is more than the limit; no two
                          // requests are that far apart.
                          for (int i = 0; i < 3 && !silent; ++i) {
                            never.wait(std::chrono::milliseconds(600));
                            self.get(handle, kSysName);
                          }
                          if (silent) never.wait();
                          return agreeable(op);
                        });
  NorthboundSession session(port(), "test", Access::write);
  session.set(at(kSysName), {"here"});
  EXPECT_EQ(session.get(at(kName))->texts.front(), "text");
  silent = true;
  std::string text;
  EXPECT_EQ(refused_with([&] { session.get(at(kName)); }, &text), ErrorCode::gone);
  EXPECT_NE(text.find("1 s"), std::string::npos) << text;
  never.open();
  session.commit();
}

TEST_F(Daemons, ReentryAndWritesInAReadTransactionAreRefusedAtOnceAndCostNothingElse) {
  ErrorCode reentry{}, write{};
  ScriptedDaemon daemon(port(), "narcissus", "community",
                        [&](ScriptedDaemon& self, Op op, std::uint64_t handle) {
                          reentry = refused_with([&] { self.get(handle, kName); });
                          write = refused_with([&] { self.set(handle, kSysName, "sneaky"); });
                          return agreeable(op);
                        });
  NorthboundSession session(port(), "test", Access::read);
  EXPECT_EQ(session.get(at(kName))->texts.front(), "text");
  EXPECT_EQ(reentry, ErrorCode::deadlock);
  EXPECT_EQ(write, ErrorCode::access);
  EXPECT_EQ(refused_with([&] { session.set(at(kSysName), {"x"}); }), ErrorCode::access);
  EXPECT_FALSE(session.get(at(kSysName)).has_value());
}

// Each transaction is inside one daemon and wants the other's.
TEST_F(Daemons, CycleOfTransactionsIsBrokenByOneRefusal) {
  Gate both_inside;
  std::atomic<int> inside = 0, deadlocks = 0;
  const auto script = [&](const std::string& wanted) {
    return [&, wanted](ScriptedDaemon& self, Op op, std::uint64_t handle) {
      if (inside.fetch_add(1) >= 2) return agreeable(op);
      if (inside == 2) both_inside.open();
      both_inside.wait();
      if (refused_with([&] { self.get(handle, wanted); }) == ErrorCode::deadlock) ++deadlocks;
      return agreeable(op);
    };
  };
  ScriptedDaemon first(port(), "first", "community", script(kTag));
  ScriptedDaemon second(port(), "second", "notify", script(kName));
  const auto read = [this](const std::string& path) {
    NorthboundSession session(port(), "test", Access::read);
    return session.get(at(path))->texts.front();
  };
  auto one = std::async(std::launch::async, read, kName);
  auto two = std::async(std::launch::async, read, kTag);
  EXPECT_EQ(one.get(), "text");
  EXPECT_EQ(two.get(), "text");
  EXPECT_EQ(deadlocks, 1);
}

TEST_F(Daemons, RegistrationIsRefusedForWhatIsTakenOrUnknown) {
  auto holder = std::make_unique<ScriptedDaemon>(port(), "holder", "community", always_agreeable);
  const auto attempt = [this](const std::string& name, const std::string& point) {
    return refused_with([&] { ScriptedDaemon(port(), name, point, always_agreeable); });
  };
  EXPECT_EQ(attempt("holder", "notify"), ErrorCode::inuse);
  EXPECT_EQ(attempt("thief", "community"), ErrorCode::inuse);
  EXPECT_EQ(attempt("lost", "no such point"), ErrorCode::noexists);
  holder.reset();
  ScriptedDaemon heir(port(), "holder", "community", always_agreeable);
  NorthboundSession session(port(), "test", Access::read);
  EXPECT_EQ(session.get(at(kName))->texts.front(), "text");
}

TEST_F(Daemons, WithoutADaemonNothingIsThereAndNothingCanBeWritten) {
  NorthboundSession session(port(), "test", Access::write);
  EXPECT_FALSE(session.get(at(kTag)).has_value());
  EXPECT_THROW(session.set(at(kTag), {"x"}), Refused);
  { ScriptedDaemon brief(port(), "brief", "notify", always_agreeable); }
  EXPECT_EQ(refused_with([&] { session.get(at(kTag)); }), ErrorCode::gone);
}

// The running callback's reads are served, its writes are not, and the end comes after it.
TEST_F(Daemons, ClientThatVanishesInTheMiddleCostsNoDaemon) {
  Gate entered, client_gone, done;
  ErrorCode write_refusal{};
  std::string read;
  ScriptedDaemon daemon(
      port(), "steady", "notify", [&](ScriptedDaemon& self, Op op, std::uint64_t handle) {
        if (op != Op::cb_set_elem) return agreeable(op);
        entered.open();
        client_gone.wait();
        read = self.get(handle, kSysName);
        write_refusal = refused_with([&] { self.set(handle, kSysContact, "nobody"); });
        done.open();
        return agreeable(op);
      });
  auto client = std::make_unique<RawClient>(port(), SocketKind::maapi, "vanishing");
  const std::uint64_t handle = client->maapi(std::move(message(Op::nb_open).put(true))).number();
  const auto set = [&](const std::string& path) {
    FrameWriter frame = message(Op::nb_set);
    frame.put(handle).put(at(path)).put(std::vector<std::string>{"x"});
    return frame;
  };
  client->request(set(kSysName));
  ASSERT_TRUE(client->send(set(kTag).take()));
  ASSERT_TRUE(entered.wait());
  client.reset();
  client_gone.open();
  ASSERT_TRUE(done.wait());
  EXPECT_EQ(read, "x");
  EXPECT_EQ(write_refusal, ErrorCode::access);
  ASSERT_TRUE(daemon.wait_for(Op::trans_finish, 1));
  const auto calls = daemon.calls();
  EXPECT_EQ(calls.back().op, Op::trans_finish);
  NorthboundSession session(port(), "next", Access::read);
  EXPECT_FALSE(session.get(at(kSysName)).has_value());
}

TEST_F(Daemons, RefusalWithoutATextTakesTheNestedOneOrNamesTheNode) {
  std::atomic<bool> nested = true;
  ScriptedDaemon daemon(
      port(), "laconic", "notify", [&](ScriptedDaemon& self, Op op, std::uint64_t handle) {
        if (op != Op::cb_set_elem) return agreeable(op);
        if (nested) refused_with([&] { self.set(handle, kSysName, std::string(300, 'x')); });
        return std::move(reply(ReplyKind::error).put(""));
      });
  NorthboundSession session(port(), "test", Access::write);
  std::string text;
  EXPECT_EQ(refused_with([&] { session.set(at(kTag), {"x"}); }, &text), ErrorCode::failed);
  EXPECT_NE(text.find("sysName"), std::string::npos) << text;
  nested = false;
  EXPECT_EQ(refused_with([&] { session.set(at(kTag), {"x"}); }, &text), ErrorCode::failed);
  EXPECT_NE(text.find("notify{all}/tag"), std::string::npos) << text;
}

}  // namespace
}  // namespace standin
