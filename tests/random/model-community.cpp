// Communities and notifications: one row for each entry.
#include "model.h"

namespace random_operations {
namespace {

const std::string kCommunities = "snmpCommunityEntry";
const std::string kNotifications = "snmpNotifyEntry";

void remove_all(Table& rows) {
  require(!rows.empty(), kNotThere);
  rows.clear();
}

Row& community(Tables& t, const Key& key) {
  Table& rows = t.rows(kCommunities);
  if (const auto at = rows.find(key); at != rows.end()) return at->second;
  Row& row = rows[key];
  row["snmpCommunityName"] = row["snmpCommunitySecurityName"] = key[0];
  if (const auto engine = t.engine_id()) row["snmpCommunityContextEngineID"] = *engine;
  return row;
}

struct Leaf {
  const char* column;
  Admits admits;
};
const std::map<std::string, Leaf> kCommunityLeaves{
    {"index", {nullptr, admits::name}},
    {"name", {"snmpCommunityName", admits::any}},
    {"sec-name", {"snmpCommunitySecurityName", admits::name}},
    {"context-name", {"snmpCommunityContextName", admits::optional_name}},
    {"target-tag", {"snmpCommunityTransportTag", admits::tag}}};

std::optional<std::string> read(const Row& row, const Key& key, const std::string& leaf) {
  if (leaf == "index") return key[0];
  auto value = Tables::value(kCommunities, row, kCommunityLeaves.at(leaf).column);
  if (leaf == "name" && value == key[0]) return std::nullopt;
  if (leaf == "target-tag" && value == "") return std::nullopt;
  return value;
}

void remove_leaf(Row& row, const Key& key, const std::string& leaf) {
  require(read(row, key, leaf).has_value(), kNotThere);
  if (leaf == "index" || leaf == "sec-name") refuse("Tried to delete invalid tag: " + leaf);
  if (leaf == "name") {
    row["snmpCommunityName"] = key[0];
  } else {
    row.erase(kCommunityLeaves.at(leaf).column);
  }
}

bool notify_type(const std::string& v) { return one_of(v, {"trap", "inform"}); }

}  // namespace

void write_community(Transaction& tx, const Operation& op) {
  Table& rows = tx.t.rows(kCommunities);
  const Key& key = op.path[1].keys;
  if (key.empty()) return remove_all(rows);
  require(admits::name(key[0]));
  const bool there = rows.count(key) != 0;
  if (op.is("create")) {
    require(!there, kThere);
    community(tx.t, key);
  } else if (op.is("set")) {
    const Leaf& leaf = kCommunityLeaves.at(op.leaf());
    require(leaf.admits(op.value()));
    Row& row = community(tx.t, key);
    if (leaf.column != nullptr) row[leaf.column] = op.value();
  } else {
    require(there, kNotThere);
    if (op.path.size() == 2) {
      rows.erase(key);
    } else {
      remove_leaf(rows[key], key, op.leaf());
    }
  }
}

void show_community(View& view, const Tables& t) {
  for (const auto& [key, row] : t.rows(kCommunities)) {
    const std::string path = view.entry("/snmp/community", key) + "/";
    for (const auto& [leaf, column] : kCommunityLeaves) {
      view.optional(path + leaf, read(row, key, leaf));
    }
  }
}

void write_notify(Transaction& tx, const Operation& op) {
  Table& rows = tx.t.rows(kNotifications);
  const Key& key = op.path[1].keys;
  if (key.empty()) return remove_all(rows);
  require(admits::name(key[0]));
  const bool there = rows.count(key) != 0;
  const std::string leaf = op.path.size() > 2 ? op.leaf() : "";
  if (op.is("delete")) {
    require(there, kNotThere);
    if (leaf == "name") refuse("Tried to delete invalid tag: name");
    if (leaf.empty()) rows.erase(key);
    if (leaf == "tag") rows[key].erase("snmpNotifyTag");
    if (leaf == "type") rows[key].erase("snmpNotifyType");
    return;
  }
  if (op.is("create")) require(!there, kThere);
  if (leaf == "name") require(op.value() == key[0]);
  if (leaf == "tag") require(admits::tag(op.value()));
  if (leaf == "type") require(notify_type(op.value()));
  if (!there) rows[key]["snmpNotifyType"] = "trap";
  if (leaf == "tag") rows[key]["snmpNotifyTag"] = op.value();
  if (leaf == "type") rows[key]["snmpNotifyType"] = op.value();
}

void show_notify(View& view, const Tables& t) {
  for (const auto& [key, row] : t.rows(kNotifications)) {
    const std::string path = view.entry("/snmp/notify", key);
    view.leaf(path + "/name", key[0]);
    view.optional(path + "/tag", Tables::value(kNotifications, row, "snmpNotifyTag"));
    view.optional(path + "/type", Tables::value(kNotifications, row, "snmpNotifyType"));
  }
}

}  // namespace random_operations
