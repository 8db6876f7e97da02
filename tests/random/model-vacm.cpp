// Groups with their members and rights, and views.
#include <algorithm>
#include <array>
#include <set>

#include "model.h"

namespace random_operations {
namespace {

const std::string kMembers = "vacmSecurityToGroupEntry";
const std::string kAccess = "vacmAccessEntry";
const std::string kViews = "vacmViewTreeFamilyEntry";

constexpr std::array<const char*, 4> kModels{"any", "v1", "v2c", "usm"};

// A number past the labels reads as it is.
std::string shown_model(const std::string& number) {
  return number.size() == 1 && number[0] <= '3' ? kModels[number[0] - '0'] : number;
}
std::string stored_model(const std::string& label) {
  const auto at = std::find(kModels.begin(), kModels.end(), label);
  require(at != kModels.end());
  return std::to_string(at - kModels.begin());
}

// ------------------------------------------------------------------------- members

// Empty for a row that names none.
std::string group_of(const Row& row) { return column(row, "vacmGroupName").value_or(""); }

bool has_group(const Tables& t, const std::string& group, const std::string& member = {}) {
  const Table& rows = t.rows(kMembers);
  return std::any_of(rows.begin(), rows.end(), [&](const auto& row) {
    return group_of(row.second) == group && (member.empty() || row.first[1] == member);
  });
}

// The pair's row comes to this group, from another perhaps.
void take(Transaction& tx, const std::string& model, const std::string& member,
          const std::string& group) {
  Row& row = tx.t.rows(kMembers)[{model, member}];
  std::string& holder = row["vacmGroupName"];
  if (!holder.empty() && holder != group) {
    tx.conflicts.try_emplace({model, member, holder}, group);
  }
  holder = group;
}

void replace_models(Transaction& tx, const std::string& group, const std::string& member,
                    const std::set<std::string>& models) {
  Table& rows = tx.t.rows(kMembers);
  for (auto at = rows.begin(); at != rows.end();) {
    const std::string& model = at->first[0];
    const bool leaves = at->first[1] == member && models.count(model) == 0;
    const bool own = group_of(at->second) == group;
    if (leaves && !own) tx.conflicts.erase({model, member, group});
    at = leaves && own ? rows.erase(at) : std::next(at);
  }
  for (const std::string& model : models) take(tx, model, member, group);
}

// All members, or one. A row that was taken back meanwhile settles the conflict and stays.
void remove_members(Transaction& tx, const std::string& group, const std::string& member = {}) {
  std::erase_if(tx.t.rows(kMembers), [&](const auto& row) {
    if (group_of(row.second) != group) return false;
    if (!member.empty() && row.first[1] != member) return false;
    return tx.conflicts.erase({row.first[0], row.first[1], group}) == 0;
  });
}

void write_member(Transaction& tx, const Operation& op) {
  const std::string& group = op.path[2].keys[0];
  const std::string& member = op.path[3].keys.at(0);
  require(admits::name(member));
  const bool there = has_group(tx.t, group, member);
  if (op.path.size() == 4) {
    require(op.is("delete") == there, there ? kThere : kNotThere);
    if (op.is("delete")) remove_members(tx, group, member);
    return;
  }
  if (op.leaf() == "sec-name") {
    if (op.is("set")) return require(admits::name(op.value()));
    require(there, kNotThere);
    refuse("Tried to delete invalid tag: sec-name");
  }
  const Key& key = op.path[4].keys;
  if (op.is("set")) {
    std::set<std::string> models;
    for (const std::string& label : op.values) models.insert(stored_model(label));
    replace_models(tx, group, member, models);
  } else if (key.empty()) {
    require(there, kNotThere);
    remove_members(tx, group, member);
  } else if (op.is("create")) {
    take(tx, stored_model(key[0]), member, group);
  } else {
    // Whichever group it belongs to.
    require(tx.t.rows(kMembers).erase({stored_model(key[0]), member}) != 0, kNotThere);
  }
}

// -------------------------------------------------------------------------- access

const std::map<std::string, std::string> kAccessLeaves{{"context-match", "vacmAccessContextMatch"},
                                                       {"read-view", "vacmAccessReadViewName"},
                                                       {"write-view", "vacmAccessWriteViewName"},
                                                       {"notify-view", "vacmAccessNotifyViewName"}};

void set_access(Tables& t, const Key& key, const Operation& op) {
  const std::string& leaf = op.leaf();
  const std::string& value = op.value();
  if (leaf == "context-match") require(one_of(value, {"exact", "prefix"}));
  if (leaf.ends_with("-view") || leaf == "context") require(admits::optional_name(value));
  if (leaf == "sec-level") require(stored_level(value) == key[3] && is_level(value));
  if (leaf == "sec-model") require(stored_model(value) == key[2]);
  Table& rows = t.rows(kAccess);
  if (rows.count(key) == 0) rows[key]["vacmAccessStorageType"] = "nonVolatile";
  if (const auto column = kAccessLeaves.find(leaf); column != kAccessLeaves.end()) {
    rows[key][column->second] = value;
  }
}

void write_access(Tables& t, const Operation& op) {
  const Key& shown = op.path[3].keys;
  require(admits::optional_name(shown[0]) && is_level(shown[2]));
  const Key key{op.path[2].keys[0], shown[0], stored_model(shown[1]), stored_level(shown[2])};
  Table& rows = t.rows(kAccess);
  const bool there = rows.count(key) != 0;
  if (op.is("set")) return set_access(t, key, op);
  if (op.is("create")) {
    require(!there, kThere);
    rows[key]["vacmAccessStorageType"] = "nonVolatile";
  } else if (op.path.size() == 4) {
    require(rows.erase(key) != 0, kNotThere);
  } else if (op.leaf() == "sec-level") {
    refuse();  // a key of the row, or not there
  } else {
    require(there, kNotThere);
    if (op.leaf() == "sec-model") refuse("Delete invoked on list's key: sec-model");
    if (!op.leaf().ends_with("-view")) refuse("Tried to delete invalid tag: " + op.leaf());
    rows[key].erase(kAccessLeaves.at(op.leaf()));
  }
}

bool has_access(const Tables& t, const std::string& group) {
  const Table& rows = t.rows(kAccess);
  return std::any_of(rows.begin(), rows.end(),
                     [&](const auto& row) { return row.first[0] == group; });
}

void remove_group(Transaction& tx, const std::string& group) {
  remove_members(tx, group);
  std::erase_if(tx.t.rows(kAccess), [&](const auto& row) { return row.first[0] == group; });
}

std::set<std::string> groups(const Tables& t) {
  std::set<std::string> names;
  for (const auto& [key, row] : t.rows(kMembers)) names.insert(group_of(row));
  names.erase("");
  return names;
}

void show_access(View& view, const Tables& t, const std::string& group, const std::string& path) {
  for (const auto& [key, row] : t.rows(kAccess)) {
    if (key[0] != group) continue;
    const Key shown{key[1], shown_model(key[2]), shown_level(key[3])};
    const std::string entry = view.entry(path + "/access", shown) + "/";
    view.leaf(entry + "context", shown[0]);
    view.leaf(entry + "sec-model", shown[1]);
    view.leaf(entry + "sec-level", shown[2]);
    for (const auto& [leaf, column] : kAccessLeaves) {
      view.optional(entry + leaf, Tables::value(kAccess, row, column));
    }
  }
}

void show_members(View& view, const Tables& t, const std::string& group, const std::string& path) {
  std::map<std::string, std::vector<std::string>> models;  // by member
  for (const auto& [key, row] : t.rows(kMembers)) {
    if (group_of(row) == group) models[key[1]].push_back(shown_model(key[0]));
  }
  for (const auto& [member, of] : models) {
    const std::string entry = view.entry(path + "/member", {member});
    view.leaf(entry + "/sec-name", member);
    view.leaf_list(entry + "/sec-model", of);
  }
}

// --------------------------------------------------------------------------- views

struct Subtree {
  std::string oid, mask;
};

Subtree subtree(const std::string& text) {
  const std::vector<std::string> parts = split(text, '.');
  const std::string invalid = "Invalid subtree: ";
  require(text.size() <= 255 && parts.size() <= 128, invalid);
  Subtree result;
  std::string mask((parts.size() + 7) / 8, '\0');
  bool wild = false;
  for (std::size_t i = 0; i < parts.size(); ++i) {
    const bool any = parts[i] == "*";
    require(any || (admits::whole(parts[i], 1, UINT32_MAX) && parts[i][0] != '0'), invalid + text);
    result.oid += (i == 0 ? "" : ".") + (any ? "0" : parts[i]);
    if (!any) mask[i / 8] = static_cast<char>(mask[i / 8] | 0x80 >> i % 8);
    wild = wild || any;
  }
  if (wild) result.mask = hex(mask);
  return result;
}

void write_subtree(Transaction& tx, const Operation& op) {
  const std::string& name = op.path[2].keys[0];
  const std::string& text = op.path[3].keys.at(0);
  const Subtree made = subtree(text);
  const Key key{name, made.oid};
  Table& rows = tx.t.rows(kViews);
  const bool there = rows.count(key) != 0;
  const std::string leaf = op.path.size() > 4 ? op.leaf() : "";
  if (op.is("delete")) {
    require(there, kNotThere);
    tx.touch("subtree", key);
    if (leaf.empty()) rows.erase(key);
    if (leaf != "included" && leaf != "excluded") return;  // or the key, which is left as it is
    require(rows[key].count("vacmViewTreeFamilyType") != 0 &&
                rows[key]["vacmViewTreeFamilyType"] == leaf,
            kNotThere);
    refuse("Missing mandatory choice: excluded/included");
  }
  if (leaf.empty()) require(!there, kThere);
  if (!there) {
    rows[key]["vacmViewTreeFamilyMask"] = made.mask;
    rows[key]["vacmViewTreeFamilyStorageType"] = "nonVolatile";
  }
  tx.touch("subtree", key);
  if (leaf.empty() || leaf == "oid") return;
  require(rows[key]["vacmViewTreeFamilyType"] != leaf, kThere);
  rows[key]["vacmViewTreeFamilyType"] = leaf;
}

}  // namespace

void write_group(Transaction& tx, const Operation& op) {
  if (op.path[2].keys.empty()) {
    const std::set<std::string> all = groups(tx.t);
    require(!all.empty(), kNotThere);
    for (const std::string& name : all) remove_group(tx, name);
    return;
  }
  const std::string& group = op.path[2].keys[0];
  require(admits::name(group));
  const std::string& node = op.path.size() > 3 ? op.path[3].name : group;
  if (op.path.size() > 3 && node == "member") return write_member(tx, op);
  if (op.path.size() > 3 && node == "access") return write_access(tx.t, op);
  const bool there = has_group(tx.t, group);
  if (op.path.size() > 3) {  // the name
    if (op.is("set")) return require(admits::name(op.value()));
    require(there, kNotThere);
    refuse("Tried to delete invalid tag: name");
  } else if (op.is("create")) {
    require(!there, kThere);
  } else {
    require(there || has_access(tx.t, group), kNotThere);
    remove_group(tx, group);
  }
}

void show_group(View& view, const Tables& t) {
  for (const std::string& group : groups(t)) {
    const std::string path = view.entry("/snmp/vacm/group", {group});
    view.leaf(path + "/name", group);
    show_members(view, t, group, path);
    show_access(view, t, group, path);
  }
}

void write_view(Transaction& tx, const Operation& op) {
  Table& rows = tx.t.rows(kViews);
  if (op.path[2].keys.empty()) {
    require(!rows.empty(), kNotThere);
    rows.clear();
    return;
  }
  const std::string& name = op.path[2].keys[0];
  require(admits::name(name));
  if (op.path.size() > 3 && op.path[3].name == "subtree") return write_subtree(tx, op);
  const auto in_view = [&](const auto& row) { return row.first[0] == name; };
  const bool there = std::any_of(rows.begin(), rows.end(), in_view);
  if (op.is("set")) return require(admits::name(op.value()));
  if (op.is("create")) return require(!there, kThere);
  require(there, kNotThere);
  if (op.path.size() == 3) std::erase_if(rows, in_view);
}

bool subtree_holds(const Tables& t, const Key& key) {
  const Table& rows = t.rows(kViews);
  const auto row = rows.find(key);
  return row == rows.end() || row->second.count("vacmViewTreeFamilyType") != 0;
}

void show_view(View& view, const Tables& t) {
  std::string path, last;
  for (const auto& [key, row] : t.rows(kViews)) {
    if (key[0] != last) {
      last = key[0];
      path = view.entry("/snmp/vacm/view", {last});
      view.leaf(path + "/name", last);
    }
    const std::string text = shown_oid(key[1]);
    const std::string entry = view.entry(path + "/subtree", {text}) + "/";
    view.leaf(entry + "oid", text);
    const auto type = row.find("vacmViewTreeFamilyType");
    if (type != row.end()) view.leaf(entry + type->second, "");
  }
}

}  // namespace random_operations
