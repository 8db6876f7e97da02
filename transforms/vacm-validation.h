// The validation point of groups: a pair of security model and security name belongs to one group.
#pragma once

#include <confd_dp.h>

namespace quillet {

// Record of the validation point "vacm-group".
confd_valpoint_cb* vacm_group_get_valpoint();

// Judges the whole transaction, whatever the node. A refusal uses up the conflicts that it
// reports: the rows were moved when they were recorded, so a repeated commit passes with each row
// in the group written last.
int vacm_group_validate(confd_trans_ctx* tctx, confd_hkeypath_t* kp, confd_value_t* newval);

}  // namespace quillet
