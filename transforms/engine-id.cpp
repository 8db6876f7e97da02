#include "transforms/engine-id.h"

#include <confd_maapi.h>

#include <array>
#include <optional>

#include "core/daemon-sockets.h"
#include "model/snmp-tags.h"
#include "transforms/agent-settings.h"
#include "transforms/community-engine-id.h"
#include "transforms/engine-id-format.h"
#include "transforms/usm-relocalization.h"
#include "util/ip-octets.h"
#include "util/snmp-transform-utils.h"
#include "util/tag-table.h"

namespace quillet {
namespace {

constexpr char kModule[] = "snmp-agent-transform";

#define ENGINE_ID_SETTINGS "/snmp:snmp/agent/engine-id"

// What a method contributes: its format and its data octets.
struct MethodData {
  EngineIdFormat format;
  Octets data;
};
using MethodResult = std::optional<MethodData>;

MethodResult read_ip(int thandle) {
  Value v;
  if (maapi_get_elem(maapi_sock, thandle, v.out(), ENGINE_ID_SETTINGS "/from-ip") != CONFD_OK) {
    return std::nullopt;
  }
  return MethodData{v->type == C_IPV6 ? EngineIdFormat::ipv6 : EngineIdFormat::ipv4,
                    octets_of_ip(*v)};
}

MethodResult octets_read(int result, unsigned char* octets, int size, EngineIdFormat format) {
  if (result != CONFD_OK) return std::nullopt;
  const MallocPtr<unsigned char> owner(octets);
  return MethodData{format, Octets(octets, octets + size)};
}

MethodResult read_mac(int thandle) {
  unsigned char* octets = nullptr;
  int size = 0;
  const int result = maapi_get_binary_elem(maapi_sock, thandle, &octets, &size,
                                           ENGINE_ID_SETTINGS "/from-mac-address");
  return octets_read(result, octets, size, EngineIdFormat::mac);
}

MethodResult read_text(int thandle) {
  unsigned char* octets = nullptr;
  int size = 0;
  const int result =
      maapi_get_buf_elem(maapi_sock, thandle, &octets, &size, ENGINE_ID_SETTINGS "/from-text");
  return octets_read(result, octets, size, EngineIdFormat::text);
}

MethodResult read_other(int thandle) {
  std::array<char, 251> text{};
  if (maapi_get_str_elem(maapi_sock, thandle, text.data(), static_cast<int>(text.size()),
                         ENGINE_ID_SETTINGS "/other") != CONFD_OK) {
    return std::nullopt;
  }
  auto octets = parse_octet_groups(text.data());
  if (!octets) return std::nullopt;
  return MethodData{EngineIdFormat::octets, std::move(*octets)};
}

struct Method {
  u_int32_t tag;
  MethodResult (*read)(int thandle);
  const char* unreadable;  // reason of the refusal when there is no result
};

constexpr Method kMethods[] = {
    {tags::snmp::from_ip, read_ip, "from-ip cannot be read"},
    {tags::snmp::from_mac_address, read_mac, "from-mac-address cannot be read"},
    {tags::snmp::from_text, read_text, "from-text cannot be read"},
    {tags::snmp::other, read_other,
     "other is not at most 27 pairs of hexadecimal digits with colons between"},
};

// Gives -1; the text goes to the client, if there is one.
int refuse_engine_id(confd_trans_ctx* tctx, const char* reason) {
  if (tctx != nullptr) confd_trans_seterr(tctx, "Invalid engine-id: %s", reason);
  return -1;
}

int read_method(int thandle, Value& method) {
  return maapi_get_case(maapi_sock, thandle, "method", method.out(), ENGINE_ID_SETTINGS);
}

// Derives the ID of the selected method; out stays C_NOEXISTS while there is none.
int derive_engine_id(int thandle, confd_trans_ctx* tctx, Value& out) {
  Value method;
  if (read_method(thandle, method) != CONFD_OK) return 0;
  return get_engine_id_by_method(thandle, CONFD_GET_XMLTAG(method.get()), out, tctx);
}

int store_engine_id(int sock, int thandle, confd_trans_ctx* tctx, Value& id) {
  if (maapi_exists(sock, thandle, SNMP_ENGINE "/snmpEngineID") > 0) {
    maapi_set_elem(sock, thandle, id.get(), SNMP_ENGINE "/snmpEngineID");
  }
  return snmp_write_result(tctx, community_set_context_engine_id(sock, thandle, id.get()), kModule,
                           __LINE__);
}

}  // namespace

int get_engine_id_by_method(int thandle, u_int32_t method_tag, Value& out, confd_trans_ctx* tctx) {
  u_int32_t enterprise_number = 0;
  if (maapi_get_u_int32_elem(maapi_sock, thandle, &enterprise_number,
                             ENGINE_ID_SETTINGS "/enterprise-number") != CONFD_OK) {
    return refuse_engine_id(tctx, "the enterprise-number is not set");
  }
  MethodResult data = MethodData{EngineIdFormat::none, {}};
  if (const Method* method = find_by_tag(kMethods, method_tag)) {
    data = method->read(thandle);
    if (!data) return refuse_engine_id(tctx, method->unreadable);
  }
  const Octets id = build_engine_id(enterprise_number, data->format, data->data);
  if (id.size() > kEngineIdMaxSize) return refuse_engine_id(tctx, "more than 32 octets");
  out = Value::copy_of(binary_value(id.data(), id.size()));
  return 0;
}

int snmp_agent_get_engine_id(int thandle, Value& out) {
  Value method;
  out = Value();
  const int result = read_method(thandle, method);
  if (result != CONFD_OK) return result;
  return get_engine_id_by_method(thandle, CONFD_GET_XMLTAG(method.get()), out);
}

int get_local_engine_id(int thandle, Value& out) {
  out = Value();
  if (maapi_exists(maapi_sock, thandle, SNMP_ENGINE "/") <= 0) return 0;
  return maapi_get_elem(maapi_sock, thandle, out.out(), SNMP_ENGINE "//snmpEngineID");
}

int engine_id_setup(int sock, int thandle, confd_trans_ctx* tctx) {
  Value new_id;
  int result = derive_engine_id(thandle, tctx, new_id);
  if (result != 0 || new_id->type == C_NOEXISTS) return result;
  for (const char* container : {SNMP_AGENT, SNMP_ENGINE}) {
    result =
        snmp_write_result(tctx, agent_create_unless_there(thandle, container), kModule, __LINE__);
    if (result != CONFD_OK) return result;
  }
  Value old_id;
  get_local_engine_id(thandle, old_id);
  result = usm_engine_id_conflict(thandle, old_id.get(), new_id.get());
  if (result != 0) {
    if (tctx != nullptr) {
      confd_trans_seterr(tctx, "cannot change engine-id - conflicting remote user exists");
    }
    return result;
  }
  result = store_engine_id(sock, thandle, tctx, new_id);
  // A user who cannot be moved is told by a text or a log line of its own; the ID has changed.
  if (confd_val_eq(old_id.get(), new_id.get()) == 0) {
    usm_relocalize_users(sock, thandle, tctx, new_id.get(), old_id.get());
  }
  return result;
}

int engine_id_setup_if_configured(int sock, int thandle) {
  if (maapi_exists(sock, thandle, ENGINE_ID_SETTINGS) <= 0) return 0;
  return engine_id_setup(sock, thandle, nullptr);
}

}  // namespace quillet
