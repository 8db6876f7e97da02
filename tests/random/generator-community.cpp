// Communities and notifications, from both sides.
#include "generator.h"

namespace random_operations {
namespace {

using namespace vocabulary;

const std::string kRows =
    "/SNMP_COMMUNITY_MIB:SNMP-COMMUNITY-MIB/snmpCommunityTable/snmpCommunityEntry";
const std::string kNotifyRows =
    "/SNMP_NOTIFICATION_MIB:SNMP-NOTIFICATION-MIB/snmpNotifyTable/snmpNotifyEntry";

std::string community(Situation& s) {
  return "/snmp:snmp/community" + braces(row(s, "snmpCommunityEntry", {name(s)}));
}
std::string notify(Situation& s) {
  return "/snmp:snmp/notify" + braces(row(s, "snmpNotifyEntry", {name(s)}));
}
std::string community_row(Situation& s) {
  return kRows + braces(row(s, "snmpCommunityEntry", {name(s)}));
}

std::string set_leaf(Situation& s) {
  const std::string path = community(s);
  switch (s.random.below(5)) {
    case 0:
      return set(path + "/name", s.random.percent(40) ? name(s) : text(s));
    case 1:
      return set(path + "/sec-name", name(s));
    case 2:
      return set(path + "/context-name", s.random.percent(30) ? "" : name(s));
    case 3:
      return set(path + "/target-tag", s.random.percent(30) ? "" : tag(s));
    default:
      return set(path + "/index", name(s));
  }
}

std::string remove_leaf(Situation& s) {
  static const std::vector<std::string> kLeaves{"name", "context-name", "target-tag"};
  return "delete " + community(s) + "/" + s.random.one_of(kLeaves);
}

std::string remove_fixed(Situation& s) {
  return "delete " + community(s) + (s.random.percent(50) ? "/sec-name" : "/index");
}

std::string bad_value(Situation& s) {
  switch (s.random.below(5)) {
    case 0:
      return set(community(s) + "/target-tag", "two words");
    case 1:
      return set(community(s) + "/sec-name", "");
    case 2:
      return set(notify(s) + "/type", "telegram");
    case 3:
      return set(notify(s) + "/tag", std::string(256, 't'));
    default:
      return "create /snmp:snmp/community" + braces({std::string(33, 'n')});
  }
}

std::string foreign_row(Situation& s) {
  static const std::vector<std::string> kLeaves{"Name", "SecurityName", "ContextName",
                                                "TransportTag"};
  switch (s.random.below(4)) {
    case 0:
      return "create " + community_row(s);
    case 1:
      return "delete " + community_row(s);
    case 2:
      return "delete " + community_row(s) + "/snmpCommunity" + s.random.one_of(kLeaves);
    default:
      return set(community_row(s) + "/snmpCommunity" + s.random.one_of(kLeaves), name(s));
  }
}

std::string notify_leaf(Situation& s) {
  if (s.random.percent(50)) return set(notify(s) + "/tag", s.random.percent(20) ? "" : tag(s));
  return set(notify(s) + "/type", s.random.percent(50) ? "trap" : "inform");
}

std::string foreign_notify(Situation& s) {
  const std::string path = kNotifyRows + braces(row(s, "snmpNotifyEntry", {name(s)}));
  switch (s.random.below(4)) {
    case 0:
      return "create " + path;
    case 1:
      return "delete " + path;
    case 2:
      return "delete " + path + "/snmpNotifyType";
    default:
      return set(path + "/snmpNotifyTag", text(s));
  }
}

}  // namespace

std::vector<Maker> community_makers() {
  return {
      {"community: create", 20, true, [](Situation& s) { return "create " + community(s); }},
      {"community: set a leaf", 25, true, set_leaf},
      {"community: delete a leaf", 15, true, remove_leaf},
      {"community: delete", 10, true, [](Situation& s) { return "delete " + community(s); }},
      {"community: delete all", 3, true,
       [](Situation&) -> std::string { return "delete /snmp:snmp/community"; }},
      {"community: delete what must stay", 3, false, remove_fixed},
      {"community and notify: bad value", 6, false, bad_value},
      {"community: foreign row", 12, true, foreign_row},
      {"notify: create", 8, true, [](Situation& s) { return "create " + notify(s); }},
      {"notify: set a leaf", 12, true, notify_leaf},
      {"notify: set the key", 4, true,
       [](Situation& s) {
         const Key key = row(s, "snmpNotifyEntry", {name(s)});
         return set("/snmp:snmp/notify" + braces(key) + "/name",
                    s.random.percent(50) ? key[0] : name(s));
       }},
      {"notify: delete a leaf", 8, true,
       [](Situation& s) {
         return "delete " + notify(s) + (s.random.percent(50) ? "/tag" : "/type");
       }},
      {"notify: delete the name", 3, false,
       [](Situation& s) { return "delete " + notify(s) + "/name"; }},
      {"notify: delete", 6, true, [](Situation& s) { return "delete " + notify(s); }},
      {"notify: foreign row", 8, true, foreign_notify},
  };
}

}  // namespace random_operations
