// Targets, and rows of addresses and parameters that somebody else made.
#include "generator.h"

namespace random_operations {
namespace {

using namespace vocabulary;

const std::string kRows =
    "/SNMP_TARGET_MIB:SNMP-TARGET-MIB/snmpTargetAddrTable/snmpTargetAddrEntry";
const std::string kParams =
    "/SNMP_TARGET_MIB:SNMP-TARGET-MIB/snmpTargetParamsTable/snmpTargetParamsEntry";

std::string target(Situation& s) {
  return "/snmp:snmp/target" + braces(row(s, "snmpTargetAddrEntry", {name(s)}));
}
// A target that is new has no case yet, and cannot be committed.
std::string known_target(Situation& s) {
  return "/snmp:snmp/target" + braces(row(s, "snmpTargetAddrEntry", {name(s)}, 5));
}
std::string address_row(Situation& s) {
  return kRows + braces(row(s, "snmpTargetAddrEntry", {name(s)}));
}
std::string params_name(Situation& s) {
  return row(s, "snmpTargetParamsEntry", {s.random.percent(50) ? "ConfD2" : "shared"})[0];
}

std::string set_case_leaf(Situation& s) {
  switch (s.random.below(4)) {
    case 0:
      return set(target(s) + "/v1/sec-name", text(s));
    case 1:
      return set(target(s) + "/v2c/sec-name", name(s));
    case 2:
      return set(target(s) + "/usm/user-name", name(s));
    default:
      return set(target(s) + "/usm/sec-level",
                 number(s, {"no-auth-no-priv", "auth-no-priv", "auth-priv"}));
  }
}

std::string set_leaf(Situation& s) {
  switch (s.random.below(6)) {
    case 0:
    case 1:
      return set(known_target(s) + "/ip", ip(s));
    case 2:
      return set(known_target(s) + "/port", number(s, {"0", "161", "162", "65535"}));
    case 3:
      return set(known_target(s) + "/timeout", number(s, {"0", "1500", "2147483647"}));
    case 4:
      return set(known_target(s) + "/retries", number(s, {"0", "3", "255"}));
    default:
      return set(known_target(s) + "/engine-id", engine(s));
  }
}

std::string remove_leaf(Situation& s) {
  static const std::vector<std::string> kLeaves{
      "ip",  "port",        "timeout",      "retries",       "engine-id",
      "tag", "v1/sec-name", "v2c/sec-name", "usm/user-name", "usm/sec-level"};
  return "delete " + known_target(s) + "/" + s.random.one_of(kLeaves);
}

std::string write_tags(Situation& s) {
  if (s.random.percent(40)) return "create " + known_target(s) + "/tag" + braces({tag(s)});
  if (s.random.percent(50)) return "delete " + known_target(s) + "/tag" + braces({tag(s)});
  std::vector<std::string> all;
  for (const char* word : {"b", "a", "x", "%d"}) {
    if (s.random.percent(50)) all.emplace_back(word);
  }
  return set_all(known_target(s) + "/tag", all);
}

std::string long_tag(Situation& s) {
  const std::string word(s.random.percent(50) ? 200 : 255, s.random.percent(50) ? 'l' : 'm');
  if (s.random.percent(50)) return "create " + known_target(s) + "/tag" + braces({word});
  return set_all(known_target(s) + "/tag", {word, "more"});
}

std::string bad_value(Situation& s) {
  switch (s.random.below(7)) {
    case 0:
      return set(target(s) + "/port", "65536");
    case 1:
      return set(target(s) + "/ip", "10.0.0.256");
    case 2:
      return set(target(s) + "/engine-id", "80:00:7e:d9");
    case 3:
      return set(target(s) + "/timeout", "2147483648");
    case 4:
      return "create " + target(s) + "/tag{\"two words\"}";
    case 5:
      return set(target(s) + "/usm/user-name", std::string(256, 'u'));
    default:
      return set(target(s) + "/retries", "-1");
  }
}

std::string unkept(Situation& s) {
  switch (s.random.below(4)) {
    case 0:
      return set(known_target(s) + "/tls/ip", ip(s));
    case 1:
      return set(known_target(s) + "/dtls/client-fingerprint", text(s));
    case 2:
      return set(known_target(s) + "/prefix-length", "24");
    default:
      return set(known_target(s) + "/tls/server-identity", name(s));
  }
}

std::string foreign_address(Situation& s) {
  const std::string path = address_row(s);
  switch (s.random.below(8)) {
    case 0:
      return "create " + path;
    case 1:
      return "delete " + path;
    case 2:
      return set(path + "/snmpTargetAddrParams", params_name(s));
    case 3:
      return "delete " + path + "/snmpTargetAddrParams";
    case 4:
      return set(path + "/snmpTargetAddrTagList", number(s, {"a", "a  b", "ab a", "x y z", ""}));
    case 5:
      return set(path + "/snmpTargetAddrTAddress",
                 number(s, {"0a:00:00:01:00:a2", "0a:00", "01:02:03:04:05:06:07:08",
                            "20:01:0d:b8:00:00:00:00:00:00:00:00:00:00:00:01:04:8a"}));
    case 6:
      return "delete " + path + "/snmpTargetAddrTDomain";
    default:
      return set(path + "/snmpTargetAddrEngineID", number(s, {"", "01:02", "80:00:7e:d9:01"}));
  }
}

std::string foreign_params(Situation& s) {
  const std::string path = kParams + braces({params_name(s)});
  switch (s.random.below(7)) {
    case 0:
      return "create " + path;
    case 1:
      return s.random.percent(30) ? "delete " + path
                                  : "delete " + path + "/snmpTargetParamsMPModel";
    case 2:
      return set(path + "/snmpTargetParamsMPModel", number(s, {"0", "1", "2", "3"}));
    case 3:
      return set(path + "/snmpTargetParamsSecurityModel", number(s, {"1", "2", "3", "7"}));
    case 4:
      return set(path + "/snmpTargetParamsSecurityName", text(s));
    case 5:
      return set(path + "/snmpTargetParamsStorageType", "volatile");
    default:
      return set(path + "/snmpTargetParamsSecurityLevel", number(s, {"authNoPriv", "authPriv"}));
  }
}

}  // namespace

std::vector<Maker> target_makers() {
  return {
      {"target: create", 4, true, [](Situation& s) { return "create " + target(s); }},
      {"target: select a case", 8, true,
       [](Situation& s) {
         return "create " + target(s) + "/" + number(s, {"v1", "v2c", "usm"});
       }},
      {"target: set a leaf of a case", 35, true, set_case_leaf},
      {"target: set a leaf", 25, true, set_leaf},
      {"target: delete a leaf", 18, true, remove_leaf},
      {"target: tags", 20, true, write_tags},
      {"target: long tags", 6, false, long_tag},
      {"target: bad value", 6, false, bad_value},
      {"target: set what is not kept", 4, true, unkept},
      {"target: delete what must stay", 4, false,
       [](Situation& s) {
         return "delete " + target(s) + "/" + number(s, {"name", "v1", "v2c", "usm"});
       }},
      {"target: set the key", 2, false,
       [](Situation& s) { return set(target(s) + "/name", name(s)); }},
      {"target: delete", 16, true, [](Situation& s) { return "delete " + target(s); }},
      {"target: delete all", 3, true,
       [](Situation&) -> std::string { return "delete /snmp:snmp/target"; }},
      {"target: foreign address", 14, true, foreign_address},
      {"target: foreign parameters", 14, true, foreign_params},
  };
}

}  // namespace random_operations
