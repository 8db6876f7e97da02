// What a commit refuses: the model's constraints over what was touched, then validation points.
#include "fake_transform.h"

namespace standin::test {
namespace {

using ::testing::HasSubstr;
using Validation = DataTest;

TEST_F(Validation, VerdictsOfTheModel) {
  const std::string user = "/snmp:snmp/usm/local/user{u}";
  const std::string password = "correct horse";
  struct Case {
    const char* what;
    std::function<void()> write;
    std::string reason;  // empty: passes
  };
  const std::vector<Case> cases{
      {"target without a case", [&] { create("/snmp:snmp/target{a}"); },
       "/snmp:snmp/target{a}: mandatory choice \"params\" has no case selected"},
      {"target with a case that holds nothing", [&] { create("/snmp:snmp/target{b}/v2c"); }, ""},
      {"target without a case, deleted again",
       [&] {
         create("/snmp:snmp/target{c}");
         remove("/snmp:snmp/target{c}");
       },
       ""},
      {"engine ID without its number", [&] { create("/snmp:snmp/agent/engine-id"); },
       "/snmp:snmp/agent/engine-id/enterprise-number: a value is mandatory"},
      {"privacy alone", [&] { set(user + "/priv/aes/password", password); },
       user + "/priv: privacy needs authentication"},
      {"privacy before authentication",
       [&] {
         set(user + "/priv/aes/password", password);
         set(user + "/auth/sha/password", password);
       },
       ""},
      {"group without rows", [&] { create("/snmp:snmp/vacm/group{g}"); }, ""},
  };
  for (const Case& c : cases) {
    const std::size_t mark = writes->mark();
    c.write();
    const std::string first = refusal([&] { data.validate(); });
    EXPECT_EQ(refusal([&] { data.validate(); }), first)
        << c.what << ": the verdict of a second pass";
    if (c.reason.empty()) {
      EXPECT_EQ(first, "") << c.what;
    } else {
      EXPECT_THAT(first, HasSubstr(c.reason)) << c.what;
    }
    for (const char* path : {"/snmp:snmp/target", "/snmp:snmp/usm/local/user"})
      refusal([&] { remove(path); });
    writes->rollback(mark);
    data.forget_touched();
  }
}

TEST_F(Validation, OnlyWhatThisTransactionWroteIsHeldAgainstIt) {
  create("/snmp:snmp/target{broken}");
  data.forget_touched();
  create("/snmp:snmp/target{a}/v1");
  // A port that no uint16 can be: another's doing, then our own.
  daemon.answers["/snmp:snmp/target{a}/port"] = Value::signed_number(Type::int32, 70000);
  EXPECT_EQ(refusal([&] { data.validate(); }), "");
  set("/snmp:snmp/target{a}/port", "162");
  EXPECT_THAT(refusal([&] { data.validate(); }), HasSubstr("/snmp:snmp/target{a}/port: \"70000\""));
}

TEST_F(Validation, RefusedReadIsTheVerdict) {
  create("/snmp:snmp/target{a}/v1");
  daemon.refuse["get_case /snmp:snmp/target{a}"] = "Inconsistent parameters setting: 7";
  EXPECT_EQ(refusal([&] { data.validate(); }), "Inconsistent parameters setting: 7");
}

TEST_F(Validation, PointsAreAskedAfterTheModelAndEndedByTheFirstRefusal) {
  const std::string models = "/snmp:snmp/vacm/group{g}/member{m}/sec-model";
  set_list(models, {"v1", "usm"});
  create("/snmp:snmp/vacm/group{h}");
  remove("/snmp:snmp/vacm/group{h}");
  create("/snmp:snmp/target{a}/v1");
  data.forget_touched();
  set_list(models, {"v1", "usm"});
  remove("/snmp:snmp/vacm/group{g}/member{m}");
  const auto asked = [&] {
    Calls calls = daemon.take_calls();
    std::erase_if(calls, [](const std::string& c) { return c.compare(0, 5, "valid") != 0; });
    return calls;
  };
  asked();
  data.validate();
  EXPECT_EQ(asked(),
            (Calls{"validation starts vacm-group", "validate " + models,
                   "validate /snmp:snmp/vacm/group{g}/member{m}", "validation ends vacm-group"}));
  data.forget_touched();
  set_list(models, {"v1"});
  asked();
  daemon.refuse["validate " + models + " = v1"] = "found 1 conflict(s)";
  daemon.refuse["validate /snmp:snmp/vacm/group{g}/member{m}"] = "";
  // Ancestors that were created come first, and their refusal ends it.
  EXPECT_EQ(refusal([&] { data.validate(); }), "/snmp:snmp/vacm/group{g}/member{m}: ");
  EXPECT_EQ(asked().back(), "validation ends vacm-group");
  daemon.refuse.erase("validate /snmp:snmp/vacm/group{g}/member{m}");
  EXPECT_EQ(refusal([&] { data.validate(); }), models + ": found 1 conflict(s)");
  create("/snmp:snmp/target{b}");
  asked();
  EXPECT_THAT(refusal([&] { data.validate(); }), HasSubstr("mandatory"));
  EXPECT_EQ(asked(), Calls{}) << "the model comes first";
}

TEST_F(Validation, WritesOfCallbacksAreRefusedMeanwhile) {
  create("/snmp:snmp/target{a}/v1");
  std::string text;
  daemon.during = [&](const std::string&) {
    text = refusal([&] { set("/SNMPv2_MIB:SNMPv2-MIB/system/sysName", "x"); });
  };
  data.validate();
  EXPECT_THAT(text, HasSubstr("validated"));
  daemon.during = nullptr;
  EXPECT_FALSE(data.validating());
  EXPECT_EQ(get("/SNMPv2_MIB:SNMPv2-MIB/system/sysName"), "not there");
}

}  // namespace
}  // namespace standin::test
