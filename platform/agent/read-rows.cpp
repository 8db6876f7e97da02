#include "read-rows.h"

#include "maapi-reader.h"
#include "platform/client/northbound.h"

#define AGENT "/confd_dyncfg:confdConfig/snmpAgent"
#define SYSTEM "/SNMPv2_MIB:SNMPv2-MIB/system"
#define NOTIFICATION "/SNMP_NOTIFICATION_MIB:SNMP-NOTIFICATION-MIB"
#define TARGET "/SNMP_TARGET_MIB:SNMP-TARGET-MIB"
#define VACM "/SNMP_VIEW_BASED_ACM_MIB:SNMP-VIEW-BASED-ACM-MIB"

namespace standin::agent {
namespace {

constexpr const char* kCommunities =
    "/SNMP_COMMUNITY_MIB:SNMP-COMMUNITY-MIB/snmpCommunityTable/snmpCommunityEntry";
constexpr const char* kUsers =
    "/SNMP_USER_BASED_SM_MIB:SNMP-USER-BASED-SM-MIB/usmUserTable/usmUserEntry";
constexpr std::uint16_t kSnmpPort = 161;

OptionalText text_leaf(const MaapiReader& in, const char* path) {
  Row row(1);
  in.leaf(path, row);
  return row.text(0);
}

OptionalNumber number_leaf(const MaapiReader& in, const char* path) {
  Row row(1);
  in.leaf(path, row);
  return row.number(0);
}

std::string text(const Row& row, std::size_t leaf) {
  return row.text(leaf).value_or(std::string());
}

Settings read_settings(const MaapiReader& in) {
  Settings s;
  s.enabled = number_leaf(in, AGENT "/enabled").value_or(0) != 0;
  s.ip = text_leaf(in, AGENT "/ip");
  s.port = static_cast<std::uint16_t>(number_leaf(in, AGENT "/port").value_or(kSnmpPort));
  Row extra(1);
  in.leaf(AGENT "/extraIpPorts", extra);
  s.extra_addresses = extra.texts(0);
  s.v1 = number_leaf(in, AGENT "/snmpVersions/v1").value_or(0) != 0;
  s.v2c = number_leaf(in, AGENT "/snmpVersions/v2c").value_or(0) != 0;
  s.v3 = number_leaf(in, AGENT "/snmpVersions/v3").value_or(0) != 0;
  s.engine_id = text_leaf(in, AGENT "/snmpEngine/snmpEngineID");
  if (const auto size = number_leaf(in, AGENT "/snmpEngine/snmpEngineMaxMessageSize")) {
    s.max_message_size = static_cast<std::uint64_t>(*size);
  }
  in.each(AGENT "/contexts", 1, [&](const Row& r) { s.contexts.push_back(text(r, 0)); });
  return s;
}

void read_notifications(const MaapiReader& in, Rows& rows) {
  in.each(NOTIFICATION "/snmpNotifyTable/snmpNotifyEntry", 3, [&](const Row& r) {
    rows.notifies.push_back({text(r, 0), text(r, 1), r.number(2).value_or(0)});
  });
  in.each(NOTIFICATION "/snmpNotifyFilterProfileTable/snmpNotifyFilterProfileEntry", 1,
          [&](const Row& r) { rows.filtered_params.push_back(text(r, 0)); });
  in.each(TARGET "/snmpTargetAddrTable/snmpTargetAddrEntry", 9, [&](const Row& r) {
    rows.addresses.push_back({text(r, 0), r.oid(1), r.text(2), r.number(3).value_or(0),
                              r.number(4).value_or(0), text(r, 5), r.text(6), r.text(8)});
  });
  in.each(TARGET "/snmpTargetParamsTable/snmpTargetParamsEntry", 5, [&](const Row& r) {
    rows.params.push_back({text(r, 0), r.number(1), r.number(2), r.text(3), r.number(4)});
  });
}

void read_users(const MaapiReader& in, Rows& rows) {
  in.each(kUsers, 14, [&](const Row& r) {
    rows.users.push_back({text(r, 0), text(r, 1), r.text(2), r.oid(4).value_or(Oid()),
                          r.oid(7).value_or(Oid()), r.text(12), r.text(13)});
  });
}

void read_access(const MaapiReader& in, Rows& rows) {
  in.each(VACM "/vacmSecurityToGroupTable/vacmSecurityToGroupEntry", 3, [&](const Row& r) {
    rows.members.push_back({r.number(0).value_or(0), text(r, 1), r.text(2)});
  });
  in.each(VACM "/vacmAccessTable/vacmAccessEntry", 8, [&](const Row& r) {
    rows.accesses.push_back({text(r, 0), text(r, 1), r.number(2).value_or(0),
                             r.number(3).value_or(0), r.number(4).value_or(0), text(r, 5),
                             text(r, 6), text(r, 7)});
  });
  in.each(VACM "/vacmViewTreeFamilyTable/vacmViewTreeFamilyEntry", 4, [&](const Row& r) {
    rows.families.push_back({text(r, 0), r.oid(1).value_or(Oid()), text(r, 2), r.number(3)});
  });
}

}  // namespace

Rows read_rows(std::uint16_t port) {
  const NorthboundSession session(port, "standin-agent", NorthboundSession::Access::read);
  const MaapiReader in(port, session.handle());
  Rows rows;
  rows.settings = read_settings(in);
  rows.contact = text_leaf(in, SYSTEM "/sysContact");
  rows.name = text_leaf(in, SYSTEM "/sysName");
  rows.location = text_leaf(in, SYSTEM "/sysLocation");
  in.each(kCommunities, 6, [&](const Row& r) {
    rows.communities.push_back(
        {text(r, 0), r.text(1), r.text(2), r.text(3), text(r, 4), text(r, 5)});
  });
  read_notifications(in, rows);
  read_users(in, rows);
  read_access(in, rows);
  return rows;
}

}  // namespace standin::agent
