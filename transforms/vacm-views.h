// Views: /snmp:snmp/vacm/view{name}/subtree{oid} <-> vacmViewTreeFamilyTable (RFC 3415 section 4).
//
// One subtree is one row, its text turned into an OID and a mask (subtree-text.h). For example
//
//   view{all}  subtree{1.3.6.1.*.1}  included    vacmViewTreeFamilyEntry{all 1.3.6.1.0.1}
//                                                  Mask f4, Type included, StorageType nonVolatile
//
// A view is there while one of its subtrees is. The way back ignores the mask: a sub-identifier of
// 0 reads as "*", whatever the mask of a row that somebody else wrote says.
#pragma once

#include <confd_dp.h>

#include "util/value-guards.h"

namespace quillet {

// Record of the callpoint "vacm_view".
confd_data_cbs* vacm_view_get_cbs();

// The MIB's form of a subtree text: 0 with a C_OID and a C_BINARY, or -1 for an unusable text,
// with both C_NOEXISTS.
int get_mib_oids(const confd_value_t& text, Value& oid, Value& mask);
// A C_BUF; C_NOEXISTS for what is not a C_OID, or prints longer than a subtree text may be.
Value oid_to_subtree_text(const confd_value_t& oid);

int vacm_view_get_next(confd_trans_ctx* tctx, confd_hkeypath_t* kp, long next);
int vacm_view_get_elem(confd_trans_ctx* tctx, confd_hkeypath_t* kp);
int vacm_view_set_elem(confd_trans_ctx* tctx, confd_hkeypath_t* kp, confd_value_t* newval);
int vacm_view_create(confd_trans_ctx* tctx, confd_hkeypath_t* kp);
int vacm_view_delete(confd_trans_ctx* tctx, confd_hkeypath_t* kp);
int vacm_view_get_case(confd_trans_ctx* tctx, confd_hkeypath_t* kp, confd_value_t* choice);
int vacm_view_set_case(confd_trans_ctx* tctx, confd_hkeypath_t* kp, confd_value_t* choice,
                       confd_value_t* caseval);
int vacm_view_exists_optional(confd_trans_ctx* tctx, confd_hkeypath_t* kp);

}  // namespace quillet
