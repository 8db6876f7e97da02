// Access entries of a group: /group{name}/access{context sec-model sec-level} <-> vacmAccessTable
// (RFC 3415 section 4), one to one. For example
//
//   group{ops}  access{"" usm auth-priv}       vacmAccessEntry{ops "" 3 authPriv}
//                 read-view all                  vacmAccessReadViewName "all"
//                                                vacmAccessStorageType nonVolatile
#pragma once

#include <confd_dp.h>

namespace quillet {

int group_next_access(confd_trans_ctx* tctx, confd_hkeypath_t* kp, long next);
int access_create(confd_trans_ctx* tctx, confd_hkeypath_t* kp);
int access_delete(confd_trans_ctx* tctx, confd_hkeypath_t* kp);
// Every access row of the group.
int delete_access_rows(confd_trans_ctx* tctx, const confd_value_t* group);

// Leaves of an entry. A tag that is none of them reads as not found, and is ignored in a write.
int access_get_elem(confd_trans_ctx* tctx, confd_hkeypath_t* kp);
int access_set_elem(confd_trans_ctx* tctx, confd_hkeypath_t* kp, confd_value_t* newval);
int access_delete_elem(confd_trans_ctx* tctx, confd_hkeypath_t* kp);

}  // namespace quillet
