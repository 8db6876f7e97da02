#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "agent-world.h"

namespace scenario {
namespace {

const std::string kNumber = kEngineSettings + "/enterprise-number";
const std::string kText = kEngineSettings + "/from-text";
const std::string kDefaultId = "80:00:7e:d9:05:00:00:00:00\n";  // of the dynamic configuration
const std::string kAbc = "80:00:7e:d9:04:61:62:63\n";

struct Method {
  std::string leaf, value, id;  // the ID with enterprise number 32473
};
const Method kMethods[] = {
    {"from-ip", "192.0.2.1", "80:00:7e:d9:01:c0:00:02:01"},
    {"from-ip", "::1", "80:00:7e:d9:02:00:00:00:00:00:00:00:00:00:00:00:00:00:00:00:01"},
    {"from-mac-address", "00:11:22:33:44:55", "80:00:7e:d9:03:00:11:22:33:44:55"},
    {"from-text", "abc", "80:00:7e:d9:04:61:62:63"},
    {"other", "01:02:03", "80:00:7e:d9:05:01:02:03"},
    {"other", "\"\"", "80:00:7e:d9:05"},
};

std::string set(const Method& m) { return "set " + kEngineSettings + "/" + m.leaf + " " + m.value; }
std::string repeated(const std::string& text, int count, const std::string& between = "") {
  std::string result;
  for (int i = 0; i < count; ++i) result += (i > 0 ? between : "") + text;
  return result;
}

class AgentEngineId : public AgentWorld {
 protected:
  void SetUp() override {
    AgentWorld::SetUp();
    answers({"set " + kNumber + " 32473"});
  }
};

TEST_F(AgentEngineId, EveryMethodGivesItsOctetsAfterEveryOther) {
  Strings lines;
  std::string expected;
  for (const Method& first : kMethods) {
    for (const Method& second : kMethods) {
      for (const Method& m : {first, second}) {
        lines.insert(lines.end(),
                     {set(m), "get " + kEngineId, "case " + kEngineSettings + " method"});
        expected += m.id + "\n" + m.leaf + "\n";
      }
    }
  }
  EXPECT_EQ(answers(lines), expected);
}

TEST_F(AgentEngineId, NumberAloneDoesNothingAndLaterChangesTheId) {
  EXPECT_EQ(answers({"exists " + kEngineId}), "false\n");
  EXPECT_EQ(answers({"set " + kText + " abc", "get " + kEngineId, "set " + kNumber + " 0",
                     "get " + kEngineId, "set " + kNumber + " 4294967295", "get " + kEngineId}),
            kAbc + "80:00:00:00:04:61:62:63\nff:ff:ff:ff:04:61:62:63\n");
}

TEST_F(AgentEngineId, FiveToThirtyTwoOctetsAreStored) {
  const std::string a = "80:00:7e:d9:";
  EXPECT_EQ(
      answers({"set " + kText + " \"\"", "get " + kEngineId,
               "set " + kText + " " + repeated("a", 27), "get " + kEngineId,
               "set " + kText + " " + repeated("\xc3\xbc", 13) + "b", "get " + kEngineId,
               "set " + kEngineSettings + "/other " + repeated("0a", 27, ":"), "get " + kEngineId,
               "set " + kEngineSettings + "/from-mac-address " + repeated("0b", 27, ":"),
               "get " + kEngineId}),
      a + "04\n" + a + "04:" + repeated("61", 27, ":") + "\n" + a +
          "04:" + repeated("c3:bc", 13, ":") + ":62\n" + a + "05:" + repeated("0a", 27, ":") +
          "\n" + a + "03:" + repeated("0b", 27, ":") + "\n");
}

TEST_F(AgentEngineId, SettingsThatGiveNoIdAreRefusedAndLeaveNothing) {
  const std::string long_id = "Invalid engine-id: more than 32 octets";
  const std::string groups =
      "Invalid engine-id: other is not at most 27 pairs of hexadecimal digits with colons between";
  const std::pair<std::string, std::string> cases[] = {
      {"from-text " + repeated("a", 28), long_id},
      {"from-text " + repeated("\xc3\xbc", 14), long_id},
      {"from-text " + repeated("a", 5000), long_id},
      {"from-mac-address " + repeated("0b", 28, ":"), long_id},
      {"other " + repeated("0a", 28, ":"), long_id},
      {"other " + repeated("0a", 500, ":"), groups},
      {"other 01:", groups},
      {"other 01::02", groups},
      {"other 012:03", groups},
      {"other 0x:01", groups},
      {"other zz", groups},
  };
  answers({"create " + kCommunities + "{c}", "set " + kText + " abc"});
  for (const auto& [setting, text] : cases) {
    EXPECT_EQ(told({"set " + kEngineSettings + "/" + setting, "get " + kEngineId, "get " + kText,
                    "get " + kRows + "{c}/snmpCommunityContextEngineID"}),
              "error: " + text + "\n" + kAbc + "abc\n" + kAbc)
        << setting.substr(0, 40);
  }
}

TEST_F(AgentEngineId, NumberWrittenLastIsRefusedInWords) {
  answers({"delete " + kEngineSettings});
  EXPECT_EQ(cli({"set", kText, "abc"}),
            (Ran{2, "", "error: Invalid engine-id: the enterprise-number is not set\n"}));
  EXPECT_EQ(answers({"exists " + kEngineSettings, "exists " + kEngineId}), "false\nfalse\n");
}

TEST_F(AgentEngineId, DeletedSettingsKeepTheId) {
  EXPECT_EQ(answers({"set " + kText + " abc", "delete " + kText, "get " + kEngineId,
                     "set " + kNumber + " 1", "get " + kEngineId, "set " + kText + " x",
                     "get " + kEngineId, "delete " + kEngineSettings, "get " + kEngineId}),
            kAbc + kAbc + "80:00:00:01:04:78\n80:00:00:01:04:78\n");
  EXPECT_EQ(cli({"exists", kEngineSettings}).status, 1);
}

TEST_F(AgentEngineId, EveryCommunityFollowsEvenWhenTheIdStaysEqual) {
  const std::string column = "}/snmpCommunityContextEngineID";
  const Strings ids = {"get " + kRows + "{a" + column, "get " + kRows + "{b" + column};
  answers({"create " + kCommunities + "{a}", "create " + kRows + "{b}",
           "set " + kRows + "{b}/snmpCommunitySecurityName b", "set " + kText + " abc"});
  EXPECT_EQ(answers(ids), kAbc + kAbc);
  // The top bit is set anyway (RFC 3411), so that both numbers give one ID.
  answers({"set " + kRows + "{b" + column + " 01:02:03:04:05", "set " + kNumber + " 2147516121"});
  EXPECT_EQ(answers(ids), kAbc + kAbc);
  EXPECT_EQ(cli({"get", kEngineId}).out, kAbc);
}

TEST_F(AgentEngineId, IdOfAnyUserIsRefusedAndLeavesAllAsItWas) {
  const std::string id = "80:00:7e:d9:04:61:62:63";
  answers({"create " + kCommunities + "{c}", "set " + kText + " first",
           "create " + kUsers + "{" + id + " bob}"});
  const Strings reads = {"get " + kEngineId, "get " + kText, "keys " + kUsers,
                         "get " + kRows + "{c}/snmpCommunityContextEngineID"};
  const std::string before = answers(reads);
  EXPECT_EQ(cli({"set", kText, "abc"}),
            (Ran{2, "", "error: cannot change engine-id - conflicting remote user exists\n"}));
  EXPECT_EQ(answers(reads), before);
}

TEST_F(AgentEngineId, ChangedIdTakesTheLocalUsersAlong) {
  const std::string first = "80:00:7e:d9:04:66:69:72:73:74", abc = "80:00:7e:d9:04:61:62:63";
  answers({"set " + kText + " first", "create " + kUsers + "{" + first + " bob}",
           "create " + kUsers + "{" + first + " al}", "create " + kUsers + "{01:02:03:04:05 bob}"});
  EXPECT_EQ(answers({"set " + kText + " abc", "keys " + kUsers}),
            "01:02:03:04:05 bob\n" + abc + " al\n" + abc + " bob\n");
}

TEST_F(AgentEngineId, EqualIdLeavesTheUsersAlone) {
  const std::string id = "80:00:7e:d9:04:61:62:63";
  answers({"set " + kText + " abc", "create " + kUsers + "{" + id + " bob}"});
  EXPECT_EQ(answers({"set " + kText + " abc", "set " + kNumber + " 2147516121", "keys " + kUsers}),
            id + " bob\n");
}

TEST_F(AgentEngineId, AbortLeavesAllAsItWas) {
  answers({"create " + kCommunities + "{c}", "set " + kText + " abc"});
  const Strings reads = {"get " + kEngineId, "case " + kEngineSettings + " method",
                         "get " + kRows + "{c}/snmpCommunityContextEngineID"};
  const std::string before = answers(reads);
  Strings lines = {"set " + kNumber + " 1", set(kMethods[0]), "abort"};
  lines.insert(lines.end(), reads.begin(), reads.end());
  EXPECT_EQ(answers(lines), before);
  EXPECT_EQ(answers(reads), before);
}

class InitialEngineId : public World {
 protected:
  // Both sides after start-up, from initial settings and communities.
  std::string started_with(const std::string& settings) {
    start_server({"--init", write_file("init.json", R"({
      "snmp:snmp": {"agent": {"engine-id": {)" + settings +
                                                        R"(}}},
      "confd_dyncfg:confdConfig": {"snmpAgent": {"port": 161}},
      "SNMP-COMMUNITY-MIB:SNMP-COMMUNITY-MIB": {"snmpCommunityTable": {"snmpCommunityEntry": [
        {"snmpCommunityIndex": "a", "snmpCommunitySecurityName": "a"},
        {"snmpCommunityIndex": "b", "snmpCommunityContextEngineID": "01:02:03:04:05"}]}}})")});
    start_daemon();
    answers({"start"});
    return answers({"get " + kEngineId, "get " + kRows + "{a}/snmpCommunityContextEngineID",
                    "get " + kRows + "{b}/snmpCommunityContextEngineID"});
  }
};

TEST_F(InitialEngineId, IsDerivedAtStartUpForAllCommunities) {
  const std::string id = "80:00:7e:d9:01:c0:00:02:01\n";
  EXPECT_EQ(started_with(R"("enterprise-number": 32473, "from-ip": "192.0.2.1")"), id + id + id);
}

TEST_F(InitialEngineId, ThatCannotBeDerivedChangesNothing) {
  EXPECT_EQ(started_with(R"("enterprise-number": 32473, "other": "zz")"),
            "not there\nnot there\n01:02:03:04:05\n");
}

}  // namespace
}  // namespace scenario
