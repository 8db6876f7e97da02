#include "transforms/usm-relocalization.h"

#include <confd_maapi.h>

#include <cstdlib>
#include <vector>

#include "core/daemon-sockets.h"
#include "core/log.h"
#include "transforms/usm-key-storage.h"
#include "util/snmp-transform-utils.h"

namespace quillet {
namespace {

constexpr char kNoPassword[] = "Problem retrieving encrypted password";

void set_text(confd_trans_ctx* tctx, const char* text) {
  if (tctx != nullptr) confd_trans_seterr(tctx, "%s", text);
}

void log_side(const UsmKeyOwner& owner, const char* what) {
  log_error(LOG_LEVEL_ERR, kUsmModule, __LINE__, "user %s, %s: %s",
            usm_name_text(owner.user.name).c_str(), owner.side.name, what);
}

void set_level(confd_hkeypath_t& kp, const confd_value_t& v) {
  confd_value_t* level = kp.v[kp.len++];
  confd_value_dup_to(&v, &level[0]);
  CONFD_SET_NOEXISTS(&level[1]);
}

// The northbound path of a row's side, as if its engine were a remote one: the helpers of the
// callbacks then serve a row that no request has named.
HkeypathPtr usm_build_user_keypath(int protocol, const UsmSide& side,
                                   const confd_value_t* engine_id, const confd_value_t* name) {
  const auto tag = [](u_int32_t t) { return xmltag_value(t, tags::snmp::ns); };
  HkeypathPtr kp(static_cast<confd_hkeypath_t*>(std::calloc(1, sizeof(confd_hkeypath_t))));
  if (kp == nullptr) return kp;
  for (const confd_value_t& v :
       {tag(static_cast<u_int32_t>(protocol)), tag(side.tag), *name, tag(tags::snmp::user),
        *engine_id, tag(tags::snmp::remote), tag(tags::snmp::usm), tag(tags::snmp::snmp)}) {
    set_level(*kp, v);
  }
  CONFD_SET_NOEXISTS(&kp->v[kp->len][0]);
  return kp;
}

// A row under the engine ID that is left, as it was before the first write.
struct LocalUser {
  Value name;
  int auth_protocol;
  int priv_protocol;
};

// Derives a side's key for the new engine ID. Null, or why the side keeps the key it has.
const char* relocalize_password(confd_trans_ctx* tctx, const UsmKeyOwner& owner,
                                const Value& password, int protocol, int auth_status,
                                const confd_value_t* new_id) {
  if (password->type == C_NOEXISTS) {
    set_text(tctx, kNoPassword);
    return kNoPassword;
  }
  SecretValue key;
  const char* failure = _localize_password(password.get(), new_id, protocol, auth_status, key);
  if (failure != nullptr) return failure;
  failure = usm_store_key(owner, *key);
  if (failure != nullptr) set_text(tctx, failure);
  return failure;
}

// One side of one row, whose key is still the old one's. A side that cannot be changed is logged,
// and the others go on.
void _check_relocalize(int thandle, confd_trans_ctx* tctx, const confd_value_t* engine_id,
                       const LocalUser& local, const UsmSide& side, const confd_value_t* new_id) {
  const int protocol = side.tag == tags::snmp::auth ? local.auth_protocol : local.priv_protocol;
  const HkeypathPtr kp = usm_build_user_keypath(protocol, side, engine_id, local.name.get());
  const UsmKeyOwner owner{{thandle, engine_id, local.name.get()}, side, kp.get()};
  Value key_type, password;
  if (kp == nullptr || usm_read_key_type(tctx, owner, key_type, password) != CONFD_OK) {
    set_text(tctx, kNoPassword);
    log_side(owner, "the key cannot be read and stays as it is");
    return;
  }
  if (key_type->type == C_NOEXISTS) return;
  if (CONFD_GET_XMLTAG(key_type.get()) == tags::snmp::key) {
    log_side(owner, "the key was given for the former engine-id and must be set again");
    return;
  }
  const char* failure =
      relocalize_password(tctx, owner, password, protocol, local.auth_protocol, new_id);
  if (failure != nullptr) {
    log_side(owner, failure);
  } else if (!protocol_is_set(protocol)) {
    log_side(owner, "no key can be made for the stored protocol, and none is there now");
  }
}

// The rows under an engine ID, in table order, read before the first write, which would cost the
// cursor the rows that it has read ahead, and their columns.
std::vector<LocalUser> users_under(int sock, int thandle, const confd_value_t* engine_id) {
  std::vector<LocalUser> users;
  MaapiCursor rows;
  snmp_assert_ok(rows.init(sock, thandle, USM_TABLE), kUsmModule, __LINE__);
  for (;;) {
    snmp_assert_ok(rows.next(), kUsmModule, __LINE__);
    if (rows.at_end()) return users;
    if (confd_val_eq(rows.key(0), engine_id) == 0) continue;
    const auto protocol = [&](u_int32_t side) {
      return usm_get_stored_protocol(thandle, side, engine_id, rows.key(1));
    };
    users.push_back(
        {Value::copy_of(*rows.key(1)), protocol(tags::snmp::auth), protocol(tags::snmp::priv)});
  }
}

}  // namespace

int usm_engine_id_conflict(int thandle, const confd_value_t* old_id, const confd_value_t* new_id) {
  if (confd_val_eq(old_id, new_id) != 0) return 0;
  MaapiCursor rows;
  snmp_assert_ok(rows.init(maapi_sock, thandle, USM_TABLE), kUsmModule, __LINE__);
  for (;;) {
    snmp_assert_ok(rows.next(), kUsmModule, __LINE__);
    if (rows.at_end()) return 0;
    // A user under the new ID meets the table's own row, so that this needs no further look-up.
    if (confd_val_eq(rows.key(0), new_id) != 0) return CONFD_ERR;
  }
}

int usm_relocalize_users(int sock, int thandle, confd_trans_ctx* tctx, const confd_value_t* new_id,
                         const confd_value_t* old_id) {
  std::vector<LocalUser> users = users_under(sock, thandle, old_id);
  for (const LocalUser& user : users) {
    for (const UsmSide& side : kUsmSides) {
      _check_relocalize(thandle, tctx, old_id, user, side, new_id);
    }
  }
  for (; !users.empty(); users.pop_back()) {
    const confd_value_t* name = users.back().name.get();
    confd_value_t to[] = {*new_id, *name};
    const int result = maapi_move(sock, thandle, to, 2, USM_ROW, old_id, name);
    if (result != CONFD_OK) {
      log_error(LOG_LEVEL_ERR, kUsmModule, __LINE__, "user %s cannot be moved to the new engine-id",
                usm_name_text(name).c_str());
      set_text(tctx, "failed to duplicate user on relocalization");
      return result;
    }
  }
  return CONFD_OK;
}

}  // namespace quillet
