// Both sides of the notification targets.
#pragma once

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <utility>

#include "world.h"

namespace scenario {

inline const std::string kTargets = "/snmp:snmp/target";
inline const std::string kAddrRows =
    "/SNMP_TARGET_MIB:SNMP-TARGET-MIB/snmpTargetAddrTable/snmpTargetAddrEntry";
inline const std::string kParamsRows =
    "/SNMP_TARGET_MIB:SNMP-TARGET-MIB/snmpTargetParamsTable/snmpTargetParamsEntry";

// A path, and the answer to its `get` ("not there" included).
using Facts = std::vector<std::pair<std::string, std::string>>;

class TargetWorld : public World {
 protected:
  void SetUp() override { start_both(); }

  static std::string target(const std::string& name, const std::string& below = {}) {
    return kTargets + "{" + name + "}" + (below.empty() ? "" : "/" + below);
  }
  // Columns are named without the table's prefix.
  static std::string addr(const std::string& name, const std::string& column = {}) {
    return kAddrRows + "{" + name + "}" + (column.empty() ? "" : "/snmpTargetAddr" + column);
  }
  static std::string params(const std::string& name, const std::string& column = {}) {
    return kParamsRows + "{" + name + "}" + (column.empty() ? "" : "/snmpTargetParams" + column);
  }

  // One transaction of changes; then the facts, inside it and once more after its commit.
  void changes(const Strings& lines, const Facts& facts) {
    Strings all = lines;
    Strings reads;
    std::string expected;
    for (const auto& [path, value] : facts) {
      reads.push_back("get " + path);
      expected += value + "\n";
    }
    all.insert(all.end(), reads.begin(), reads.end());
    EXPECT_EQ(answers(all), expected);
    EXPECT_EQ(answers(reads), expected);
  }

  // Everything that both tables hold.
  std::string tables() { return cli({"show", "--json", "/SNMP_TARGET_MIB:SNMP-TARGET-MIB"}).out; }

  // Refused with a text that contains this (exactly this when it ends the line); both tables stay.
  void refused(const Strings& lines, const std::string& text) {
    SCOPED_TRACE(lines.back());
    const std::string before = tables();
    const Ran ran = batch(lines);
    EXPECT_EQ(ran.status, 2) << ran;
    EXPECT_THAT(ran.err, testing::AllOf(testing::StartsWith("error: "), testing::HasSubstr(text)));
    EXPECT_EQ(tables(), before);
  }
};

}  // namespace scenario
