// One machine in small, as a test fixture.
#pragma once

#include <gtest/gtest.h>

#include <ostream>
#include <string>

#include "machine.h"

namespace scenario {

// What a run of the client gave.
struct Ran {
  int status = -1;
  std::string out, err;
  bool operator==(const Ran&) const = default;
};
std::ostream& operator<<(std::ostream& out, const Ran& ran);

inline const std::string kRows =
    "/SNMP_COMMUNITY_MIB:SNMP-COMMUNITY-MIB/snmpCommunityTable/snmpCommunityEntry";
inline const std::string kCommunities = "/snmp:snmp/community";
inline const std::string kEngineId = "/confd_dyncfg:confdConfig/snmpAgent/snmpEngine/snmpEngineID";

// Every case says what it starts.
class World : public ::testing::Test, protected Machine {
 protected:
  // Fails the case when the daemon has ended and nobody expected it, and tells what it wrote.
  void TearDown() override;

  Ran cli(const Strings& words, const std::string& input = {});
  // A batch of lines; its output.
  Ran batch(const Strings& lines, const Strings& options = {});
  // A batch that must succeed; its answers.
  std::string answers(const Strings& lines);
};

}  // namespace scenario
