// The agent itself.
//
//   /snmp:snmp/agent            /confd_dyncfg:confdConfig/snmpAgent
//     enabled, ip, port         enabled, ip, port
//     version/v1, v2c, v3       snmpVersions/v1, v2c, v3: there while the boolean is true
//     max-message-size          snmpEngine/snmpEngineMaxMessageSize, read within 484..214748364
//     context{NAME}             contexts{NAME}
//     extra-ip-port{IP PORT}    extraIpPorts (extra-listen-addresses.h)
//     engine-id                 snmpEngine/snmpEngineID (engine-id.h)
//     contact, name, location   sysContact, sysName, sysLocation of SNMPv2-MIB
//
// For example version/v2c created where there is no snmpVersions makes the booleans v1 false, v2c
// true and v3 false. A deleted leaf keeps its counterpart: the agent has no state without them.
//
// RFC 3418 (system group), RFC 3411 (SnmpEngineID), RFC 3412 (sizes of messages).
#pragma once

#include <confd_dp.h>

namespace quillet {

confd_data_cbs* get_agent_cbs();

}  // namespace quillet
