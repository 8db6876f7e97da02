// Groups, their members and rights, and views, from both sides.
#include "generator.h"

namespace random_operations {
namespace {

using namespace vocabulary;

const std::string kMib = "/SNMP_VIEW_BASED_ACM_MIB:SNMP-VIEW-BASED-ACM-MIB/";
const std::string kMembers = kMib + "vacmSecurityToGroupTable/vacmSecurityToGroupEntry";
const std::string kAccess = kMib + "vacmAccessTable/vacmAccessEntry";
const std::string kViews = kMib + "vacmViewTreeFamilyTable/vacmViewTreeFamilyEntry";

const std::vector<const char*> kModels{"any", "v1", "v2c", "usm"};
const std::vector<const char*> kNumbers{"0", "1", "2", "3", "3", "256"};

// Few groups, so that they meet over members.
std::string group_name(Situation& s) { return number(s, {"g", "h", "G", "n;1", "q\"x\\"}); }
std::string member_name(Situation& s) { return number(s, {"a", "b", "{z}", "100%s"}); }

std::string group(Situation& s) { return "/snmp:snmp/vacm/group" + braces({group_name(s)}); }
std::string member(Situation& s) { return group(s) + "/member" + braces({member_name(s)}); }

Key access_key(Situation& s) {
  return {number(s, {"", "ctx", "a b"}), number(s, kModels),
          number(s, {"no-auth-no-priv", "auth-no-priv", "auth-priv"})};
}
std::string access(Situation& s) { return group(s) + "/access" + braces(access_key(s)); }

// One that is there, if there is one.
std::string present_access(Situation& s) {
  const Key key = row(s, "vacmAccessEntry", {});
  if (key.empty() || key[2].size() > 1) return access(s);
  return "/snmp:snmp/vacm/group" + braces({key[0]}) + "/access" +
         braces({key[1], kModels[key[2][0] - '0'], shown_level(key[3])});
}

std::string set_models(Situation& s) {
  std::vector<std::string> all;
  for (const char* model : kModels) {
    if (s.random.percent(45)) all.emplace_back(model);
  }
  return set_all(member(s) + "/sec-model", all);
}

std::string view(Situation& s) {
  return "/snmp:snmp/vacm/view" + braces({row(s, "vacmViewTreeFamilyEntry", {name(s), ""})[0]});
}

std::string oid(Situation& s) {
  return number(s, {"1.3.6.1", "1.3.6.1.*.1", "*", "1.3.6.1.2.1.1.1.*", "1", "2.4294967295.*",
                    "10.2", "1.3.6.1.2.1"});
}

std::string subtree(Situation& s) {
  const Key key = row(s, "vacmViewTreeFamilyEntry", {});
  if (key.empty()) return view(s) + "/subtree" + braces({oid(s)});
  std::string text;
  for (std::size_t i = 0; i < key[1].size(); ++i) {
    const bool alone =
        (i == 0 || key[1][i - 1] == '.') && (i + 1 == key[1].size() || key[1][i + 1] == '.');
    text += alone && key[1][i] == '0' ? '*' : key[1][i];
  }
  return "/snmp:snmp/vacm/view" + braces({key[0]}) + "/subtree" + braces({text});
}

std::string bad_subtree(Situation& s) {
  const std::string text =
      s.random.percent(20)
          ? std::string(256, '1')
          : number(s, {"", ".1", "1.", "1..3", "0.1", "1.03", "1.3x", "*5.1", "1.a", "4294967296"});
  return number(s, {"create ", "delete "}) + view(s) + "/subtree" + braces({text});
}

std::string set_access_leaf(Situation& s) {
  switch (s.random.below(8)) {
    case 0:
    case 1:
      return set(access(s) + "/context-match", number(s, {"exact", "prefix"}));
    case 2:
      return set(present_access(s) + "/sec-level", number(s, {"auth-priv", "auth-no-priv"}));
    case 3:
      return set(present_access(s) + "/sec-model", number(s, kModels));
    case 4:
      return set(present_access(s) + "/context", "other");
    default:
      return set(present_access(s) + "/" + number(s, {"read-view", "write-view", "notify-view"}),
                 s.random.percent(20) ? "" : name(s));
  }
}

std::string remove_access(Situation& s) {
  if (s.random.percent(40)) return "delete " + present_access(s);
  return "delete " + present_access(s) + "/" +
         number(s, {"read-view", "write-view", "notify-view"});
}

std::string remove_fixed(Situation& s) {
  switch (s.random.below(4)) {
    case 0:
      return "delete " + group(s) + "/name";
    case 1:
      return "delete " + member(s) + "/sec-name";
    case 2:
      return "delete " + subtree(s) + "/" + number(s, {"included", "excluded"});
    default:
      return "delete " + present_access(s) + "/" +
             number(s, {"context", "sec-model", "sec-level", "context-match"});
  }
}

std::string bad_value(Situation& s) {
  switch (s.random.below(4)) {
    case 0:
      return set(member(s) + "/sec-model", "tsm");
    case 1:
      return "create " + group(s) + "/access{\"\" usm sometimes}";
    case 2:
      return set(access(s) + "/read-view", std::string(33, 'v'));
    default:
      return "create /snmp:snmp/vacm/view" + braces({std::string(33, 'v')}) + "/subtree{1}";
  }
}

std::string foreign_member(Situation& s) {
  const std::string path = kMembers + braces({number(s, kNumbers), member_name(s)});
  return s.random.percent(60) ? set(path + "/vacmGroupName", group_name(s)) : "delete " + path;
}

std::string foreign_access(Situation& s) {
  const Key key = row(s, "vacmAccessEntry",
                      {group_name(s), number(s, {"", "ctx"}), number(s, kNumbers),
                       number(s, {"noAuthNoPriv", "authNoPriv", "authPriv"})});
  const std::string path = kAccess + braces(key);
  if (s.random.percent(30)) return "delete " + path;
  return s.random.percent(50) ? "create " + path : set(path + "/vacmAccessNotifyViewName", name(s));
}

std::string foreign_view(Situation& s) {
  const std::string path =
      kViews + braces(row(s, "vacmViewTreeFamilyEntry",
                          {name(s), number(s, {"1.3.6.1.0", "0", "1.3.6", "2.999.0.1"})}));
  switch (s.random.below(5)) {
    case 0:
      return "create " + path;
    case 1:
      return "delete " + path;
    case 2:
      return set(path + "/vacmViewTreeFamilyMask", number(s, {"", "ff", "f0:00"}));
    case 3:
      return "delete " + path + "/vacmViewTreeFamilyType";
    default:
      return set(path + "/vacmViewTreeFamilyType", number(s, {"included", "excluded"}));
  }
}

}  // namespace

std::vector<Maker> vacm_makers() {
  return {
      {"group: create", 3, true, [](Situation& s) { return "create " + group(s); }},
      {"group: delete", 6, true, [](Situation& s) { return "delete " + group(s); }},
      {"group: delete all", 3, true,
       [](Situation&) -> std::string { return "delete /snmp:snmp/vacm/group"; }},
      {"member: create", 3, true, [](Situation& s) { return "create " + member(s); }},
      {"member: set the models", 22, true, set_models},
      {"member: create a model", 16, true,
       [](Situation& s) {
         return "create " + member(s) + "/sec-model" + braces({number(s, kModels)});
       }},
      {"member: delete a model", 10, true,
       [](Situation& s) {
         return "delete " + member(s) + "/sec-model" + braces({number(s, kModels)});
       }},
      {"member: delete the models", 8, true,
       [](Situation& s) { return "delete " + member(s) + "/sec-model"; }},
      {"member: delete", 8, true, [](Situation& s) { return "delete " + member(s); }},
      {"member: foreign row", 8, true, foreign_member},
      {"access: create", 10, true, [](Situation& s) { return "create " + access(s); }},
      {"access: set a leaf", 18, true, set_access_leaf},
      {"access: delete", 14, true, remove_access},
      {"access: foreign row", 6, true, foreign_access},
      {"group, member, view: set the key", 3, true,
       [](Situation& s) {
         switch (s.random.below(3)) {
           case 0:
             return set(group(s) + "/name", name(s));
           case 1:
             return set(member(s) + "/sec-name", name(s));
           default:
             return set(subtree(s) + "/oid", oid(s));
         }
       }},
      {"vacm: delete what must stay", 7, false, remove_fixed},
      {"vacm: bad value", 5, false, bad_value},
      {"view: create", 3, true, [](Situation& s) { return "create " + view(s); }},
      {"view: delete", 6, true, [](Situation& s) { return "delete " + view(s); }},
      {"view: delete all", 3, true,
       [](Situation&) -> std::string { return "delete /snmp:snmp/vacm/view"; }},
      {"subtree: create", 5, true, [](Situation& s) { return "create " + subtree(s); }},
      {"subtree: include or exclude", 28, true,
       [](Situation& s) {
         return "create " +
                (s.random.percent(50) ? view(s) + "/subtree" + braces({oid(s)}) : subtree(s)) +
                "/" + number(s, {"included", "excluded"});
       }},
      {"subtree: delete", 12, true, [](Situation& s) { return "delete " + subtree(s); }},
      {"subtree: delete the key", 3, true,
       [](Situation& s) { return "delete " + subtree(s) + "/oid"; }},
      {"subtree: invalid", 5, false, bad_subtree},
      {"subtree: foreign row", 9, true, foreign_view},
  };
}

}  // namespace random_operations
