// Reading vacmSecurityToGroupTable (RFC 3415 section 4).
#pragma once

#include <confd_maapi.h>

#include <memory>

#include "core/daemon-sockets.h"
#include "util/snmp-transform-utils.h"
#include "util/value-guards.h"

#define VACM_MIB "/SNMP_VIEW_BASED_ACM_MIB:SNMP-VIEW-BASED-ACM-MIB"
#define VACM_GROUP_TABLE VACM_MIB "/vacmSecurityToGroupTable/vacmSecurityToGroupEntry"
#define VACM_GROUP_ROW VACM_GROUP_TABLE "{%x %x}"

namespace quillet {

inline constexpr char kVacmModule[] = "snmp-vacm-transform";

// The group that the row (model, name) names, or C_NOEXISTS. CONFD_ERR with the text set when it
// cannot be read.
int read_row_group(confd_trans_ctx* tctx, const confd_value_t* model, const confd_value_t* name,
                   Value& group);

struct IntQueueDeleter {
  void operator()(queue_int* q) const { queue_int_destroy(q); }
};
using IntQueue = std::unique_ptr<queue_int, IntQueueDeleter>;

// Appends the security models of the rows with this name, and of this group unless it is null, in
// table order: one round trip, where a walk costs one for every batch of rows. The MAAPI result.
int member_sec_models(const confd_trans_ctx* tctx, const confd_value_t* member,
                      const confd_value_t* group, queue_int* models);

enum class Walk { go_on, stop };

// Calls `each(model, name, group)` for the rows from the cursor on; `group` is C_NOEXISTS for a row
// that names none.
template <typename Each>
int walk_group_rows(confd_trans_ctx* tctx, maapi_cursor& rows, const Each& each) {
  for (;;) {
    snmp_assert_ok(maapi_get_next(&rows), kVacmModule, __LINE__);
    if (rows.n == 0) return CONFD_OK;
    Value group;
    if (read_row_group(tctx, &rows.keys[0], &rows.keys[1], group) != CONFD_OK) return CONFD_ERR;
    if (each(rows.keys[0], rows.keys[1], *group) == Walk::stop) return CONFD_OK;
  }
}

template <typename Each>
int walk_group_table(confd_trans_ctx* tctx, const Each& each) {
  MaapiCursor cursor;
  snmp_assert_ok(cursor.init(maapi_sock, tctx->thandle, VACM_GROUP_TABLE), kVacmModule, __LINE__);
  return walk_group_rows(tctx, cursor.raw(), each);
}

}  // namespace quillet
