// The agent's settings, and its engine ID with all that hangs on it.
#include <algorithm>
#include <array>
#include <charconv>

#include "model.h"
#include "users.h"

namespace random_operations {
namespace {

const std::string kEngine = "engine-id";  // the settings that the ID is derived from

struct Leaf {
  const char* container;
  const char* name;
  Admits admits;
};

bool port(const std::string& v) { return admits::whole(v, 0, 65535); }
bool size(const std::string& v) { return admits::whole(v, INT32_MIN, INT32_MAX); }
bool enterprise(const std::string& v) { return admits::whole(v, 0, UINT32_MAX); }

const std::map<std::string, Leaf> kLeaves{
    {"enabled", {"snmpAgent", "enabled", admits::boolean}},
    {"ip", {"snmpAgent", "ip", admits::ip}},
    {"port", {"snmpAgent", "port", port}},
    {"max-message-size", {"snmpEngine", "snmpEngineMaxMessageSize", size}},
    {"contact", {"system", "sysContact", admits::text}},
    {"name", {"system", "sysName", admits::text}},
    {"location", {"system", "sysLocation", admits::text}}};

const std::map<std::string, Admits> kEngineLeaves{{"enterprise-number", enterprise},
                                                  {"from-ip", admits::ip},
                                                  {"from-mac-address", admits::octets},
                                                  {"from-text", admits::any},
                                                  {"other", admits::any}};
constexpr std::array<const char*, 4> kMethods{"from-ip", "from-mac-address", "from-text", "other"};
constexpr std::array<const char*, 3> kVersions{"v1", "v2c", "v3"};

std::optional<std::string> leaf_of(const Tables& t, const std::string& container,
                                   const std::string& leaf) {
  return t.has(container) ? column(t.containers.at(container), leaf) : std::nullopt;
}

std::string message_size(const std::string& stored) {
  constexpr unsigned long long kLeast = 484, kMost = 214748364;
  unsigned long long n = 0;
  std::from_chars(stored.data(), stored.data() + stored.size(), n);
  return std::to_string(std::clamp(n, kLeast, kMost));
}

std::optional<std::string> read(const Tables& t, const std::string& name) {
  const Leaf& leaf = kLeaves.at(name);
  const auto value = leaf_of(t, leaf.container, leaf.name);
  if (name == "enabled" && !value && t.has("snmpAgent")) return "false";
  if (name == "max-message-size" && t.has("snmpEngine")) {
    return message_size(value.value_or("50000"));
  }
  return value;
}

bool answers(const Tables& t, const std::string& version) {
  return leaf_of(t, "snmpVersions", version) == "true";
}

// ------------------------------------------------------------------ listen addresses

std::vector<Key> listens(const Tables& t, std::vector<Key>* in_order = nullptr) {
  std::vector<Key> all;
  for (const std::string& item : t.extra_ip_ports.value_or(std::vector<std::string>())) {
    std::string ip = item;
    std::string port = leaf_of(t, "snmpAgent", "port").value_or("");
    const std::size_t digits = ip.find_last_not_of("0123456789");
    if (digits != std::string::npos && digits > 0 && ip[digits] == ':') {
      port = ip.substr(digits + 1);
      ip.erase(digits);
    }
    if (ip.size() > 1 && ip.back() == ']') ip.pop_back();
    if (!ip.empty() && ip.front() == '[') ip.erase(0, 1);
    const bool reads = admits::ip(ip) && !port.empty();
    if (in_order != nullptr) in_order->push_back(reads ? Key{canonical_ip(ip), port} : Key{});
    if (reads) all.push_back({canonical_ip(ip), port});
  }
  const auto rank = [](const Key& key) {
    const std::string ip = ip_octets(key[0]);
    return std::tuple(ip.size(), ip, std::stoul(key[1]));
  };
  std::sort(all.begin(), all.end(), [&](const Key& a, const Key& b) { return rank(a) < rank(b); });
  return all;
}

void write_listen(Tables& t, const Operation& op) {
  Key key = op.path[2].keys;
  require(admits::ip(key[0]) && port(key[1]));
  key[0] = canonical_ip(key[0]);
  std::vector<Key> in_order;
  const std::vector<Key> all = listens(t, &in_order);
  const bool there = std::find(all.begin(), all.end(), key) != all.end();
  const bool is_entry = op.path.size() == 3;
  if (!op.is("delete")) {
    if (is_entry) require(!there, kThere);
    if (!is_entry) require(kLeaves.at(op.leaf()).admits(op.value()));
    t.containers["snmpAgent"];
    if (there) return;
    if (!t.extra_ip_ports) t.extra_ip_ports.emplace();
    t.extra_ip_ports->push_back(key[0] + ":" + key[1]);
    return;
  }
  require(there, kNotThere);
  if (!is_entry) refuse("Tried to delete invalid tag: " + op.leaf());
  const auto at = std::find(in_order.begin(), in_order.end(), key) - in_order.begin();
  t.extra_ip_ports->erase(t.extra_ip_ports->begin() + at);
}

// ------------------------------------------------------------------------ the engine ID

std::string lower(std::string text) {
  for (char& c : text) c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
  return text;
}

std::string joined(const std::string& head, const std::string& data) {
  return data.empty() ? head : head + ":" + data;
}

std::string derived(const std::string& number, const std::string& method,
                    const std::string& value) {
  const auto n = static_cast<std::uint32_t>(std::stoul(number)) | 0x80000000U;
  std::string head;
  for (int shift = 24; shift >= 0; shift -= 8) head += static_cast<char>(n >> shift & 0xff);
  head = hex(head) + ":0";
  if (method == "from-mac-address") return joined(head + "3", lower(value));
  if (method == "from-text") return joined(head + "4", hex(value));
  if (method == "other") {
    require(admits::octets(value), "Invalid engine-id: ");
    return joined(head + "5", lower(value));
  }
  return joined(head + (value.find(':') == std::string::npos ? "1" : "2"), hex(ip_octets(value)));
}

void derive(Tables& t) {
  const Row& settings = t.containers[kEngine];
  const auto method = std::find_if(kMethods.begin(), kMethods.end(),
                                   [&](const char* m) { return settings.count(m) != 0; });
  if (method == kMethods.end()) return;
  require(settings.count("enterprise-number") != 0);
  const std::string id = derived(settings.at("enterprise-number"), *method, settings.at(*method));
  require(admits::engine(id), "Invalid engine-id: ");
  t.containers["snmpEngine"];
  const std::string old = *t.engine_id();
  const auto is_under = [&](const auto& user) { return user.first[0] == id; };
  const Table& users = t.rows("usmUserEntry");
  require(id == old || std::none_of(users.begin(), users.end(), is_under),
          "cannot change engine-id - conflicting remote user exists");
  t.containers["snmpEngine"]["snmpEngineID"] = id;
  for (auto& [key, row] : t.rows("snmpCommunityEntry")) row["snmpCommunityContextEngineID"] = id;
  if (id != old) move_users(t, old, id);
}

void write_engine(Tables& t, const Operation& op) {
  Row* const settings = t.has(kEngine) ? &t.containers[kEngine] : nullptr;
  const bool whole = op.path.size() == 3;
  if (op.is("create")) {
    require(settings == nullptr, kThere);
    t.containers[kEngine];
  } else if (op.is("set")) {
    require(kEngineLeaves.at(op.leaf())(op.value()));
    Row& row = t.containers[kEngine];
    t.containers["snmpAgent"];
    if (op.leaf() != "enterprise-number") {
      for (const char* method : kMethods) row.erase(method);
    }
    const bool address = op.leaf() == "from-ip";
    row[op.leaf()] = address ? canonical_ip(op.value()) : op.value();
    if (op.leaf() == "from-mac-address") row[op.leaf()] = lower(op.value());
    derive(t);
  } else {
    require(settings != nullptr && (whole || settings->count(op.leaf()) != 0), kNotThere);
    if (whole) {
      t.containers.erase(kEngine);
    } else {
      settings->erase(op.leaf());
    }
  }
}

// ----------------------------------------------------------------------------------

void write_context(Tables& t, const Operation& op) {
  Table& rows = t.rows("contexts");
  const Key& key = op.path[2].keys;
  require(admits::name(key[0]));
  const bool there = rows.count(key) != 0;
  if (op.is("delete")) {
    require(there, kNotThere);
    if (op.path.size() > 3) refuse("Tried to delete invalid tag: name");
    rows.erase(key);
    return;
  }
  if (op.is("create")) require(!there, kThere);
  if (op.is("set")) require(admits::name(op.value()));
  t.containers["snmpAgent"];
  rows[key];
}

void write_version(Tables& t, const Operation& op) {
  if (op.path.size() == 3) {  // all of them
    require(std::any_of(kVersions.begin(), kVersions.end(),
                        [&](const char* v) { return answers(t, v); }),
            kNotThere);
    for (const char* v : kVersions) {
      if (answers(t, v)) t.containers["snmpVersions"][v] = "false";
    }
    return;
  }
  const bool there = answers(t, op.leaf());
  if (op.is("delete")) {
    require(there, kNotThere);
    t.containers["snmpVersions"][op.leaf()] = "false";
    return;
  }
  require(!there, kThere);
  t.containers["snmpAgent"];
  if (!t.has("snmpVersions")) {
    for (const char* v : kVersions) t.containers["snmpVersions"][v] = "false";
  }
  t.containers["snmpVersions"][op.leaf()] = "true";
}

}  // namespace

void write_agent(Transaction& tx, const Operation& op) {
  const std::string& node = op.path.at(2).name;
  if (node == "extra-ip-port") return write_listen(tx.t, op);
  if (node == "context") return write_context(tx.t, op);
  tx.touch("agent", {});
  if (node == "engine-id") return write_engine(tx.t, op);
  if (node == "version") return write_version(tx.t, op);
  const Leaf& leaf = kLeaves.at(node);
  if (op.is("delete")) return require(read(tx.t, node).has_value(), kNotThere);
  require(leaf.admits(op.value()));
  tx.t.containers["snmpAgent"];
  std::string value = op.value();
  if (node == "ip") value = canonical_ip(value);
  if (node == "max-message-size") {
    value = std::to_string(static_cast<std::uint64_t>(std::stoll(value)));
  }
  tx.t.containers[leaf.container][leaf.name] = value;
}

bool agent_holds(const Tables& t) {
  return !t.has(kEngine) || t.containers.at(kEngine).count("enterprise-number") != 0;
}

void show_agent(View& view, const Tables& t) {
  const std::string path = "/snmp/agent/";
  for (const auto& [name, leaf] : kLeaves) view.optional(path + name, read(t, name));
  for (const char* v : kVersions) {
    if (answers(t, v)) view.leaf(path + "version/" + v, "");
  }
  for (const Key& key : listens(t)) {
    const std::string entry = view.entry(path + "extra-ip-port", key);
    view.leaf(entry + "/ip", key[0]);
    view.leaf(entry + "/port", key[1]);
  }
  for (const auto& [key, row] : t.rows("contexts")) {
    view.leaf(view.entry(path + "context", key) + "/name", key[0]);
  }
  if (!t.has(kEngine)) return;
  const Row& settings = t.containers.at(kEngine);
  for (const auto& [name, value] : settings) view.leaf(path + "engine-id/" + name, value);
  if (settings.empty()) view.empty(path + "engine-id");
}

std::optional<std::string> configured_engine_id(const Tables& t) {
  if (!t.has(kEngine)) return std::nullopt;
  const Row& settings = t.containers.at(kEngine);
  if (settings.count("enterprise-number") == 0) return std::nullopt;
  for (const char* method : kMethods) {
    const auto value = settings.find(method);
    if (value == settings.end()) continue;
    return derived(settings.at("enterprise-number"), method, value->second);
  }
  return std::nullopt;
}

}  // namespace random_operations
