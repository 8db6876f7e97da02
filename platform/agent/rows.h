// What the agent is configured with: rows of the MIB tables and the agent's settings, as they stand
// in the server's database. Texts and octets are std::string; an absent column is std::nullopt.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace standin::agent {

using Oid = std::vector<std::uint32_t>;
using OptionalText = std::optional<std::string>;
using OptionalNumber = std::optional<std::int64_t>;

// snmpCommunityTable, RFC 3584.
struct Community {
  std::string index;
  OptionalText name, security_name, context_engine_id;
  std::string context_name, transport_tag;
};

// snmpNotifyTable, RFC 3413.
struct Notify {
  std::string name, tag;
  std::int64_t type = 0;
};

// snmpTargetAddrTable, RFC 3413. The address is that of a transport domain: IP address, then port.
struct TargetAddress {
  std::string name;
  std::optional<Oid> domain;
  OptionalText address;
  std::int64_t timeout = 0, retries = 0;  // hundredths of a second; count
  std::string tags;                       // with blanks between
  OptionalText params, engine_id;
};

// snmpTargetParamsTable, RFC 3413.
struct TargetParams {
  std::string name;
  OptionalNumber processing_model, security_model;
  OptionalText security_name;
  OptionalNumber level;
};

// usmUserTable, RFC 3414, with its keys.
struct User {
  std::string engine_id, name;
  OptionalText security_name;
  Oid auth_protocol, priv_protocol;
  OptionalText auth_key, priv_key;
};

// vacmSecurityToGroupTable, RFC 3415.
struct Member {
  std::int64_t model = 0;
  std::string security_name;
  OptionalText group;
};

// vacmAccessTable, RFC 3415.
struct Access {
  std::string group, context;
  std::int64_t model = 0, level = 0, match = 0;
  std::string read_view, write_view, notify_view;
};

// vacmViewTreeFamilyTable, RFC 3415.
struct Family {
  std::string view;
  Oid subtree;
  std::string mask;
  OptionalNumber type;
};

// The dynamic configuration of the agent.
struct Settings {
  bool enabled = false;
  OptionalText ip;  // as text
  std::uint16_t port = 0;
  std::vector<std::string> extra_addresses;
  bool v1 = false, v2c = false, v3 = false;
  OptionalText engine_id;
  std::optional<std::uint64_t> max_message_size;
  std::vector<std::string> contexts;
};

struct Rows {
  Settings settings;
  OptionalText contact, name, location;  // of the system group
  std::vector<Community> communities;
  std::vector<Notify> notifies;
  std::vector<std::string> filtered_params;  // keys of snmpNotifyFilterProfileTable
  std::vector<TargetAddress> addresses;
  std::vector<TargetParams> params;
  std::vector<User> users;
  std::vector<Member> members;
  std::vector<Access> accesses;
  std::vector<Family> families;
};

}  // namespace standin::agent
