// Protocols, rows and keypaths of the USM transform.
#include <confd_maapi.h>

#include "core/daemon-sockets.h"
#include "transforms/engine-id.h"
#include "transforms/snmp-usm-internal.h"
#include "util/snmp-transform-utils.h"
#include "util/tag-table.h"

namespace quillet {
namespace {

#define USM_CRYPTO USM_ROW "/usm-crypto"

struct Protocol {
  u_int32_t tag;
  unsigned oid_family;
  unsigned last_component;
};
constexpr Protocol kProtocols[] = {
    {tags::snmp::md5, 1, 2},  // RFC 3414: usmHMACMD5AuthProtocol
    {tags::snmp::sha, 1, 3},  // RFC 3414: usmHMACSHAAuthProtocol
    {tags::snmp::des, 2, 2},  // RFC 3414: usmDESPrivProtocol
    {tags::snmp::aes, 2, 4},  // RFC 3826: usmAesCfb128Protocol
};
constexpr unsigned kNoProtocol = 1;

int protocol_tag(unsigned oid_family, unsigned last_component) {
  if (last_component == kNoProtocol) return PROTO_NONE;
  for (const Protocol& p : kProtocols) {
    if (p.oid_family == oid_family && p.last_component == last_component) {
      return static_cast<int>(p.tag);
    }
  }
  return PROTO_UNKNOWN;
}

struct RememberedRow {
  Value engine_id, name;
};
RememberedRow& remembered_row() {
  static RememberedRow row;
  return row;
}

// The level of auth or priv in a keypath; nothing when that is not below a user list.
std::optional<int> side_level(const confd_hkeypath_t* kp) {
  switch (CONFD_GET_XMLTAG(kp_value(kp, kp->len - 3))) {
    case tags::snmp::local:
      return kp->len - 6;
    case tags::snmp::remote:
      return kp->len - 7;
    default:
      return std::nullopt;
  }
}

const char* kind_part(u_int32_t tag) {
  if (tag == tags::snmp::password) return "/password";
  return tag == tags::snmp::key ? "/key" : "";
}

}  // namespace

const UsmSide* find_usm_side(u_int32_t tag) { return find_by_tag(kUsmSides, tag); }

int auth_protocol_tag(unsigned last_component) {
  return protocol_tag(kUsmAuth.oid_family, last_component);
}

int priv_protocol_tag(unsigned last_component) {
  return protocol_tag(kUsmPriv.oid_family, last_component);
}

int _get_protocol_tag_from_oid(const confd_value_t* oid) {
  const confd_snmp_oid* components = CONFD_GET_OID(oid);
  if (components->len < 10) return PROTO_UNKNOWN;
  switch (components->oid[8]) {
    case 1:
      return auth_protocol_tag(components->oid[9]);
    case 2:
      return priv_protocol_tag(components->oid[9]);
    default:
      return PROTO_UNKNOWN;
  }
}

void usm_protocol_oid(u_int32_t side_tag, int case_tag, Value& out) {
  const UsmSide* side = find_usm_side(side_tag);
  const Protocol* protocol = protocol_is_set(case_tag)
                                 ? find_by_tag(kProtocols, static_cast<u_int32_t>(case_tag))
                                 : nullptr;
  confd_snmp_oid oid{};
  for (const u_int32_t component : {1, 3, 6, 1, 6, 3, 10, 1}) oid.oid[oid.len++] = component;
  oid.oid[oid.len++] = side != nullptr ? side->oid_family : 0;
  oid.oid[oid.len++] = protocol != nullptr ? protocol->last_component : kNoProtocol;
  confd_value_t v;
  CONFD_SET_OID(&v, &oid);
  out = Value::copy_of(v);
}

std::string usm_name_text(const confd_value_t* name) {
  return {reinterpret_cast<const char*>(CONFD_GET_BUFPTR(name)), CONFD_GET_BUFSIZE(name)};
}

UsmRead usm_read(const UsmUser& user, Value& out, const char* path) {
  if (user.engine_id->type == C_NOEXISTS) return UsmRead::absent;
  if (maapi_get_elem(maapi_sock, user.thandle, out.out(), path, user.engine_id, user.name) ==
      CONFD_OK) {
    return UsmRead::value;
  }
  return confd_errno == CONFD_ERR_NOEXISTS ? UsmRead::absent : UsmRead::failed;
}

bool usm_exists(const UsmUser& user, const char* path) {
  return user.engine_id->type != C_NOEXISTS &&
         maapi_exists(maapi_sock, user.thandle, path, user.engine_id, user.name) > 0;
}

int usm_write(const UsmUser& user, const confd_value_t& v, const char* path) {
  return maapi_set_elem(maapi_sock, user.thandle, const_cast<confd_value_t*>(&v), path,
                        user.engine_id, user.name);
}

int usm_get_stored_protocol(int thandle, u_int32_t side_tag, const confd_value_t* engine_id,
                            const confd_value_t* name) {
  const UsmSide* side = find_usm_side(side_tag);
  if (side == nullptr) return PROTO_UNKNOWN;
  Value oid;
  switch (usm_read({thandle, engine_id, name}, oid, side->protocol)) {
    case UsmRead::value:
      return _get_protocol_tag_from_oid(oid.get());
    case UsmRead::absent:
      return PROTO_ABSENT;
    default:
      return PROTO_UNKNOWN;
  }
}

int _usm_get_engine_id(confd_trans_ctx* tctx, const confd_hkeypath_t* kp, Value& out) {
  if (CONFD_GET_XMLTAG(kp_value(kp, kp->len - 3)) == tags::snmp::local) {
    return get_local_engine_id(tctx->thandle, out);
  }
  out = Value::copy_of(*kp_value(kp, kp->len - 4));
  return CONFD_OK;
}

void usm_remember_row(const confd_value_t* engine_id, const confd_value_t* name) {
  remembered_row() = {Value::copy_of(*engine_id), Value::copy_of(*name)};
}

int usm_user_exists(confd_trans_ctx* tctx, const confd_value_t* engine_id,
                    const confd_value_t* name) {
  if (engine_id != nullptr && name != nullptr) {
    return usm_exists({tctx->thandle, engine_id, name}, USM_ROW) ? 1 : 0;
  }
  const RememberedRow& hint = remembered_row();
  if (engine_id != nullptr && confd_val_eq(hint.engine_id.get(), engine_id) != 0 &&
      usm_exists({tctx->thandle, engine_id, hint.name.get()}, USM_ROW)) {
    return 1;
  }
  MaapiCursor rows;
  snmp_assert_ok(rows.init(maapi_sock, tctx->thandle, USM_TABLE), kUsmModule, __LINE__);
  for (;;) {
    snmp_assert_ok(rows.next(), kUsmModule, __LINE__);
    if (rows.at_end()) return 0;
    if ((engine_id == nullptr || confd_val_eq(rows.key(0), engine_id) != 0) &&
        (name == nullptr || confd_val_eq(rows.key(1), name) != 0)) {
      usm_remember_row(rows.key(0), rows.key(1));
      return 1;
    }
  }
}

std::optional<std::string> _usm_get_crypto_path(const confd_hkeypath_t* kp, u_int32_t side_tag,
                                                u_int32_t kind_tag) {
  const std::optional<int> level = side_level(kp);
  if (!level) return std::nullopt;
  if (side_tag == 0 && kp->len >= 6) side_tag = CONFD_GET_XMLTAG(kp_value(kp, *level));
  const UsmSide* side = find_usm_side(side_tag);
  if (side == nullptr) return std::nullopt;
  // The protocol container of a remote user has eight elements, too, but no leaf.
  const int kind_level = *level - 2;
  if (kind_tag == 0 && kp->len >= 8 && kind_level >= 0) {
    kind_tag = CONFD_GET_XMLTAG(kp_value(kp, kind_level));
  }
  return std::string(USM_CRYPTO) + side->crypto + kind_part(kind_tag);
}

}  // namespace quillet
