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

class TargetWorld : public Running {
 protected:
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

  // Both tables stay.
  void refused(const Strings& lines, const std::string& text) {
    World::refused(lines, text, "/SNMP_TARGET_MIB:SNMP-TARGET-MIB");
  }
};

}  // namespace scenario
