#include "tables.h"

#include <arpa/inet.h>

#include <algorithm>
#include <array>
#include <cctype>
#include <charconv>

namespace random_operations {
namespace {

using Number = unsigned long long;

// Numbers with dots between, or a label that orders by its number; nothing for other texts.
std::optional<std::vector<Number>> numbers(const std::string& text) {
  static const std::map<std::string, Number> kLevels{
      {"noAuthNoPriv", 1}, {"authNoPriv", 2}, {"authPriv", 3}};
  if (const auto level = kLevels.find(text); level != kLevels.end()) return {{level->second}};
  std::vector<Number> result;
  const char* at = text.data();
  const char* const end = at + text.size();
  for (;;) {
    Number n = 0;
    const auto [next, error] = std::from_chars(at, end, n);
    if (error != std::errc()) return std::nullopt;
    result.push_back(n);
    if (next == end) return result;
    if (*next != '.') return std::nullopt;
    at = next + 1;
  }
}

bool sized(const std::string& v, std::size_t least, std::size_t most) {
  return v.size() >= least && v.size() <= most;
}

bool spaced(const std::string& v) {
  return std::any_of(v.begin(), v.end(), [](unsigned char c) { return std::isspace(c) != 0; });
}

bool storage(const std::string& v) {
  return one_of(v, {"other", "volatile", "nonVolatile", "permanent", "readOnly"});
}
bool level(const std::string& v) { return one_of(v, {"noAuthNoPriv", "authNoPriv", "authPriv"}); }
bool model(const std::string& v) { return admits::whole(v, 0, INT32_MAX); }
bool positive(const std::string& v) { return admits::whole(v, 1, INT32_MAX); }
bool retries(const std::string& v) { return admits::whole(v, 0, 255); }
bool up_to_16(const std::string& v) { return admits::octets(v) && octet_count(v) <= 16; }
bool up_to_32(const std::string& v) { return admits::octets(v) && octet_count(v) <= 32; }
bool address(const std::string& v) {
  return admits::octets(v) && octet_count(v) >= 2 && octet_count(v) <= 255;
}
bool notify_type(const std::string& v) { return one_of(v, {"trap", "inform"}); }
bool match(const std::string& v) { return one_of(v, {"exact", "prefix"}); }
bool view_type(const std::string& v) { return one_of(v, {"included", "excluded"}); }

constexpr const char* kStored = "nonVolatile";

}  // namespace

bool KeyOrder::operator()(const Key& a, const Key& b) const {
  for (std::size_t i = 0; i < a.size() && i < b.size(); ++i) {
    if (a[i] == b[i]) continue;
    const auto x = numbers(a[i]), y = numbers(b[i]);
    return x && y ? *x < *y : a[i] < b[i];
  }
  return a.size() < b.size();
}

const std::vector<TableShape>& shapes() {
  using namespace admits;
  static const std::vector<TableShape> kShapes{
      {"SNMP-COMMUNITY-MIB",
       "snmpCommunityTable",
       "snmpCommunityEntry",
       {{"snmpCommunityIndex", name}},
       {{"snmpCommunityName", any},
        {"snmpCommunitySecurityName", name},
        {"snmpCommunityContextEngineID", engine},
        {"snmpCommunityContextName", optional_name, ""},
        {"snmpCommunityTransportTag", text, ""},
        {"snmpCommunityStorageType", storage}}},
      {"SNMP-NOTIFICATION-MIB",
       "snmpNotifyTable",
       "snmpNotifyEntry",
       {{"snmpNotifyName", name}},
       {{"snmpNotifyTag", text, ""},
        {"snmpNotifyType", notify_type, "trap"},
        {"snmpNotifyStorageType", storage, kStored}}},
      {"SNMP-TARGET-MIB",
       "snmpTargetAddrTable",
       "snmpTargetAddrEntry",
       {{"snmpTargetAddrName", name}},
       {{"snmpTargetAddrTDomain", oid},
        {"snmpTargetAddrTAddress", address},
        {"snmpTargetAddrTimeout", model, "1500"},
        {"snmpTargetAddrRetryCount", retries, "3"},
        {"snmpTargetAddrTagList", text, ""},
        {"snmpTargetAddrParams", name},
        {"snmpTargetAddrStorageType", storage, kStored},
        {"snmpTargetAddrEngineID", up_to_32}}},
      {"SNMP-TARGET-MIB",
       "snmpTargetParamsTable",
       "snmpTargetParamsEntry",
       {{"snmpTargetParamsName", name}},
       {{"snmpTargetParamsMPModel", model},
        {"snmpTargetParamsSecurityModel", positive},
        {"snmpTargetParamsSecurityName", text},
        {"snmpTargetParamsSecurityLevel", level},
        {"snmpTargetParamsStorageType", storage, kStored}}},
      {"SNMP-USER-BASED-SM-MIB",
       "usmUserTable",
       "usmUserEntry",
       {{"usmUserEngineID", engine}, {"usmUserName", name}},
       {{"usmUserSecurityName", text},
        {"usmUserAuthProtocol", oid, "1.3.6.1.6.3.10.1.1.1"},
        {"usmUserPrivProtocol", oid, "1.3.6.1.6.3.10.1.2.1"},
        {"usmUserStorageType", storage, kStored},
        {"usmUserAuthKey", up_to_32},
        {"usmUserPrivKey", up_to_32},
        {"usm-crypto/auth/key", up_to_32},
        {"usm-crypto/auth/password", any},
        {"usm-crypto/priv/key", up_to_32},
        {"usm-crypto/priv/password", any}}},
      {"SNMP-VIEW-BASED-ACM-MIB",
       "vacmSecurityToGroupTable",
       "vacmSecurityToGroupEntry",
       {{"vacmSecurityModel", model}, {"vacmSecurityName", name}},
       {{"vacmGroupName", name}, {"vacmSecurityToGroupStorageType", storage, kStored}}},
      {"SNMP-VIEW-BASED-ACM-MIB",
       "vacmAccessTable",
       "vacmAccessEntry",
       {{"vacmGroupName", name},
        {"vacmAccessContextPrefix", optional_name},
        {"vacmAccessSecurityModel", model},
        {"vacmAccessSecurityLevel", level}},
       {{"vacmAccessContextMatch", match, "exact"},
        {"vacmAccessReadViewName", optional_name, ""},
        {"vacmAccessWriteViewName", optional_name, ""},
        {"vacmAccessNotifyViewName", optional_name, ""},
        {"vacmAccessStorageType", storage, kStored}}},
      {"SNMP-VIEW-BASED-ACM-MIB",
       "vacmViewTreeFamilyTable",
       "vacmViewTreeFamilyEntry",
       {{"vacmViewTreeFamilyViewName", name}, {"vacmViewTreeFamilySubtree", oid}},
       {{"vacmViewTreeFamilyMask", up_to_16, ""},
        {"vacmViewTreeFamilyType", view_type},
        {"vacmViewTreeFamilyStorageType", storage, kStored}}},
  };
  return kShapes;
}

const TableShape& shape(const std::string& list) {
  return *std::find_if(shapes().begin(), shapes().end(),
                       [&](const TableShape& s) { return s.list == list; });
}

const Column* TableShape::column(const std::string& wanted) const {
  for (const auto* group : {&keys, &columns}) {
    for (const Column& c : *group) {
      if (c.name == wanted) return &c;
    }
  }
  return nullptr;
}

std::optional<std::string> Tables::value(const std::string& list, const Row& row,
                                         const std::string& column) {
  if (const auto at = row.find(column); at != row.end()) return at->second;
  const char* const otherwise = shape(list).column(column)->otherwise;
  if (otherwise == nullptr) return std::nullopt;
  return otherwise;
}

std::optional<std::string> Tables::engine_id() const {
  const auto engine = containers.find("snmpEngine");
  if (engine == containers.end()) return std::nullopt;
  const auto id = engine->second.find("snmpEngineID");
  return id == engine->second.end() ? kDefaultEngineId : id->second;
}

namespace admits {

bool name(const std::string& v) { return sized(v, 1, 32); }
bool optional_name(const std::string& v) { return sized(v, 0, 32); }
bool text(const std::string& v) { return sized(v, 0, 255); }
bool any(const std::string&) { return true; }
bool tag(const std::string& v) { return text(v) && !spaced(v); }
bool word(const std::string& v) { return tag(v) && !v.empty(); }
bool engine(const std::string& v) {
  return octets(v) && octet_count(v) >= 5 && octet_count(v) <= 32;
}
bool octets(const std::string& v) {
  for (std::size_t i = 0; i < v.size(); ++i) {
    const bool separator = i % 3 == 2;
    if (separator ? v[i] != ':' : std::isxdigit(static_cast<unsigned char>(v[i])) == 0)
      return false;
  }
  return v.empty() || v.size() % 3 == 2;
}
bool oid(const std::string& v) {
  const auto all = numbers(v);
  return all && all->size() <= 128 &&
         std::all_of(all->begin(), all->end(), [](Number n) { return n <= UINT32_MAX; });
}
bool ip(const std::string& v) {
  std::array<unsigned char, 16> octets{};
  return ::inet_pton(AF_INET, v.c_str(), octets.data()) == 1 ||
         ::inet_pton(AF_INET6, v.c_str(), octets.data()) == 1;
}
bool boolean(const std::string& v) { return one_of(v, {"true", "false"}); }
bool whole(const std::string& v, long long least, long long most) {
  long long n = 0;
  const auto [end, error] = std::from_chars(v.data(), v.data() + v.size(), n);
  return error == std::errc() && end == v.data() + v.size() && n >= least && n <= most;
}

}  // namespace admits

bool one_of(const std::string& v, std::initializer_list<std::string_view> labels) {
  return std::find(labels.begin(), labels.end(), v) != labels.end();
}

namespace {
constexpr std::array<std::pair<const char*, const char*>, 3> kLevels{
    {{"no-auth-no-priv", "noAuthNoPriv"},
     {"auth-no-priv", "authNoPriv"},
     {"auth-priv", "authPriv"}}};
}  // namespace

bool is_level(const std::string& shown) {
  return one_of(shown, {"no-auth-no-priv", "auth-no-priv", "auth-priv"});
}

std::string stored_level(const std::string& shown) {
  for (const auto& [label, stored] : kLevels) {
    if (shown == label) return stored;
  }
  return shown;
}

std::string shown_level(const std::string& stored) {
  for (const auto& [label, name] : kLevels) {
    if (stored == name) return label;
  }
  return stored;
}

std::string shown_oid(const std::string& stored) {
  std::string text;
  for (std::size_t at = 0; at < stored.size();) {
    const std::size_t end = std::min(stored.find('.', at), stored.size());
    const std::string part = stored.substr(at, end - at);
    text += (at == 0 ? "" : ".") + (part == "0" ? "*" : part);
    at = end + 1;
  }
  return text;
}

std::size_t octet_count(const std::string& hex) { return (hex.size() + 1) / 3; }

std::string canonical_ip(const std::string& v) {
  const int family = v.find(':') == std::string::npos ? AF_INET : AF_INET6;
  std::array<unsigned char, 16> octets{};
  std::array<char, INET6_ADDRSTRLEN> text{};
  ::inet_pton(family, v.c_str(), octets.data());
  ::inet_ntop(family, octets.data(), text.data(), text.size());
  return text.data();
}

}  // namespace random_operations
