#include <gtest/gtest.h>

#include "world.h"

namespace scenario {
namespace {

const std::string kNotify = "/snmp:snmp/notify";
const std::string kNotifyRows =
    "/SNMP_NOTIFICATION_MIB:SNMP-NOTIFICATION-MIB/snmpNotifyTable/snmpNotifyEntry";

class Notify : public Running {};

TEST_F(Notify, EntryIsARowAndItsLeavesAreColumns) {
  const std::string entry = kNotify + "{alarms}", row = kNotifyRows + "{alarms}";
  const Strings reads = {"get " + entry + "/type", "get " + row + "/snmpNotifyType",
                         "get " + entry + "/tag", "get " + row + "/snmpNotifyTag"};
  const std::string defaults = "trap\ntrap\n\n\n";  // RFC 3413: DEFVALs
  answers({"create " + entry});
  EXPECT_EQ(answers(reads), defaults);
  answers({"set " + entry + "/type inform", "set " + entry + "/tag noc"});
  EXPECT_EQ(answers(reads), "inform\ninform\nnoc\nnoc\n");
  answers({"delete " + entry + "/type", "delete " + entry + "/tag"});
  EXPECT_EQ(answers(reads), defaults);
  answers({"create " + kNotifyRows + "{zeta}", "set " + kNotifyRows + "{beta}/snmpNotifyTag noc"});
  EXPECT_EQ(answers({"keys " + kNotify, "get " + kNotify + "{beta}/tag"}),
            "alarms\nbeta\nzeta\nnoc\n");
  refused({"delete " + entry + "/name"}, "error: Tried to delete invalid tag: name\n", kNotifyRows);
  refused({"set " + entry + "/type sometimes"}, "type", kNotifyRows);
  refused({"set " + entry + "/tag \"two words\""}, "tag", kNotifyRows);
  answers({"delete " + entry});
  EXPECT_EQ(cli({"keys", kNotifyRows}).out, "beta\nzeta\n");
}

}  // namespace
}  // namespace scenario
