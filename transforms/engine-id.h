// The agent's engine ID: /snmp:snmp/agent/engine-id (an enterprise number and one of the methods
// from-ip, from-mac-address, from-text, other) -> the octets of
// /confd_dyncfg:confdConfig/snmpAgent/snmpEngine/snmpEngineID (RFC 3411, SnmpEngineID).
//
// The settings are stored configuration; the ID is derived anew by each write of one of them, and
// from the initial configuration at start-up. It is never cached.
#pragma once

#include <confd_dp.h>

#include "util/value-guards.h"

namespace quillet {

// The engine ID of a method, by its case's tag. Returns 0 with `out` set, or -1: no enterprise
// number, a method value that cannot be read, or a result outside the 5 to 32 octets of an
// SnmpEngineID; `tctx`, when not null, gets "Invalid engine-id: REASON".
int get_engine_id_by_method(int thandle, u_int32_t method_tag, Value& out,
                            confd_trans_ctx* tctx = nullptr);

// The engine ID as configured now; not 0, with C_NOEXISTS, while no method is selected.
int snmp_agent_get_engine_id(int thandle, Value& out);

// The stored engine ID, under which the local users stand; C_NOEXISTS while there is no engine.
int get_local_engine_id(int thandle, Value& out);

// Derives the engine ID, refuses it when users stand under it already, stores it, points the
// communities at it, and moves the local users to it. `tctx` is null at start-up, where a refusal
// has nobody to tell. Returns 0, or the result of the step that failed.
int engine_id_setup(int sock, int thandle, confd_trans_ctx* tctx);

// engine_id_setup() without a context, when the initial configuration has engine-ID settings.
int engine_id_setup_if_configured(int sock, int thandle);

}  // namespace quillet
