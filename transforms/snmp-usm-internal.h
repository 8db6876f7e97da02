// What the files of the USM transform share: the table's paths, protocols, and where a keypath
// leads to.
//
// All reads and writes use `maapi_sock` in the given transaction.
#pragma once

#include <confd_dp.h>

#include <optional>
#include <string>

#include "model/snmp-tags.h"
#include "util/keypath.h"
#include "util/value-guards.h"

// Row paths take two %x arguments: the engine ID and the user name.
#define USM_TABLE "/SNMP_USER_BASED_SM_MIB:SNMP-USER-BASED-SM-MIB/usmUserTable/usmUserEntry"
#define USM_ROW USM_TABLE "{%x %x}"

namespace quillet {

inline constexpr char kUsmModule[] = "snmp-usm-transform";
inline constexpr char kUsmName[] = USM_ROW "/usmUserName";
inline constexpr char kUsmSecurityName[] = USM_ROW "/usmUserSecurityName";
inline constexpr char kUsmStorageType[] = USM_ROW "/usmUserStorageType";

// A side of a user, with its columns.
struct UsmSide {
  u_int32_t tag;
  const char* name;
  unsigned oid_family;  // F of 1.3.6.1.6.3.10.1.F.P (RFC 3414 section 5)
  const char* protocol;
  const char* key;
  const char* crypto;  // below usm-crypto
};
inline constexpr UsmSide kUsmSides[] = {
    {tags::snmp::auth, "auth", 1, USM_ROW "/usmUserAuthProtocol", USM_ROW "/usmUserAuthKey",
     "/auth"},
    {tags::snmp::priv, "priv", 2, USM_ROW "/usmUserPrivProtocol", USM_ROW "/usmUserPrivKey",
     "/priv"},
};
inline constexpr const UsmSide& kUsmAuth = kUsmSides[0];
inline constexpr const UsmSide& kUsmPriv = kUsmSides[1];
// Null for another tag.
const UsmSide* find_usm_side(u_int32_t tag);

// ------------------------------------------------------------------------- protocols

// A stored protocol is the tag of its case (md5, sha, des, aes), or one of these.
enum UsmProtocolStatus : int {
  PROTO_NONE = -1,     // usmNoAuthProtocol or usmNoPrivProtocol
  PROTO_UNKNOWN = -2,  // another protocol, or a read that failed
  PROTO_ABSENT = -3,   // no such row, or not the column
};
inline bool protocol_is_set(int status) { return status >= 0; }
inline bool protocol_is(int status, u_int32_t case_tag) {
  return protocol_is_set(status) && static_cast<u_int32_t>(status) == case_tag;
}

int auth_protocol_tag(unsigned last_component);
int priv_protocol_tag(unsigned last_component);
// By the ninth and tenth components alone; an OID that has none is PROTO_UNKNOWN. Asserts C_OID.
int _get_protocol_tag_from_oid(const confd_value_t* oid);
// The protocol's OID in a new value; the "no protocol" of the side for any other case.
void usm_protocol_oid(u_int32_t side_tag, int case_tag, Value& out);

// ----------------------------------------------------------------------------- users

// One row of the table; owns nothing. An engine ID of C_NOEXISTS (the agent has none) names no row.
struct UsmUser {
  int thandle;
  const confd_value_t* engine_id;
  const confd_value_t* name;
};

// For log lines.
std::string usm_name_text(const confd_value_t* name);

enum class UsmRead { value, absent, failed };
// A leaf of the user's row, by a path with the row's two %x.
UsmRead usm_read(const UsmUser& user, Value& out, const char* path);
// False when absent, and when that cannot be told.
bool usm_exists(const UsmUser& user, const char* path);
int usm_write(const UsmUser& user, const confd_value_t& v, const char* path);

int usm_get_stored_protocol(int thandle, u_int32_t side_tag, const confd_value_t* engine_id,
                            const confd_value_t* name);

// The engine ID of the user list that the keypath leads into; C_NOEXISTS for the local users of an
// agent without an engine ID. CONFD_OK, or the failure of the read.
int _usm_get_engine_id(confd_trans_ctx* tctx, const confd_hkeypath_t* kp, Value& out);

// Whether a row has this engine ID and this user name; null means any.
int usm_user_exists(confd_trans_ctx* tctx, const confd_value_t* engine_id,
                    const confd_value_t* name);
// A row that was seen or made. Whether its engine has users is what comes next, many times over,
// and looking for this row first saves the pass over the table. It is never trusted unseen.
void usm_remember_row(const confd_value_t* engine_id, const confd_value_t* name);

// The path format of a usm-crypto element: of the side and kind given, or, where these are 0, of
// those that the keypath names. Nothing when it names no side.
std::optional<std::string> _usm_get_crypto_path(const confd_hkeypath_t* kp, u_int32_t side_tag,
                                                u_int32_t kind_tag);

// -------------------------------------------------------------------------- callbacks

// The case of `key-type`, C_NOEXISTS when there is no key: `password` while the key is the one that
// was derived from the stored password, `key` otherwise. The key's copy is brought up to date on
// the way, even by a read. `tctx` may be null: then no text is set.
int usm_get_key_type(int thandle, confd_trans_ctx* tctx, const confd_hkeypath_t* kp,
                     u_int32_t side_tag, const confd_value_t* engine_id, const confd_value_t* name,
                     Value& out);

int usm_set_elem(confd_trans_ctx* tctx, confd_hkeypath_t* kp, confd_value_t* newval);
int usm_create(confd_trans_ctx* tctx, confd_hkeypath_t* kp);
int usm_delete(confd_trans_ctx* tctx, confd_hkeypath_t* kp);
int usm_set_case(confd_trans_ctx* tctx, confd_hkeypath_t* kp, confd_value_t* choice,
                 confd_value_t* caseval);

}  // namespace quillet
