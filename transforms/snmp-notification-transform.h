// Notifications: /snmp:snmp/notify{name} <-> snmpNotifyTable (SNMP-NOTIFICATION-MIB, RFC 3413).
//
// One entry is one row, keyed by the same name, with the same values in the same types. For example
//
//   notify{alarms}  tag noc, type inform    snmpNotifyEntry{alarms}  Tag "noc", Type inform (2)
//
// The type of a new entry is trap.
#pragma once

#include <confd_dp.h>

namespace quillet {

// Record of the callpoint "notify".
confd_data_cbs* notify_get_cbs();

int notify_get_next(confd_trans_ctx* tctx, confd_hkeypath_t* kp, long next);
int notify_get_elem(confd_trans_ctx* tctx, confd_hkeypath_t* kp);
int notify_set_elem(confd_trans_ctx* tctx, confd_hkeypath_t* kp, confd_value_t* newval);
int notify_create(confd_trans_ctx* tctx, confd_hkeypath_t* kp);
int notify_delete(confd_trans_ctx* tctx, confd_hkeypath_t* kp);

}  // namespace quillet
