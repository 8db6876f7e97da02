#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "world.h"

namespace scenario {
namespace {

const std::string kNotify = "/snmp:snmp/notify";
const std::string kNotifyRows =
    "/SNMP_NOTIFICATION_MIB:SNMP-NOTIFICATION-MIB/snmpNotifyTable/snmpNotifyEntry";

class Notify : public World {
 protected:
  void SetUp() override {
    start_both();
    answers({"create " + kEntry});
  }
  // The entry's leaf and its column, before the commit and after it.
  void expect_both(const Strings& change, const std::string& leaf, const std::string& column,
                   const std::string& northbound, const std::string& mib) {
    const Strings reads = {"get " + kEntry + leaf, "get " + kRow + column};
    Strings lines = change;
    lines.insert(lines.end(), reads.begin(), reads.end());
    const std::string expected = northbound + "\n" + mib + "\n";
    EXPECT_EQ(answers(lines), expected);
    EXPECT_EQ(answers(reads), expected);
  }
  const std::string kEntry = kNotify + "{alarms}";
  const std::string kRow = kNotifyRows + "{alarms}";
};

TEST_F(Notify, CreatedEntryIsATrapOnBothSides) {
  expect_both({}, "/type", "/snmpNotifyType", "trap", "trap");
  expect_both({}, "/name", "/snmpNotifyName", "alarms", "alarms");
  expect_both({}, "/tag", "/snmpNotifyTag", "", "");  // RFC 3413: DEFVAL of an unset tag
  EXPECT_EQ(answers({"keys " + kNotify, "keys " + kNotifyRows}), "alarms\nalarms\n");
}

TEST_F(Notify, LeavesAreWrittenAndTheirRemovalLeavesTheColumnsDefault) {
  expect_both({"set " + kEntry + "/type inform"}, "/type", "/snmpNotifyType", "inform", "inform");
  expect_both({"delete " + kEntry + "/type"}, "/type", "/snmpNotifyType", "trap", "trap");
  expect_both({"set " + kEntry + "/tag noc"}, "/tag", "/snmpNotifyTag", "noc", "noc");
  expect_both({"delete " + kEntry + "/tag"}, "/tag", "/snmpNotifyTag", "", "");
}

TEST_F(Notify, RowsOfTheMibSideAreListedInItsOrder) {
  answers({"create " + kNotifyRows + "{zeta}", "create " + kNotifyRows + "{beta}",
           "set " + kNotifyRows + "{beta}/snmpNotifyType inform",
           "set " + kNotifyRows + "{beta}/snmpNotifyTag noc"});
  EXPECT_EQ(answers({"keys " + kNotify, "get " + kNotify + "{beta}/type",
                     "get " + kNotify + "{beta}/tag", "get " + kNotify + "{zeta}/type"}),
            "alarms\nbeta\nzeta\ninform\nnoc\ntrap\n");
}

TEST_F(Notify, RefusalsNameTheReasonAndChangeNothing) {
  struct Case {
    std::string line, text;
  };
  const Case cases[] = {
      {"delete " + kEntry + "/name", "error: Tried to delete invalid tag: name\n"},
      {"create " + kEntry, "already exists"},
      {"delete " + kNotify + "{none}", "not there"},
      {"set " + kEntry + "/type sometimes", "type"},
      {"set " + kEntry + "/tag \"two words\"", "tag"},
      {"create " + kNotify + "{" + std::string(33, 'x') + "}", "name"},
  };
  const std::string before = cli({"show", "--json", kNotifyRows}).out;
  for (const Case& c : cases) {
    SCOPED_TRACE(c.line);
    const Ran ran = batch({c.line});
    EXPECT_EQ(ran.status, 2) << ran;
    EXPECT_THAT(ran.err,
                testing::AllOf(testing::StartsWith("error: "), testing::HasSubstr(c.text)));
    EXPECT_EQ(cli({"show", "--json", kNotifyRows}).out, before);
  }
}

TEST_F(Notify, DeletedEntryTakesItsRowAndAttributesAlong) {
  const std::string sibling = kNotify + "{alarms2}";
  answers({"create " + sibling, "attr " + sibling + " annotation stays",
           "attr " + kEntry + " annotation goes", "attr " + kEntry + "/type annotation goes"});
  answers({"delete " + kEntry});
  EXPECT_EQ(answers({"keys " + kNotify, "keys " + kNotifyRows, "create " + kEntry, "attr " + kEntry,
                     "attr " + kEntry + "/type", "attr " + sibling + " annotation"}),
            "alarms2\nalarms2\nnot there\nnot there\nstays\n");
}

}  // namespace
}  // namespace scenario
