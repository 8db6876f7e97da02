#include "transforms/snmp-agent-transform.h"

#include <confd_maapi.h>

#include <algorithm>
#include <cstring>

#include "core/daemon-sockets.h"
#include "model/snmp-tags.h"
#include "transforms/agent-settings.h"
#include "transforms/engine-id.h"
#include "transforms/extra-listen-addresses.h"
#include "util/keypath.h"
#include "util/snmp-attribute-store.h"
#include "util/snmp-transform-utils.h"
#include "util/tag-table.h"
#include "util/value-guards.h"

namespace quillet {
namespace {

constexpr char kModule[] = "snmp-agent-transform";

#define SYSTEM "/SNMPv2_MIB:SNMPv2-MIB/system/"
#define CONTEXTS SNMP_AGENT "contexts"
#define CONTEXT CONTEXTS "{%x}"
#define VERSION SNMP_VERSIONS "/%x"

// As the model's C_INT32 can say it; every engine takes 484 octets (RFC 3412, HeaderData).
constexpr u_int64_t kSmallestMessageSize = 484;
constexpr u_int64_t kLargestMessageSize = 214748364;

enum class Conversion { unchanged, message_size };

struct Leaf {
  u_int32_t tag;
  const char* path;
  Conversion conversion;
};

constexpr Leaf kLeaves[] = {
    {tags::snmp::enabled, SNMP_AGENT "enabled", Conversion::unchanged},
    {tags::snmp::ip, SNMP_AGENT "ip", Conversion::unchanged},
    {tags::snmp::port, SNMP_AGENT "port", Conversion::unchanged},
    {tags::snmp::max_message_size, SNMP_ENGINE "/snmpEngineMaxMessageSize",
     Conversion::message_size},
    {tags::snmp::contact, SYSTEM "sysContact", Conversion::unchanged},
    {tags::snmp::name, SYSTEM "sysName", Conversion::unchanged},
    {tags::snmp::location, SYSTEM "sysLocation", Conversion::unchanged},
};

// Settings that the engine ID is derived from.
bool is_engine_id_input(u_int32_t tag) {
  switch (tag) {
    case tags::snmp::enterprise_number:
    case tags::snmp::from_ip:
    case tags::snmp::from_mac_address:
    case tags::snmp::from_text:
    case tags::snmp::other:
      return true;
    default:
      return false;
  }
}

// A leaf of a list entry: ip and name also occur there.
bool is_key_leaf(const confd_hkeypath_t* kp) { return kp_is_tag(kp, 0) && !kp_is_tag(kp, 1); }

bool is_version_leaf(const confd_hkeypath_t* kp) {
  return kp->len > 1 && CONFD_GET_XMLTAG(kp_value(kp, 1)) == tags::snmp::version;
}

int reply_not_found(confd_trans_ctx* tctx) {
  confd_data_reply_not_found(tctx);
  return CONFD_OK;
}

int reply_existence(confd_trans_ctx* tctx, int found) {
  if (found < 0) return CONFD_ERR;
  if (found == 0) return reply_not_found(tctx);
  confd_data_reply_found(tctx);
  return CONFD_OK;
}

int get_message_size(confd_trans_ctx* tctx, const char* path) {
  Value stored;
  if (maapi_get_elem(maapi_sock, tctx->thandle, stored.out(), path) != CONFD_OK) {
    return snmp_reply_read_failure(tctx);
  }
  const u_int64_t size = std::clamp(u_int64_t{CONFD_GET_UINT64(stored.get())}, kSmallestMessageSize,
                                    kLargestMessageSize);
  const confd_value_t v = int32_value(static_cast<std::int32_t>(size));
  confd_data_reply_value(tctx, &v);
  return CONFD_OK;
}

int get_key_leaf(confd_trans_ctx* tctx, confd_hkeypath_t* kp) {
  switch (CONFD_GET_XMLTAG(kp_value(kp, 2))) {
    case tags::snmp::extra_ip_port:
      return extra_ip_ports_get_elem(tctx, kp);
    case tags::snmp::context:
      return snmp_reply_mib_elem(tctx, CONTEXT "/name", kp_value(kp, 1));
    default:
      return reply_not_found(tctx);
  }
}

int set_message_size(confd_trans_ctx* tctx, const char* path, const confd_value_t* newval) {
  confd_value_t v;
  CONFD_SET_UINT64(&v, static_cast<u_int64_t>(std::int64_t{CONFD_GET_INT32(newval)}));
  agent_create_unless_there(tctx->thandle, SNMP_ENGINE);
  return maapi_set_elem(maapi_sock, tctx->thandle, &v, path);
}

int set_version(confd_trans_ctx* tctx, const confd_value_t* version, bool spoken) {
  confd_value_t v = bool_value(spoken);
  return maapi_set_elem(maapi_sock, tctx->thandle, &v, VERSION, version);
}

// All versions of a new container are there, so that what is not chosen is not spoken.
void create_versions(confd_trans_ctx* tctx) {
  agent_create_unless_there(tctx->thandle, SNMP_AGENT);
  if (maapi_exists(maapi_sock, tctx->thandle, SNMP_VERSIONS) > 0) return;
  maapi_create(maapi_sock, tctx->thandle, SNMP_VERSIONS);
  for (const u_int32_t tag : {tags::snmp::v1, tags::snmp::v2c, tags::snmp::v3}) {
    const confd_value_t version = xmltag_value(tag, tags::snmp::ns);
    set_version(tctx, &version, false);
  }
}

int create_context(confd_trans_ctx* tctx, const confd_value_t* name) {
  int result = agent_create_unless_there(tctx->thandle, SNMP_AGENT);
  if (result == CONFD_OK) result = maapi_create(maapi_sock, tctx->thandle, CONTEXT, name);
  return snmp_write_result(tctx, result, kModule, __LINE__);
}

int create_entry(confd_trans_ctx* tctx, confd_hkeypath_t* kp) {
  const confd_value_t* list = kp_value(kp, 1);
  switch (CONFD_GET_XMLTAG(list)) {
    case tags::snmp::extra_ip_port:
      return extra_ip_ports_create(tctx, kp);
    case tags::snmp::context:
      return create_context(tctx, kp_value(kp, 0));
    default:
      return snmp_refuse_unknown_tag(tctx, list);
  }
}

int delete_entry(confd_trans_ctx* tctx, confd_hkeypath_t* kp) {
  const confd_value_t* list = kp_value(kp, 1);
  switch (CONFD_GET_XMLTAG(list)) {
    case tags::snmp::extra_ip_port:
      return extra_ip_ports_delete(tctx, kp);
    case tags::snmp::context:
      return snmp_maapi_delete(tctx, kp, CONTEXT);
    default:
      return snmp_refuse_unknown_tag(tctx, list);
  }
}

int delete_leaf(confd_trans_ctx* tctx, confd_hkeypath_t* kp) {
  const confd_value_t* tag = kp_value(kp, 0);
  if (CONFD_GET_XMLTAG(tag) == tags::snmp::engine_id) return CONFD_OK;
  if (is_key_leaf(kp)) return snmp_refuse_delete(tctx, tag);
  if (maapi_exists(maapi_sock, tctx->thandle, SNMP_AGENT) < 1) return CONFD_OK;
  return is_version_leaf(kp) ? set_version(tctx, tag, false) : CONFD_OK;
}

// /agent/LEAF, /agent/version/LEAF or a key leaf
int agent_get_elem(confd_trans_ctx* tctx, confd_hkeypath_t* kp) {
  if (is_key_leaf(kp)) return get_key_leaf(tctx, kp);
  const confd_value_t* tag = kp_value(kp, 0);
  const Leaf* leaf = find_by_tag(kLeaves, CONFD_GET_XMLTAG(tag));
  if (leaf == nullptr) {
    return is_version_leaf(kp) ? snmp_reply_mib_elem(tctx, VERSION, tag) : reply_not_found(tctx);
  }
  if (leaf->conversion == Conversion::message_size) return get_message_size(tctx, leaf->path);
  return snmp_reply_mib_elem_path(tctx, leaf->path);
}

// /agent/version/LEAF
int agent_exists(confd_trans_ctx* tctx, confd_hkeypath_t* kp) {
  const confd_value_t* tag = kp_value(kp, 0);
  if (is_version_leaf(kp)) {
    // One read answers for the container as well: below an absent one nothing can be read.
    Value spoken;
    const int result = maapi_get_elem(maapi_sock, tctx->thandle, spoken.out(), VERSION, tag);
    return reply_existence(tctx, result == CONFD_OK && CONFD_GET_BOOL(spoken.get()) != 0);
  }
  switch (CONFD_GET_XMLTAG(tag)) {
    case tags::snmp::max_message_size:
    case tags::snmp::ip:
    case tags::snmp::port: {
      const Leaf* leaf = find_by_tag(kLeaves, CONFD_GET_XMLTAG(tag));
      return reply_existence(tctx, maapi_exists(maapi_sock, tctx->thandle, leaf->path));
    }
    default:
      return reply_not_found(tctx);
  }
}

int agent_get_next(confd_trans_ctx* tctx, confd_hkeypath_t* kp, long next) {
  const confd_value_t* tag = kp_value(kp, 0);
  switch (CONFD_GET_XMLTAG(tag)) {
    case tags::snmp::extra_ip_port:
      return extra_ip_ports_get_next(tctx, kp, next);
    case tags::snmp::context:
      return snmp_generic_get_next(tctx, kp, next, CONTEXTS);
    default:
      return snmp_refuse_unknown_tag(tctx, tag);
  }
}

// /agent/LEAF, /agent/engine-id/LEAF or a key leaf, which cannot change
int agent_set_elem(confd_trans_ctx* tctx, confd_hkeypath_t* kp, confd_value_t* newval) {
  const int thandle = tctx->thandle;
  const u_int32_t tag = CONFD_GET_XMLTAG(kp_value(kp, 0));
  if (is_key_leaf(kp)) return CONFD_OK;
  agent_create_unless_there(thandle, SNMP_AGENT);
  if (is_engine_id_input(tag)) return engine_id_setup(maapi_sock, thandle, tctx);
  const Leaf* leaf = find_by_tag(kLeaves, tag);
  if (leaf == nullptr) return CONFD_ERR;
  if (leaf->conversion == Conversion::message_size) {
    return set_message_size(tctx, leaf->path, newval);
  }
  return maapi_set_elem(maapi_sock, thandle, newval, leaf->path);
}

// /agent/context{name}, /agent/extra-ip-port{ip port}, /agent/engine-id or /agent/version/LEAF
int agent_create(confd_trans_ctx* tctx, confd_hkeypath_t* kp) {
  if (!kp_is_tag(kp, 0)) return create_entry(tctx, kp);
  const confd_value_t* tag = kp_value(kp, 0);
  if (CONFD_GET_XMLTAG(tag) == tags::snmp::engine_id) return CONFD_OK;
  if (!is_version_leaf(kp)) return snmp_refuse_unknown_tag(tctx, tag);
  create_versions(tctx);
  return set_version(tctx, tag, true);
}

int agent_delete(confd_trans_ctx* tctx, confd_hkeypath_t* kp) {
  const int result = kp_is_tag(kp, 0) ? delete_leaf(tctx, kp) : delete_entry(tctx, kp);
  return result == CONFD_OK ? snmp_attrs_delete_under(tctx, kp) : result;
}

}  // namespace

confd_data_cbs* get_agent_cbs() {
  static confd_data_cbs cbs;
  cbs = {};
  std::strcpy(cbs.callpoint, "agent");
  cbs.exists_optional = agent_exists;
  cbs.get_elem = agent_get_elem;
  cbs.get_next = agent_get_next;
  cbs.set_elem = agent_set_elem;
  cbs.create = agent_create;
  cbs.remove = agent_delete;
  cbs.get_attrs = snmp_get_attrs;
  cbs.set_attr = snmp_set_attr;
  return &cbs;
}

}  // namespace quillet
