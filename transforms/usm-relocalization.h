// What a change of the agent's engine ID asks of the users. Keys are localized with an engine ID
// (RFC 3414, 2.6), and local users are stored under the agent's own.
#pragma once

#include <confd_dp.h>

namespace quillet {

// 0 when the agent's engine ID may change from old to new; CONFD_ERR when a user, local or remote,
// is already stored under the new one, so that a move of the local users could collide with it.
int usm_engine_id_conflict(int thandle, const confd_value_t* old_id, const confd_value_t* new_id);

// After the agent's engine ID has become `new_id`, another than `old_id`: derives the keys of every
// local user that has passwords anew and moves the rows to the new ID; rows under other IDs stay.
// `sock` walks and moves, `maapi_sock` reads and writes, so `thandle` must be attached on both.
// `tctx` may be null (start-up): then no error text is set. CONFD_OK, or the result of the first
// move that failed. A side whose key cannot be derived is logged and does not stop the rest.
int usm_relocalize_users(int sock, int thandle, confd_trans_ctx* tctx, const confd_value_t* new_id,
                         const confd_value_t* old_id);

}  // namespace quillet
