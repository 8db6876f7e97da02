// Both sides of the agent's settings.
#pragma once

#include "world.h"

namespace scenario {

inline const std::string kAgent = "/snmp:snmp/agent";
inline const std::string kSettings = "/confd_dyncfg:confdConfig/snmpAgent";
inline const std::string kSystem = "/SNMPv2_MIB:SNMPv2-MIB/system";
inline const std::string kEngineSettings = kAgent + "/engine-id";

}  // namespace scenario
