// Paths of the agent's settings in the dynamic configuration, and the containers that a write needs
// first: snmpAgent, snmpVersions and snmpEngine are there only once somebody has created them.
#pragma once

#define SNMP_AGENT "/confd_dyncfg:confdConfig/snmpAgent/"
#define SNMP_VERSIONS SNMP_AGENT "snmpVersions"
#define SNMP_ENGINE SNMP_AGENT "snmpEngine"

namespace quillet {

// The MAAPI result of the creation; CONFD_OK when the container is there already.
int agent_create_unless_there(int thandle, const char* path);

}  // namespace quillet
