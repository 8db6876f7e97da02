// Groups and their members, which are derived from the rows of vacmSecurityToGroupTable:
//
//   vacmSecurityToGroupEntry{1 alice}  vacmGroupName ops       group{ops}  member{alice}
//   vacmSecurityToGroupEntry{3 alice}  vacmGroupName ops                     sec-model [v1 usm]
//
// A group is there while a row names it, a member while a row with its name names its group. A row
// that names no group belongs to none.
#pragma once

#include <confd_dp.h>

#include "transforms/vacm-conflicts.h"
#include "util/keypath.h"

namespace quillet {

// The key of the group that a keypath leads to, wherever it ends: /snmp/vacm/group{NAME}...
inline const confd_value_t* vacm_group_key(const confd_hkeypath_t* kp) {
  return kp_value(kp, kp->len - 4);
}

// get_next of the lists `group` and `member`, in the order of their octets, fixed at the first
// call; and of the leaf-list `sec-model`, whose token is the entry's index.
int group_next_group(confd_trans_ctx* tctx, confd_hkeypath_t* kp, long next);
int group_next_member(confd_trans_ctx* tctx, confd_hkeypath_t* kp, long next);
int group_next_sec_model(confd_trans_ctx* tctx, confd_hkeypath_t* kp, long next);

// get_elem of `group/name` and `member/sec-name`, which read back while the entry is there, and of
// a member's models, which read as an empty list when there is none.
int group_get_name(confd_trans_ctx* tctx, confd_hkeypath_t* kp);
int member_get_sec_name(confd_trans_ctx* tctx, confd_hkeypath_t* kp);
int member_get_sec_models(confd_trans_ctx* tctx, confd_hkeypath_t* kp);

// exists_optional of one security model: whichever group the row is in.
int member_sec_model_exists(confd_trans_ctx* tctx, confd_hkeypath_t* kp);

// Writes of a member's models, whole and singly. A row of another group moves to this one, and a
// conflict says so.
int member_set_sec_models(confd_trans_ctx* tctx, confd_hkeypath_t* kp, const confd_value_t* models);
int member_create_sec_model(confd_trans_ctx* tctx, confd_hkeypath_t* kp);
// Whichever group the row is in.
int member_delete_sec_model(confd_trans_ctx* tctx, confd_hkeypath_t* kp);
// Deletes the rows of a group, or of one member in it. A row for which the group had lost and won
// back its claim stays, and the conflict is withdrawn instead.
int delete_member_rows(confd_trans_ctx* tctx, const confd_value_t* group,
                       const confd_value_t* member, ConflictChanges& conflicts);

}  // namespace quillet
