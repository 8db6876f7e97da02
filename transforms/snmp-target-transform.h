// Notification targets.
//
//   /snmp:snmp/target{NAME}                 snmpTargetAddrTable, snmpTargetParamsTable
//     ip, port                              snmpTargetAddrTDomain, snmpTargetAddrTAddress
//     tag (leaf-list)                       snmpTargetAddrTagList, words with blanks between
//     timeout, retries, engine-id           snmpTargetAddrTimeout, ...RetryCount, ...EngineID
//     v1/sec-name | v2c/sec-name            snmpTargetParamsSecurityName of the row that
//     usm/user-name, usm/sec-level          snmpTargetAddrParams names, ...SecurityLevel
//     choice params                         snmpTargetParamsMPModel, ...SecurityModel
//
// One row: target noc with ip 10.0.0.1, port 1162 and v2c/sec-name public is the address row noc
// (domain 1.3.6.1.2.1.100.1.1, address 0a:00:00:01:04:8a, params ConfD1) and the params row ConfD1
// (MP model 1, security model 2, security name public, level 1).
//
// RFC 3413 section 4.1, RFC 3419. Nothing is kept of secure-transport, its containers and
// prefix-length.
#pragma once

#include <confd_dp.h>

#include <cstdint>

namespace quillet {

confd_data_cbs* get_target_cbs();

// 1 when the security model is that of the case (v1: 1, v2c: 2, usm: 3), else 0.
int choicetag_secmodel_match(u_int32_t case_tag, int security_model);

}  // namespace quillet
