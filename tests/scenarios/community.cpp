#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <set>
#include <sstream>

#include "platform/wire/path.h"
#include "world.h"

namespace scenario {
namespace {

class Community : public Running {
 protected:
  static std::string row(const std::string& key) { return kRows + "{" + key + "}"; }
  static std::string entry(const std::string& key) { return kCommunities + "{" + key + "}"; }
};

TEST_F(Community, EntryIsARowAndGoesWithIt) {
  answers({"create " + entry("a"), "create " + entry("b")});
  EXPECT_EQ(answers({"keys " + kCommunities, "keys " + kRows, "get " + entry("a") + "/index",
                     "get " + entry("a") + "/sec-name", "get " + entry("a") + "/name",
                     "get " + row("a") + "/snmpCommunityName",
                     "get " + row("a") + "/snmpCommunitySecurityName",
                     "get " + row("a") + "/snmpCommunityContextEngineID"}),
            "a\nb\na\nb\na\na\nnot there\na\na\nnot there\n");
  EXPECT_EQ(cli({"delete", entry("a")}).status, 0);
  EXPECT_EQ(answers({"keys " + kCommunities, "keys " + kRows}), "b\nb\n");
  EXPECT_EQ(cli({"get", entry("a") + "/sec-name"}), (Ran{1, "", ""}));
  // What somebody else writes is an entry too.
  answers({"create " + row("direct"), "set " + row("direct") + "/snmpCommunityName secret-name",
           "set " + row("direct") + "/snmpCommunitySecurityName boss"});
  EXPECT_EQ(answers({"keys " + kCommunities, "get " + entry("direct") + "/name",
                     "get " + entry("direct") + "/sec-name"}),
            "b\ndirect\nsecret-name\nboss\n");
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
                     "get " + row("c") + "/snmpCommunitySecurityName",
                     // A name equal to the index reads as unset.
                     "set " + entry("c") + "/name c", "exists " + entry("c") + "/name"}),
            "boss\nboss\nfalse\n");
}

TEST_F(Community, AnyTextMayBeAName) {
  std::set<std::string> quoted;
  for (const std::string& name : kOddNames) {
    SCOPED_TRACE(name);
    const std::string word = standin::quote_word(name);
    quoted.insert(word);
    EXPECT_EQ(cli({"set", entry(word) + "/name", name + "!"}), (Ran{0, "", ""}));
    EXPECT_EQ(get(entry(word) + "/name"), name + "!\n");
    EXPECT_EQ(
        answers({"get " + row(word) + "/snmpCommunityIndex", "get " + entry(word) + "/sec-name"}),
        name + "\n" + name + "\n");
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
  EXPECT_EQ(answers({"keys " + kCommunities, "keys " + kRows}), expected + expected);
  EXPECT_EQ(get(row("c10999") + "/snmpCommunityContextName"), "x\n");
}

TEST_F(Community, ShowIsTakenBackByLoad) {
  answers(
      {"set " + entry("a") + "/name \"n \\\" \\\\ %s\"", "set " + entry("b") + "/target-tag noc"});
  EXPECT_EQ(cli({"show", kCommunities}).out,
            "snmp\n  community a\n    name \"n \\\" \\\\ %s\"\n    sec-name a\n"
            "    context-name \"\"\n"
            "  community b\n    sec-name b\n    context-name \"\"\n    target-tag noc\n");
  loads_back(kCommunities, {"delete " + entry("a"), "delete " + entry("b")});
}

TEST_F(Community, RefusalSaysWhyAndCostsNothingElse) {
  const std::pair<std::string, std::string> cases[] = {
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
  for (const auto& [command, text] : cases) {
    SCOPED_TRACE(command);
    const Ran ran = batch({command, "set " + entry("c") + "/name after",
                           "get " + entry("c") + "/name", "set " + entry("c") + "/name c"},
                          {"-k"});
    EXPECT_EQ(ran.status, 2) << ran;
    EXPECT_THAT(ran.out, testing::AllOf(testing::StartsWith("error: "), testing::HasSubstr(text),
                                        testing::EndsWith("\nafter\n")));
  }
  EXPECT_EQ(answers({"keys " + kCommunities, "get " + entry("c") + "/sec-name"}), "c\nc\n");
}

}  // namespace
}  // namespace scenario
