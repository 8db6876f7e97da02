#include "transforms/snmp-vacm-transform.h"

#include <cstring>

#include "model/snmp-tags.h"
#include "transforms/vacm-access.h"
#include "transforms/vacm-groups.h"
#include "util/keypath.h"
#include "util/snmp-attribute-store.h"
#include "util/snmp-transform-utils.h"

namespace quillet {
namespace {

// `sec-model` is a leaf-list of members and a key of access entries: the list above tells.
u_int32_t list_above_leaf(const confd_hkeypath_t* kp) {
  const confd_value_t* list = kp_value(kp, 2);
  return CONFD_GET_XMLTAG(list);
}

int delete_group(confd_trans_ctx* tctx, const confd_value_t* group, ConflictChanges& conflicts) {
  const int result = delete_member_rows(tctx, group, nullptr, conflicts);
  return result == CONFD_OK ? delete_access_rows(tctx, group) : result;
}

int delete_entry(confd_trans_ctx* tctx, confd_hkeypath_t* kp, ConflictChanges& conflicts) {
  const confd_value_t* tag = kp_value(kp, 1);
  switch (CONFD_GET_XMLTAG(tag)) {
    case tags::snmp::member:
      return delete_member_rows(tctx, vacm_group_key(kp), kp_value(kp, 0), conflicts);
    case tags::snmp::group:
      return delete_group(tctx, vacm_group_key(kp), conflicts);
    case tags::snmp::sec_model:
      return member_delete_sec_model(tctx, kp);
    case tags::snmp::access:
      return access_delete(tctx, kp);
    default:
      return snmp_refuse_unknown_tag(tctx, tag);
  }
}

int delete_leaf(confd_trans_ctx* tctx, confd_hkeypath_t* kp, ConflictChanges& conflicts) {
  const confd_value_t* tag = kp_value(kp, 0);
  if (CONFD_GET_XMLTAG(tag) == tags::snmp::sec_model && list_above_leaf(kp) == tags::snmp::member) {
    return delete_member_rows(tctx, vacm_group_key(kp), kp_value(kp, 1), conflicts);
  }
  return access_delete_elem(tctx, kp);
}

}  // namespace

int vacm_group_get_next(confd_trans_ctx* tctx, confd_hkeypath_t* kp, long next) {
  const confd_value_t* tag = kp_value(kp, 0);
  switch (CONFD_GET_XMLTAG(tag)) {
    case tags::snmp::group:
      return group_next_group(tctx, kp, next);
    case tags::snmp::member:
      return group_next_member(tctx, kp, next);
    case tags::snmp::sec_model:
      return group_next_sec_model(tctx, kp, next);
    case tags::snmp::access:
      return group_next_access(tctx, kp, next);
    default:
      return snmp_reply_list_end(tctx);
  }
}

int vacm_group_get_elem(confd_trans_ctx* tctx, confd_hkeypath_t* kp) {
  const confd_value_t* tag = kp_value(kp, 0);
  switch (CONFD_GET_XMLTAG(tag)) {
    case tags::snmp::name:
      return group_get_name(tctx, kp);
    case tags::snmp::sec_name:
      return member_get_sec_name(tctx, kp);
    case tags::snmp::sec_model:
      if (list_above_leaf(kp) == tags::snmp::member) return member_get_sec_models(tctx, kp);
      break;
    default:
      break;
  }
  return access_get_elem(tctx, kp);
}

int vacm_group_set_elem(confd_trans_ctx* tctx, confd_hkeypath_t* kp, confd_value_t* newval) {
  const confd_value_t* tag = kp_value(kp, 0);
  if (CONFD_GET_XMLTAG(tag) == tags::snmp::sec_model) {
    const u_int32_t list = list_above_leaf(kp);
    if (list == tags::snmp::member) return member_set_sec_models(tctx, kp, newval);
    if (list != tags::snmp::access) return snmp_refuse_unknown_tag(tctx, kp_value(kp, 2));
  }
  return access_set_elem(tctx, kp, newval);
}

// A group or a member has no row before it has a security model.
int vacm_group_create(confd_trans_ctx* tctx, confd_hkeypath_t* kp) {
  const confd_value_t* tag = kp_value(kp, 1);
  switch (CONFD_GET_XMLTAG(tag)) {
    case tags::snmp::group:
    case tags::snmp::member:
      return CONFD_OK;
    case tags::snmp::sec_model:
      return member_create_sec_model(tctx, kp);
    case tags::snmp::access:
      return access_create(tctx, kp);
    default:
      return snmp_refuse_unknown_tag(tctx, tag);
  }
}

int vacm_group_delete(confd_trans_ctx* tctx, confd_hkeypath_t* kp) {
  ConflictChanges conflicts(tctx);
  int result =
      kp_is_tag(kp, 0) ? delete_leaf(tctx, kp, conflicts) : delete_entry(tctx, kp, conflicts);
  if (result == CONFD_OK) result = snmp_attrs_delete_under(tctx, kp);
  if (result == CONFD_OK) conflicts.apply();
  return result;
}

// Asked for the entries of `sec-model` under a member only.
int vacm_group_exists(confd_trans_ctx* tctx, confd_hkeypath_t* kp) {
  const confd_value_t* tag = kp_is_tag(kp, 0) ? kp_value(kp, 0) : kp_value(kp, 1);
  const bool entry = !kp_is_tag(kp, 0) && CONFD_GET_XMLTAG(tag) == tags::snmp::sec_model;
  return entry ? member_sec_model_exists(tctx, kp) : snmp_refuse_unknown_tag(tctx, tag);
}

confd_data_cbs* vacm_group_get_cbs() {
  static confd_data_cbs cbs;
  cbs = {};
  std::strcpy(cbs.callpoint, "vacm_group");
  cbs.get_elem = vacm_group_get_elem;
  cbs.get_next = vacm_group_get_next;
  cbs.set_elem = vacm_group_set_elem;
  cbs.create = vacm_group_create;
  cbs.remove = vacm_group_delete;
  cbs.exists_optional = vacm_group_exists;
  cbs.get_attrs = snmp_get_attrs;
  cbs.set_attr = snmp_set_attr;
  return &cbs;
}

}  // namespace quillet
