// What the engine ID asks of the communities.
#pragma once

#include <confd_lib.h>

namespace quillet {

// Sets the context engine ID of every community row (RFC 3584, snmpCommunityContextEngineID).
// Returns 0, or CONFD_ERR when the MIB side refused a row (the walk goes on, the library's last
// error is that refusal).
int community_set_context_engine_id(int sock, int thandle, confd_value_t* engine_id);

}  // namespace quillet
