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

// Names that need quotes, read like something else, or are as long as they may be.
inline const Strings kOddNames = {"two words",
                                  "a\"quote",
                                  "it's \"both\"",
                                  "100%s%n%x",
                                  "{braces}",
                                  "[1]='x'",
                                  "back\\slash",
                                  "a/slash",
                                  "semi;colon",
                                  "#comment",
                                  "-dash",
                                  "gr\u00fc\u00dfe \u20ac",
                                  std::string(32, '"'),
                                  std::string(32, '\'')};

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
  // The answers of a batch that goes on after refusals.
  std::string told(const Strings& lines) { return batch(lines, {"-k"}).out; }
  std::string get(const std::string& path) { return cli({"get", path}).out; }
  std::string json(const std::string& path) { return cli({"show", "--json", path}).out; }

  // Refused with a text that contains this (exactly this when it ends the line); what stands below
  // `kept` stays.
  void refused(const Strings& lines, const std::string& text, const std::string& kept);
  // What `show` prints of a subtree is taken back by `load` after these deletions.
  void loads_back(const std::string& path, const Strings& deletions);
};

// Both run.
class Running : public World {
 protected:
  void SetUp() override { start_both(); }
};

}  // namespace scenario
