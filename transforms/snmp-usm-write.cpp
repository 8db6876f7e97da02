// Write callbacks of the USM transform.
#include <confd_maapi.h>

#include <vector>

#include "core/daemon-sockets.h"
#include "transforms/engine-id.h"
#include "transforms/snmp-usm-internal.h"
#include "transforms/usm-key-storage.h"
#include "util/snmp-attribute-store.h"
#include "util/snmp-transform-utils.h"

namespace quillet {
namespace {

constexpr char kNoProtocolValue[] = "Problem retrieving protocol value";
constexpr int kNonVolatile = 3;  // RFC 2579: StorageType

int must_write(confd_trans_ctx* tctx, const UsmUser& user, const confd_value_t& v,
               const char* path) {
  return snmp_write_result(tctx, usm_write(user, v, path), kUsmModule, __LINE__);
}

int must_delete_row(confd_trans_ctx* tctx, const UsmUser& user) {
  const int result = maapi_delete(maapi_sock, user.thandle, USM_ROW, user.engine_id, user.name);
  return snmp_write_result(tctx, result, kUsmModule, __LINE__);
}

int stored_protocol(const UsmUser& user, const UsmSide& side) {
  return usm_get_stored_protocol(user.thandle, side.tag, user.engine_id, user.name);
}

// `before` is what was stored. An authentication protocol that is chosen where there was none does
// not derive the privacy key anew, but somebody must hear that it does not fit.
int write_protocol(confd_trans_ctx* tctx, const confd_hkeypath_t* kp, const UsmUser& user,
                   const UsmSide& side, int protocol, int before) {
  Value oid;
  usm_protocol_oid(side.tag, protocol, oid);
  const int result = must_write(tctx, user, *oid, side.protocol);
  if (result == CONFD_OK && side.tag == tags::snmp::auth && !protocol_is_set(before)) {
    usm_report_stale_priv_key({user, kUsmPriv, kp}, protocol);
  }
  return result;
}

// .../user{name}/SIDE/PROTOCOL/key or password
int set_secret(confd_trans_ctx* tctx, const confd_hkeypath_t* kp, const confd_value_t* engine_id,
               const confd_value_t* newval) {
  const u_int32_t protocol = CONFD_GET_XMLTAG(kp_value(kp, 1));
  const UsmSide* side = find_usm_side(CONFD_GET_XMLTAG(kp_value(kp, 2)));
  const UsmUser user{tctx->thandle, engine_id, kp_value(kp, 3)};
  const int stored = side != nullptr ? stored_protocol(user, *side) : PROTO_UNKNOWN;
  if (stored == PROTO_UNKNOWN) return snmp_refuse(tctx, kNoProtocolValue);
  const int case_tag = static_cast<int>(protocol);
  if (!protocol_is(stored, protocol) &&
      write_protocol(tctx, kp, user, *side, case_tag, stored) != CONFD_OK) {
    return CONFD_ERR;
  }
  if (!_usm_get_crypto_path(kp, 0, 0)) return snmp_refuse(tctx, "Problem retrieving crypto data");
  const UsmKeyOwner owner{user, *side, kp};
  return CONFD_GET_XMLTAG(kp_value(kp, 0)) == tags::snmp::key
             ? usm_set_key(tctx, owner, *newval)
             : usm_set_password(tctx, owner, case_tag, newval);
}

// The row of a new user; a remote one never stands under the engine ID that the agent itself has.
int create_user(confd_trans_ctx* tctx, const confd_hkeypath_t* kp) {
  Value engine_id;
  _usm_get_engine_id(tctx, kp, engine_id);
  Value configured;
  snmp_agent_get_engine_id(tctx->thandle, configured);
  if (CONFD_GET_XMLTAG(kp_value(kp, kp->len - 3)) == tags::snmp::remote &&
      confd_val_eq(engine_id.get(), configured.get()) != 0) {
    return snmp_refuse(tctx, "remote user cannot have the local engine-id assigned");
  }
  if (engine_id->type == C_NOEXISTS) return snmp_refuse(tctx, "no local engine-id");
  const UsmUser user{tctx->thandle, engine_id.get(), kp_value(kp, 0)};
  if (!usm_exists(user, USM_ROW)) {
    const int created = maapi_create(maapi_sock, user.thandle, USM_ROW, user.engine_id, user.name);
    if (snmp_write_result(tctx, created, kUsmModule, __LINE__) != CONFD_OK) return CONFD_ERR;
  }
  usm_remember_row(user.engine_id, user.name);
  if (must_write(tctx, user, *user.name, kUsmSecurityName) != CONFD_OK) return CONFD_ERR;
  return must_write(tctx, user, enum_value(kNonVolatile), kUsmStorageType);
}

int delete_side(confd_trans_ctx* tctx, const confd_hkeypath_t* kp, const UsmUser& user,
                const UsmSide& side) {
  Value oid;
  usm_protocol_oid(side.tag, PROTO_NONE, oid);
  if (must_write(tctx, user, *oid, side.protocol) != CONFD_OK) return CONFD_ERR;
  const auto remove = [&](const char* path) {
    return !usm_exists(user, path) ||
           maapi_delete(maapi_sock, user.thandle, path, user.engine_id, user.name) == CONFD_OK;
  };
  if (!remove(side.key)) return snmp_refuse(tctx, "couln't remove encryption key");
  const auto crypto = _usm_get_crypto_path(kp, 0, 0);
  if (!crypto || !remove(crypto->c_str())) {
    return snmp_refuse(tctx, "couln't remove backup encryption key");
  }
  return CONFD_OK;
}

// A leaf or container of a user.
int delete_node(confd_trans_ctx* tctx, const confd_hkeypath_t* kp) {
  const confd_value_t* group = kp_value(kp, kp->len - 3);
  const bool local = CONFD_GET_XMLTAG(group) == tags::snmp::local;
  if (!local && CONFD_GET_XMLTAG(group) != tags::snmp::remote) {
    return snmp_refuse(tctx, "Invalid local/remote path: %s",
                       confd_xmltag2str(tags::snmp::ns, CONFD_GET_XMLTAG(group)));
  }
  Value engine_id;
  _usm_get_engine_id(tctx, kp, engine_id);
  const UsmUser user{tctx->thandle, engine_id.get(), kp_value(kp, kp->len - (local ? 5 : 6))};
  const confd_value_t* tag = kp_value(kp, 0);
  switch (CONFD_GET_XMLTAG(tag)) {
    case tags::snmp::md5:
    case tags::snmp::sha:
    case tags::snmp::des:
    case tags::snmp::aes:
    case tags::snmp::key:
    case tags::snmp::password:
      return CONFD_OK;
    case tags::snmp::security_name:
      return usm_write(user, *user.name, kUsmSecurityName);
    case tags::snmp::auth:
      return delete_side(tctx, kp, user, kUsmAuth);
    case tags::snmp::priv:
      return delete_side(tctx, kp, user, kUsmPriv);
    default:
      return snmp_refuse_delete(tctx, tag);
  }
}

// All users of an engine. They are collected first: deleting in the middle of the walk would cost
// the cursor what it has read ahead.
int delete_engine(confd_trans_ctx* tctx, const confd_value_t* engine_id) {
  std::vector<Value> names;
  MaapiCursor rows;
  snmp_assert_ok(rows.init(maapi_sock, tctx->thandle, USM_TABLE), kUsmModule, __LINE__);
  for (;;) {
    snmp_assert_ok(rows.next(), kUsmModule, __LINE__);
    if (rows.at_end()) break;
    if (confd_val_eq(rows.key(0), engine_id) != 0) names.push_back(Value::copy_of(*rows.key(1)));
  }
  for (const Value& name : names) {
    if (must_delete_row(tctx, {tctx->thandle, engine_id, name.get()}) != CONFD_OK) {
      return CONFD_ERR;
    }
  }
  return CONFD_OK;
}

int delete_entry(confd_trans_ctx* tctx, const confd_hkeypath_t* kp) {
  Value engine_id;
  _usm_get_engine_id(tctx, kp, engine_id);
  const confd_value_t* list = kp_value(kp, 1);
  switch (CONFD_GET_XMLTAG(list)) {
    case tags::snmp::remote:
      return delete_engine(tctx, engine_id.get());
    case tags::snmp::user:
      return must_delete_row(tctx, {tctx->thandle, engine_id.get(), kp_value(kp, 0)});
    default:
      return snmp_refuse_unknown_tag(tctx, list);
  }
}

// .../user{name}/SIDE
int set_protocol(confd_trans_ctx* tctx, const confd_hkeypath_t* kp, int protocol) {
  Value engine_id;
  _usm_get_engine_id(tctx, kp, engine_id);
  const bool auth = CONFD_GET_XMLTAG(kp_value(kp, 0)) == tags::snmp::auth;
  const UsmSide& side = auth ? kUsmAuth : kUsmPriv;
  const UsmUser user{tctx->thandle, engine_id.get(), kp_value(kp, 1)};
  int stored = PROTO_NONE;
  if (auth) {
    stored = stored_protocol(user, side);
    if (stored == PROTO_UNKNOWN) return snmp_refuse(tctx, kNoProtocolValue);
    if (protocol_is_set(stored) && stored != protocol &&
        usm_rederive_priv_key(tctx, {user, kUsmPriv, kp}, protocol) != CONFD_OK) {
      return CONFD_ERR;
    }
  }
  return write_protocol(tctx, kp, user, side, protocol, stored);
}

}  // namespace

int usm_set_elem(confd_trans_ctx* tctx, confd_hkeypath_t* kp, confd_value_t* newval) {
  const confd_value_t* tag = kp_value(kp, 0);
  Value engine_id;
  _usm_get_engine_id(tctx, kp, engine_id);
  const UsmUser user{tctx->thandle, engine_id.get(), kp_value(kp, 1)};
  switch (CONFD_GET_XMLTAG(tag)) {
    case tags::snmp::engine_id:
      return CONFD_OK;
    case tags::snmp::name:
      return usm_write(user, *newval, kUsmName);
    case tags::snmp::security_name:
      return usm_write(user, *newval, kUsmSecurityName);
    case tags::snmp::key:
    case tags::snmp::password:
      return set_secret(tctx, kp, engine_id.get(), newval);
    default:
      return snmp_refuse_unknown_tag(tctx, tag);
  }
}

int usm_create(confd_trans_ctx* tctx, confd_hkeypath_t* kp) {
  if (kp_is_tag(kp, 0)) {
    // Containers stand for columns that their choices and leaves write.
    switch (CONFD_GET_XMLTAG(kp_value(kp, 0))) {
      case tags::snmp::auth:
      case tags::snmp::priv:
      case tags::snmp::md5:
      case tags::snmp::sha:
      case tags::snmp::des:
      case tags::snmp::aes:
        return CONFD_OK;
      default:
        return snmp_refuse(tctx, "Invalid element creation");
    }
  }
  const confd_value_t* list = kp_value(kp, 1);
  switch (CONFD_GET_XMLTAG(list)) {
    case tags::snmp::remote:
      return CONFD_OK;  // an engine is there with its first user
    case tags::snmp::user:
      return create_user(tctx, kp);
    default:
      return snmp_refuse_unknown_tag(tctx, list);
  }
}

int usm_delete(confd_trans_ctx* tctx, confd_hkeypath_t* kp) {
  const int result = kp_is_tag(kp, 0) ? delete_node(tctx, kp) : delete_entry(tctx, kp);
  return result == CONFD_OK ? snmp_attrs_delete_under(tctx, kp) : result;
}

int usm_set_case(confd_trans_ctx* tctx, confd_hkeypath_t* kp, confd_value_t* choice,
                 confd_value_t* caseval) {
  const u_int32_t which = CONFD_GET_XMLTAG(choice);
  if (which == tags::snmp::key_type) return CONFD_OK;
  // A side is removed as a whole; without a protocol it would keep its key.
  if (which != tags::snmp::protocol || caseval == nullptr) {
    return snmp_refuse(tctx, "Invalid case selection");
  }
  return set_protocol(tctx, kp, static_cast<int>(CONFD_GET_XMLTAG(caseval)));
}

}  // namespace quillet
