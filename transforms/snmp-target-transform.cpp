// The callpoint's record and its read callbacks; snmp-target-write.cpp has the write callbacks.
#include "transforms/snmp-target-transform.h"

#include <confd_maapi.h>

#include <cstring>

#include "core/daemon-sockets.h"
#include "transforms/snmp-target-internal.h"
#include "transforms/tag-list.h"
#include "transforms/target-address.h"
#include "transforms/target-params.h"
#include "util/keypath.h"
#include "util/snmp-attribute-store.h"
#include "util/snmp-transform-utils.h"
#include "util/tag-table.h"

namespace quillet {
namespace {

constexpr TargetColumn kColumns[] = {
    {tags::snmp::name, TARGET_ADDR_ROW "/snmpTargetAddrName", TargetConversion::unchanged, "name"},
    {tags::snmp::timeout, TARGET_ADDR_ROW "/snmpTargetAddrTimeout", TargetConversion::uint32,
     "timeout"},
    {tags::snmp::retries, TARGET_ADDR_ROW "/snmpTargetAddrRetryCount", TargetConversion::uint8,
     "retries"},
    {tags::snmp::engine_id, TARGET_ADDR_ROW "/snmpTargetAddrEngineID", TargetConversion::octets,
     "engine-id"},
};

// A failed read: "not found" for what is absent, the given text otherwise.
int reply_read_failure(confd_trans_ctx* tctx, MibRead read, const char* what) {
  if (read == MibRead::absent) {
    confd_data_reply_not_found(tctx);
    return CONFD_OK;
  }
  return snmp_refuse(tctx, "Problem retrieving target %s", what);
}

int reply(confd_trans_ctx* tctx, const confd_value_t& v) {
  confd_data_reply_value(tctx, &v);
  return CONFD_OK;
}

int reply_not_found(confd_trans_ctx* tctx) {
  confd_data_reply_not_found(tctx);
  return CONFD_OK;
}

int get_column(confd_trans_ctx* tctx, const TargetColumn& column, const confd_value_t* target) {
  if (column.conversion == TargetConversion::unchanged) {
    return snmp_reply_mib_elem(tctx, column.path, target);
  }
  Value stored;
  const MibRead read = target_read(tctx, stored, column.path, target);
  if (read != MibRead::value) return reply_read_failure(tctx, read, column.name);
  confd_value_t v;
  switch (column.conversion) {
    case TargetConversion::uint32:
      CONFD_SET_UINT32(&v, static_cast<u_int32_t>(CONFD_GET_INT32(stored.get())));
      return reply(tctx, v);
    case TargetConversion::uint8:
      CONFD_SET_UINT8(&v, static_cast<u_int8_t>(CONFD_GET_INT32(stored.get()) & 0xff));
      return reply(tctx, v);
    default:
      if (CONFD_GET_BINARY_SIZE(stored.get()) == 0) return reply_not_found(tctx);
      return reply(tctx, *stored);
  }
}

// `ip` and `port`; the address counts only beside a domain.
int get_address(confd_trans_ctx* tctx, u_int32_t tag, const confd_value_t* target) {
  Value domain;
  Value stored;
  MibRead read = target_read(tctx, domain, TARGET_ADDR_ROW "/snmpTargetAddrTDomain", target);
  if (read == MibRead::value) read = read_taddress(tctx, target, stored);
  if (read != MibRead::value) return reply_read_failure(tctx, read, "address");
  const auto taddress =
      decode_taddress(CONFD_GET_BINARY_PTR(stored.get()), CONFD_GET_BINARY_SIZE(stored.get()));
  if (!taddress) return reply_not_found(tctx);
  confd_value_t v = ip_of(*taddress);
  if (tag == tags::snmp::port) CONFD_SET_UINT16(&v, taddress->port);
  return reply(tctx, v);
}

int get_tags(confd_trans_ctx* tctx, const confd_value_t* target) {
  int count = 0;
  confd_value_t* words =
      snmp_maapi_get_string_list_elems(tctx->thandle, &count, kTagListPath, target);
  const ValueArray owned(words, count);
  if (count < 0) {
    return reply_read_failure(
        tctx, confd_errno == CONFD_ERR_NOEXISTS ? MibRead::absent : MibRead::failed, "tag");
  }
  if (count == 0) return reply_not_found(tctx);
  confd_value_t list;
  CONFD_SET_LIST(&list, owned.data(), owned.size());
  return reply(tctx, list);
}

// `v1/sec-name` and `v2c/sec-name` show a name only while the row's security model is theirs.
int get_sec_name(confd_trans_ctx* tctx, const confd_value_t* container,
                 const confd_value_t* params) {
  Value model;
  const MibRead read =
      target_read(tctx, model, TARGET_PARAMS_ROW "/snmpTargetParamsSecurityModel", params);
  if (read != MibRead::value) return reply_read_failure(tctx, read, "sec-name");
  if (!choicetag_secmodel_match(CONFD_GET_XMLTAG(container), CONFD_GET_INT32(model.get()))) {
    return reply_not_found(tctx);
  }
  return snmp_reply_mib_elem(tctx, kSecurityNamePath, params);
}

int get_params_leaf(confd_trans_ctx* tctx, u_int32_t tag, confd_hkeypath_t* kp) {
  Value params;
  if (target_params_name(tctx, target_key(kp), params) != MibRead::value) {
    return reply_not_found(tctx);
  }
  switch (tag) {
    case tags::snmp::user_name:
      return snmp_reply_mib_elem(tctx, kSecurityNamePath, params.get());
    case tags::snmp::sec_level:
      return snmp_reply_mib_elem(tctx, kSecurityLevelPath, params.get());
    default:
      return get_sec_name(tctx, kp_value(kp, 1), params.get());
  }
}

int target_get_elem(confd_trans_ctx* tctx, confd_hkeypath_t* kp) {
  const confd_value_t* tag = kp_value(kp, 0);
  const u_int32_t leaf = CONFD_GET_XMLTAG(tag);
  if (in_ignored_container(kp)) return reply_not_found(tctx);
  if (const TargetColumn* column = find_target_column(leaf)) {
    return get_column(tctx, *column, kp_value(kp, 1));
  }
  switch (leaf) {
    case tags::snmp::ip:
    case tags::snmp::port:
      return get_address(tctx, leaf, kp_value(kp, 1));
    case tags::snmp::tag:
      return get_tags(tctx, kp_value(kp, 1));
    case tags::snmp::user_name:
    case tags::snmp::sec_name:
    case tags::snmp::sec_level:
      return get_params_leaf(tctx, leaf, kp);
    default:
      return reply_not_found(tctx);
  }
}

// The next word of a tag list: the token is the word's index.
int next_tag(confd_trans_ctx* tctx, const confd_value_t* target, long next) {
  int count = 0;
  confd_value_t* words =
      snmp_maapi_get_string_list_elems(tctx->thandle, &count, kTagListPath, target);
  const ValueArray owned(words, count);
  const long index = next + 1;
  if (index < 0 || index >= owned.size()) return snmp_reply_list_end(tctx);
  confd_data_reply_next_key(tctx, &owned[static_cast<int>(index)], 1, index);
  return CONFD_OK;
}

int target_get_next(confd_trans_ctx* tctx, confd_hkeypath_t* kp, long next) {
  const confd_value_t* tag = kp_value(kp, 0);
  switch (CONFD_GET_XMLTAG(tag)) {
    case tags::snmp::target:
      return snmp_generic_get_next(tctx, kp, next, TARGET_ADDR_TABLE);
    case tags::snmp::tag:
      return next_tag(tctx, kp_value(kp, 1), next);
    default:
      return snmp_refuse_unknown_tag(tctx, tag);
  }
}

int target_get_case(confd_trans_ctx* tctx, confd_hkeypath_t* kp, confd_value_t* choice) {
  if (CONFD_GET_XMLTAG(choice) != tags::snmp::params) return reply_not_found(tctx);
  Value params;
  Value model;
  MibRead read = target_params_name(tctx, kp_value(kp, 0), params);
  if (read == MibRead::value) read = target_read(tctx, model, kMpModelPath, params.get());
  if (read != MibRead::value) return reply_read_failure(tctx, read, "parameters");
  const int number = CONFD_GET_INT32(model.get());
  for (const TargetCase& c : kTargetCases) {
    if (c.mp_model == number) return reply(tctx, xmltag_value(c.tag, tags::snmp::ns));
  }
  return snmp_refuse(tctx, "Inconsistent parameters setting: %d", number);
}

int target_exists_optional(confd_trans_ctx* tctx, confd_hkeypath_t* kp) {
  const confd_value_t* tag = kp_is_tag(kp, 0) ? kp_value(kp, 0) : kp_value(kp, 1);
  if (CONFD_GET_XMLTAG(tag) != tags::snmp::tag) return snmp_refuse_unknown_tag(tctx, tag);
  const confd_value_t* word = kp_value(kp, 0);
  const auto* text = reinterpret_cast<const char*>(CONFD_GET_BUFPTR(word));
  Value list;
  if (target_get_taglist(tctx, kp_value(kp, 2), list) != 0) return CONFD_ERR;
  const bool found =
      find_word_in_string_list(reinterpret_cast<const char*>(CONFD_GET_BUFPTR(list.get())),
                               CONFD_GET_BUFSIZE(list.get()), text, CONFD_GET_BUFSIZE(word))
          .has_value();
  if (found) {
    confd_data_reply_found(tctx);
  } else {
    confd_data_reply_not_found(tctx);
  }
  return CONFD_OK;
}

}  // namespace

const TargetColumn* find_target_column(u_int32_t tag) { return find_by_tag(kColumns, tag); }

int choicetag_secmodel_match(u_int32_t case_tag, int security_model) {
  const TargetCase* selected = find_by_tag(kTargetCases, case_tag);
  return selected != nullptr && selected->security_model == security_model ? 1 : 0;
}

MibRead read_taddress(const confd_trans_ctx* tctx, const confd_value_t* target, Value& out) {
  return target_read(tctx, out, kTAddressPath, target);
}

int target_get_taglist(const confd_trans_ctx* tctx, const confd_value_t* target, Value& out) {
  if (target_read(tctx, out, kTagListPath, target) != MibRead::value) return -1;
  return out->type == C_BUF ? 0 : -1;
}

confd_data_cbs* get_target_cbs() {
  static confd_data_cbs cbs;
  cbs = {};
  std::strcpy(cbs.callpoint, "target");
  cbs.exists_optional = target_exists_optional;
  cbs.get_elem = target_get_elem;
  cbs.get_next = target_get_next;
  cbs.set_elem = target_set_elem;
  cbs.create = target_create;
  cbs.remove = target_delete;
  cbs.get_case = target_get_case;
  cbs.set_case = target_set_case;
  cbs.get_attrs = snmp_get_attrs;
  cbs.set_attr = snmp_set_attr;
  return &cbs;
}

}  // namespace quillet
