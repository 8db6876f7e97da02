// Groups and members.
#include "vacm.h"

namespace scenario {
namespace {

TEST_F(VacmGroups, NamesAreListedInTheOrderOfTheirOctets) {
  Strings lines;
  for (const char* name : {"ab", "b", "a", "\xc3\xa9", "G", "aa", "a b"}) {
    lines.push_back("set " + models(name, "m") + " v1");
    lines.push_back("delete " + group(name));
    lines.push_back("set " + models(name, std::string("m") + name) + " v1");
    lines.push_back("set " + models("group", name) + " v2c");
  }
  answers(lines);
  EXPECT_EQ(cli({"keys", kGroups}).out, "G\na\n\"a b\"\naa\nab\nb\ngroup\n\xc3\xa9\n");
  EXPECT_EQ(cli({"keys", group("group") + "/member"}).out, "G\na\n\"a b\"\naa\nab\nb\n\xc3\xa9\n");
}

TEST_F(VacmGroups, ModelsWithoutALabelReadAsNumbers) {
  answers(mib_rows({{"2", "alice", "g"}, {"4", "alice", "g"}, {"2147483647", "alice", "g"}}));
  EXPECT_EQ(answers({"get " + models("g", "alice"), "keys " + models("g", "alice")}),
            "v2c 4 2147483647\nv2c\n4\n2147483647\n");
  // A whole-list write that lacks them deletes them like any other.
  EXPECT_EQ(answers({"set " + models("g", "alice") + " v2c usm", "show " + kGroupTable}),
            table({{"2", "alice", "g"}, {"3", "alice", "g"}}));
}

// Each set of models in one group and the other ones in a second group, whole and one by one.
TEST_F(VacmGroups, EveryMixOfModelsWholeAndSinglyGivesTheSameRows) {
  const std::string labels[] = {"any", "v1", "v2c", "usm"};
  Strings lines;
  std::string expected;
  for (unsigned mix = 0; mix < 16; ++mix) {
    std::vector<GroupRow> wanted;
    std::string whole[2];
    Strings single;
    for (unsigned m = 0; m < 4; ++m) {
      const bool first = (mix >> m & 1U) != 0;
      whole[first ? 0 : 1] += " " + labels[m];
      const std::string g = first ? "g1" : "g2";
      single.push_back("create " + models(g, "alice") + "{" + labels[m] + "}");
      wanted.push_back({std::to_string(m), "alice", g});
    }
    for (int g = 0; g < 2; ++g)
      lines.push_back("set " + models("g" + std::to_string(g + 1), "alice") + whole[g]);
    const Strings read = {"show " + kGroupTable,          "get " + models("g1", "alice"),
                          "get " + models("g2", "alice"), "commit",
                          "set " + models("g1", "alice"), "set " + models("g2", "alice"),
                          "exists " + group("g1"),        "commit"};
    lines.insert(lines.end(), read.begin(), read.end());
    lines.insert(lines.end(), single.begin(), single.end());
    lines.insert(lines.end(), read.begin(), read.end());
    std::string once = table(wanted);
    for (const std::string& labels_of_group : whole)
      once += (labels_of_group.empty() ? "" : labels_of_group.substr(1)) + "\n";
    once += "false\n";
    expected += once + once;
  }
  EXPECT_EQ(answers(lines), expected);
  EXPECT_EQ(rows(), "");
}

TEST_F(VacmGroups, GroupAndMemberAreThereOnlyWhileARowNamesThem) {
  EXPECT_EQ(
      answers({"create " + group("g"), "create " + member("g", "alice"), "exists " + group("g"),
               "get " + group("g") + "/name", "exists " + member("g", "alice"),
               "get " + models("g", "alice"), "show " + kGroupTable,
               "create " + models("g", "alice") + "{v1}", "exists " + member("g", "alice"),
               "keys " + kGroups, "delete " + models("g", "alice") + "{v1}",
               "exists " + member("g", "alice"), "keys " + kGroups}),
      "false\nnot there\nfalse\n\ntrue\ng\nfalse\n");
}

TEST_F(VacmGroups, WhatCannotBeDeletedSaysSo) {
  answers(mib_rows(kExample));
  const std::pair<std::string, std::string> cases[] = {
      {"delete " + group("g1") + "/name", "error: Tried to delete invalid tag: name\n"},
      {"delete " + member("g1", "bob") + "/sec-name",
       "error: Tried to delete invalid tag: sec-name\n"},
      {"delete " + member("g2", "bob"), "not there"},
      {"delete " + models("g1", "bob") + "{v1}", "not there"},
  };
  for (const auto& [command, text] : cases) refused({command}, text, kGroupTable);
}

TEST_F(VacmGroups, AnyTextMayBeAName) {
  for (const std::string& name : kOddNames) {
    SCOPED_TRACE(name);
    const std::string word = standin::quote_word(name);
    answers({"set " + models(name, name) + " v1 usm", "set " + models("other", name) + " v2c"});
    EXPECT_EQ(answers({"get " + group(name) + "/name", "get " + member(name, name) + "/sec-name",
                       "keys " + models(name, name), "get " + models(name, name),
                       "keys " + models("other", name), "show " + kGroupTable}),
              name + "\n" + name + "\nv1\nusm\nv1 usm\nv2c\n" +
                  table({{"1", name, name}, {"2", name, "other"}, {"3", name, name}}));
    // The conflict of such names is recorded, reported and withdrawn like any other.
    EXPECT_EQ(
        told({"set " + models("other", name) + " v1 v2c", "set " + models(name, name) + " usm",
              "validate", "keys " + models("other", name), "abort"}),
        "v1\nv2c\n");
    const std::string entry = access(name, word + " v1 auth-priv"), wild = subtree(name, "1.*");
    EXPECT_EQ(answers({"set " + entry + "/read-view " + word, "keys " + group(name) + "/access",
                       "get " + entry + "/context", "get " + entry + "/read-view",
                       "keys " + kAccessRows, "create " + wild + "/excluded", "keys " + kViews,
                       "get " + keyed(kViews, name) + "/name", "case " + wild + " type",
                       "get " + view_row(name, "1.0") + "/vacmViewTreeFamilyMask"}),
              word + " v1 auth-priv\n" + name + "\n" + name + "\n" + word + " " + word +
                  " 1 authPriv\n" + word + "\n" + name + "\nexcluded\n80\n");
    answers({"delete " + group(name), "delete " + group("other"), "delete " + keyed(kViews, name)});
    EXPECT_EQ(cli({"show", kVacmMib}).out, "");
  }
}

}  // namespace
}  // namespace scenario
