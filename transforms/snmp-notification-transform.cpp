#include "transforms/snmp-notification-transform.h"

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

constexpr char kModule[] = "snmp-notification-transform";

#define NOTIFY_TABLE "/SNMP_NOTIFICATION_MIB:SNMP-NOTIFICATION-MIB/snmpNotifyTable/snmpNotifyEntry"
#define NOTIFY_ROW NOTIFY_TABLE "{%x}"

constexpr char kType[] = NOTIFY_ROW "/snmpNotifyType";
constexpr int kTrap = 1;

struct Column {
  u_int32_t tag;
  const char* path;
  bool removable;
};

constexpr Column kColumns[] = {
    {tags::snmp::name, NOTIFY_ROW "/snmpNotifyName", false},
    {tags::snmp::tag, NOTIFY_ROW "/snmpNotifyTag", true},
    {tags::snmp::type, kType, true},
};

int remove_leaf(confd_trans_ctx* tctx, confd_hkeypath_t* kp) {
  const confd_value_t* tag = kp_value(kp, 0);
  const Column* column = find_by_tag(kColumns, CONFD_GET_XMLTAG(tag));
  if (column == nullptr || !column->removable) return snmp_refuse_delete(tctx, tag);
  return maapi_delete(maapi_sock, tctx->thandle, column->path, kp_value(kp, 1));
}

}  // namespace

int notify_get_next(confd_trans_ctx* tctx, confd_hkeypath_t* kp, long next) {
  return snmp_generic_get_next(tctx, kp, next, NOTIFY_TABLE);
}

// /notify{name}/LEAF
int notify_get_elem(confd_trans_ctx* tctx, confd_hkeypath_t* kp) {
  const confd_value_t* tag = kp_value(kp, 0);
  if (const Column* column = find_by_tag(kColumns, CONFD_GET_XMLTAG(tag))) {
    return snmp_reply_mib_elem(tctx, column->path, kp_value(kp, 1));
  }
  confd_data_reply_not_found(tctx);
  return CONFD_OK;
}

// /notify{name}/LEAF
int notify_set_elem(confd_trans_ctx* tctx, confd_hkeypath_t* kp, confd_value_t* newval) {
  const confd_value_t* tag = kp_value(kp, 0);
  const Column* column = find_by_tag(kColumns, CONFD_GET_XMLTAG(tag));
  if (column == nullptr) return snmp_refuse_unknown_tag(tctx, tag);
  return maapi_set_elem(maapi_sock, tctx->thandle, newval, column->path, kp_value(kp, 1));
}

// /notify{name}
int notify_create(confd_trans_ctx* tctx, confd_hkeypath_t* kp) {
  const confd_value_t* key = kp_value(kp, 0);
  int result = CONFD_OK;
  if (maapi_exists(maapi_sock, tctx->thandle, NOTIFY_ROW, key) == 0) {
    result = maapi_create(maapi_sock, tctx->thandle, NOTIFY_ROW, key);
  }
  if (result == CONFD_OK) {
    confd_value_t type = enum_value(kTrap);
    result = maapi_set_elem(maapi_sock, tctx->thandle, &type, kType, key);
  }
  return snmp_write_result(tctx, result, kModule, __LINE__);
}

// /notify{name} or /notify{name}/LEAF
int notify_delete(confd_trans_ctx* tctx, confd_hkeypath_t* kp) {
  const int result =
      kp_is_tag(kp, 0) ? remove_leaf(tctx, kp) : snmp_maapi_delete(tctx, kp, NOTIFY_ROW);
  return result == CONFD_OK ? snmp_attrs_delete_under(tctx, kp) : result;
}

confd_data_cbs* notify_get_cbs() {
  static confd_data_cbs cbs;
  cbs = {};
  std::strcpy(cbs.callpoint, "notify");
  cbs.get_next = notify_get_next;
  cbs.get_elem = notify_get_elem;
  cbs.set_elem = notify_set_elem;
  cbs.create = notify_create;
  cbs.remove = notify_delete;
  cbs.get_attrs = snmp_get_attrs;
  cbs.set_attr = snmp_set_attr;
  return &cbs;
}

}  // namespace quillet
