// Access entries of a group.
#include "vacm.h"

namespace scenario {
namespace {

class VacmAccess : public Vacm {};

TEST_F(VacmAccess, EveryModelAndLevelInEveryContextIsARow) {
  struct Label {
    std::string northbound, mib;
  };
  const Label models[] = {{"any", "0"}, {"v1", "1"}, {"v2c", "2"}, {"usm", "3"}};
  const Label levels[] = {{"no-auth-no-priv", "noAuthNoPriv"},
                          {"auth-no-priv", "authNoPriv"},
                          {"auth-priv", "authPriv"}};
  Strings lines;
  std::string northbound, mib;
  for (const char* context : {"\"\"", "\"a b\"", "ctx"}) {
    for (const Label& m : models) {
      for (const Label& l : levels) {
        const std::string keys = std::string(context) + " " + m.northbound + " " + l.northbound;
        lines.push_back("create " + access("g", keys));
        northbound += keys + "\n";
        mib += "g " + std::string(context) + " " + m.mib + " " + l.mib + "\n";
      }
    }
  }
  answers(lines);
  answers({"create " + access("h", "ctx v2c auth-priv")});
  EXPECT_EQ(answers({"keys " + group("g") + "/access", "keys " + group("h") + "/access",
                     "keys " + kAccessRows}),
            northbound + "ctx v2c auth-priv\n" + mib + "h ctx 2 authPriv\n");
  answers({"delete " + access("g", "ctx v2c auth-priv")});
  EXPECT_EQ(answers({"exists " + access_row("g ctx 2 authPriv"),
                     "exists " + access_row("h ctx 2 authPriv")}),
            "false\ntrue\n");
}

TEST_F(VacmAccess, NewEntryIsItsIndexesAndItsStorageType) {
  EXPECT_EQ(answers({"create " + access("g", "\"\" usm auth-priv"), "show " + kAccessTable,
                     "get " + access("g", "\"\" usm auth-priv") + "/context",
                     "get " + access("g", "\"\" usm auth-priv") + "/sec-model",
                     "get " + access("g", "\"\" usm auth-priv") + "/sec-level", "keys " + kGroups,
                     "exists " + group("g")}),
            "SNMP-VIEW-BASED-ACM-MIB\n  vacmAccessTable\n"
            "    vacmAccessEntry g \"\" 3 authPriv\n      vacmAccessStorageType nonVolatile\n"
            "\nusm\nauth-priv\nfalse\n");
}

TEST_F(VacmAccess, EachLeafGoesToItsColumnAndBack) {
  struct Case {
    std::string leaf, column, value, mib_value, at_first;
    bool removable;
  };
  const Case cases[] = {
      {"context-match", "vacmAccessContextMatch", "prefix", "prefix", "exact", false},
      {"read-view", "vacmAccessReadViewName", "\"a view\"", "a view", "", true},
      {"write-view", "vacmAccessWriteViewName", "w", "w", "", true},
      {"notify-view", "vacmAccessNotifyViewName", "n", "n", "", true},
  };
  const std::string entry = access("g", "ctx v2c no-auth-no-priv");
  const std::string mib = access_row("g ctx 2 noAuthNoPriv");
  answers({"create " + entry, "create " + access("g", "ctx v1 no-auth-no-priv")});
  for (const Case& c : cases) {
    SCOPED_TRACE(c.leaf);
    const std::string leaf = entry + "/" + c.leaf, column = mib + "/" + c.column;
    EXPECT_EQ(answers({"get " + leaf, "set " + leaf + " " + c.value, "get " + column, "get " + leaf,
                       "get " + access("g", "ctx v1 no-auth-no-priv") + "/" + c.leaf}),
              c.at_first + "\n" + c.mib_value + "\n" + c.mib_value + "\n" + c.at_first + "\n");
    EXPECT_EQ(told({"delete " + leaf, "get " + column}),
              c.removable
                  ? c.at_first + "\n"
                  : "error: Tried to delete invalid tag: " + c.leaf + "\n" + c.mib_value + "\n");
  }
}

TEST_F(VacmAccess, KeyLeavesAreNotDeleted) {
  const std::string entry = access("g", "ctx usm auth-priv");
  answers({"create " + entry});
  refused({"delete " + entry + "/context"}, "error: Tried to delete invalid tag: context\n",
          kVacmMib);
  refused({"delete " + entry + "/sec-model"}, "error: Delete invoked on list's key: sec-model\n",
          kVacmMib);
  refused({"delete " + entry + "/sec-level"}, "vacmAccessSecurityLevel", kVacmMib);
}

// The level is compared with no row's: any row of the model answers.
TEST_F(VacmAccess, LevelReadsWhileTheModelHasARow) {
  answers({"create " + access("g", "ctx usm auth-priv")});
  EXPECT_EQ(answers({"get " + access("g", "\"\" usm no-auth-no-priv") + "/sec-level",
                     "get " + access("g", "ctx v1 auth-priv") + "/sec-level",
                     "get " + access("h", "ctx usm auth-priv") + "/sec-level",
                     "get " + access("g", "\"\" usm auth-priv") + "/sec-model",
                     "exists " + access("g", "\"\" usm no-auth-no-priv")}),
            "no-auth-no-priv\nnot there\nnot there\nnot there\nfalse\n");
}

TEST_F(VacmAccess, RowsOfTheMibSideAreListedWithWhateverModel) {
  answers({"create " + access_row("g \"\" 3 authPriv"),
           "create " + access_row("g ctx 2 noAuthNoPriv"),
           "create " + access_row("h x 77 authNoPriv")});
  EXPECT_EQ(answers({"keys " + group("g") + "/access", "keys " + group("h") + "/access"}),
            "\"\" usm auth-priv\nctx v2c no-auth-no-priv\nx 77 auth-no-priv\n");
  EXPECT_EQ(cli({"keys", kGroups}).out, "") << "no member, no group";
}

}  // namespace
}  // namespace scenario
