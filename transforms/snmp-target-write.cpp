// Write callbacks of the target transform.
#include <confd_maapi.h>

#include <vector>

#include "core/daemon-sockets.h"
#include "transforms/snmp-target-internal.h"
#include "transforms/tag-list.h"
#include "transforms/target-address.h"
#include "transforms/target-params.h"
#include "util/ip-octets.h"
#include "util/keypath.h"
#include "util/snmp-attribute-store.h"
#include "util/snmp-transform-utils.h"
#include "util/tag-table.h"

namespace quillet {
namespace {

constexpr char kModule[] = "snmp-target-transform";
constexpr char kTooLong[] = "Tag list too long";

int write(const confd_trans_ctx* tctx, const confd_value_t& v, const char* path,
          const confd_value_t* key) {
  return maapi_set_elem(maapi_sock, tctx->thandle, const_cast<confd_value_t*>(&v), path, key);
}

// A write that the model is meant to make impossible to refuse.
int must_write(confd_trans_ctx* tctx, const confd_value_t& v, const char* path,
               const confd_value_t* key) {
  return snmp_write_result(tctx, write(tctx, v, path, key), kModule, __LINE__);
}

int must_delete(confd_trans_ctx* tctx, const char* path, const confd_value_t* key) {
  const int result = maapi_delete(maapi_sock, tctx->thandle, path, key);
  return snmp_write_result(tctx, result, kModule, __LINE__);
}

// ------------------------------------------------------------------------- addresses

// The octets kept of the stored address; an IPv4 address of zeros where there is none, or one that
// is too short to be read.
TransportAddress stored_address(const confd_trans_ctx* tctx, const confd_value_t* target) {
  Value stored;
  if (read_taddress(tctx, target, stored) == MibRead::value) {
    const auto taddress =
        decode_taddress(CONFD_GET_BINARY_PTR(stored.get()), CONFD_GET_BINARY_SIZE(stored.get()));
    if (taddress) return *taddress;
  }
  return {std::vector<std::uint8_t>(sizeof(in_addr)), kDefaultUdpPort};
}

int write_taddress(const confd_trans_ctx* tctx, const TransportAddress& taddress,
                   const confd_value_t* target) {
  const auto octets = encode_taddress(taddress);
  return write(tctx, binary_value(octets.data(), octets.size()), kTAddressPath, target);
}

int set_ip(confd_trans_ctx* tctx, const confd_value_t* target, const confd_value_t& ip) {
  if (must_write(tctx, tdomain_for_address_type(ip.type), kTDomainPath, target) != CONFD_OK) {
    return CONFD_ERR;
  }
  TransportAddress taddress = stored_address(tctx, target);
  taddress.address = octets_of_ip(ip);
  return write_taddress(tctx, taddress, target);
}

int set_port(confd_trans_ctx* tctx, const confd_value_t* target, const confd_value_t* newval) {
  TransportAddress taddress = stored_address(tctx, target);
  taddress.port = CONFD_GET_UINT16(newval);
  return write_taddress(tctx, taddress, target);
}

int delete_address(confd_trans_ctx* tctx, u_int32_t tag, const confd_value_t* target) {
  Value stored;
  const MibRead read = read_taddress(tctx, target, stored);
  if (read == MibRead::absent) return CONFD_OK;
  if (read == MibRead::failed) return snmp_refuse(tctx, "Problem retrieving target address");
  if (tag == tags::snmp::ip) {
    const int result = must_delete(tctx, kTDomainPath, target);
    return result == CONFD_OK ? must_delete(tctx, kTAddressPath, target) : result;
  }
  auto taddress =
      decode_taddress(CONFD_GET_BINARY_PTR(stored.get()), CONFD_GET_BINARY_SIZE(stored.get()));
  if (!taddress) return CONFD_OK;
  taddress->port = 0;
  return snmp_write_result(tctx, write_taddress(tctx, *taddress, target), kModule, __LINE__);
}

// ------------------------------------------------------------------------------ tags

int set_tags(confd_trans_ctx* tctx, const confd_value_t* target, const confd_value_t* newval) {
  std::size_t octets = 0;
  const confd_value_t* words = CONFD_GET_LIST(newval);
  for (unsigned i = 0; i < CONFD_GET_LISTSIZE(newval); ++i) {
    const confd_value_t* word = &words[i];
    octets += CONFD_GET_BUFSIZE(word) + (i > 0 ? 1 : 0);
  }
  if (octets > kMaxTagList) return snmp_refuse(tctx, kTooLong);
  return snmp_maapi_set_string_list_elem(tctx->thandle, newval, kTagListPath, target);
}

// Adds or removes the word that a leaf-list entry's keypath ends in.
int change_tag(confd_trans_ctx* tctx, const confd_hkeypath_t* kp,
               int (*operation)(const confd_value_t*, const confd_value_t*, confd_value_t*)) {
  const confd_value_t* target = kp_value(kp, 2);
  Value list;
  if (target_get_taglist(tctx, target, list) != 0) return CONFD_ERR;
  Value changed;
  if (operation(list.get(), kp_value(kp, 0), changed.out()) == 0) return CONFD_OK;
  if (CONFD_GET_BUFSIZE(changed.get()) > kMaxTagList) return snmp_refuse(tctx, kTooLong);
  return write(tctx, *changed, kTagListPath, target);
}

// ---------------------------------------------------------------------------- params

int set_params_leaf(confd_trans_ctx* tctx, const confd_hkeypath_t* kp,
                    const confd_value_t& newval) {
  Value params;
  if (ensure_private_params_row(tctx, target_key(kp), params) != CONFD_OK) return CONFD_ERR;
  const bool level = CONFD_GET_XMLTAG(kp_value(kp, 0)) == tags::snmp::sec_level;
  const char* path = level ? kSecurityLevelPath : kSecurityNamePath;
  if (write(tctx, newval, path, params.get()) == CONFD_OK) return CONFD_OK;
  return snmp_refuse(
      tctx, level ? "Problem setting specified sec-level" : "Problem setting specified user ");
}

// Deletes a security leaf unless its container is one that the row does not serve.
int delete_params_leaf(confd_trans_ctx* tctx, const confd_hkeypath_t* kp) {
  Value params;
  if (target_params_name(tctx, target_key(kp), params) != MibRead::value) {
    return snmp_refuse(tctx, "Target has no parameters");
  }
  Value model;
  const MibRead read = target_read(tctx, model, kMpModelPath, params.get());
  if (read == MibRead::failed) return snmp_refuse(tctx, "Problem retrieving params MP model");
  if (read == MibRead::value) {
    const TargetCase* c = find_by_tag(kTargetCases, CONFD_GET_XMLTAG(kp_value(kp, 1)));
    if (c == nullptr || c->mp_model != CONFD_GET_INT32(model.get())) return CONFD_OK;
  }
  const bool level = CONFD_GET_XMLTAG(kp_value(kp, 0)) == tags::snmp::sec_level;
  return maapi_delete(maapi_sock, tctx->thandle, level ? kSecurityLevelPath : kSecurityNamePath,
                      params.get());
}

int write_case(confd_trans_ctx* tctx, const TargetCase& selected, const confd_value_t* params) {
  if (selected.clears_level &&
      must_write(tctx, enum_value(1), kSecurityLevelPath, params) != CONFD_OK) {
    return CONFD_ERR;
  }
  if (write(tctx, int32_value(selected.security_model), kSecurityModelPath, params) != CONFD_OK) {
    return snmp_refuse(tctx, "Set of snmpTargetParamsSecurityModel failed.");
  }
  if (write(tctx, int32_value(selected.mp_model), kMpModelPath, params) != CONFD_OK) {
    return snmp_refuse(tctx, "Set of snmpTargetParamsMPModel failed.");
  }
  return CONFD_OK;
}

// --------------------------------------------------------------------------- entries

int create_target(confd_trans_ctx* tctx, const confd_value_t* target) {
  if (maapi_exists(maapi_sock, tctx->thandle, TARGET_ADDR_ROW, target) == 0) {
    const int created = maapi_create(maapi_sock, tctx->thandle, TARGET_ADDR_ROW, target);
    if (snmp_write_result(tctx, created, kModule, __LINE__) != CONFD_OK) return CONFD_ERR;
  }
  Value params;
  if (alloc_params_name(tctx, params) != 0) {
    return snmp_refuse(tctx, "No free name for target parameters");
  }
  if (create_params_row(tctx, params.get()) != CONFD_OK ||
      must_write(tctx, *params, TARGET_ADDR_ROW "/snmpTargetAddrParams", target) != CONFD_OK ||
      must_write(tctx, str_value(""), kTagListPath, target) != CONFD_OK) {
    return CONFD_ERR;
  }
  return must_write(tctx, int32_value(3), TARGET_ADDR_ROW "/snmpTargetAddrRetryCount", target);
}

// The params row goes with its last user.
int delete_target(confd_trans_ctx* tctx, const confd_value_t* target) {
  Value params;
  if (target_params_name(tctx, target, params) == MibRead::value &&
      count_targets_using_params(tctx, params.get()) < 2 &&
      maapi_exists(maapi_sock, tctx->thandle, TARGET_PARAMS_ROW, params.get()) == 1 &&
      must_delete(tctx, TARGET_PARAMS_ROW, params.get()) != CONFD_OK) {
    return CONFD_ERR;
  }
  return must_delete(tctx, TARGET_ADDR_ROW, target);
}

int delete_leaf(confd_trans_ctx* tctx, confd_hkeypath_t* kp) {
  const confd_value_t* tag = kp_value(kp, 0);
  const confd_value_t* target = kp_value(kp, 1);
  const u_int32_t leaf = CONFD_GET_XMLTAG(tag);
  if (is_ignored(kp, leaf)) return CONFD_OK;
  switch (leaf) {
    case tags::snmp::ip:
    case tags::snmp::port:
      return delete_address(tctx, leaf, target);
    case tags::snmp::tag:
      return maapi_delete(maapi_sock, tctx->thandle, kTagListPath, target);
    case tags::snmp::user_name:
    case tags::snmp::sec_name:
    case tags::snmp::sec_level:
      return delete_params_leaf(tctx, kp);
    default:
      break;
  }
  const TargetColumn* column = leaf == tags::snmp::name ? nullptr : find_target_column(leaf);
  if (column == nullptr) return snmp_refuse_delete(tctx, tag);
  return maapi_delete(maapi_sock, tctx->thandle, column->path, target);
}

int delete_entry(confd_trans_ctx* tctx, confd_hkeypath_t* kp) {
  switch (CONFD_GET_XMLTAG(kp_value(kp, 1))) {
    case tags::snmp::tag:
      return change_tag(tctx, kp, remove_word_from_string_list);
    case tags::snmp::target:
      return delete_target(tctx, target_key(kp));
    default:
      return CONFD_ERR;
  }
}

int set_column(confd_trans_ctx* tctx, const TargetColumn& column, const confd_value_t* target,
               const confd_value_t* newval) {
  switch (column.conversion) {
    case TargetConversion::uint32: {
      // A number past the column's range arrives there as a negative one and is refused.
      const auto number = static_cast<std::int32_t>(CONFD_GET_UINT32(newval));
      return write(tctx, int32_value(number), column.path, target);
    }
    case TargetConversion::uint8:
      return write(tctx, int32_value(CONFD_GET_UINT8(newval)), column.path, target);
    case TargetConversion::octets:
      if (write(tctx, *newval, column.path, target) == CONFD_OK) return CONFD_OK;
      return snmp_refuse(tctx, "Problem setting specified engine-id");
    default:
      return write(tctx, *newval, column.path, target);
  }
}

}  // namespace

int target_set_elem(confd_trans_ctx* tctx, confd_hkeypath_t* kp, confd_value_t* newval) {
  const confd_value_t* tag = kp_value(kp, 0);
  const u_int32_t leaf = CONFD_GET_XMLTAG(tag);
  if (is_ignored(kp, leaf)) return CONFD_OK;
  const confd_value_t* target = kp_value(kp, 1);
  if (const TargetColumn* column = find_target_column(leaf)) {
    return set_column(tctx, *column, target, newval);
  }
  switch (leaf) {
    case tags::snmp::tag:
      return set_tags(tctx, target, newval);
    case tags::snmp::ip:
      return set_ip(tctx, target, *newval);
    case tags::snmp::port:
      return set_port(tctx, target, newval);
    case tags::snmp::user_name:
    case tags::snmp::sec_name:
    case tags::snmp::sec_level:
      return set_params_leaf(tctx, kp, *newval);
    default:
      return snmp_refuse_unknown_tag(tctx, tag);
  }
}

int target_create(confd_trans_ctx* tctx, confd_hkeypath_t* kp) {
  const confd_value_t* tag = kp_value(kp, 1);
  switch (CONFD_GET_XMLTAG(tag)) {
    case tags::snmp::tag:
      return change_tag(tctx, kp, add_word_to_string_list);
    case tags::snmp::target:
      return create_target(tctx, kp_value(kp, 0));
    default:
      return snmp_refuse_unknown_tag(tctx, tag);
  }
}

int target_delete(confd_trans_ctx* tctx, confd_hkeypath_t* kp) {
  const u_int32_t leaf = kp_is_tag(kp, 0) ? CONFD_GET_XMLTAG(kp_value(kp, 0)) : 0;
  if (leaf == tags::snmp::ip && in_ignored_container(kp)) return CONFD_OK;
  const int result = kp_is_tag(kp, 0) ? delete_leaf(tctx, kp) : delete_entry(tctx, kp);
  return result == CONFD_OK ? snmp_attrs_delete_under(tctx, kp) : result;
}

int target_set_case(confd_trans_ctx* tctx, confd_hkeypath_t* kp, confd_value_t* choice,
                    confd_value_t* caseval) {
  const u_int32_t which = CONFD_GET_XMLTAG(choice);
  if (which == tags::snmp::secure_transport) return CONFD_OK;
  if (which != tags::snmp::params) return snmp_refuse(tctx, "Invalid case to set");
  if (caseval == nullptr) {
    return snmp_refuse(tctx, "Missing mandatory case selection (v1/v2c/usm)");
  }
  Value params;
  if (ensure_private_params_row(tctx, kp_value(kp, 0), params) != CONFD_OK) return CONFD_ERR;
  const TargetCase* selected = find_by_tag(kTargetCases, CONFD_GET_XMLTAG(caseval));
  if (selected == nullptr) return snmp_refuse(tctx, "Problem retrieving target params case");
  return write_case(tctx, *selected, params.get());
}

}  // namespace quillet
