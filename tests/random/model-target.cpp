// Targets: a row of addresses, and the row of parameters that it names.
#include <algorithm>
#include <array>

#include "model.h"

namespace random_operations {
namespace {

const std::string kTargets = "snmpTargetAddrEntry";
const std::string kParams = "snmpTargetParamsEntry";
const std::string kMp = "snmpTargetParamsMPModel";
const std::string kSecurityModel = "snmpTargetParamsSecurityModel";
const std::string kSecurityName = "snmpTargetParamsSecurityName";
const std::string kLevel = "snmpTargetParamsSecurityLevel";

constexpr const char* kNoParams = "Target has no parameters";

struct Case {
  std::string name, mp, model;
};
const std::array<Case, 3> kCases{{{"v1", "0", "1"}, {"v2c", "1", "2"}, {"usm", "3", "3"}}};

const Case* case_named(const std::string& name) {
  const auto* at =
      std::find_if(kCases.begin(), kCases.end(), [&](const Case& c) { return c.name == name; });
  return at == kCases.end() ? nullptr : at;
}

const Row* params_of(const Tables& t, const Row& target) {
  const auto name = column(target, "snmpTargetAddrParams");
  if (!name) return nullptr;
  const auto at = t.rows(kParams).find({*name});
  return at == t.rows(kParams).end() ? nullptr : &at->second;
}

// The case's name; nothing when none is selected. `odd` is set to an MP model that has no case.
std::optional<std::string> selected(const Tables& t, const Row& target, std::string& odd) {
  const Row* const params = params_of(t, target);
  const auto mp = params == nullptr ? std::nullopt : column(*params, kMp);
  if (!mp) return std::nullopt;
  for (const Case& c : kCases) {
    if (c.mp == *mp) return c.name;
  }
  odd = *mp;
  return std::nullopt;
}

std::size_t users(Tables& t, const std::string& params) {
  const Table& rows = t.rows(kTargets);
  return static_cast<std::size_t>(std::count_if(rows.begin(), rows.end(), [&](const auto& row) {
    return column(row.second, "snmpTargetAddrParams") == params;
  }));
}

std::string new_params(Tables& t) {
  for (int n = 1;; ++n) {
    std::string name = "ConfD" + std::to_string(n);
    if (t.rows(kParams).try_emplace({name}).second) return name;
  }
}

Row& target(Transaction& tx, const Key& key) {
  Table& rows = tx.t.rows(kTargets);
  if (const auto at = rows.find(key); at != rows.end()) return at->second;
  tx.touch("target", key);
  Row& row = rows[key];
  row["snmpTargetAddrParams"] = new_params(tx.t);
  row["snmpTargetAddrTagList"] = "";
  row["snmpTargetAddrRetryCount"] = "3";
  return row;
}

// The target's parameters, shared with no other target from now on.
Row& own_params(Tables& t, Row& target) {
  const auto name = column(target, "snmpTargetAddrParams");
  require(name.has_value(), kNoParams);
  Table& rows = t.rows(kParams);
  require(rows.count({*name}) != 0);  // names a row that is not there: nothing to write to
  if (users(t, *name) < 2) return rows[{*name}];
  const std::string fresh = new_params(t);
  // All six columns are copied as they read.
  Row& copy = rows[{fresh}] = rows[{*name}];
  copy.try_emplace("snmpTargetParamsStorageType", "nonVolatile");
  target["snmpTargetAddrParams"] = fresh;
  return copy;
}

void select(Tables& t, Row& target, const Case& to) {
  Row& params = own_params(t, target);
  if (to.name != "usm") params[kLevel] = "noAuthNoPriv";
  params[kSecurityModel] = to.model;
  params[kMp] = to.mp;
}

struct Leaf {
  const char* column;
  Admits admits;
};
// Those that are a column of the target's row as it stands.
const std::map<std::string, Leaf> kLeaves{
    {"timeout",
     {"snmpTargetAddrTimeout",
      [](const std::string& v) { return admits::whole(v, 0, INT32_MAX); }}},
    {"retries",
     {"snmpTargetAddrRetryCount", [](const std::string& v) { return admits::whole(v, 0, 255); }}},
    {"engine-id", {"snmpTargetAddrEngineID", admits::engine}}};

struct Address {
  std::string ip;  // octets
  unsigned port = 162;
};

std::optional<Address> address(const Row& row) {
  const auto stored = column(row, "snmpTargetAddrTAddress");
  if (!stored || octet_count(*stored) < 6) return std::nullopt;
  const std::string all = octets(*stored);
  const std::size_t n = all.size() - 2;
  return Address{all.substr(0, n), static_cast<unsigned char>(all[n]) * 256U +
                                       static_cast<unsigned char>(all[n + 1])};
}

// What reads: it needs the domain too.
std::optional<Address> shown_address(const Row& row) {
  return column(row, "snmpTargetAddrTDomain") ? address(row) : std::nullopt;
}

void store_address(Row& row, const Address& a) {
  row["snmpTargetAddrTAddress"] =
      hex(a.ip + static_cast<char>(a.port / 256) + static_cast<char>(a.port % 256));
}

std::string tag_list(const Row& row) {
  return *Tables::value(kTargets, row, "snmpTargetAddrTagList");
}

std::vector<std::string> tags(const Row& row) {
  std::vector<std::string> words = split(tag_list(row), ' ');
  std::erase(words, "");
  return words;
}

std::string joined(const std::vector<std::string>& all) {
  std::string text;
  for (const std::string& word : all) text += (text.empty() ? "" : " ") + word;
  return text;
}

std::optional<std::string> read(const Tables& t, const Row& row, const Operation& op) {
  const std::string& leaf = op.leaf();
  const Row* const params = params_of(t, row);
  if (leaf == "name") return op.path[1].keys[0];
  if (leaf == "ip" && op.path.size() == 3) {
    const auto a = shown_address(row);
    return a ? std::optional(ip_text(a->ip.substr(0, a->ip.size() == 16 ? 16 : 4))) : std::nullopt;
  }
  if (leaf == "port") {
    const auto a = shown_address(row);
    return a ? std::optional(std::to_string(a->port)) : std::nullopt;
  }
  if (const auto plain = kLeaves.find(leaf); plain != kLeaves.end()) {
    const auto value = Tables::value(kTargets, row, plain->second.column);
    return value == "" ? std::nullopt : value;
  }
  if (params == nullptr) return std::nullopt;
  if (leaf == "sec-level") {
    const auto level = column(*params, kLevel);
    return level ? std::optional(shown_level(*level)) : std::nullopt;
  }
  if (leaf == "user-name") return column(*params, kSecurityName);
  if (leaf == "sec-name") {
    const Case* const own = case_named(op.path[2].name);
    return column(*params, kSecurityModel) == own->model ? column(*params, kSecurityName)
                                                         : std::nullopt;
  }
  return std::nullopt;
}

void check_value(const Operation& op) {
  using namespace admits;
  const std::string& leaf = op.leaf();
  if (leaf == "name") require(name(op.value()));
  if (leaf == "ip") require(ip(op.value()));
  if (leaf == "port") require(whole(op.value(), 0, 65535));
  if (leaf == "prefix-length") require(whole(op.value(), 0, 128));
  const auto plain = kLeaves.find(leaf);
  if (plain != kLeaves.end()) require(plain->second.admits(op.value()));
  if (leaf == "sec-name" || leaf == "user-name") require(text(op.value()));
  if (leaf == "tag") {
    for (const std::string& v : op.values) require(word(v));
  }
  if (leaf == "sec-level") require(is_level(op.value()));
}

void set_leaf(Transaction& tx, const Operation& op) {
  check_value(op);
  const Key& key = op.path[1].keys;
  Row& row = target(tx, key);
  tx.touch("target", key);
  const std::string& leaf = op.leaf();
  if (const Case* const to = case_named(op.path[2].name); to != nullptr) {
    std::string odd;
    if (selected(tx.t, row, odd) != to->name) select(tx.t, row, *to);
    Row& params = own_params(tx.t, row);
    if (leaf == "sec-level") {
      params[kLevel] = stored_level(op.value());
    } else {
      params[kSecurityName] = op.value();
    }
  } else if (op.path.size() > 3 || leaf == "prefix-length") {
    return;  // has no place in the tables
  } else if (leaf == "name") {
    require(op.value() == key[0]);
  } else if (const auto plain = kLeaves.find(leaf); plain != kLeaves.end()) {
    row[plain->second.column] = op.value();
  } else if (leaf == "tag") {
    require(admits::text(joined(op.values)));
    row["snmpTargetAddrTagList"] = joined(op.values);
  } else if (leaf == "ip") {
    Address a = address(row).value_or(Address{});
    a.ip = ip_octets(op.value());
    row["snmpTargetAddrTDomain"] =
        a.ip.size() == 16 ? "1.3.6.1.2.1.100.1.2" : "1.3.6.1.2.1.100.1.1";
    store_address(row, a);
  } else if (leaf == "port") {
    Address a = address(row).value_or(Address{std::string(4, '\0'), 0});
    a.port = static_cast<unsigned>(std::stoul(op.value()));
    store_address(row, a);
  }
}

void create(Transaction& tx, const Operation& op) {
  const Key& key = op.path[1].keys;
  const bool there = tx.t.rows(kTargets).count(key) != 0;
  if (op.path.size() == 2) require(!there, kThere);
  Row& row = target(tx, key);
  if (op.path.size() == 2) return;
  tx.touch("target", key);
  if (const Case* const to = case_named(op.leaf()); to != nullptr) {
    std::string odd;
    const auto now = selected(tx.t, row, odd);
    require(now != to->name, kThere);
    select(tx.t, row, *to);
    return;
  }
  const std::string& word = op.path[2].keys.at(0);
  require(admits::word(word));
  std::vector<std::string> all = tags(row);
  if (std::find(all.begin(), all.end(), word) != all.end()) return;
  std::string list = tag_list(row);
  list += (list.empty() ? "" : " ") + word;
  require(admits::text(list), "Tag list too long");
  row["snmpTargetAddrTagList"] = list;
}

void remove_target(Tables& t, const Key& key) {
  const auto params = column(t.rows(kTargets)[key], "snmpTargetAddrParams");
  // A name without a row does not keep the target.
  if (params && users(t, *params) < 2) t.rows(kParams).erase({*params});
  t.rows(kTargets).erase(key);
}

void remove_tag(Row& row, const std::string& word) {
  std::string list = tag_list(row);
  // Found as a word: with blanks or ends around.
  const std::size_t at = (" " + list + " ").find(" " + word + " ");
  list.erase(at == 0 ? 0 : at - 1, word.size() + 1);
  row["snmpTargetAddrTagList"] = list;
}

void remove_leaf(Transaction& tx, Row& row, const Operation& op) {
  const std::string& leaf = op.leaf();
  if (const Case* const own = case_named(leaf); own != nullptr) {
    std::string odd;
    const auto now = selected(tx.t, row, odd);
    require(now == own->name || !odd.empty(), kNotThere);
    refuse("Missing mandatory case selection (v1/v2c/usm)");
  }
  if (leaf == "tag") {
    const std::vector<std::string> all = tags(row);
    const Key& words = op.path[2].keys;
    const bool there =
        words.empty() ? !all.empty() : std::find(all.begin(), all.end(), words[0]) != all.end();
    require(there, kNotThere);
    if (words.empty()) {
      row.erase("snmpTargetAddrTagList");
    } else {
      remove_tag(row, words[0]);
    }
    return;
  }
  require(read(tx.t, row, op).has_value(), kNotThere);
  if (leaf == "name") refuse("Tried to delete invalid tag: name");
  if (const auto plain = kLeaves.find(leaf); plain != kLeaves.end())
    row.erase(plain->second.column);
  if (leaf == "ip") {
    row.erase("snmpTargetAddrTDomain");
    row.erase("snmpTargetAddrTAddress");
  }
  if (leaf == "port") {
    Address a = *address(row);
    a.port = 0;
    store_address(row, a);
  }
  const Case* const own = case_named(op.path[2].name);
  if (own == nullptr) return;
  Row& params = tx.t.rows(kParams)[{row["snmpTargetAddrParams"]}];
  const auto mp = column(params, kMp);
  if (mp && *mp != own->mp) return;
  params.erase(leaf == "sec-level" ? kLevel : kSecurityName);
}

}  // namespace

void write_target(Transaction& tx, const Operation& op) {
  Table& rows = tx.t.rows(kTargets);
  const Key& key = op.path[1].keys;
  if (key.empty()) {
    require(!rows.empty(), kNotThere);
    while (!rows.empty()) remove_target(tx.t, Key(rows.begin()->first));
    return;
  }
  require(admits::name(key[0]));
  if (op.is("create")) return create(tx, op);
  if (op.is("set")) return set_leaf(tx, op);
  const auto at = rows.find(key);
  // Whether a word is there cannot be told where there is no list: any refusal will do.
  const bool is_word = op.path.size() == 3 && !op.path[2].keys.empty();
  require(at != rows.end(), is_word ? "" : kNotThere);
  if (op.path.size() == 2) return remove_target(tx.t, key);
  tx.touch("target", key);
  remove_leaf(tx, at->second, op);
}

bool target_holds(const Tables& t, const Key& key) {
  const auto row = t.rows(kTargets).find(key);
  std::string odd;
  return row == t.rows(kTargets).end() || selected(t, row->second, odd).has_value();
}

namespace {

// One leaf, "usm/user-name"; whether it is there.
bool show_leaf(View& view, const Tables& t, const Key& key, const Row& row,
               const std::string& below) {
  const std::string path = "/snmp/target" + braces(key) + "/" + below;
  const auto value = read(t, row, parse("show " + path));
  view.optional(path, value);
  return value.has_value();
}

}  // namespace

void show_target(View& view, const Tables& t) {
  for (const auto& [key, row] : t.rows(kTargets)) {
    const std::string path = view.entry("/snmp/target", key);
    for (const char* leaf : {"name", "ip", "port", "timeout", "retries", "engine-id"}) {
      show_leaf(view, t, key, row, leaf);
    }
    if (const auto words = tags(row); !words.empty()) view.leaf_list(path + "/tag", words);
    std::string odd;
    const auto now = selected(t, row, odd);
    if (!odd.empty()) view.error(path + "/v1", "Inconsistent parameters setting: " + odd);
    if (!now) continue;
    const bool name =
        show_leaf(view, t, key, row, *now + (*now == "usm" ? "/user-name" : "/sec-name"));
    const bool level = *now == "usm" && show_leaf(view, t, key, row, "usm/sec-level");
    if (!name && !level) view.empty(path + "/" + *now);
  }
}

}  // namespace random_operations
