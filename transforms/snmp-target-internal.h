// What the read and the write side of the target transform share.
#pragma once

#include <confd_dp.h>

#include "model/snmp-tags.h"
#include "transforms/target-params.h"
#include "util/keypath.h"

namespace quillet {

// How a column's value differs from the leaf's.
enum class TargetConversion {
  unchanged,
  uint32,  // C_UINT32 northbound, C_INT32 in the MIB, same number
  uint8,   // C_UINT8 northbound, C_INT32 in the MIB, low eight bits
  octets,  // unchanged, but no octets read as unset
};

// A leaf of the entry that is one column; get, set and delete all use this table.
struct TargetColumn {
  u_int32_t tag;
  const char* path;
  TargetConversion conversion;
  const char* name;  // in refusals
};
const TargetColumn* find_target_column(u_int32_t tag);

// The cases of `params` (RFC 3411 section 5: SnmpMessageProcessingModel, SnmpSecurityModel).
struct TargetCase {
  u_int32_t tag;
  int mp_model;
  int security_model;
  bool clears_level;  // selecting the case sets noAuthNoPriv
};
inline constexpr TargetCase kTargetCases[] = {
    {tags::snmp::v1, 0, 1, true},
    {tags::snmp::v2c, 1, 2, true},
    {tags::snmp::usm, 3, 3, false},
};

inline constexpr char kTagListPath[] = TARGET_ADDR_ROW "/snmpTargetAddrTagList";
inline constexpr char kTDomainPath[] = TARGET_ADDR_ROW "/snmpTargetAddrTDomain";
inline constexpr char kTAddressPath[] = TARGET_ADDR_ROW "/snmpTargetAddrTAddress";
inline constexpr char kMpModelPath[] = TARGET_PARAMS_ROW "/snmpTargetParamsMPModel";
inline constexpr char kSecurityModelPath[] = TARGET_PARAMS_ROW "/snmpTargetParamsSecurityModel";
inline constexpr char kSecurityNamePath[] = TARGET_PARAMS_ROW "/snmpTargetParamsSecurityName";
inline constexpr char kSecurityLevelPath[] = TARGET_PARAMS_ROW "/snmpTargetParamsSecurityLevel";

// The key of the target that a keypath leads to, wherever it ends.
inline const confd_value_t* target_key(const confd_hkeypath_t* kp) {
  return kp_value(kp, kp->len - 3);
}

inline bool in_ignored_container(const confd_hkeypath_t* kp) {
  if (!kp_is_tag(kp, 1)) return false;
  const u_int32_t container = CONFD_GET_XMLTAG(kp_value(kp, 1));
  return container == tags::snmp::tls || container == tags::snmp::dtls;
}
// Nodes without a MIB counterpart: of them nothing is kept.
inline bool is_ignored(const confd_hkeypath_t* kp, u_int32_t tag) {
  return in_ignored_container(kp) || tag == tags::snmp::prefix_length || tag == tags::snmp::tls ||
         tag == tags::snmp::dtls;
}

MibRead read_taddress(const confd_trans_ctx* tctx, const confd_value_t* target, Value& out);
// 0 with the tag list as a C_BUF, -1 when it cannot be read or has another type.
int target_get_taglist(const confd_trans_ctx* tctx, const confd_value_t* target, Value& out);

int target_set_elem(confd_trans_ctx* tctx, confd_hkeypath_t* kp, confd_value_t* newval);
int target_create(confd_trans_ctx* tctx, confd_hkeypath_t* kp);
int target_delete(confd_trans_ctx* tctx, confd_hkeypath_t* kp);
int target_set_case(confd_trans_ctx* tctx, confd_hkeypath_t* kp, confd_value_t* choice,
                    confd_value_t* caseval);

}  // namespace quillet
