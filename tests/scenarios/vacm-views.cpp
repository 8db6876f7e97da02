// Views and their subtrees.
#include <gmock/gmock.h>

#include "vacm.h"

namespace scenario {
namespace {

class VacmViews : public Vacm {};

std::string repeated(const std::string& component, int n) {
  std::string text = component;
  for (int i = 1; i < n; ++i) text += "." + component;
  return text;
}

TEST_F(VacmViews, SubtreeIsARowWithOidMaskTypeAndStorage) {
  struct Case {
    std::string text, oid, mask;
  };
  const Case cases[] = {
      {"1.3.6.1.2.1", "1.3.6.1.2.1", ""},
      {"1.3.6.1.*.1", "1.3.6.1.0.1", "f4"},
      {"*", "0", "00"},
      {"*.*.*", "0.0.0", "00"},
      {"*.3", "0.3", "40"},
      {"1.3.6.1.2.1.1.*", "1.3.6.1.2.1.1.0", "fe"},
      {"1.3.6.1.2.1.1.1.*", "1.3.6.1.2.1.1.1.0", "ff:00"},
      {repeated("1", 15) + ".*", repeated("1", 15) + ".0", "ff:fe"},
      {repeated("1", 16) + ".*", repeated("1", 16) + ".0", "ff:ff:00"},
      {"*." + repeated("1", 127), "0." + repeated("1", 127),
       "7f:ff:ff:ff:ff:ff:ff:ff:ff:ff:ff:ff:ff:ff:ff:ff"},
      {repeated("1", 128), repeated("1", 128), ""},
      {"4294967295.1", "4294967295.1", ""},
      {"1.3.6.1.2.1.*.1.*.1", "1.3.6.1.2.1.0.1.0.1", "fd:40"},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.text);
    for (const std::string type : {"included", "excluded"}) {
      const std::string entry = subtree("v", c.text), row = view_row("v", c.oid);
      EXPECT_EQ(
          answers(
              {"create " + entry + "/" + type, "keys " + kViews, "keys " + kViews + "{v}/subtree",
               "get " + entry + "/oid", "case " + entry + " type", "exists " + entry + "/included",
               "exists " + entry + "/excluded", "keys " + kViewRows,
               "get " + row + "/vacmViewTreeFamilyMask", "get " + row + "/vacmViewTreeFamilyType",
               "get " + row + "/vacmViewTreeFamilyStorageType", "validate", "delete " + entry,
               "keys " + kViewRows}),
          "v\n" + c.text + "\n" + c.text + "\n" + type + "\n" +
              (type == "included" ? "true\nfalse\n" : "false\ntrue\n") + "v " + c.oid + "\n" +
              c.mask + "\n" + type + "\nnonVolatile\n");
    }
  }
}

TEST_F(VacmViews, UnusableTextIsRefusedEverywhere) {
  const std::string texts[] = {"",
                               ".1",
                               "1.",
                               "1..3",
                               "0.1",
                               "1.0",
                               "0",
                               "1.03",
                               "1.3x",
                               "*5.1",
                               "1.*5",
                               "1.a",
                               "1,3",
                               " 1",
                               "1 ",
                               "-1",
                               "+1",
                               "1.3.6.",
                               "**",
                               "4294967296",
                               "1.4294967297",
                               "99999999999999999999",
                               "%s%n",
                               "\xd9\xa1",
                               repeated("1", 129),
                               repeated("10", 86)};
  for (const std::string& text : texts) {
    SCOPED_TRACE(text);
    const std::string entry = subtree("v", text);
    const std::string refusal = "error: Invalid subtree: " + text.substr(0, 255) + "\n";
    EXPECT_EQ(tried({"create " + entry, "get " + entry + "/oid", "exists " + entry,
                     "case " + entry + " type", "create " + entry + "/included",
                     "exists " + entry + "/excluded", "delete " + entry, "keys " + kViewRows}),
              refusal + refusal + refusal + refusal + refusal + refusal + refusal);
  }
}

TEST_F(VacmViews, TypeIsMandatoryAndStays) {
  const std::string entry = subtree("v", "1.3.6.1");
  EXPECT_THAT(cli({"create", entry}).err, testing::HasSubstr("\"type\""));
  EXPECT_EQ(cli({"keys", kViewRows}).out, "");
  EXPECT_EQ(tried({"create " + entry, "get " + entry + "/oid", "case " + entry + " type",
                   "exists " + entry + "/included", "create " + entry + "/included",
                   "create " + entry + "/excluded", "case " + entry + " type",
                   "delete " + entry + "/excluded", "case " + entry + " type"}),
            "1.3.6.1\nnot there\nfalse\nexcluded\n"
            "error: Missing mandatory choice: excluded/included\nexcluded\n");
  EXPECT_EQ(cli({"get", view_row("v", "1.3.6.1") + "/vacmViewTreeFamilyType"}).out, "excluded\n");
}

TEST_F(VacmViews, ViewIsThereOnlyWhileASubtreeIs) {
  EXPECT_EQ(
      answers({"create " + keyed(kViews, "v"), "exists " + keyed(kViews, "v"), "keys " + kViews,
               "create " + subtree("v", "1") + "/included", "get " + keyed(kViews, "v") + "/name",
               "keys " + kViews, "delete " + subtree("v", "1"), "exists " + keyed(kViews, "v")}),
      "false\nv\nv\nfalse\n");
}

TEST_F(VacmViews, RowsOfTheMibSideReadByTheirOid) {
  const std::string longest = "4294967295." + repeated("4294967295", 24);  // past 255 characters
  answers({"create " + view_row("v", "1.3.6.1.0"),
           "set " + view_row("v", "1.3.6.1.0") + "/vacmViewTreeFamilyMask ff",
           "set " + view_row("v", "1.3.6.1.0") + "/vacmViewTreeFamilyType included",
           "create " + view_row("v", "1.3.6.1.2"),
           "set " + view_row("v", "1.3.6.1.2") + "/vacmViewTreeFamilyMask f0",
           "set " + view_row("v", "1.3.6.1.2") + "/vacmViewTreeFamilyType excluded",
           "create " + view_row("v", "1.3.6.1.10"), "create " + view_row("v", longest),
           "create " + view_row("w", "0")});
  EXPECT_EQ(tried({"keys " + kViews, "keys " + keyed(kViews, "v") + "/subtree",
                   "keys " + keyed(kViews, "w") + "/subtree",
                   "case " + subtree("v", "1.3.6.1.*") + " type",
                   "case " + subtree("v", "1.3.6.1.2") + " type",
                   "case " + subtree("v", "1.3.6.1.10") + " type",
                   "get " + subtree("v", "1.3.6.1.*") + "/oid",
                   "get " + view_row("v", "1.3.6.1.0") + "/vacmViewTreeFamilyMask",
                   "delete " + keyed(kViews, "v"), "keys " + kViewRows}),
            "v\nw\n1.3.6.1.*\n1.3.6.1.2\n1.3.6.1.10\n*\nincluded\nexcluded\nnot there\n1.3.6.1.*\n"
            "ff\nw 0\n");
}

TEST_F(VacmViews, OneAmongManyIsDeletedWithAllItsSubtrees) {
  Strings lines;
  std::string views, others;
  for (int v = 10; v < 30; ++v) {
    const std::string name = "v" + std::to_string(v);
    views += v == 20 ? "" : name + "\n";
    for (const char* text : {"1.3", "1.3.6.*", "2"}) {
      lines.push_back("create " + subtree(name, text) + "/included");
      if (v != 20)
        others +=
            name + (std::string(text) == "1.3.6.*" ? " 1.3.6.0" : std::string(" ") + text) + "\n";
    }
  }
  answers(lines);
  answers({"delete " + keyed(kViews, "v20")});
  EXPECT_EQ(answers({"keys " + kViews, "keys " + kViewRows}), views + others);
}

TEST_F(VacmViews, KeyLeavesAreAcceptedAndChangeNothing) {
  const std::string entry = subtree("v", "1.3");
  EXPECT_EQ(tried({"create " + entry + "/included", "set " + entry + "/oid 1.3",
                   "set " + keyed(kViews, "v") + "/name v", "keys " + kViewRows}),
            "v 1.3\n");
}

TEST_F(VacmViews, AnyTextMayBeAName) {
  for (const std::string name :
       {"two words", "a\"quote", "it's", "100%s%n%x", "{braces}", "[brackets]", "back\\slash",
        "gr\xc3\xbc\xc3\x9f"
        "e",
        "12345678901234567890123456789012"}) {
    SCOPED_TRACE(name);
    const std::string word = standin::quote_word(name);
    const std::string entry = subtree(name, "1.*");
    EXPECT_EQ(answers({"create " + entry + "/excluded", "keys " + kViews,
                       "get " + keyed(kViews, name) + "/name", "case " + entry + " type",
                       "get " + view_row(name, "1.0") + "/vacmViewTreeFamilyMask",
                       "attr " + entry + " annotation x", "delete " + keyed(kViews, name),
                       "keys " + kViewRows, "create " + entry + "/included",
                       "attr " + entry + " annotation", "delete " + entry}),
              word + "\n" + name + "\nexcluded\n80\nnot there\n");
  }
}

TEST_F(VacmViews, ShowIsTakenBackByLoad) {
  answers({"create " + subtree("all", "1.3.6.1") + "/included",
           "create " + subtree("all", "1.3.6.1.*.5") + "/excluded",
           "set " + models("g", "alice") + " v1 usm",
           "set " + group("g") + "/access{\"\" usm auth-priv}/read-view all"});
  const Ran shown = cli({"show", "--json", "/snmp:snmp/vacm"});
  ASSERT_EQ(shown.status, 0) << shown;
  answers({"delete " + group("g"), "delete " + keyed(kViews, "all")});
  EXPECT_EQ(cli({"show", kVacmMib}).out, "");
  EXPECT_EQ(cli({"load", write_file("shown.json", shown.out)}), (Ran{0, "", ""}));
  EXPECT_EQ(cli({"show", "--json", "/snmp:snmp/vacm"}), shown);
}

}  // namespace
}  // namespace scenario
