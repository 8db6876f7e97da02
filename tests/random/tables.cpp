#include "tables.h"

#include <algorithm>

namespace random_operations {
namespace {

using Number = unsigned long long;

// Also for a label that orders by its number.
std::optional<std::vector<Number>> order(const std::string& text) {
  if (admits::level(text)) return {{text == "noAuthNoPriv" ? 1U : text == "authNoPriv" ? 2U : 3U}};
  return numbers(text);
}

bool storage(const std::string& v) {
  return one_of(v, {"other", "volatile", "nonVolatile", "permanent", "readOnly"});
}
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
    const auto x = order(a[i]), y = order(b[i]);
    return x && y ? *x < *y : a[i] < b[i];
  }
  return a.size() < b.size();
}

const Table& Tables::rows(const std::string& list) const {
  static const Table kNone;
  const auto at = tables.find(list);
  return at == tables.end() ? kNone : at->second;
}

std::optional<std::string> column(const Row& row, const std::string& name) {
  const auto at = row.find(name);
  return at == row.end() ? std::nullopt : std::optional(at->second);
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

}  // namespace random_operations
