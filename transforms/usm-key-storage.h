// Where the keys of a user's side stand: the MIB key column, which the agent uses, and the side's
// copies below usm-crypto, the key last written and, when it was made from one, the password.
#pragma once

#include "transforms/snmp-usm-internal.h"
#include "transforms/usm-localization.h"

namespace quillet {

struct UsmKeyOwner {
  UsmUser user;
  const UsmSide& side;
  const confd_hkeypath_t* kp;  // of the user or of anything below
};

// One of the copies below usm-crypto: `key` or `password`.
UsmRead usm_read_copy(const UsmKeyOwner& owner, u_int32_t kind_tag, Value& out);

// The case of `key-type` as usm_get_key_type() answers it, with the stored password, in its
// encrypted form, that this had to look at; C_NOEXISTS where there is none, or it cannot be read.
int usm_read_key_type(confd_trans_ctx* tctx, const UsmKeyOwner& owner, Value& type,
                      Value& password);

// Column first, then copy. Null, or the text of the write that failed.
const char* usm_store_key(const UsmKeyOwner& owner, const confd_value_t& key);

// The callbacks' answers to a write of a `key` or `password` leaf; the protocol is stored already.
int usm_set_key(confd_trans_ctx* tctx, const UsmKeyOwner& owner, const confd_value_t& key);
int usm_set_password(confd_trans_ctx* tctx, const UsmKeyOwner& owner, int protocol,
                     const confd_value_t* password);

// Derives the privacy key anew when there is a password for it, for another authentication
// protocol than the one stored.
int usm_rederive_priv_key(confd_trans_ctx* tctx, const UsmKeyOwner& priv, int auth_protocol);
// Logs at CRIT that the privacy password must be set again, when the privacy key stored is not the
// one that password and authentication protocol give: it was made before there was authentication.
void usm_report_stale_priv_key(const UsmKeyOwner& priv, int auth_protocol);

}  // namespace quillet
