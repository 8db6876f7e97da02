// Rows in, lines and notes out.
#include "platform/agent/render.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <functional>

namespace standin::agent {
namespace {

using ::testing::AllOf;
using ::testing::Contains;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::Not;
using ::testing::StartsWith;

const std::string kEngine("\x80\x00\x7e\xd9\x04\x61", 6);
const std::string kOtherEngine("\x80\x00\x00\x00\x05\x01", 6);
const std::string kAddress("\x7f\x00\x00\x01\x42\x7b", 6);
const Oid kUdp4{1, 3, 6, 1, 2, 1, 100, 1, 1};
const Oid kUdp6{1, 3, 6, 1, 2, 1, 100, 1, 2};
const Oid kSha{1, 3, 6, 1, 6, 3, 10, 1, 1, 3};
const Oid kNoAuth{1, 3, 6, 1, 6, 3, 10, 1, 1, 1};
const Oid kNoPriv{1, 3, 6, 1, 6, 3, 10, 1, 2, 1};
const Oid kAes{1, 3, 6, 1, 6, 3, 10, 1, 2, 4};
const std::string kLong(33, 'n');

Rows plain() {
  Rows rows;
  rows.settings.port = 161;
  rows.settings.ip = "127.0.0.1";
  rows.settings.engine_id = kEngine;
  rows.settings.v1 = rows.settings.v2c = rows.settings.v3 = true;
  return rows;
}

std::vector<std::string> texts(const Configuration& c) {
  std::vector<std::string> all;
  for (const Line& line : c.lines) all.push_back(line.text);
  return all;
}

std::vector<std::string> notes(const Configuration& c) {
  std::vector<std::string> all;
  for (const Note& note : c.notes) all.push_back(note.row + ": " + note.reason);
  return all;
}

TargetAddress target(const std::string& tags, const std::string& params) {
  return {"t", kUdp4, kAddress, 1500, 3, tags, params, std::nullopt};
}
User user(const std::string& engine_id, const std::string& name) {
  return {engine_id, name, name, kNoAuth, kNoPriv, std::nullopt, std::nullopt};
}

template <class Row>
std::function<void(Rows&)> with(std::vector<Row> Rows::*list, Row row) {
  return [list, row](Rows& rows) { (rows.*list).push_back(row); };
}

struct Case {
  std::string what;
  std::function<void(Rows&)> change;
  std::string line;  // is there as a whole; begins with "!": no line begins with the rest
  std::string note;  // the whole note; empty: there is none
};
void PrintTo(const Case& c, std::ostream* out) { *out << c.what; }

class Render : public ::testing::TestWithParam<Case> {};

TEST_P(Render, GivesTheLineAndTheNote) {
  Rows rows = plain();
  GetParam().change(rows);
  const Configuration c = render(rows, {0, "0123456789abcdef0123"});
  const std::string& line = GetParam().line;
  if (line.starts_with("!")) {
    EXPECT_THAT(texts(c), Not(Contains(StartsWith(line.substr(1)))));
  } else {
    EXPECT_THAT(texts(c), Contains(line));
  }
  if (GetParam().note.empty()) {
    EXPECT_THAT(notes(c), IsEmpty());
  } else {
    EXPECT_THAT(notes(c), Contains(GetParam().note));
  }
}

const Case kAgent[] = {
    {"the engine ID, octet for octet", [](Rows&) {}, "exactEngineID 0x80007ed90461", ""},
    {"no engine ID", [](Rows& r) { r.settings.engine_id.reset(); }, "!exactEngineID",
     "snmpAgent/snmpEngine/snmpEngineID: there is none: snmpd makes one up"},
    {"a version that is not enabled", [](Rows& r) { r.settings.v1 = false; },
     "[snmp] disableSNMPv1 yes", ""},
    {"addresses stay on loopback, each once",
     [](Rows& r) {
       r.settings.ip = "0.0.0.0";
       r.settings.extra_addresses = {"127.0.0.1:161", "127.0.0.2:1161", "[2001:db8::1]:162", "::1"};
     },
     "agentaddress udp:127.0.0.1:161,udp:127.0.0.2:1161,udp6:[::1]:162,udp6:[::1]:161",
     "snmpAgent/extraIpPorts{[2001:db8::1]:162}: served on loopback only, as udp6:[::1]:162"},
    {"an address that is none", [](Rows& r) { r.settings.extra_addresses = {"1.2.3.4:x"}; },
     "agentaddress udp:127.0.0.1:161",
     "snmpAgent/extraIpPorts{1.2.3.4:x}: not served: neither ADDRESS nor ADDRESS:PORT nor "
     "[ADDRESS]:PORT"},
    {"a message size that UDP does not have", [](Rows& r) { r.settings.max_message_size = 483; },
     "![snmp] sendMessageMaxSize",
     "snmpAgent/snmpEngine/snmpEngineMaxMessageSize: not set: a message over UDP has 484 to 65507 "
     "octets"},
    {"the system group, as it stands", [](Rows& r) { r.contact = "a \"b\" #c \\"; },
     "syscontact a \"b\" #c \\", ""},
    {"a newline in the system group", [](Rows& r) { r.location = "here\nrwcommunity evil"; },
     "!syslocation", "system/sysLocation: not set: snmpd takes no control characters"},
    {"contexts, by the agent itself", [](Rows& r) { r.settings.contexts = {"c \"x"}; },
     "proxy -Cn \"c \\\"x\" -v 2c -c 0123456789abcdef0123 127.0.0.1:161 .1.3.6.1", ""},
    {"contexts without a version to ask by",
     [](Rows& r) {
       r.settings.contexts = {"c"};
       r.settings.v1 = r.settings.v2c = false;
     },
     "!proxy",
     "snmpAgent/contexts{c}: not served: snmpd needs v1 or v2c and an IPv4 address for contexts"},
};
INSTANTIATE_TEST_SUITE_P(Agent, Render, ::testing::ValuesIn(kAgent));

const Case kCommunities[] = {
    {"names in quotes", with(&Rows::communities, {"i", "#a \"b\\", "-Cn", kEngine, "c x", ""}),
     "com2sec -Cn \"c x\" \"-Cn\" default \"#a \\\"b\\\\\"", ""},
    {"a newline in a name", with(&Rows::communities, {"i", "x\nrwcommunity evil", "s", {}, "", ""}),
     "!com2sec", "snmpCommunityEntry{i}: left out: snmpd takes no control characters in names"},
    {"a context engine ID of another agent",
     with(&Rows::communities, {"i", "x", "s", kOtherEngine, "", ""}), "!com2sec",
     "snmpCommunityEntry{i}: left out: its context engine ID is not the agent's, and snmpd does "
     "not pass requests on"},
    {"a name of 33 octets", with(&Rows::communities, {"i", "x", kLong, {}, "", ""}), "!com2sec",
     "snmpCommunityEntry{i}: left out: snmpd takes security and context names of 1 to 32 octets"},
    {"a transport tag",
     [](Rows& r) {
       r.addresses.push_back(target("a b", "p"));
       r.communities.push_back({"i", "x", "s", {}, "", "b"});
     },
     "com2sec -Cn \"\" \"s\" 127.0.0.1/32 \"x\"",
     "snmpCommunityEntry{i}: snmpd compares the addresses of the tag's targets, not their ports"},
    {"a transport tag that no target has",
     [](Rows& r) {
       r.addresses.push_back(target("ab", "p"));
       r.communities.push_back({"i", "x", "s", {}, "", "a"});
     },
     "!com2sec", "snmpCommunityEntry{i}: lets nobody in: no target has its transport tag"},
};
INSTANTIATE_TEST_SUITE_P(Communities, Render, ::testing::ValuesIn(kCommunities));

const Case kUsers[] = {
    {"localized keys, names as octets",
     with(&Rows::users, {kOtherEngine, "a\n\"", "a\n\"", kSha, kAes, std::string(20, '\x11'),
                         std::string(16, '\x22')}),
     "usmUser 1 5 0x800000000501 0x610a22 0x610a22 NULL .1.3.6.1.6.3.10.1.1.3 "
     "0x1111111111111111111111111111111111111111 .1.3.6.1.6.3.10.1.2.4 "
     "0x22222222222222222222222222222222 \"\"",
     ""},
    {"a user without security", with(&Rows::users, user(kEngine, "a")),
     "usmUser 1 5 0x80007ed90461 0x61 0x61 NULL .1.3.6.1.6.3.10.1.1.1 \"\" "
     ".1.3.6.1.6.3.10.1.2.1 \"\" \"\"",
     ""},
    {"a protocol that snmpd does not know",
     [](Rows& r) {
       r.users.push_back(user(kEngine, "a"));
       r.users.back().auth_protocol = {1, 3, 6, 1, 4, 1, 9, 12};
     },
     "!usmUser",
     "usmUserEntry{0x80007ed90461 a}: left out: snmpd does not know its authentication protocol"},
    {"a key of another length",
     with(&Rows::users, {kEngine, "a", "a", kSha, kNoPriv, std::string(16, '\x11'), std::nullopt}),
     "!usmUser",
     "usmUserEntry{0x80007ed90461 a}: left out: its authentication key does not fit the protocol"},
    {"privacy without authentication",
     [](Rows& r) {
       r.users.push_back(user(kEngine, "a"));
       r.users.back().priv_protocol = kAes;
     },
     "!usmUser", "usmUserEntry{0x80007ed90461 a}: left out: it has privacy without authentication"},
};
INSTANTIATE_TEST_SUITE_P(Users, Render, ::testing::ValuesIn(kUsers));

const Case kAccess[] = {
    {"a member, names as octets", with(&Rows::members, {2, "a b", "g\n"}),
     "vacmGroup 1 5 2 0x612062 0x670a", ""},
    {"a member of any model, for the models without a row",
     [](Rows& r) {
       r.members.push_back({0, "a", "g"});
       r.members.push_back({2, "a", "h"});
     },
     "vacmGroup 1 5 3 0x61 0x67", ""},
    {"an access row", with(&Rows::accesses, {"g", "c", 3, 2, 2, "r", "", "n"}),
     "vacmAccess 1 5 3 2 2 0x67 0x63 0x72 \"\" 0x6e", ""},
    {"a view with a mask, and a number past 2^31",
     with(&Rows::families, {"v", {1, 3, 4294967295}, "\xbf", 2}),
     "vacmView 1 5 2 0x76 .1.3.4294967295 0xbf", ""},
    // snmpd would add the subtree to the view of the line before.
    {"a view's name of 33 octets", with(&Rows::families, {kLong, {1, 3}, "", 1}), "!vacmView",
     "vacmViewTreeFamilyEntry{" + kLong + " .1.3}: left out: snmpd takes names of 1 to 32 octets"},
    {"a view row without a type", with(&Rows::families, {"v", {1, 3}, "", std::nullopt}),
     "!vacmView", "vacmViewTreeFamilyEntry{v .1.3}: left out: it is neither included nor excluded"},
};
INSTANTIATE_TEST_SUITE_P(Access, Render, ::testing::ValuesIn(kAccess));

const Case kNotifications[] = {
    {"an IPv4 target, in the domain that snmpd knows", with(&Rows::addresses, target("x", "p \"1")),
     "targetAddr \"t\" .1.3.6.1.6.1.1 0x7f000001427b 1500 3 \"x\" \"p \\\"1\" 5 1", ""},
    {"an address that does not fit the domain",
     [](Rows& r) {
       r.addresses.push_back(target("x", "p"));
       r.addresses.back().domain = kUdp6;
     },
     "!targetAddr",
     "snmpTargetAddrEntry{t}: left out: its address is not one of UDP over IPv4 or IPv6"},
    {"the community of a security name",
     [](Rows& r) {
       r.communities.push_back({"i", "secret one", "ops", kEngine, "", ""});
       r.params.push_back({"p", 1, 2, "ops", 1});
     },
     "targetParams \"p\" 1 2 \"secret one\" 1 5 1", ""},
    {"a security name without a community", with(&Rows::params, {"p", 1, 2, "ops", 1}),
     "targetParams \"p\" 1 2 \"ops\" 1 5 1",
     "snmpTargetParamsEntry{p}: no community has its security name; snmpd sends the name as the "
     "community"},
    {"a version that is not enabled",
     [](Rows& r) {
       r.params.push_back({"p", 3, 3, "u", 3});
       r.settings.v3 = false;
     },
     "targetParams \"p\" 3 3 \"u\" 3 5 1",
     "snmpTargetParamsEntry{p}: sends nothing: its version is not enabled"},
    {"informs, names as octets", with(&Rows::notifies, {"n\n", "x", 2}),
     "snmpNotifyTable 0x6e0a 0x78 2 5 1", ""},
    {"an inform by SNMPv1",
     [](Rows& r) {
       r.addresses.push_back(target("x", "p"));
       r.params.push_back({"p", 0, 1, "s", 1});
       r.notifies.push_back({"n", "x", 2});
     },
     "snmpNotifyTable 0x6e 0x78 2 5 1",
     "snmpTargetAddrEntry{t}: gets nothing of snmpNotifyEntry{n}: SNMPv1 has no informs"},
    {"an inform for a user of the agent only",
     [](Rows& r) {
       r.addresses.push_back(target("x", "p"));
       r.addresses.back().engine_id = kOtherEngine;
       r.params.push_back({"p", 3, 3, "u", 1});
       r.notifies.push_back({"n", "x", 2});
       r.users.push_back(user(kEngine, "u"));
     },
     "snmpNotifyTable 0x6e 0x78 2 5 1",
     "snmpTargetAddrEntry{t}: gets no informs: u is no user under the target's engine ID"},
    {"a filter", [](Rows& r) { r.filtered_params.emplace_back("p"); }, "!snmpNotifyFilter",
     "snmpNotifyFilterProfileEntry{p}: left out: snmpd does not filter"},
};
INSTANTIATE_TEST_SUITE_P(Notifications, Render, ::testing::ValuesIn(kNotifications));

TEST(RenderSecrets, AreMaskedInWhatIsShown) {
  Rows rows = plain();
  rows.settings.contexts = {"c"};
  rows.users.push_back(
      {kEngine, "a", "a", kSha, kAes, std::string(20, '\x11'), std::string(16, '\x22')});
  const Configuration c = render(rows, {0, "0123456789abcdef0123"});
  EXPECT_THAT(c.text(), AllOf(HasSubstr("0x1111"), HasSubstr("0x2222"), HasSubstr("-c 0123")));
  EXPECT_THAT(c.masked(), AllOf(Not(HasSubstr("1111")), Not(HasSubstr("2222")),
                                Not(HasSubstr("0123456789abcdef0123")), HasSubstr("proxy -Cn")));
}

}  // namespace
}  // namespace standin::agent
