#include "transforms/usm-key-storage.h"

#include <confd_maapi.h>
#include <openssl/crypto.h>

#include "core/daemon-sockets.h"
#include "core/log.h"
#include "util/snmp-transform-utils.h"

namespace quillet {
namespace {

constexpr char kNoMibKey[] = "couldn't store encrypted data (MIB key)";
constexpr char kNoCopy[] = "couldn't store encrypted data (key)";

// Copies are asked for by kind and side, so the path exists for every user.
std::string copy_path(const UsmKeyOwner& owner, u_int32_t kind_tag) {
  return _usm_get_crypto_path(owner.kp, owner.side.tag, kind_tag).value_or(std::string());
}

// The text of a new password, overwritten after use.
class PasswordText {
 public:
  explicit PasswordText(const confd_value_t* password)
      : text_(CONFD_GET_BUFSIZE(password) + std::size_t{1}, '\0') {
    confd_pp_value(text_.data(), static_cast<int>(text_.size()), password);
  }
  PasswordText(const PasswordText&) = delete;
  PasswordText& operator=(const PasswordText&) = delete;
  ~PasswordText() { OPENSSL_cleanse(text_.data(), text_.size()); }
  const char* c_str() const { return text_.c_str(); }

 private:
  std::string text_;
};

int refuse_or_quiet(confd_trans_ctx* tctx, const char* text) {
  return tctx != nullptr ? snmp_refuse(tctx, "%s", text) : CONFD_ERR;
}

}  // namespace

UsmRead usm_read_copy(const UsmKeyOwner& owner, u_int32_t kind_tag, Value& out) {
  return usm_read(owner.user, out, copy_path(owner, kind_tag).c_str());
}

const char* usm_store_key(const UsmKeyOwner& owner, const confd_value_t& key) {
  if (usm_write(owner.user, key, owner.side.key) != CONFD_OK) return kNoMibKey;
  const std::string copy = copy_path(owner, tags::snmp::key);
  return usm_write(owner.user, key, copy.c_str()) == CONFD_OK ? nullptr : kNoCopy;
}

int usm_set_key(confd_trans_ctx* tctx, const UsmKeyOwner& owner, const confd_value_t& key) {
  if (usm_write(owner.user, key, copy_path(owner, tags::snmp::key).c_str()) != CONFD_OK) {
    return snmp_refuse(tctx, kNoMibKey);
  }
  if (usm_write(owner.user, key, owner.side.key) != CONFD_OK) {
    return snmp_refuse(tctx, "couldn't store encrypted data backup(MIB key)");
  }
  const std::string password = copy_path(owner, tags::snmp::password);
  if (usm_exists(owner.user, password.c_str()) &&
      maapi_delete(maapi_sock, owner.user.thandle, password.c_str(), owner.user.engine_id,
                   owner.user.name) != CONFD_OK) {
    return snmp_refuse(tctx, "couldn't delete password");
  }
  return CONFD_OK;
}

int usm_set_password(confd_trans_ctx* tctx, const UsmKeyOwner& owner, int protocol,
                     const confd_value_t* password) {
  const UsmUser& user = owner.user;
  const std::string path = copy_path(owner, tags::snmp::password);
  if (maapi_set_elem2(maapi_sock, user.thandle, PasswordText(password).c_str(), path.c_str(),
                      user.engine_id, user.name) != CONFD_OK) {
    return snmp_refuse(tctx, "couldn't store encrypted data");
  }
  Value encrypted;
  if (usm_read(user, encrypted, path.c_str()) != UsmRead::value) {
    return snmp_refuse(tctx, "couldn't retrieve encrypted data");
  }
  const int auth =
      usm_get_stored_protocol(user.thandle, tags::snmp::auth, user.engine_id, user.name);
  SecretValue key;
  const char* failure = _localize_password(encrypted.get(), user.engine_id, protocol, auth, key);
  if (failure == nullptr) failure = usm_store_key(owner, *key);
  return failure == nullptr ? CONFD_OK : snmp_refuse(tctx, "%s", failure);
}

int usm_rederive_priv_key(confd_trans_ctx* tctx, const UsmKeyOwner& priv, int auth_protocol) {
  Value password;
  const UsmRead read = usm_read_copy(priv, tags::snmp::password, password);
  if (read == UsmRead::absent) return CONFD_OK;
  if (read == UsmRead::failed) return snmp_refuse(tctx, "Problem retrieving encrypted password");
  SecretValue copy;
  if (usm_read_copy(priv, tags::snmp::key, copy) != UsmRead::value) {
    return snmp_refuse(tctx, "Problem retrieving encrypted key type");
  }
  SecretValue stored;
  if (usm_read(priv.user, stored, priv.side.key) != UsmRead::value) {
    return snmp_refuse(tctx, "Problem retrieving key type");
  }
  Value oid;
  if (usm_read(priv.user, oid, priv.side.protocol) != UsmRead::value) {
    return snmp_refuse(tctx, "Problem retrieving priv protocol");
  }
  SecretValue key;
  const char* failure =
      _localize_password(password.get(), priv.user.engine_id, _get_protocol_tag_from_oid(oid.get()),
                         auth_protocol, key);
  if (failure == nullptr) failure = usm_store_key(priv, *key);
  return failure == nullptr ? CONFD_OK : snmp_refuse(tctx, "%s", failure);
}

void usm_report_stale_priv_key(const UsmKeyOwner& priv, int auth_protocol) {
  const UsmUser& user = priv.user;
  Value password;
  SecretValue stored;
  if (usm_read_copy(priv, tags::snmp::password, password) != UsmRead::value ||
      usm_read(user, stored, priv.side.key) != UsmRead::value) {
    return;
  }
  const int protocol =
      usm_get_stored_protocol(user.thandle, priv.side.tag, user.engine_id, user.name);
  SecretValue fitting;
  if (_localize_password(password.get(), user.engine_id, protocol, auth_protocol, fitting) ==
          nullptr &&
      confd_val_eq(stored.get(), fitting.get()) != 0) {
    return;
  }
  log_error(LOG_LEVEL_CRIT, kUsmModule, __LINE__,
            "user %s: the privacy password must be set again, its key was made without the "
            "authentication protocol",
            usm_name_text(user.name).c_str());
}

int usm_read_key_type(confd_trans_ctx* tctx, const UsmKeyOwner& owner, Value& type,
                      Value& password) {
  SecretValue copy;
  if (usm_read_copy(owner, tags::snmp::key, copy) == UsmRead::failed) {
    return refuse_or_quiet(tctx, "Problem retrieving encrypted key type");
  }
  const bool has_password = usm_read_copy(owner, tags::snmp::password, password) != UsmRead::absent;
  SecretValue key;
  switch (usm_read(owner.user, key, owner.side.key)) {
    case UsmRead::failed:
      return refuse_or_quiet(tctx, "Problem retrieving key type");
    case UsmRead::absent:
      return CONFD_OK;
    case UsmRead::value:
      break;
  }
  const bool agree = confd_val_eq(copy.get(), key.get()) != 0;
  const u_int32_t selected = agree && has_password ? tags::snmp::password : tags::snmp::key;
  *type = xmltag_value(selected, tags::snmp::ns);
  // Refused while only reading; the next transaction that may write does it.
  if (!agree) usm_write(owner.user, *key, copy_path(owner, tags::snmp::key).c_str());
  return CONFD_OK;
}

int usm_get_key_type(int thandle, confd_trans_ctx* tctx, const confd_hkeypath_t* kp,
                     u_int32_t side_tag, const confd_value_t* engine_id, const confd_value_t* name,
                     Value& out) {
  out = Value();
  const UsmSide* side = find_usm_side(side_tag);
  if (side == nullptr || !_usm_get_crypto_path(kp, side_tag, tags::snmp::key)) {
    return refuse_or_quiet(tctx, "Invalid crypto path");
  }
  Value password;
  return usm_read_key_type(tctx, {{thandle, engine_id, name}, *side, kp}, out, password);
}

}  // namespace quillet
