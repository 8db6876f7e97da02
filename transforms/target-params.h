// Rows of snmpTargetParamsTable behind the targets (RFC 3413 section 4.1): how a new one is named,
// which targets share one, and how a shared one is split before one of them changes it.
#pragma once

#include <confd_dp.h>

#include "util/value-guards.h"

#define TARGET_MIB "/SNMP_TARGET_MIB:SNMP-TARGET-MIB"
#define TARGET_ADDR_TABLE TARGET_MIB "/snmpTargetAddrTable/snmpTargetAddrEntry"
#define TARGET_ADDR_ROW TARGET_ADDR_TABLE "{%x}"
#define TARGET_PARAMS_TABLE TARGET_MIB "/snmpTargetParamsTable/snmpTargetParamsEntry"
#define TARGET_PARAMS_ROW TARGET_PARAMS_TABLE "{%x}"

namespace quillet {

// A read of one MIB leaf: there, absent (CONFD_ERR_NOEXISTS), or refused for another reason.
enum class MibRead { value, absent, failed };
MibRead target_read(const confd_trans_ctx* tctx, Value& out, const char* path,
                    const confd_value_t* key);

// snmpTargetAddrParams of the target.
MibRead target_params_name(const confd_trans_ctx* tctx, const confd_value_t* target, Value& out);

// Rows of the address table that name this params row; rows that name none are passed over. One
// pass over the table.
int count_targets_using_params(const confd_trans_ctx* tctx, const confd_value_t* params_name);

// The first free name of "ConfD1", "ConfD2", ... in one pass over the params table. -1 when all up
// to ConfD9999999 are taken.
int alloc_params_name(const confd_trans_ctx* tctx, Value& out);

// Creates the params row unless it is there.
int create_params_row(confd_trans_ctx* tctx, const confd_value_t* params_name);

// Makes the params row of a target its own: when others name it too, a copy under a new name takes
// its place. `params_name` names the row to write afterwards. CONFD_ERR with the text set when the
// target names no row, or the MIB side refuses.
int ensure_private_params_row(confd_trans_ctx* tctx, const confd_value_t* target,
                              Value& params_name);

}  // namespace quillet
