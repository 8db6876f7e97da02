// Access control, as both sides see it.
#pragma once

#include <string>
#include <vector>

#include "platform/wire/path.h"
#include "world.h"

namespace scenario {

inline const std::string kVacmMib = "/SNMP_VIEW_BASED_ACM_MIB:SNMP-VIEW-BASED-ACM-MIB";
inline const std::string kGroupTable = kVacmMib + "/vacmSecurityToGroupTable";
inline const std::string kGroupRows = kGroupTable + "/vacmSecurityToGroupEntry";
inline const std::string kAccessTable = kVacmMib + "/vacmAccessTable";
inline const std::string kAccessRows = kAccessTable + "/vacmAccessEntry";
inline const std::string kViewTable = kVacmMib + "/vacmViewTreeFamilyTable";
inline const std::string kViewRows = kViewTable + "/vacmViewTreeFamilyEntry";
inline const std::string kGroups = "/snmp:snmp/vacm/group";
inline const std::string kViews = "/snmp:snmp/vacm/view";

class Vacm : public Running {
 protected:
  static std::string keyed(const std::string& list, const std::string& key) {
    return list + "{" + standin::quote_word(key) + "}";
  }
  static std::string group(const std::string& name) { return keyed(kGroups, name); }
  static std::string member(const std::string& g, const std::string& name) {
    return keyed(group(g) + "/member", name);
  }
  static std::string models(const std::string& g, const std::string& name) {
    return member(g, name) + "/sec-model";
  }
  static std::string access(const std::string& g, const std::string& keys) {
    return group(g) + "/access{" + keys + "}";
  }
  static std::string access_row(const std::string& keys) { return kAccessRows + "{" + keys + "}"; }
  static std::string subtree(const std::string& view, const std::string& oid) {
    return keyed(keyed(kViews, view) + "/subtree", oid);
  }
  static std::string view_row(const std::string& view, const std::string& oid) {
    return kViewRows + "{" + standin::quote_word(view) + " " + oid + "}";
  }
};

// A row of vacmSecurityToGroupTable.
struct GroupRow {
  std::string model, name, group;
};

class VacmGroups : public Vacm {
 protected:
  // What `show` of the MIB table prints.
  static std::string table(const std::vector<GroupRow>& rows) {
    if (rows.empty()) return "";
    std::string text = "SNMP-VIEW-BASED-ACM-MIB\n  vacmSecurityToGroupTable\n";
    for (const GroupRow& row : rows) {
      text += "    vacmSecurityToGroupEntry " + row.model + " " + standin::quote_word(row.name) +
              "\n      vacmGroupName " + standin::quote_word(row.group) + "\n";
    }
    return text;
  }
  std::string rows() { return answers({"show " + kGroupTable}); }
  static std::string row(const GroupRow& r) {
    return kGroupRows + "{" + r.model + " " + standin::quote_word(r.name) + "}";
  }
  static Strings mib_rows(const std::vector<GroupRow>& wanted) {
    Strings lines;
    for (const GroupRow& r : wanted) {
      lines.push_back("create " + row(r));
      lines.push_back("set " + row(r) + "/vacmGroupName " + standin::quote_word(r.group));
    }
    return lines;
  }
};

inline const std::vector<GroupRow> kExample = {
    {"1", "alice", "g1"}, {"2", "alice", "g1"}, {"3", "alice", "g2"}, {"3", "bob", "g1"}};

}  // namespace scenario
