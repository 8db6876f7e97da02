// Access control: /snmp:snmp/vacm <-> SNMP-VIEW-BASED-ACM-MIB (RFC 3415).
//
//   vacm/group{name}/member   vacmSecurityToGroupTable   vacm-groups.h, vacm-conflicts.h
//   vacm/group{name}/access   vacmAccessTable            vacm-access.h
//   vacm/view                 vacmViewTreeFamilyTable    vacm-views.h
//   commit                    no pair in two groups      vacm-validation.h
//
// This is the callpoint of groups: its callbacks dispatch on a tag of the keypath, the leaf's for
// operations on leaves, the list's for those on entries.
#pragma once

#include <confd_dp.h>

#include "transforms/vacm-validation.h"
#include "transforms/vacm-views.h"

namespace quillet {

// Record of the callpoint "vacm_group".
confd_data_cbs* vacm_group_get_cbs();

int vacm_group_get_next(confd_trans_ctx* tctx, confd_hkeypath_t* kp, long next);
int vacm_group_get_elem(confd_trans_ctx* tctx, confd_hkeypath_t* kp);
int vacm_group_set_elem(confd_trans_ctx* tctx, confd_hkeypath_t* kp, confd_value_t* newval);
int vacm_group_create(confd_trans_ctx* tctx, confd_hkeypath_t* kp);
int vacm_group_delete(confd_trans_ctx* tctx, confd_hkeypath_t* kp);
int vacm_group_exists(confd_trans_ctx* tctx, confd_hkeypath_t* kp);

}  // namespace quillet
