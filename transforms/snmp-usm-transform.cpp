// The callpoint's record and its read callbacks; snmp-usm-write.cpp has the write callbacks.
#include "transforms/snmp-usm-transform.h"

#include <confd_maapi.h>

#include <cstring>

#include "core/daemon-sockets.h"
#include "transforms/engine-id.h"
#include "transforms/snmp-usm-internal.h"
#include "transforms/usm-localization.h"
#include "util/snmp-attribute-store.h"
#include "util/snmp-transform-utils.h"

namespace quillet {
namespace {

int reply(confd_trans_ctx* tctx, const confd_value_t& v) {
  confd_data_reply_value(tctx, &v);
  return CONFD_OK;
}

int reply_not_found(confd_trans_ctx* tctx) {
  confd_data_reply_not_found(tctx);
  return CONFD_OK;
}

int reply_found(confd_trans_ctx* tctx, bool found) {
  if (!found) return reply_not_found(tctx);
  confd_data_reply_found(tctx);
  return CONFD_OK;
}

int reply_read_failure(confd_trans_ctx* tctx, UsmRead read, const char* text) {
  return read == UsmRead::absent ? reply_not_found(tctx) : snmp_refuse(tctx, "%s", text);
}

// ------------------------------------------------------------------------------ walks

// The rows of one list, in the table's order: by engine ID, then name.
struct Walk {
  snmp_cursor* record;
  bool engines;              // remote, else the users of one engine
  const confd_value_t* own;  // the agent's engine ID
  const confd_value_t* listed_engine;

  const confd_value_t* last() const { return record->has_saved != 0 ? &record->saved[0] : nullptr; }
  enum class Row { listed, passed_over, past_the_end };
  Row judge(const confd_value_t* engine_id, const confd_value_t* name) const {
    if (engines) {
      const bool again = last() != nullptr && confd_val_eq(engine_id, last()) != 0;
      return again || confd_val_eq(engine_id, own) != 0 ? Row::passed_over : Row::listed;
    }
    if (confd_val_eq(engine_id, listed_engine) == 0) {
      return last() != nullptr ? Row::past_the_end : Row::passed_over;
    }
    return last() != nullptr && confd_val_eq(name, last()) != 0 ? Row::passed_over : Row::listed;
  }
};

// The key of the next entry; null at the end.
const confd_value_t* next_key(const Walk& walk) {
  maapi_cursor& rows = walk.record->cursor;
  for (;;) {
    snmp_assert_ok(maapi_get_next(&rows), kUsmModule, __LINE__);
    if (rows.n == 0) return nullptr;
    switch (walk.judge(&rows.keys[0], &rows.keys[1])) {
      case Walk::Row::listed:
        if (walk.engines) usm_remember_row(&rows.keys[0], &rows.keys[1]);
        return &rows.keys[walk.engines ? 0 : 1];
      case Walk::Row::past_the_end:
        return nullptr;
      case Walk::Row::passed_over:
        break;
    }
  }
}

int usm_get_next(confd_trans_ctx* tctx, confd_hkeypath_t* kp, long next) {
  Value own;
  get_local_engine_id(tctx->thandle, own);
  const u_int32_t group = CONFD_GET_XMLTAG(kp_value(kp, kp->len - 3));
  const u_int32_t list = CONFD_GET_XMLTAG(kp_value(kp, 0));
  if ((group != tags::snmp::local && group != tags::snmp::remote) ||
      (list != tags::snmp::remote && list != tags::snmp::user)) {
    return snmp_reply_list_end(tctx);
  }
  snmp_cursor* record = next == -1 ? snmp_cursor_open(maapi_sock, tctx, USM_TABLE)
                                   : reinterpret_cast<snmp_cursor*>(next);
  const confd_value_t* listed = group == tags::snmp::local ? own.get() : kp_value(kp, kp->len - 4);
  const confd_value_t* key = next_key({record, list == tags::snmp::remote, own.get(), listed});
  if (key == nullptr) {
    snmp_cursor_close(tctx, record);
    return snmp_reply_list_end(tctx);
  }
  confd_free_value(&record->saved[0]);
  confd_value_dup_to(key, &record->saved[0]);
  record->has_saved = 1;
  confd_data_reply_next_key(tctx, &record->saved[0], 1, reinterpret_cast<long>(record));
  return CONFD_OK;
}

// ----------------------------------------------------------------------------- leaves

int get_security_name(confd_trans_ctx* tctx, const UsmUser& user) {
  Value stored;
  const UsmRead read = usm_read(user, stored, kUsmSecurityName);
  if (read != UsmRead::value) {
    return reply_read_failure(tctx, read, "Problem retrieving security name");
  }
  return confd_val_eq(stored.get(), user.name) != 0 ? reply_not_found(tctx) : reply(tctx, *stored);
}

// .../user{name}/SIDE/PROTOCOL/key or password
int get_secret(confd_trans_ctx* tctx, const confd_hkeypath_t* kp, const confd_value_t* engine_id) {
  const u_int32_t protocol = CONFD_GET_XMLTAG(kp_value(kp, 1));
  const u_int32_t side = CONFD_GET_XMLTAG(kp_value(kp, 2));
  const UsmUser user{tctx->thandle, engine_id, kp_value(kp, 3)};
  const int stored = usm_get_stored_protocol(user.thandle, side, engine_id, user.name);
  if (stored == PROTO_UNKNOWN) {
    return snmp_refuse(tctx, "Problem retrieving stored protocol value");
  }
  const auto path = _usm_get_crypto_path(kp, 0, 0);
  if (!protocol_is(stored, protocol) || !path) return reply_not_found(tctx);
  SecretValue secret;
  const UsmRead read = usm_read(user, secret, path->c_str());
  if (read != UsmRead::value) {
    return reply_read_failure(tctx, read, "Problem retrieving key/password");
  }
  return reply(tctx, *secret);
}

int usm_get_elem(confd_trans_ctx* tctx, confd_hkeypath_t* kp) {
  Value engine_id;
  _usm_get_engine_id(tctx, kp, engine_id);
  const confd_value_t* key = kp_value(kp, 1);
  switch (CONFD_GET_XMLTAG(kp_value(kp, 0))) {
    case tags::snmp::security_name:
      return get_security_name(tctx, {tctx->thandle, engine_id.get(), key});
    case tags::snmp::engine_id:
      return usm_user_exists(tctx, engine_id.get(), nullptr) != 0 ? reply(tctx, *engine_id)
                                                                  : reply_not_found(tctx);
    case tags::snmp::name:
      return usm_user_exists(tctx, engine_id.get(), key) != 0 ? reply(tctx, *key)
                                                              : reply_not_found(tctx);
    case tags::snmp::key:
    case tags::snmp::password:
      return get_secret(tctx, kp, engine_id.get());
    default:
      return reply_not_found(tctx);
  }
}

// ------------------------------------------------------------------- cases, containers

// A container's tag, which may also come as the beginning or the end of the container.
u_int32_t container_tag(const confd_value_t* element) {
  confd_value_t tag = *element;
  if (tag.type == C_XMLBEGIN || tag.type == C_XMLBEGINDEL || tag.type == C_XMLEND) {
    tag.type = C_XMLTAG;
  }
  return CONFD_GET_XMLTAG(&tag);
}

// .../user{name}/SIDE
int get_protocol_case(confd_trans_ctx* tctx, const confd_hkeypath_t* kp,
                      const confd_value_t* engine_id) {
  const UsmSide* side = find_usm_side(container_tag(kp_value(kp, 0)));
  if (side == nullptr) return reply_not_found(tctx);
  Value oid;
  const UsmRead read = usm_read({tctx->thandle, engine_id, kp_value(kp, 1)}, oid, side->protocol);
  if (read != UsmRead::value) {
    return reply_read_failure(tctx, read, "Problem retrieving protocol value");
  }
  const int stored = _get_protocol_tag_from_oid(oid.get());
  if (stored == PROTO_UNKNOWN) return snmp_refuse(tctx, "Unsupported protocol stored in MIB");
  if (!protocol_is_set(stored)) return reply_not_found(tctx);
  return reply(tctx, xmltag_value(static_cast<u_int32_t>(stored), tags::snmp::ns));
}

int usm_get_case(confd_trans_ctx* tctx, confd_hkeypath_t* kp, confd_value_t* choice) {
  const u_int32_t which = CONFD_GET_XMLTAG(choice);
  Value engine_id;
  _usm_get_engine_id(tctx, kp, engine_id);
  if (which == tags::snmp::protocol) return get_protocol_case(tctx, kp, engine_id.get());
  if (which != tags::snmp::key_type) return reply_not_found(tctx);
  Value selected;
  const int result = usm_get_key_type(tctx->thandle, tctx, kp, CONFD_GET_XMLTAG(kp_value(kp, 1)),
                                      engine_id.get(), kp_value(kp, 2), selected);
  if (result != CONFD_OK) return result;
  return selected->type == C_NOEXISTS ? reply_not_found(tctx) : reply(tctx, *selected);
}

int side_exists(confd_trans_ctx* tctx, u_int32_t side, const UsmUser& user,
                const u_int32_t* protocol) {
  const int stored = usm_get_stored_protocol(user.thandle, side, user.engine_id, user.name);
  if (stored == PROTO_UNKNOWN) return snmp_refuse(tctx, "Problem retrieving protocol value");
  return reply_found(
      tctx, protocol != nullptr ? protocol_is(stored, *protocol) : protocol_is_set(stored));
}

int crypto_exists(confd_trans_ctx* tctx, const confd_hkeypath_t* kp,
                  const confd_value_t* engine_id) {
  const auto path = _usm_get_crypto_path(kp, 0, 0);
  if (!path) {
    confd_error_seterr(tctx->uinfo, "Invalid path");
    return CONFD_ERR;
  }
  return reply_found(tctx, usm_exists({tctx->thandle, engine_id, kp_value(kp, 2)}, path->c_str()));
}

int usm_exists_optional(confd_trans_ctx* tctx, confd_hkeypath_t* kp) {
  const u_int32_t tag = CONFD_GET_XMLTAG(kp_value(kp, 0));
  Value engine_id;
  _usm_get_engine_id(tctx, kp, engine_id);
  switch (tag) {
    case tags::snmp::auth:
    case tags::snmp::priv:
      return side_exists(tctx, tag, {tctx->thandle, engine_id.get(), kp_value(kp, 1)}, nullptr);
    case tags::snmp::md5:
    case tags::snmp::sha:
    case tags::snmp::des:
    case tags::snmp::aes:
      return side_exists(tctx, CONFD_GET_XMLTAG(kp_value(kp, 1)),
                         {tctx->thandle, engine_id.get(), kp_value(kp, 2)}, &tag);
    case tags::snmp::password:
    case tags::snmp::key_type:
      return crypto_exists(tctx, kp, engine_id.get());
    default:
      return reply_not_found(tctx);
  }
}

}  // namespace

confd_data_cbs* usm_get_cbs() {
  static confd_data_cbs cbs;
  cbs = {};
  std::strcpy(cbs.callpoint, "usm");
  cbs.exists_optional = usm_exists_optional;
  cbs.get_elem = usm_get_elem;
  cbs.get_next = usm_get_next;
  cbs.set_elem = usm_set_elem;
  cbs.create = usm_create;
  cbs.remove = usm_delete;
  cbs.get_case = usm_get_case;
  cbs.set_case = usm_set_case;
  cbs.get_attrs = snmp_get_attrs;
  cbs.set_attr = snmp_set_attr;
  return &cbs;
}

}  // namespace quillet
