#include "grammar.h"

#include <utility>

namespace random_operations {
namespace {

using Lines = std::vector<std::string>;

Kind accepted(const char* name, unsigned weight, Lines lines) {
  return {name, weight, true, std::move(lines)};
}
Kind refused(const char* name, unsigned weight, Lines lines) {
  return {name, weight, false, std::move(lines)};
}

}  // namespace

// A small vocabulary, so that names meet; some of it needs quotes or reads like something else.
const std::map<std::string, std::vector<std::string>>& symbols() {
  static const std::map<std::string, std::vector<std::string>> kSymbols{
      {"name",
       {"a", "b", "c", "ab", R"("a b")", R"("q\"x\\")", "100%s", R"("{z}")", "\u00e9\u00fc", "n;1",
        "a-name-of-thirty-two-octets-1234"}},
      {"text",
       {"a", "b", "plain", R"("with blank")", R"("")", "%n%s", R"("\"")", "\u20ac", "$x255"}},
      {"tag", {"<a|ab|b|x|%d>", "\u00e9"}},
      {"tags", {"", "b", "a x", "b a x", "%d b", "x y z ab"}},
      {"ip", {"<10.0.0.1|192.0.2.1|::1|2001:db8::1|2001:DB8:0::2>"}},
      {"engine",
       {"$local-engine", "80:00:7e:d9:04:61:62", "80:00:7e:d9:01:0a:00:00:01", "80:00:00:09:05:01",
        "80:00:7e:d9:05:00:00:00:00", "80:00:7e:d9:05:01:02:03"}},
      {"level", {"<no-auth-no-priv|auth-no-priv|auth-priv>"}},
      {"model", {"<any|v1|v2c|usm>"}},
      {"models", {"", "$model", "v1 usm", "v2c v1", "usm any", "any v1 v2c usm"}},

      {"community", {"/snmp:snmp/community{@snmpCommunityEntry:$name;}"}},
      {"community-row",
       {"/SNMP_COMMUNITY_MIB:SNMP-COMMUNITY-MIB/snmpCommunityTable/"
        "snmpCommunityEntry{@snmpCommunityEntry:$name;}"}},
      {"notify", {"/snmp:snmp/notify{@snmpNotifyEntry:$name;}"}},
      {"notify-row",
       {"/SNMP_NOTIFICATION_MIB:SNMP-NOTIFICATION-MIB/snmpNotifyTable/"
        "snmpNotifyEntry{@snmpNotifyEntry:$name;}"}},
      {"target", {"/snmp:snmp/target{@snmpTargetAddrEntry:$name;}"}},
      // A new one has no case yet, and cannot be committed.
      {"known-target", {"/snmp:snmp/target{@@snmpTargetAddrEntry:$name;}"}},
      {"address-row",
       {"/SNMP_TARGET_MIB:SNMP-TARGET-MIB/snmpTargetAddrTable/"
        "snmpTargetAddrEntry{@snmpTargetAddrEntry:$name;}"}},
      {"params-name", {"@snmpTargetParamsEntry:<ConfD2|shared>;"}},
      {"params-row",
       {"/SNMP_TARGET_MIB:SNMP-TARGET-MIB/snmpTargetParamsTable/"
        "snmpTargetParamsEntry{$params-name}"}},

      {"agent", {"/snmp:snmp/agent"}},
      {"settings", {"/confd_dyncfg:confdConfig/snmpAgent"}},
      {"listen", {"$agent/extra-ip-port{$ip <161|162|1161>}"}},
      {"context", {"$agent/context{@contexts:$name;}"}},
      {"method", {"<from-ip|from-mac-address|from-text|other>"}},

      {"user-row",
       {"/SNMP_USER_BASED_SM_MIB:SNMP-USER-BASED-SM-MIB/usmUserTable/"
        "usmUserEntry{@usmUserEntry:$engine $name;}"}},
      {"protocol", {"auth/<md5|sha>", "auth/<md5|sha>", "priv/<des|aes>"}},
      {"password",
       {"maplesyrup", "12345678", R"("with blank \"%s\"")",
        "\u00e9\u00e8\u00e0\u00e7\u00e9\u00e8\u00e0\u00e7"}},

      // Few groups, so that they meet over members.
      {"group", {R"(/snmp:snmp/vacm/group{<g|h|G|n;1|"q\"x\\">})"}},
      {"member-name", {R"(<a|b|"{z}"|100%s>)"}},
      {"member", {"$group/member{$member-name}"}},
      {"context-name", {R"(<""|ctx|"a b">)"}},
      {"new-access", {"$group/access{$context-name $model $level}"}},
      {"vacm", {"/SNMP_VIEW_BASED_ACM_MIB:SNMP-VIEW-BASED-ACM-MIB"}},
      {"member-row",
       {"$vacm/vacmSecurityToGroupTable/vacmSecurityToGroupEntry{<0|1|2|3|256> $member-name}"}},
      {"access-row",
       {"$vacm/vacmAccessTable/vacmAccessEntry{@vacmAccessEntry:<g|h> $context-name <0|1|2|3|256> "
        "<noAuthNoPriv|authNoPriv|authPriv>;}"}},
      {"view-name", {"$name", "$name", "$known-view"}},
      {"view", {"/snmp:snmp/vacm/view{$view-name}"}},
      {"oid", {"<1.3.6.1|1.3.6.1.*.1|*|1.3.6.1.2.1.1.1.*|1|2.4294967295.*|10.2|1.3.6.1.2.1>"}},
      {"new-subtree", {"$view/subtree{$oid}"}},
      {"view-row",
       {"$vacm/vacmViewTreeFamilyTable/vacmViewTreeFamilyEntry{@vacmViewTreeFamilyEntry:$name "
        "<1.3.6.1.0|0|1.3.6|2.999.0.1>;}"}},
  };
  return kSymbols;
}

const std::vector<Kind>& kinds() {
  static const std::vector<Kind> kKinds{
      accepted("commit", 90, {"commit"}),
      accepted("abort", 18, {"abort"}),
      accepted("validate", 12, {"validate"}),
      accepted("show in the transaction", 12, {"show /"}),
      accepted("client lost", 4, {"# fault: client-lost"}),
      accepted("server killed", 3, {"# fault: server-killed"}),
      accepted("daemon killed", 3, {"# fault: daemon-killed"}),
      accepted("server killed in a commit", 4,
               {"# fault: server-killed-in-commit <0|100|300|500|700|1000|1500|2500>"}),

      accepted("community: create", 20, {"create $community"}),
      accepted("community: set a leaf", 25,
               {"set $community/name $name", "set $community/name $text",
                "set $community/sec-name $name", "set $community/context-name $name",
                "set $community/context-name \"\"", "set $community/target-tag $tag",
                "set $community/target-tag \"\"", "set $community/index $name"}),
      accepted("community: delete a leaf", 15,
               {"delete $community/<name|context-name|target-tag>"}),
      accepted("community: delete", 10, {"delete $community"}),
      accepted("community: delete all", 3, {"delete /snmp:snmp/community"}),
      refused("community: delete what must stay", 4, {"delete $community/<sec-name|index>"}),
      refused("community and notify: bad value", 6,
              {"set $community/target-tag \"two words\"", "set $community/sec-name \"\"",
               "set $notify/type telegram", "set $notify/tag $x256",
               "create /snmp:snmp/community{$x33}"}),
      accepted(
          "community: foreign row", 12,
          {"create $community-row", "delete $community-row",
           "delete $community-row/snmpCommunity<Name|SecurityName|ContextName|TransportTag>",
           "set $community-row/snmpCommunity<Name|SecurityName|ContextName|TransportTag> $name"}),
      accepted("notify: create", 8, {"create $notify"}),
      accepted("notify: set a leaf", 12,
               {"set $notify/tag $tag", "set $notify/tag \"\"", "set $notify/type <trap|inform>"}),
      refused("notify: set the key", 4, {"set $notify/name $name"}),
      accepted("notify: delete a leaf", 8, {"delete $notify/<tag|type>"}),
      refused("notify: delete the name", 3, {"delete $notify/name"}),
      accepted("notify: delete", 6, {"delete $notify"}),
      accepted("notify: foreign row", 8,
               {"create $notify-row", "delete $notify-row", "delete $notify-row/snmpNotifyType",
                "set $notify-row/snmpNotifyTag $text"}),

      accepted("target: create", 4, {"create $target"}),
      accepted("target: select a case", 8, {"create $target/<v1|v2c|usm>"}),
      accepted("target: set a leaf of a case", 35,
               {"set $target/v1/sec-name $text", "set $target/v2c/sec-name $name",
                "set $target/usm/user-name $name", "set $target/usm/sec-level $level"}),
      accepted("target: set a leaf", 25,
               {"set $known-target/ip $ip", "set $known-target/ip $ip",
                "set $known-target/port <0|161|162|65535>",
                "set $known-target/timeout <0|1500|2147483647>",
                "set $known-target/retries <0|3|255>", "set $known-target/engine-id $engine"}),
      accepted("target: delete a leaf", 18,
               {"delete $target/<ip|port|timeout|retries|engine-id|tag>",
                "delete $target/<v1/sec-name|v2c/sec-name|usm/user-name|usm/sec-level>"}),
      accepted("target: tags", 20,
               {"create $known-target/tag{$tag}", "delete $known-target/tag{$tag}",
                "set $known-target/tag $tags"}),
      refused("target: long tags", 6,
              {"create $known-target/tag{$x255}", "set $known-target/tag $x255 more"}),
      refused("target: bad value", 6,
              {"set $target/port 65536", "set $target/ip 10.0.0.256",
               "set $target/engine-id 80:00:7e:d9", "set $target/timeout 2147483648",
               "create $target/tag{\"two words\"}", "set $target/usm/user-name $x256",
               "set $target/retries -1"}),
      accepted("target: set what is not kept", 4,
               {"set $known-target/tls/ip $ip", "set $known-target/dtls/client-fingerprint $text",
                "set $known-target/prefix-length 24"}),
      refused("target: delete what must stay", 4, {"delete $target/<name|v1|v2c|usm>"}),
      refused("target: set the key", 3, {"set $target/name $name"}),
      accepted("target: delete", 16, {"delete $target"}),
      accepted("target: delete all", 3, {"delete /snmp:snmp/target"}),
      accepted("target: foreign address", 14,
               {"create $address-row", "delete $address-row",
                "set $address-row/snmpTargetAddrParams $params-name",
                "delete $address-row/snmpTargetAddrParams",
                "set $address-row/snmpTargetAddrTagList <a|\"a  b\"|\"ab a\"|\"x y z\"|\"\">",
                "set $address-row/snmpTargetAddrTAddress "
                "<0a:00:00:01:00:a2|0a:00|01:02:03:04:05:06:07:08|"
                "20:01:0d:b8:00:00:00:00:00:00:00:00:00:00:00:01:04:8a>",
                "delete $address-row/snmpTargetAddrTDomain",
                "set $address-row/snmpTargetAddrEngineID <\"\"|01:02|80:00:7e:d9:01>"}),
      accepted(
          "target: foreign parameters", 14,
          {"create $params-row", "delete $params-row", "delete $params-row/snmpTargetParamsMPModel",
           "set $params-row/snmpTargetParamsMPModel <0|1|2|3>",
           "set $params-row/snmpTargetParamsSecurityModel <1|2|3|7>",
           "set $params-row/snmpTargetParamsSecurityName $text",
           "set $params-row/snmpTargetParamsStorageType volatile",
           "set $params-row/snmpTargetParamsSecurityLevel <authNoPriv|authPriv>"}),

      accepted(
          "agent: set a leaf", 14,
          {"set $agent/enabled <true|false>", "set $agent/ip $ip", "set $agent/port <161|0|1161>",
           "set $agent/max-message-size <1500|100|-1|2147483647|484|0>",
           "set $agent/<contact|name|location> $text"}),
      accepted("agent: delete a leaf", 4,
               {"delete $agent/<enabled|ip|port|max-message-size|contact|name|location>"}),
      accepted("agent: listen address", 20,
               {"create $listen", "create $listen", "delete $listen", "set $listen/port 1"}),
      accepted(
          "agent: context", 10,
          {"create $context", "create $context", "delete $context", "set $context/name $name"}),
      accepted("agent: version", 10,
               {"create $agent/version/<v1|v2c|v3>", "delete $agent/version/<v1|v2c|v3>"}),
      accepted("agent: all versions", 3, {"delete $agent/version"}),
      accepted("agent: engine ID", 16,
               {"set $agent/engine-id/enterprise-number <32473|9>", "create $agent/engine-id",
                "set $agent/engine-id/enterprise-number 32473", "set $agent/engine-id/from-ip $ip",
                "set $agent/engine-id/from-mac-address <00:11:22:33:AA:55|\"\">",
                "set $agent/engine-id/from-text <ab|agent|\"\">",
                "set $agent/engine-id/other <01:02:03|01|\"\"|00:00:00:00>"}),
      refused("agent: bad engine ID", 4,
              {"set $agent/engine-id/from-text $x28", "set $agent/engine-id/other <zz|01:|0102>",
               "set $agent/engine-id/enterprise-number 4294967296",
               "set $agent/engine-id/from-mac-address 00:11:2"}),
      accepted("agent: delete of the engine ID", 5,
               {"delete $agent/engine-id", "delete $agent/engine-id/<$method|enterprise-number>"}),
      refused("agent: delete what must stay", 4, {"delete $listen/ip", "delete $context/name"}),
      refused(
          "agent: bad value", 5,
          {"set $agent/port 65536", "set $agent/ip ::g", "set $agent/max-message-size 2147483648",
           "create $agent/extra-ip-port{1.2.3 161}", "set $agent/contact $x256"}),
      accepted("agent: foreign listen addresses", 5,
               {"delete $settings/extraIpPorts", "set $settings/extraIpPorts 10.0.0.1:161 host:161",
                "set $settings/extraIpPorts [::1]:161 192.0.2.1 ::1:161 10.0.0.1",
                "set $settings/extraIpPorts 10.0.0.1 [2001:db8::1] 2001:db8::1 10.0.0.1:161"}),
      accepted(
          "agent: foreign settings", 12,
          {"set $settings/snmpVersions/<v1|v2c|v3> <true|false>",
           "delete $settings/snmpVersions/v2c",
           "set $settings/snmpEngine/snmpEngineMaxMessageSize <100|4294967296|50000>",
           "set $settings/snmpEngine/snmpEngineID $engine", "create $settings/snmpEngine",
           "set $settings/port 162", "delete $settings/<ip|port>",
           "create $settings/contexts{$name}", "set /SNMPv2_MIB:SNMPv2-MIB/system/sysName $text"}),
      accepted("agent: settings removed", 3, {"delete $settings<|/snmpEngine|/snmpVersions>"}),

      accepted("usm: create a user", 14, {"create $user"}),
      accepted("usm: set the security name", 8,
               {"set $user/security-name $name", "set $user/security-name $text"}),
      accepted("usm: set a key", 20,
               {"set $user/auth/md5/key $octets16", "set $user/auth/sha/key $octets20",
                "set $user/priv/<des|aes>/key $octets16", "set $user/$protocol/key $octets16"}),
      accepted("usm: set a password", 26, {"set $user/$protocol/password $password"}),
      accepted("usm: create a side or protocol", 8,
               {"create $user/<auth|priv>", "create $user/$protocol", "create $user/$protocol"}),
      accepted("usm: delete below a user", 24,
               {"delete $user/<auth|priv|security-name>", "delete $user/$protocol/<key|password>"}),
      refused("usm: delete what must stay", 4, {"delete $user/<name|$protocol>"}),
      accepted("usm: delete a user", 14, {"delete $user"}),
      accepted("usm: an engine", 4, {"<create|delete> /snmp:snmp/usm/remote{$engine}"}),
      refused("usm: set the key", 3, {"set $user/name $name"}),
      refused(
          "usm: bad value", 6,
          {"set $user/auth/md5/password short", "set $user/auth/sha/password $x256",
           "set $user/priv/des/key $octets15", "create /snmp:snmp/usm/remote{80:00:7e:d9}/user{a}",
           "set $user/security-name $x256"}),
      accepted(
          "usm: foreign row", 26,
          {"create $user-row", "delete $user-row", "set $user-row/usmUserSecurityName $text",
           "set $user-row/usmUserAuthProtocol 1.3.6.1.6.3.10.1.1.<1|2|3|9>",
           "set $user-row/usmUserPrivProtocol 1.3.6.1.6.3.10.1.2.<1|2|3|4>",
           "set $user-row/usmUser<Auth|Priv>Key $octets16",
           "delete $user-row/usmUser<Auth|Priv>Key", "delete $user-row/usm-crypto/<auth|priv>/key",
           "set $user-row/usm-crypto/<auth|priv>/password somebody's",
           "delete $user-row/usmUserAuthProtocol"}),

      accepted("group: create", 3, {"create $group"}),
      accepted("group: delete", 6, {"delete $group"}),
      accepted("group: delete all", 3, {"delete /snmp:snmp/vacm/group"}),
      accepted("member: create", 3, {"create $member"}),
      accepted("member: set the models", 22, {"set $member/sec-model $models"}),
      accepted("member: create a model", 16, {"create $member/sec-model{$model}"}),
      accepted("member: delete a model", 10, {"delete $member/sec-model{$model}"}),
      accepted("member: delete the models", 8, {"delete $member/sec-model"}),
      accepted("member: delete", 8, {"delete $member"}),
      accepted("member: foreign row", 8,
               {"set $member-row/vacmGroupName <g|h|n;1>", "delete $member-row"}),
      accepted("access: create", 10, {"create $new-access"}),
      accepted("access: set a leaf", 18,
               {"set $new-access/context-match <exact|prefix>", "set $access/sec-model $model",
                "set $access/sec-level $level", "set $access/context other",
                "set $access/<read|write|notify>-view $name", "set $access/read-view \"\""}),
      accepted("access: delete", 14, {"delete $access", "delete $access/<read|write|notify>-view"}),
      accepted("access: foreign row", 6,
               {"create $access-row", "delete $access-row",
                "set $access-row/vacmAccessNotifyViewName $name"}),
      accepted("group, member, view: set the key", 3,
               {"set $group/name $name", "set $member/sec-name $name", "set $subtree/oid $oid"}),
      refused(
          "vacm: delete what must stay", 7,
          {"delete $group/name", "delete $member/sec-name", "delete $subtree/<included|excluded>",
           "delete $access/<context|sec-model|sec-level|context-match>"}),
      refused("vacm: bad value", 5,
              {"set $member/sec-model tsm", "create $group/access{\"\" usm sometimes}",
               "set $access/read-view $x33", "create /snmp:snmp/vacm/view{$x33}/subtree{1}"}),
      accepted("view: create", 3, {"create $view"}),
      accepted("view: delete", 6, {"delete $view"}),
      accepted("view: delete all", 3, {"delete /snmp:snmp/vacm/view"}),
      accepted("subtree: create", 5, {"create $subtree"}),
      accepted("subtree: include or exclude", 28,
               {"create $subtree/<included|excluded>", "create $new-subtree/<included|excluded>"}),
      accepted("subtree: delete", 12, {"delete $subtree"}),
      accepted("subtree: delete the key", 3, {"delete $subtree/oid"}),
      refused("subtree: invalid", 5,
              {"<create|delete> $view/subtree{<\"\"|.1|1.|1..3|0.1|1.03|1.3x|*5.1|1.a|4294967296>}",
               "create $view/subtree{$x256}"}),
      accepted("subtree: foreign row", 9,
               {"create $view-row", "delete $view-row", "delete $view-row/vacmViewTreeFamilyType",
                "set $view-row/vacmViewTreeFamilyMask <\"\"|ff|f0:00>",
                "set $view-row/vacmViewTreeFamilyType <included|excluded>"}),
  };
  return kKinds;
}

}  // namespace random_operations
