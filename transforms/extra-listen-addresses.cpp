#include "transforms/extra-listen-addresses.h"

#include <confd_maapi.h>

#include <algorithm>
#include <array>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "core/daemon-sockets.h"
#include "model/snmp-tags.h"
#include "transforms/agent-settings.h"
#include "transforms/listen-address.h"
#include "util/ip-octets.h"
#include "util/keypath.h"
#include "util/snmp-transform-utils.h"
#include "util/value-guards.h"

namespace quillet {
namespace {

constexpr char kModule[] = "snmp-agent-transform";
constexpr char kDefaultPort[] = SNMP_AGENT "port";
constexpr char kList[] = SNMP_AGENT "extraIpPorts";

// CONFD_OK also for what is absent, which leaves `out` C_NOEXISTS.
int read_if_there(confd_trans_ctx* tctx, Value& out, const char* path) {
  if (maapi_get_elem(maapi_sock, tctx->thandle, out.out(), path) == CONFD_OK) return CONFD_OK;
  return confd_errno == CONFD_ERR_NOEXISTS ? CONFD_OK : CONFD_ERR;
}

// The leaf-list as it is stored, with the port of the items that have none of their own.
class StoredList {
 public:
  int read(confd_trans_ctx* tctx) {
    Value port;
    if (read_if_there(tctx, port, kDefaultPort) != CONFD_OK) return CONFD_ERR;
    if (port->type != C_NOEXISTS) default_port_ = CONFD_GET_UINT16(port.get());
    if (read_if_there(tctx, list_, kList) != CONFD_OK) return CONFD_ERR;
    if (list_->type == C_NOEXISTS) return CONFD_OK;
    const confd_value_t* extra_ip_ports = list_.get();
    const confd_value_t* items = CONFD_GET_LIST(extra_ip_ports);
    items_.assign(items, items + CONFD_GET_LISTSIZE(extra_ip_ports));
    return CONFD_OK;
  }

  // Borrowed from the list that was read.
  const std::vector<confd_value_t>& items() const { return items_; }

  // Nothing for an item that is no address.
  std::optional<ListenAddress> parse(const confd_value_t& item) const {
    const confd_value_t* ip_port = &item;
    return parse_listen_address(
        {reinterpret_cast<const char*>(CONFD_GET_BUFPTR(ip_port)), CONFD_GET_BUFSIZE(ip_port)},
        default_port_);
  }

  // The position of the first item that is this address; the number of items when none is.
  std::size_t find(const ListenAddress& address) const {
    const auto found = std::find_if(items_.begin(), items_.end(),
                                    [&](const auto& item) { return parse(item) == address; });
    return static_cast<std::size_t>(found - items_.begin());
  }

  // In key order; of equal addresses the one written last comes first.
  std::vector<ListenAddress> sorted() const {
    std::vector<ListenAddress> addresses;
    addresses.reserve(items_.size());
    for (auto item = items_.rbegin(); item != items_.rend(); ++item) {
      if (auto address = parse(*item)) addresses.push_back(std::move(*address));
    }
    std::stable_sort(addresses.begin(), addresses.end());
    return addresses;
  }

 private:
  Value list_;
  std::vector<confd_value_t> items_;
  std::optional<std::uint16_t> default_port_;
};

ListenAddress address_of_keys(const confd_hkeypath_t* kp, int level) {
  return {octets_of_ip(*kp_value(kp, level, 0)), CONFD_GET_UINT16(kp_value(kp, level, 1))};
}

std::array<confd_value_t, 2> keys_of_address(const ListenAddress& address) {
  std::array<confd_value_t, 2> keys{ip_value(address.ip), {}};
  CONFD_SET_UINT16(&keys[1], address.port);
  return keys;
}

// An IPv6 address needs no brackets: with its port behind it, it parses back.
std::string item_text(const confd_value_t* ip, const confd_value_t* port) {
  std::array<char, INET6_ADDRSTRLEN> ip_text{};
  std::array<char, 10> port_text{};
  confd_pp_value(ip_text.data(), static_cast<int>(ip_text.size()), ip);
  confd_pp_value(port_text.data(), static_cast<int>(port_text.size()), port);
  return std::string(ip_text.data()) + ":" + port_text.data();
}

int write_items(confd_trans_ctx* tctx, std::vector<confd_value_t>& items) {
  confd_value_t list;
  CONFD_SET_LIST(&list, items.data(), items.size());
  return maapi_set_elem(maapi_sock, tctx->thandle, &list, kList);
}

}  // namespace

int extra_ip_ports_get_next(confd_trans_ctx* tctx, confd_hkeypath_t* /*kp*/, long next) {
  StoredList stored;
  if (stored.read(tctx) != CONFD_OK) return CONFD_ERR;
  const std::vector<ListenAddress> addresses = stored.sorted();
  const long position = next == -1 ? 0 : next;
  if (position < 0 || position >= static_cast<long>(addresses.size())) {
    return snmp_reply_list_end(tctx);
  }
  const auto keys = keys_of_address(addresses[static_cast<std::size_t>(position)]);
  confd_data_reply_next_key(tctx, keys.data(), static_cast<int>(keys.size()), position + 1);
  return CONFD_OK;
}

int extra_ip_ports_get_elem(confd_trans_ctx* tctx, confd_hkeypath_t* kp) {
  const ListenAddress address = address_of_keys(kp, 1);
  StoredList stored;
  if (stored.read(tctx) != CONFD_OK) return CONFD_ERR;
  if (stored.find(address) == stored.items().size()) {
    confd_data_reply_not_found(tctx);
    return CONFD_OK;
  }
  switch (CONFD_GET_XMLTAG(kp_value(kp, 0))) {
    case tags::snmp::ip:
      confd_data_reply_value(tctx, kp_value(kp, 1, 0));
      return CONFD_OK;
    case tags::snmp::port:
      confd_data_reply_value(tctx, kp_value(kp, 1, 1));
      return CONFD_OK;
    default:
      return CONFD_ERR;
  }
}

int extra_ip_ports_create(confd_trans_ctx* tctx, confd_hkeypath_t* kp) {
  StoredList stored;
  if (stored.read(tctx) != CONFD_OK) return CONFD_ERR;
  const std::string text = item_text(kp_value(kp, 0, 0), kp_value(kp, 0, 1));
  // A server that does not ask first must not end up with the same address twice: the leaf-list
  // holds plain strings, and "[::1]:161" and "::1:161" are different ones.
  if (stored.find(address_of_keys(kp, 0)) < stored.items().size()) {
    return snmp_refuse(tctx, "%s already exists", text.c_str());
  }
  const int result = agent_create_unless_there(tctx->thandle, SNMP_AGENT);
  if (result != CONFD_OK) return snmp_write_result(tctx, result, kModule, __LINE__);
  std::vector<confd_value_t> items = stored.items();
  items.push_back(str_value(text.c_str()));
  return write_items(tctx, items);
}

int extra_ip_ports_delete(confd_trans_ctx* tctx, confd_hkeypath_t* kp) {
  StoredList stored;
  if (stored.read(tctx) != CONFD_OK || stored.items().empty()) return CONFD_ERR;
  std::vector<confd_value_t> items = stored.items();
  const std::size_t found = stored.find(address_of_keys(kp, 0));
  if (found < items.size()) items.erase(items.begin() + static_cast<std::ptrdiff_t>(found));
  return write_items(tctx, items);
}

}  // namespace quillet
