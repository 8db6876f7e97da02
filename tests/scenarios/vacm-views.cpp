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
      {"*", "0", "00"},
      {"*.3", "0.3", "40"},
      {"1.3.6.1.2.1.1.*", "1.3.6.1.2.1.1.0", "fe"},
      {"1.3.6.1.2.1.*.1.*", "1.3.6.1.2.1.0.1.0", "fd:00"},
      {repeated("1", 15) + ".*", repeated("1", 15) + ".0", "ff:fe"},
      {repeated("1", 16) + ".*", repeated("1", 16) + ".0", "ff:ff:00"},
      {"*." + repeated("1", 127), "0." + repeated("1", 127),
       "7f:ff:ff:ff:ff:ff:ff:ff:ff:ff:ff:ff:ff:ff:ff:ff"},
      {"4294967295.1", "4294967295.1", ""},
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
                               "1.",
                               "0.1",
                               "1.03",
                               " 1",
                               "**",
                               "%s%n",
                               "4294967296",
                               repeated("1", 129),
                               repeated("10", 86)};
  for (const std::string& text : texts) {
    SCOPED_TRACE(text);
    const std::string entry = subtree("v", text);
    const std::string refusal = "error: Invalid subtree: " + text.substr(0, 255) + "\n";
    EXPECT_EQ(told({"create " + entry, "get " + entry + "/oid", "exists " + entry,
                    "case " + entry + " type", "create " + entry + "/included",
                    "exists " + entry + "/excluded", "delete " + entry, "keys " + kViewRows}),
              refusal + refusal + refusal + refusal + refusal + refusal + refusal);
  }
}

TEST_F(VacmViews, TypeIsMandatoryAndStays) {
  const std::string entry = subtree("v", "1.3.6.1");
  EXPECT_THAT(cli({"create", entry}).err, testing::HasSubstr("\"type\""));
  EXPECT_EQ(cli({"keys", kViewRows}).out, "");
  EXPECT_EQ(told({"create " + entry, "get " + entry + "/oid", "case " + entry + " type",
                  "exists " + entry + "/included", "create " + entry + "/included",
                  "create " + entry + "/excluded", "case " + entry + " type",
                  "delete " + entry + "/excluded", "case " + entry + " type"}),
            "1.3.6.1\nnot there\nfalse\nexcluded\n"
            "error: Missing mandatory choice: excluded/included\nexcluded\n");
  EXPECT_EQ(cli({"get", view_row("v", "1.3.6.1") + "/vacmViewTreeFamilyType"}).out, "excluded\n");
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
  EXPECT_EQ(told({"keys " + kViews, "keys " + keyed(kViews, "v") + "/subtree",
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
    lines.push_back("create " + subtree(name, "1.3") + "/included");
    lines.push_back("create " + subtree(name, "1.3.6.*") + "/excluded");
    if (v == 20) continue;
    views += name + "\n";
    others += name + " 1.3\n" + name + " 1.3.6.0\n";
  }
  answers(lines);
  answers({"delete " + keyed(kViews, "v20")});
  EXPECT_EQ(answers({"exists " + keyed(kViews, "v20"), "keys " + kViews, "keys " + kViewRows}),
            "false\n" + views + others);
}

TEST_F(VacmViews, ShowIsTakenBackByLoad) {
  answers({"create " + subtree("all", "1.3.6.1") + "/included",
           "create " + subtree("all", "1.3.6.1.*.5") + "/excluded",
           "set " + models("g", "alice") + " v1 usm",
           "set " + group("g") + "/access{\"\" usm auth-priv}/read-view all"});
  loads_back("/snmp:snmp/vacm", {"delete " + group("g"), "delete " + keyed(kViews, "all")});
}

}  // namespace
}  // namespace scenario
