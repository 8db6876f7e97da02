#include "transforms/snmp-community-transform.h"

#include <confd_maapi.h>

#include <cstring>

#include "core/daemon-sockets.h"
#include "model/snmp-tags.h"
#include "util/keypath.h"
#include "util/snmp-attribute-store.h"
#include "util/snmp-transform-utils.h"
#include "util/tag-table.h"
#include "util/value-guards.h"

namespace quillet {
namespace {

constexpr char kModule[] = "snmp-community-transform";

#define COMMUNITY_TABLE \
  "/SNMP_COMMUNITY_MIB:SNMP-COMMUNITY-MIB/snmpCommunityTable/snmpCommunityEntry"
#define COMMUNITY_ROW COMMUNITY_TABLE "{%x}"

constexpr char kName[] = COMMUNITY_ROW "/snmpCommunityName";
constexpr char kSecurityName[] = COMMUNITY_ROW "/snmpCommunitySecurityName";
constexpr char kContextEngineId[] = COMMUNITY_ROW "/snmpCommunityContextEngineID";
constexpr char kEngineId[] = "/confd_dyncfg:confdConfig/snmpAgent/snmpEngine/snmpEngineID";

bool always_shown(const confd_value_t* /*index*/, const confd_value_t& /*v*/) { return true; }

enum class Write { to_column, ignored };
enum class Remove { refused, back_to_index, column };

struct Column {
  u_int32_t tag;
  const char* path;
  bool (*shown)(const confd_value_t* index, const confd_value_t& v);
  Write write;
  Remove remove;
};

constexpr Column kColumns[] = {
    {tags::snmp::index, COMMUNITY_ROW "/snmpCommunityIndex", always_shown, Write::ignored,
     Remove::refused},
    {tags::snmp::name, kName, community_name_shown, Write::to_column, Remove::back_to_index},
    {tags::snmp::sec_name, kSecurityName, always_shown, Write::to_column, Remove::refused},
    {tags::snmp::context_name, COMMUNITY_ROW "/snmpCommunityContextName", always_shown,
     Write::to_column, Remove::column},
    {tags::snmp::target_tag, COMMUNITY_ROW "/snmpCommunityTransportTag", community_target_tag_shown,
     Write::to_column, Remove::column},
};

// A row made before the engine ID is known gets it when the engine ID is derived.
int set_context_engine_id_of_new_row(confd_trans_ctx* tctx, const confd_value_t* key) {
  Value engine_id;
  if (maapi_get_elem(maapi_sock, tctx->thandle, engine_id.out(), kEngineId) != CONFD_OK) {
    if (confd_errno == CONFD_ERR_NOEXISTS) return CONFD_OK;
    return snmp_write_result(tctx, CONFD_ERR, kModule, __LINE__);
  }
  return snmp_write_result(
      tctx, maapi_set_elem(maapi_sock, tctx->thandle, engine_id.get(), kContextEngineId, key),
      kModule, __LINE__);
}

int remove_leaf(confd_trans_ctx* tctx, confd_hkeypath_t* kp) {
  const confd_value_t* tag = kp_value(kp, 0);
  confd_value_t* key = &kp->v[1][0];
  const Column* column = find_by_tag(kColumns, CONFD_GET_XMLTAG(tag));
  switch (column != nullptr ? column->remove : Remove::refused) {
    case Remove::back_to_index:
      return maapi_set_elem(maapi_sock, tctx->thandle, key, column->path, key);
    case Remove::column:
      return maapi_delete(maapi_sock, tctx->thandle, column->path, key);
    case Remove::refused:
      break;
  }
  return snmp_refuse_delete(tctx, tag);
}

}  // namespace

bool community_name_shown(const confd_value_t* index, const confd_value_t& v) {
  return c_text(CONFD_GET_BUFPTR(index), CONFD_GET_BUFSIZE(index)) !=
         c_text(CONFD_GET_BUFPTR(&v), CONFD_GET_BUFSIZE(&v));
}

bool community_target_tag_shown(const confd_value_t* /*index*/, const confd_value_t& v) {
  return CONFD_GET_BUFSIZE(&v) > 0;
}

int community_get_next(confd_trans_ctx* tctx, confd_hkeypath_t* kp, long next) {
  return snmp_generic_get_next(tctx, kp, next, COMMUNITY_TABLE);
}

// /community{index}/LEAF
int community_get_elem(confd_trans_ctx* tctx, confd_hkeypath_t* kp) {
  const confd_value_t* tag = kp_value(kp, 0);
  const confd_value_t* key = kp_value(kp, 1);
  const Column* column = find_by_tag(kColumns, CONFD_GET_XMLTAG(tag));
  if (column == nullptr) {
    confd_data_reply_not_found(tctx);
    return CONFD_OK;
  }
  Value v;
  if (maapi_get_elem(maapi_sock, tctx->thandle, v.out(), column->path, key) != CONFD_OK) {
    return snmp_reply_read_failure(tctx);
  }
  if (column->shown(key, *v)) {
    confd_data_reply_value(tctx, v.get());
  } else {
    confd_data_reply_not_found(tctx);
  }
  return CONFD_OK;
}

// /community{index}/LEAF; the key leaf, like any unknown one, is accepted and changes nothing.
int community_set_elem(confd_trans_ctx* tctx, confd_hkeypath_t* kp, confd_value_t* newval) {
  const confd_value_t* tag = kp_value(kp, 0);
  const Column* column = find_by_tag(kColumns, CONFD_GET_XMLTAG(tag));
  if (column == nullptr || column->write == Write::ignored) return CONFD_OK;
  return maapi_set_elem(maapi_sock, tctx->thandle, newval, column->path, kp_value(kp, 1));
}

// /community{index}
int community_create(confd_trans_ctx* tctx, confd_hkeypath_t* kp) {
  confd_value_t* key = &kp->v[0][0];
  const int thandle = tctx->thandle;
  int result = CONFD_OK;
  if (maapi_exists(maapi_sock, thandle, COMMUNITY_ROW, key) == 0) {
    result = maapi_create(maapi_sock, thandle, COMMUNITY_ROW, key);
  }
  for (const char* column : {kName, kSecurityName}) {
    if (result == CONFD_OK) result = maapi_set_elem(maapi_sock, thandle, key, column, key);
  }
  if (result != CONFD_OK) return snmp_write_result(tctx, result, kModule, __LINE__);
  return set_context_engine_id_of_new_row(tctx, key);
}

// /community{index} or /community{index}/LEAF
int community_delete(confd_trans_ctx* tctx, confd_hkeypath_t* kp) {
  const int result =
      kp_is_tag(kp, 0) ? remove_leaf(tctx, kp) : snmp_maapi_delete(tctx, kp, COMMUNITY_ROW);
  return result == CONFD_OK ? snmp_attrs_delete_under(tctx, kp) : result;
}

int community_hook_create(confd_trans_ctx* tctx, confd_hkeypath_t* kp) {
  const int sock = daemon_sockets(tctx).maapi_sock;
  if (maapi_exists(sock, tctx->thandle, "%h/sec-name", kp) == 0) return CONFD_OK;
  return snmp_write_result(tctx,
                           maapi_set_elem(sock, tctx->thandle, &kp->v[0][0], "%h/sec-name", kp),
                           kModule, __LINE__);
}

int community_set_context_engine_id(int sock, int thandle, confd_value_t* engine_id) {
  MaapiCursor rows;
  snmp_assert_ok(rows.init(sock, thandle, COMMUNITY_TABLE), kModule, __LINE__);
  int result = CONFD_OK;
  for (;;) {
    snmp_assert_ok(rows.next(), kModule, __LINE__);
    if (rows.at_end()) return result;
    const int written = maapi_set_elem(sock, thandle, engine_id, kContextEngineId, rows.key());
    if (snmp_write_result(nullptr, written, kModule, __LINE__) != CONFD_OK) result = CONFD_ERR;
  }
}

confd_data_cbs* community_get_cbs() {
  static confd_data_cbs cbs;
  cbs = {};
  std::strcpy(cbs.callpoint, "community");
  cbs.get_next = community_get_next;
  cbs.get_elem = community_get_elem;
  cbs.set_elem = community_set_elem;
  cbs.create = community_create;
  cbs.remove = community_delete;
  cbs.get_attrs = snmp_get_attrs;
  cbs.set_attr = snmp_set_attr;
  return &cbs;
}

confd_data_cbs* community_hook_get_cbs() {
  static confd_data_cbs cbs;
  cbs = {};
  std::strcpy(cbs.callpoint, "community-hook");
  cbs.create = community_hook_create;
  return &cbs;
}

}  // namespace quillet
