// Users of this engine and of others: rows with their keys, and beside them what the keys were
// made from.
#include "model.h"
#include "users.h"

namespace random_operations {
namespace {

const std::string kUsers = "usmUserEntry";
const std::string kPrefix = "1.3.6.1.6.3.10.1.";

// One of the two sides of a user: authentication, privacy.
struct Side {
  std::string name, protocol, key, copy, password, none;
};
const Side kAuth{"auth",
                 "usmUserAuthProtocol",
                 "usmUserAuthKey",
                 "usm-crypto/auth/key",
                 "usm-crypto/auth/password",
                 kPrefix + "1.1"};
const Side kPriv{"priv",
                 "usmUserPrivProtocol",
                 "usmUserPrivKey",
                 "usm-crypto/priv/key",
                 "usm-crypto/priv/password",
                 kPrefix + "2.1"};

const std::map<std::string, std::string> kProtocols{{"md5", kPrefix + "1.2"},
                                                    {"sha", kPrefix + "1.3"},
                                                    {"des", kPrefix + "2.2"},
                                                    {"aes", kPrefix + "2.4"}};

constexpr const char* kUnknown = "?";
constexpr const char* kUnreadable = "Problem retrieving protocol value";

const Side& side_named(const std::string& name) { return name == "auth" ? kAuth : kPriv; }

// The case's name; empty for none, kUnknown for what has no case.
std::string protocol(const Row& row, const Side& side) {
  const std::string oid = *Tables::value(kUsers, row, side.protocol);
  if (oid == side.none) return "";
  for (const auto& [name, known] : kProtocols) {
    if (oid == known) return name;
  }
  return kUnknown;
}

bool is_set(const std::string& protocol) { return !protocol.empty() && protocol != kUnknown; }

// "key", "password", or nothing where there is no key.
std::string key_type(Row& row, const Side& side) {
  const auto key = column(row, side.key);
  if (!key) return "";
  const bool from_password = row.count(side.password) != 0 && column(row, side.copy) == key;
  row[side.copy] = *key;
  return from_password ? "password" : "key";
}

std::string made_key(const Row& row, const std::string& engine, const Side& side,
                     const std::string& protocol, const std::string& auth) {
  const std::string digest = side.name == "auth" ? protocol : auth;
  const std::size_t length = protocol == "sha" ? 20 : 16;
  if (!is_set(protocol)) return "";
  return localized_key(row.at(side.password), engine, is_set(digest) ? digest : "", length);
}

void store_key(Row& row, const Side& side, const std::string& key) {
  row[side.key] = row[side.copy] = key;
}

void change_protocol(Row& row, const std::string& engine, const Side& side, const std::string& to) {
  const std::string from = protocol(row, side);
  if (side.name == "auth") {
    require(from != kUnknown, kUnreadable);
    if (is_set(from) && from != to && row.count(kPriv.password) != 0) {
      require(row.count(kPriv.copy) != 0, "Problem retrieving encrypted key type");
      require(row.count(kPriv.key) != 0, "Problem retrieving key type");
      store_key(row, kPriv, made_key(row, engine, kPriv, protocol(row, kPriv), to));
    }
  }
  row[side.protocol] = kProtocols.at(to);
}

// Where the operation's user stands.
struct Place {
  bool local = false;
  std::optional<std::string> engine;
  std::string name;
  std::vector<Operation::Step> below;  // the user

  Key key() const { return {engine.value_or(""), name}; }
};

Row* user(Tables& t, const Place& at) {
  if (!at.engine) return nullptr;
  const auto row = t.rows(kUsers).find(at.key());
  return row == t.rows(kUsers).end() ? nullptr : &row->second;
}

Row& ensured(Transaction& tx, const Place& at) {
  if (Row* const row = user(tx.t, at)) return *row;
  require(at.engine.has_value(), "no local engine-id");
  require(at.local || configured_engine_id(tx.t) != at.engine,
          "remote user cannot have the local engine-id assigned");
  Row& row = tx.t.rows(kUsers)[at.key()];
  row["usmUserSecurityName"] = at.name;
  row["usmUserStorageType"] = "nonVolatile";
  return row;
}

bool password(const std::string& v) { return v.size() >= 8 && v.size() <= 255; }

void check_value(const std::string& protocol, const std::string& leaf, const std::string& value) {
  if (leaf == "name") require(admits::name(value));
  if (leaf == "security-name") require(admits::text(value));
  if (leaf == "password") require(password(value));
  if (leaf == "key") {
    require(admits::octets(value) && octet_count(value) == (protocol == "sha" ? 20U : 16U));
  }
}

void set_secret(Row& row, const std::string& engine, const Place& at, const Operation& op) {
  const Side& side = side_named(at.below[0].name);
  const std::string& to = at.below[1].name;
  if (protocol(row, side) != to) change_protocol(row, engine, side, to);
  if (op.leaf() == "key") {
    store_key(row, side, op.value());
    row.erase(side.password);
  } else {
    row[side.password] = op.value();
    store_key(row, side, made_key(row, engine, side, to, protocol(row, kAuth)));
  }
}

void set(Transaction& tx, const Place& at, const Operation& op) {
  const std::string& leaf = op.leaf();
  check_value(at.below.size() > 1 ? at.below[1].name : "", leaf, op.value());
  Row& row = ensured(tx, at);
  if (leaf == "name") require(op.value() == at.name);
  if (leaf == "security-name") row["usmUserSecurityName"] = op.value();
  if (at.below.size() == 3) set_secret(row, *at.engine, at, op);
}

void create(Transaction& tx, const Place& at) {
  if (at.below.empty()) {
    require(user(tx.t, at) == nullptr, kThere);
    ensured(tx, at);
    return;
  }
  Row& row = ensured(tx, at);
  const Side& side = side_named(at.below[0].name);
  const std::string now = protocol(row, side);
  require(now != kUnknown, kUnreadable);
  if (at.below.size() == 1) return require(!is_set(now), kThere);
  require(now != at.below[1].name, kThere);
  change_protocol(row, *at.engine, side, at.below[1].name);
}

void remove_below(Row& row, const Place& at) {
  const std::string& node = at.below.back().name;
  if (node == "name") refuse("Tried to delete invalid tag: name");
  if (node == "security-name") {
    const auto now = column(row, "usmUserSecurityName");
    require(now && *now != at.name, kNotThere);
    row["usmUserSecurityName"] = at.name;
    return;
  }
  const Side& side = side_named(at.below[0].name);
  const std::string now = protocol(row, side);
  if (at.below.size() == 1) {
    require(!now.empty(), kNotThere);
    row[side.protocol] = side.none;
    for (const std::string& gone : {side.key, side.copy, side.password}) row.erase(gone);
  } else if (at.below.size() == 2) {
    require(now == node || now == kUnknown, kNotThere);
    refuse("Invalid case selection");
  } else {
    // What cannot be told is handed on, and removing one leaf leaves all as it is.
    if (now == kUnknown) return;
    require(now == at.below[1].name && row.count(node == "key" ? side.copy : side.password) != 0,
            kNotThere);
  }
}

void remove_engine(Tables& t, const std::string& engine) {
  const auto removed =
      std::erase_if(t.rows(kUsers), [&](const auto& row) { return row.first[0] == engine; });
  require(removed != 0, kNotThere);
}

Place place_of(const Tables& t, const Operation& op) {
  Place at;
  at.local = op.path[2].name == "local";
  at.engine = at.local ? t.engine_id() : op.path[2].keys.at(0);
  if (op.path.size() > 3) at.name = op.path[3].keys.at(0);
  if (op.path.size() > 4) at.below.assign(op.path.begin() + 4, op.path.end());
  return at;
}

}  // namespace

void write_usm(Transaction& tx, const Operation& op) {
  const Place at = place_of(tx.t, op);
  require(at.local || admits::engine(*at.engine));
  if (op.path.size() == 3) {  // an engine of its own
    if (op.is("delete")) return remove_engine(tx.t, *at.engine);
    for (const auto& [key, row] : tx.t.rows(kUsers)) require(key[0] != at.engine, kThere);
    return;
  }
  require(admits::name(at.name));
  const Key unit{at.local ? "" : *at.engine, at.name};
  if (op.is("delete")) {
    Row* const row = user(tx.t, at);
    require(row != nullptr, kNotThere);
    if (at.below.empty()) {
      tx.t.rows(kUsers).erase(at.key());
      return;
    }
    remove_below(*row, at);
  } else if (op.is("set")) {
    set(tx, at, op);
  } else {
    create(tx, at);
  }
  tx.touch("user", unit);
}

void move_users(Tables& t, const std::string& from, const std::string& to) {
  Table moved;
  for (auto& [key, row] : t.rows(kUsers)) {
    if (key[0] != from) continue;
    const std::string auth = protocol(row, kAuth);
    for (const Side* side : {&kAuth, &kPriv}) {
      if (key_type(row, *side) != "password") continue;
      store_key(row, *side, made_key(row, to, *side, protocol(row, *side), auth));
    }
    moved[{to, key[1]}] = row;
  }
  std::erase_if(t.rows(kUsers), [&](const auto& row) { return row.first[0] == from; });
  t.rows(kUsers).merge(moved);
}

bool user_holds(Tables t, const Key& unit) {
  const auto engine = unit[0].empty() ? t.engine_id() : std::optional(unit[0]);
  Row* const row = user(t, {false, engine, unit[1], {}});
  if (row == nullptr) return true;
  for (const Side* side : {&kAuth, &kPriv}) {
    const std::string now = protocol(*row, *side);
    if (now == kUnknown || (is_set(now) && key_type(*row, *side).empty())) return false;
  }
  return protocol(*row, kPriv).empty() || !protocol(*row, kAuth).empty();
}

void show_usm(View& view, Tables& t, bool may_write) {
  std::string last;  // remote engine
  for (auto& [key, stored] : t.rows(kUsers)) {
    const bool local = key[0] == t.engine_id();
    if (!local && key[0] != last) {
      last = key[0];
      view.leaf(view.entry("/snmp/usm/remote", {last}) + "/engine-id", last);
    }
    const std::string above = local ? "/snmp/usm/local" : "/snmp/usm/remote" + braces({key[0]});
    const std::string path = view.entry(above + "/user", {key[1]}) + "/";
    view.leaf(path + "name", key[1]);
    const auto name = column(stored, "usmUserSecurityName");
    if (name != key[1]) view.optional(path + "security-name", name);
    for (const Side* side : {&kAuth, &kPriv}) {
      const std::string now = protocol(stored, *side);
      if (now == kUnknown) view.error(path + side->name, kUnreadable);
      if (!is_set(now)) continue;
      Row row = stored;
      const std::string type = key_type(row, *side);
      if (may_write) stored = row;
      const std::string inside = path + side->name + "/" + now;
      if (type == "password") {
        view.leaf(inside + "/password", "$8$");
      } else if (const auto key_copy = column(stored, side->copy); !type.empty() && key_copy) {
        view.leaf(inside + "/key", *key_copy);
      } else {
        view.empty(inside);
      }
    }
  }
}

}  // namespace random_operations
