// Both sides of the agent's settings.
#pragma once

#include "world.h"

namespace scenario {

inline const std::string kAgent = "/snmp:snmp/agent";
inline const std::string kSettings = "/confd_dyncfg:confdConfig/snmpAgent";
inline const std::string kSystem = "/SNMPv2_MIB:SNMPv2-MIB/system";
inline const std::string kEngineSettings = kAgent + "/engine-id";
inline const std::string kUsers =
    "/SNMP_USER_BASED_SM_MIB:SNMP-USER-BASED-SM-MIB/usmUserTable/usmUserEntry";

class AgentWorld : public World {
 protected:
  void SetUp() override { start_both(); }
  // Answers of a batch that goes on after refusals.
  std::string told(const Strings& lines) { return batch(lines, {"-k"}).out; }
};

}  // namespace scenario
