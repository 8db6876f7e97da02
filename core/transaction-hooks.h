// Transaction and validation callbacks of both daemons.
//
// A transaction of the transform daemon is attached to the process-wide MAAPI socket and carries
// its open cursors and its validation map from init to finish; one of the hook daemon is attached
// to that daemon's own socket and carries nothing. All answer CONFD_OK; an attach that fails ends
// the process.
#pragma once

#include <confd_dp.h>

namespace quillet {

int transform_trans_init(confd_trans_ctx* tctx);
int transform_trans_finish(confd_trans_ctx* tctx);
int validate_init(confd_trans_ctx* tctx);
int validate_stop(confd_trans_ctx* tctx);
int hook_trans_init(confd_trans_ctx* tctx);
int hook_trans_finish(confd_trans_ctx* tctx);

}  // namespace quillet
