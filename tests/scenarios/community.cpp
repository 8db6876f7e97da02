#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <set>
#include <sstream>

#include "platform/wire/path.h"
#include "world.h"

namespace scenario {
namespace {

class Community : public World {
 protected:
  void SetUp() override { start_both(); }
  static std::string row(const std::string& key) { return kRows + "{" + key + "}"; }
  static std::string entry(const std::string& key) { return kCommunities + "{" + key + "}"; }
};

TEST_F(Community, CreatedEntryReadsTheSameOnBothSides) {
  answers({"create " + entry("public")});
  EXPECT_EQ(answers({"keys " + kCommunities, "keys " + kRows, "get " + entry("public") + "/index",
                     "get " + entry("public") + "/sec-name", "get " + entry("public") + "/name",
                     "get " + row("public") + "/snmpCommunityName",
                     "get " + row("public") + "/snmpCommunitySecurityName",
                     "get " + row("public") + "/snmpCommunityContextEngineID"}),
            "public\npublic\npublic\npublic\nnot there\npublic\npublic\nnot there\n");
}

TEST_F(Community, EachLeafGoesToItsColumnAndBack) {
  struct Case {
    std::string leaf, column, value, after_delete, column_after_delete;
  };
  // Deleted columns hold their defaults (RFC 3584): an empty context, an empty tag.
  const Case cases[] = {
      {"name", "snmpCommunityName", "ops", "not there", "c"},
      {"context-name", "snmpCommunityContextName", "blue", "", ""},
      {"target-tag", "snmpCommunityTransportTag", "noc", "not there", ""},
  };
  answers({"create " + entry("c")});
  for (const Case& c : cases) {
    SCOPED_TRACE(c.leaf);
    const std::string leaf = entry("c") + "/" + c.leaf, column = row("c") + "/" + c.column;
    EXPECT_EQ(answers({"set " + leaf + " " + c.value}), "");
    EXPECT_EQ(answers({"get " + leaf, "get " + column}), c.value + "\n" + c.value + "\n");
    EXPECT_EQ(answers({"delete " + leaf, "get " + leaf, "get " + column}),
              c.after_delete + "\n" + c.column_after_delete + "\n");
  }
  EXPECT_EQ(answers({"set " + entry("c") + "/sec-name boss", "get " + entry("c") + "/sec-name",
                     "get " + row("c") + "/snmpCommunitySecurityName"}),
            "boss\nboss\n");
}

TEST_F(Community, NameEqualToTheIndexReadsAsUnset) {
  EXPECT_EQ(answers({"create " + entry("c"), "set " + entry("c") + "/name ops",
                     "get " + entry("c") + "/name", "set " + entry("c") + "/name c",
                     "exists " + entry("c") + "/name", "get " + row("c") + "/snmpCommunityName"}),
            "ops\nfalse\nc\n");
}

TEST_F(Community, DeletedEntryIsGoneOnBothSides) {
  answers({"create " + entry("a"), "create " + entry("b")});
  EXPECT_EQ(cli({"delete", entry("a")}).status, 0);
  EXPECT_EQ(answers({"keys " + kCommunities, "keys " + kRows}), "b\nb\n");
  EXPECT_EQ(cli({"exists", entry("a")}), (Ran{1, "", ""}));
  EXPECT_EQ(cli({"get", entry("a") + "/sec-name"}), (Ran{1, "", ""}));
}

TEST_F(Community, WriteBelowAMissingEntryCreatesIt) {
  EXPECT_EQ(cli({"set", entry("c") + "/context-name", "blue"}), (Ran{0, "", ""}));
  EXPECT_EQ(answers({"get " + entry("c") + "/sec-name", "get " + row("c") + "/snmpCommunityName"}),
            "c\nc\n");
}

TEST_F(Community, ContextEngineIdIsTheAgentsOnceThereIsOne) {
  answers({"create /confd_dyncfg:confdConfig/snmpAgent",
           "create /confd_dyncfg:confdConfig/snmpAgent/snmpEngine",
           "set " + kEngineId + " 80:00:7e:d9:04:61:62", "create " + entry("c")});
  EXPECT_EQ(cli({"get", row("c") + "/snmpCommunityContextEngineID"}).out, "80:00:7e:d9:04:61:62\n");
}

TEST_F(Community, RowsWrittenOnTheMibSideAreListed) {
  answers({"create " + row("direct"), "set " + row("direct") + "/snmpCommunityName secret-name",
           "set " + row("direct") + "/snmpCommunitySecurityName boss",
           "set " + row("direct") + "/snmpCommunityTransportTag \"\""});
  EXPECT_EQ(
      answers({"keys " + kCommunities, "get " + entry("direct") + "/name",
               "get " + entry("direct") + "/sec-name", "get " + entry("direct") + "/target-tag"}),
      "direct\nsecret-name\nboss\nnot there\n");
}

TEST_F(Community, AnyTextMayBeAName) {
  const std::string names[] = {"two words",
                               "a\"quote",
                               "100%s%n",
                               "{braces}",
                               "back\\slash",
                               "a/slash",
                               "it's",
                               "gr\xc3\xbc\xc3\x9f"
                               "e \xe2\x82\xac",
                               "#comment",
                               "-dash"};
  std::set<std::string> quoted;
  for (const std::string& name : names) {
    SCOPED_TRACE(name);
    const std::string word = standin::quote_word(name);
    quoted.insert(word);
    EXPECT_EQ(cli({"set", entry(word) + "/name", name + "!"}), (Ran{0, "", ""}));
    EXPECT_EQ(cli({"get", entry(word) + "/name"}), (Ran{0, name + "!\n", ""}));
    EXPECT_EQ(cli({"get", row(word) + "/snmpCommunityIndex"}), (Ran{0, name + "\n", ""}));
    EXPECT_EQ(answers({"get " + entry(word) + "/sec-name"}), name + "\n");
  }
  std::istringstream keys(cli({"keys", kCommunities}).out);
  std::set<std::string> listed;
  for (std::string line; std::getline(keys, line);) listed.insert(line);
  EXPECT_EQ(listed, quoted);
}

TEST_F(Community, ThousandFromOneFileAreLoadedInOneTransaction) {
  constexpr int kCount = 1000;
  std::string json, expected;
  for (int i = 0; i < kCount; ++i) {
    const std::string name = "c" + std::to_string(10000 + i);
    json +=
        (i == 0 ? "" : ",") + std::string("{\"index\":\"") + name + "\",\"context-name\":\"x\"}";
    expected += name + "\n";
  }
  const std::string path =
      write_file("communities.json", "{\"snmp:snmp\":{\"community\":[" + json + "]}}");
  EXPECT_EQ(cli({"load", path}), (Ran{0, "", ""}));
  EXPECT_EQ(cli({"keys", kCommunities}).out, expected);
  EXPECT_EQ(cli({"keys", kRows}).out, expected);
  EXPECT_EQ(cli({"get", row("c10999") + "/snmpCommunityContextName"}).out, "x\n");
}

TEST_F(Community, LoadIsAllOrNothing) {
  const std::string path = write_file(
      "bad.json",
      R"({"snmp:snmp": {"community": [{"index": "good"}, {"index": "bad", "no-such-leaf": 1}]}})");
  const Ran ran = batch({"load " + path, "create " + entry("after")}, {"-k"});
  EXPECT_EQ(ran.status, 2);
  EXPECT_THAT(ran.out, testing::StartsWith("error: "));
  EXPECT_EQ(cli({"keys", kCommunities}).out, "after\n");
}

TEST_F(Community, ShowIsTakenBackByLoad) {
  answers(
      {"set " + entry("a") + "/name \"n \\\" \\\\ %s\"", "set " + entry("b") + "/target-tag noc"});
  const Ran shown = cli({"show", "--json", kCommunities});
  ASSERT_EQ(shown.status, 0) << shown;
  answers({"delete " + entry("a"), "delete " + entry("b")});
  EXPECT_EQ(cli({"load", write_file("shown.json", shown.out)}), (Ran{0, "", ""}));
  EXPECT_EQ(cli({"show", "--json", kCommunities}), shown);
  EXPECT_EQ(cli({"show", kCommunities}).out,
            "snmp\n  community a\n    name \"n \\\" \\\\ %s\"\n    sec-name a\n"
            "    context-name \"\"\n"
            "  community b\n    sec-name b\n    context-name \"\"\n    target-tag noc\n");
}

struct RefusedCase {
  std::string command;
  std::string text;  // exact when it ends the sentence, else what it contains
};

TEST_F(Community, RefusalSaysWhyAndCostsNothingElse) {
  const RefusedCase cases[] = {
      {"delete " + entry("c") + "/sec-name", "error: Tried to delete invalid tag: sec-name\n"},
      {"delete " + entry("c") + "/index", "error: Tried to delete invalid tag: index\n"},
      {"create " + entry("c"), "already exists"},
      {"delete " + entry("none"), "not there"},
      {"delete " + entry("c") + "/target-tag", "not there"},
      {"set " + entry("c") + "/no-such-leaf x", "no-such-leaf"},
      {"set " + entry("c") + "/target-tag \"two words\"", "target-tag"},
      {"create " + entry(std::string(33, 'x')), "index"},
      {"get /snmp:snmp/nowhere", "nowhere"},
      {"get snmp:snmp", "error: "},
      {"frobnicate", "frobnicate"},
  };
  answers({"create " + entry("c")});
  for (const RefusedCase& c : cases) {
    SCOPED_TRACE(c.command);
    const Ran ran = batch({c.command, "set " + entry("c") + "/name after",
                           "get " + entry("c") + "/name", "set " + entry("c") + "/name c"},
                          {"-k"});
    EXPECT_EQ(ran.status, 2) << ran;
    EXPECT_THAT(ran.out, testing::StartsWith("error: "));
    EXPECT_THAT(ran.out, testing::EndsWith("\nafter\n"));
    EXPECT_THAT(ran.out, testing::HasSubstr(c.text));
  }
  EXPECT_EQ(answers({"keys " + kCommunities, "get " + entry("c") + "/sec-name"}), "c\nc\n");
}

TEST_F(Community, RefusedCommandAloneEndsWithStatusTwo) {
  answers({"create " + entry("c")});
  EXPECT_EQ(cli({"delete", entry("c") + "/sec-name"}),
            (Ran{2, "", "error: Tried to delete invalid tag: sec-name\n"}));
  EXPECT_EQ(cli({"get", entry("c") + "/sec-name"}), (Ran{0, "c\n", ""}));
}

}  // namespace
}  // namespace scenario
