#include <gtest/gtest.h>

#include "agent-world.h"

namespace scenario {
namespace {

class Agent : public Running {};

const std::string kVersions = kSettings + "/snmpVersions";
const std::string kMessageSize = kSettings + "/snmpEngine/snmpEngineMaxMessageSize";
const std::string kContexts = kAgent + "/context";

TEST_F(Agent, EachLeafGoesToItsCounterpartAndBackAndOutlivesItsDeletion) {
  struct Case {
    std::string leaf, counterpart, value, other;
  };
  const Case cases[] = {
      {"enabled", kSettings + "/enabled", "true", "false"},
      {"ip", kSettings + "/ip", "192.0.2.1", "2001:db8::1"},
      {"port", kSettings + "/port", "161", "65535"},
      {"max-message-size", kMessageSize, "1500", "484"},
      {"contact", kSystem + "/sysContact", "ops@example.org", "\"two words\""},
      {"name", kSystem + "/sysName", "box", "\"\""},
      {"location", kSystem + "/sysLocation", "gr\xc3\xbc\xc3\x9f", "100%s"},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.leaf);
    const std::string leaf = kAgent + "/" + c.leaf;
    EXPECT_EQ(cli({"set", leaf, c.value}), (Ran{0, "", ""}));
    EXPECT_EQ(answers({"get " + leaf, "get " + c.counterpart}), c.value + "\n" + c.value + "\n");
    answers({"set " + c.counterpart + " " + c.other});
    const std::string read = answers({"get " + c.counterpart});
    EXPECT_EQ(answers({"get " + leaf}), read);
    EXPECT_EQ(cli({"delete", leaf}), (Ran{0, "", ""}));
    EXPECT_EQ(answers({"get " + leaf, "get " + c.counterpart}), read + read);
  }
}

TEST_F(Agent, MessageSizeReadsWithinItsBounds) {
  const std::pair<std::string, std::string> cases[] = {
      {"0", "484"},
      {"483", "484"},
      {"1500", "1500"},
      {"214748365", "214748364"},
      {"18446744073709551615", "214748364"},
  };
  answers({"create " + kSettings + "/snmpEngine"});
  for (const auto& [stored, read] : cases) {
    EXPECT_EQ(
        answers({"set " + kMessageSize + " " + stored, "get " + kAgent + "/max-message-size"}),
        read + "\n");
  }
  EXPECT_EQ(answers({"set " + kAgent + "/max-message-size -1", "get " + kMessageSize}),
            "18446744073709551615\n");
}

TEST_F(Agent, VersionIsThereWhileItsBooleanIsTrue) {
  Strings reads;
  for (const char* version : {"v1", "v2c", "v3"}) {
    reads.push_back("get " + kVersions + "/" + version);
    reads.push_back(std::string("exists ") + kAgent + "/version/" + version);
  }
  const std::string no = "false\nfalse\n", yes = "true\ntrue\n";
  answers({"create " + kAgent + "/version/v2c"});
  EXPECT_EQ(answers(reads), no + yes + no);
  answers({"delete " + kAgent + "/version/v2c", "set " + kVersions + "/v3 true"});
  EXPECT_EQ(answers(reads), no + no + yes);
  answers({"create " + kAgent + "/version/v1", "delete " + kAgent + "/version"});
  EXPECT_EQ(answers(reads), no + no + no);
}

TEST_F(Agent, ContextsAreListedReadAndDeletedOnBothSides) {
  answers({"set " + kAgent + "/name box", "create " + kContexts + "{red}",
           "create " + kContexts + "{blue}", "create " + kSettings + "/contexts{\"a b\"}"});
  const Strings lists = {"keys " + kContexts, "keys " + kSettings + "/contexts"};
  EXPECT_EQ(answers(lists), "\"a b\"\nblue\nred\n\"a b\"\nblue\nred\n");
  EXPECT_EQ(answers({"get " + kContexts + "{red}/name", "get " + kContexts + "{green}/name"}),
            "red\nnot there\n");
  refused({"create " + kContexts + "{red}"}, "already exists", kSettings);
  refused({"delete " + kContexts + "{green}"}, "not there", kSettings);
  answers({"delete " + kContexts + "{red}"});
  EXPECT_EQ(answers(lists), "\"a b\"\nblue\n\"a b\"\nblue\n");
  answers({"delete " + kContexts});
  EXPECT_EQ(answers({"keys " + kSettings + "/contexts", "get " + kAgent + "/name"}), "box\n");
}

TEST_F(Agent, ShowIsTakenBackByLoad) {
  answers({"set " + kAgent + "/enabled true", "set " + kAgent + "/port 161",
           "set " + kAgent + "/max-message-size 1500", "create " + kAgent + "/version/v3",
           "create " + kContexts + "{blue}", "create " + kAgent + "/extra-ip-port{2001:db8::1 162}",
           "set " + kEngineSettings + "/enterprise-number 32473",
           "set " + kEngineSettings + "/from-ip 192.0.2.1", "set " + kAgent + "/contact \"\""});
  const std::string settings = json(kSettings);
  loads_back(kAgent, {"delete " + kSettings, "delete " + kEngineSettings});
  EXPECT_EQ(json(kSettings), settings);
}

}  // namespace
}  // namespace scenario
