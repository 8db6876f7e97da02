// Further addresses that the agent listens on.
//
//   /snmp:snmp/agent/extra-ip-port{IP PORT}   one string of the leaf-list
//                                             /confd_dyncfg:confdConfig/snmpAgent/extraIpPorts
//
// The strings "10.0.0.1:1161", "[::1]" and "host:161", with the agent's own port 161, are the
// entries {10.0.0.1 1161} and {::1 161}; what is no address is not listed, and kept. The leaf-list
// is the only copy: every callback reads it afresh.
#pragma once

#include <confd_dp.h>

namespace quillet {

// /agent/extra-ip-port; the token is the position in the order of keys.
int extra_ip_ports_get_next(confd_trans_ctx* tctx, confd_hkeypath_t* kp, long next);
// /agent/extra-ip-port{ip port}/LEAF
int extra_ip_ports_get_elem(confd_trans_ctx* tctx, confd_hkeypath_t* kp);
// /agent/extra-ip-port{ip port}
int extra_ip_ports_create(confd_trans_ctx* tctx, confd_hkeypath_t* kp);
int extra_ip_ports_delete(confd_trans_ctx* tctx, confd_hkeypath_t* kp);

}  // namespace quillet
