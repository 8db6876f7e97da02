#include "transforms/vacm-validation.h"

#include <cstring>

#include "util/snmp-transform-utils.h"

namespace quillet {

int vacm_group_validate(confd_trans_ctx* tctx, confd_hkeypath_t* /*kp*/,
                        confd_value_t* /*newval*/) {
  qmap_str_str* conflicts = snmp_validation_map(tctx);
  if (conflicts == nullptr || conflicts->count == 0) return CONFD_OK;
  const int count = conflicts->count;
  qmap_str_str_destroy(conflicts);
  snmp_set_validation_map(tctx, qmap_str_str_new());
  return snmp_refuse(tctx,
                     "Specific sec. model and member's sec. name combination must be unique for "
                     "one group! (found %d conflict(s))",
                     count);
}

confd_valpoint_cb* vacm_group_get_valpoint() {
  static confd_valpoint_cb cb;
  cb = {};
  std::strcpy(cb.valpoint, "vacm-group");
  cb.validate = vacm_group_validate;
  return &cb;
}

}  // namespace quillet
