// The agent's settings from both sides, and the engine ID's.
#include "generator.h"

namespace random_operations {
namespace {

using namespace vocabulary;

const std::string kAgent = "/snmp:snmp/agent/";
const std::string kSettings = "/confd_dyncfg:confdConfig/snmpAgent";

std::string set_leaf(Situation& s) {
  switch (s.random.below(6)) {
    case 0:
      return set(kAgent + "enabled", number(s, {"true", "false"}));
    case 1:
      return set(kAgent + "ip", ip(s));
    case 2:
      return set(kAgent + "port", number(s, {"161", "0", "1161"}));
    case 3:
      return set(kAgent + "max-message-size",
                 number(s, {"1500", "100", "-1", "2147483647", "484", "0"}));
    default:
      return set(kAgent + number(s, {"contact", "name", "location"}), text(s));
  }
}

std::string remove_leaf(Situation& s) {
  return "delete " + kAgent +
         number(s, {"enabled", "ip", "port", "max-message-size", "contact", "name", "location"});
}

std::string listen_key(Situation& s) { return braces({ip(s), number(s, {"161", "162", "1161"})}); }

std::string listen(Situation& s) {
  const std::string path = kAgent + "extra-ip-port" + listen_key(s);
  if (s.random.percent(10)) return set(path + "/port", "1");
  if (s.random.percent(5)) return "delete " + path + "/ip";
  return (s.random.percent(60) ? "create " : "delete ") + path;
}

std::string context(Situation& s) {
  const std::string path = kAgent + "context" + braces(row(s, "contexts", {name(s)}));
  if (s.random.percent(10)) return set(path + "/name", name(s));
  if (s.random.percent(5)) return "delete " + path + "/name";
  return (s.random.percent(60) ? "create " : "delete ") + path;
}

std::string version(Situation& s) {
  if (s.random.percent(5)) return "delete " + kAgent + "version";
  return number(s, {"create ", "create ", "delete "}) + kAgent + "version/" +
         number(s, {"v1", "v2c", "v3"});
}

std::string set_engine(Situation& s) {
  const std::string path = kAgent + "engine-id/";
  switch (s.random.below(7)) {
    case 0:
    case 1:
      return set(path + "enterprise-number", number(s, {"32473", "9"}));
    case 2:
      return set(path + "from-ip", ip(s));
    case 3:
      return set(path + "from-mac-address", number(s, {"00:11:22:33:AA:55", ""}));
    case 4:
      return set(path + "from-text", number(s, {"ab", "", "agent", "\u00e9"}));
    case 5:
      return set(path + "other", number(s, {"01:02:03", "01", "", "00:00:00:00"}));
    default:
      return "create " + kAgent + "engine-id";
  }
}

std::string bad_engine(Situation& s) {
  const std::string path = kAgent + "engine-id/";
  switch (s.random.below(4)) {
    case 0:
      return set(path + "from-text", std::string(28, 't'));
    case 1:
      return set(path + "other", number(s, {"zz", "01:", "0102"}));
    case 2:
      return set(path + "enterprise-number", "4294967296");
    default:
      return set(path + "from-mac-address", "00:11:2");
  }
}

std::string remove_engine(Situation& s) {
  if (s.random.percent(40)) return "delete " + kAgent + "engine-id";
  return "delete " + kAgent + "engine-id/" +
         number(s, {"enterprise-number", "from-ip", "from-text", "other", "from-mac-address"});
}

std::string bad_value(Situation& s) {
  switch (s.random.below(5)) {
    case 0:
      return set(kAgent + "port", "65536");
    case 1:
      return set(kAgent + "ip", "::g");
    case 2:
      return set(kAgent + "max-message-size", "2147483648");
    case 3:
      return "create " + kAgent + "extra-ip-port{1.2.3 161}";
    default:
      return set(kAgent + "contact", std::string(256, 'c'));
  }
}

std::string foreign_listens(Situation& s) {
  std::vector<std::string> all;
  for (const char* item : {"10.0.0.1:161", "host:161", "[::1]:161", "192.0.2.1", "::1:161",
                           "[2001:db8::1]", "2001:db8::1", "10.0.0.1"}) {
    if (s.random.percent(35)) all.emplace_back(item);
  }
  if (all.empty()) return "delete " + kSettings + "/extraIpPorts";
  return set_all(kSettings + "/extraIpPorts", all);
}

std::string foreign(Situation& s) {
  switch (s.random.below(10)) {
    case 0:
      return set(kSettings + "/snmpVersions/" + number(s, {"v1", "v2c", "v3"}),
                 number(s, {"true", "false"}));
    case 1:
      return "delete " + kSettings + "/snmpVersions/v2c";
    case 2:
      return set(kSettings + "/snmpEngine/snmpEngineMaxMessageSize",
                 number(s, {"100", "4294967296", "50000"}));
    case 3:
      return set(kSettings + "/snmpEngine/snmpEngineID", engine(s));
    case 4:
      return "create " + kSettings + "/snmpEngine";
    case 5:
      return set(kSettings + "/port", "162");
    case 6:
      return "delete " + kSettings + "/port";
    case 7:
      return "create " + kSettings + "/contexts" + braces({name(s)});
    case 8:
      return set("/SNMPv2_MIB:SNMPv2-MIB/system/sysName", text(s));
    default:
      return "delete " + kSettings + "/ip";
  }
}

}  // namespace

std::vector<Maker> agent_makers() {
  return {
      {"agent: set a leaf", 14, true, set_leaf},
      {"agent: delete a leaf", 4, true, remove_leaf},
      {"agent: listen address", 20, true, listen},
      {"agent: context", 10, true, context},
      {"agent: version", 10, true, version},
      {"agent: engine ID", 16, true, set_engine},
      {"agent: bad engine ID", 4, false, bad_engine},
      {"agent: delete of the engine ID", 5, true, remove_engine},
      {"agent: bad value", 5, false, bad_value},
      {"agent: foreign listen addresses", 5, true, foreign_listens},
      {"agent: foreign settings", 12, true, foreign},
      {"agent: settings removed", 3, true,
       [](Situation& s) {
         return "delete " + kSettings + number(s, {"", "/snmpEngine", "/snmpVersions"});
       }},
  };
}

}  // namespace random_operations
