// Communities: /snmp:snmp/community{index} <-> snmpCommunityTable (SNMP-COMMUNITY-MIB, RFC 3584).
//
// One entry is one row, keyed by the same index. For example
//
//   community{public}  name ops            snmpCommunityEntry{public}  Name "ops"
//                      sec-name public                                 SecurityName "public"
//                      target-tag (unset)                              TransportTag ""
//                                                                      ContextEngineID, the agent's
//
// The community string defaults to the index, and a name equal to the index reads as unset.
#pragma once

#include <confd_dp.h>

#include "transforms/community-engine-id.h"

namespace quillet {

// Records of the callpoints "community" (transform daemon) and "community-hook" (hook daemon).
confd_data_cbs* community_get_cbs();
confd_data_cbs* community_hook_get_cbs();

int community_get_next(confd_trans_ctx* tctx, confd_hkeypath_t* kp, long next);
int community_get_elem(confd_trans_ctx* tctx, confd_hkeypath_t* kp);
int community_set_elem(confd_trans_ctx* tctx, confd_hkeypath_t* kp, confd_value_t* newval);
int community_create(confd_trans_ctx* tctx, confd_hkeypath_t* kp);
int community_delete(confd_trans_ctx* tctx, confd_hkeypath_t* kp);

// The security name of a new entry that has one becomes its index. Runs on the hook thread, with
// the hook daemon's MAAPI socket.
int community_hook_create(confd_trans_ctx* tctx, confd_hkeypath_t* kp);

// Whether a stored value reads as set, given the entry's index.
bool community_name_shown(const confd_value_t* index, const confd_value_t& v);
bool community_target_tag_shown(const confd_value_t* index, const confd_value_t& v);

}  // namespace quillet
