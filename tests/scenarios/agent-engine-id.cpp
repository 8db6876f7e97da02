#include <gtest/gtest.h>

#include "agent-world.h"

namespace scenario {
namespace {

const std::string kNumber = kEngineSettings + "/enterprise-number";
const std::string kText = kEngineSettings + "/from-text";
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

class AgentEngineId : public Running {
 protected:
  void SetUp() override {
    Running::SetUp();
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

TEST_F(AgentEngineId, NumberAloneChangesTheIdOfTheMethodThatIsThere) {
  EXPECT_EQ(answers({"exists " + kEngineId, "set " + kText + " abc", "set " + kNumber + " 0",
                     "get " + kEngineId, "set " + kNumber + " 4294967295", "get " + kEngineId}),
            "false\n80:00:00:00:04:61:62:63\nff:ff:ff:ff:04:61:62:63\n");
  // Without settings the last ID stays.
  EXPECT_EQ(answers({"delete " + kText, "set " + kNumber + " 1", "get " + kEngineId,
                     "delete " + kEngineSettings, "get " + kEngineId, "exists " + kEngineSettings}),
            "ff:ff:ff:ff:04:61:62:63\nff:ff:ff:ff:04:61:62:63\nfalse\n");
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
  EXPECT_EQ(get(kEngineId), kAbc);
  EXPECT_EQ(answers({"create " + kCommunities + "{c}", "get " + kRows + "{c" + column}), kAbc);
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

}  // namespace
}  // namespace scenario
