// What is stored as it is written: MIB rows and settings that somebody writes directly.
#include "model.h"

namespace random_operations {
namespace {

struct Container {
  std::string path;
  bool presence;
  std::vector<Column> leaves;
};

bool number(const std::string& v) { return admits::whole(v, 0, INT64_MAX); }
bool port(const std::string& v) { return admits::whole(v, 0, 65535); }

const std::map<std::string, Container>& containers() {
  using namespace admits;
  static const std::map<std::string, Container> kContainers{
      {"snmpAgent",
       {"/confdConfig/snmpAgent",
        true,
        {{"enabled", boolean, "false"}, {"ip", ip}, {"port", port}}}},
      {"snmpVersions",
       {"/confdConfig/snmpAgent/snmpVersions",
        true,
        {{"v1", boolean}, {"v2c", boolean}, {"v3", boolean}}}},
      {"snmpEngine",
       {"/confdConfig/snmpAgent/snmpEngine",
        true,
        {{"snmpEngineID", engine, kDefaultEngineId},
         {"snmpEngineMaxMessageSize", number, "50000"}}}},
      {"system",
       {"/SNMPv2-MIB/system",
        false,
        {{"sysContact", text}, {"sysName", text}, {"sysLocation", text}}}},
  };
  return kContainers;
}

void write_row(Tables& t, const TableShape& table, const Operation& op) {
  const Key& key = op.path[2].keys;
  for (std::size_t i = 0; i < key.size(); ++i) require(table.keys[i].admits(key[i]));
  Table& rows = t.rows(table.list);
  const auto at = rows.find(key);
  if (op.path.size() == 3) {
    if (op.is("create")) {
      require(at == rows.end(), kThere);
      rows[key];
    } else {
      require(at != rows.end(), kNotThere);
      rows.erase(at);
    }
    return;
  }
  std::string name = op.path[3].name;
  for (std::size_t i = 4; i < op.path.size(); ++i) name += '/' + op.path[i].name;
  const Column& column = *table.column(name);
  if (op.is("set")) {
    require(column.admits(op.value()));
    rows[key][name] = op.value();
    return;
  }
  require(at != rows.end(), kNotThere);
  require(column.otherwise != nullptr || at->second.count(name) != 0, kNotThere);
  at->second.erase(name);
}

void remove_container(Tables& t, const std::string& name) {
  require(t.containers.erase(name) != 0, kNotThere);
  if (name != "snmpAgent") return;
  t.containers.erase("snmpVersions");
  t.containers.erase("snmpEngine");
  t.extra_ip_ports.reset();
  t.rows("contexts").clear();
}

void write_leaf(Tables& t, const std::string& container, const Operation& op) {
  const std::string& name = op.leaf();
  for (const Column& leaf : containers().at(container).leaves) {
    if (leaf.name != name) continue;
    if (op.is("set")) {
      require(leaf.admits(op.value()));
      t.containers[container][name] = op.value();
    } else {
      require(t.has(container), kNotThere);
      require(leaf.otherwise != nullptr || t.containers[container].count(name) != 0, kNotThere);
      t.containers[container].erase(name);
    }
  }
}

void write_settings(Tables& t, const Operation& op) {
  const std::string& name = op.leaf();
  const bool adds = !op.is("delete");
  if (name == "contexts") {
    const Key& key = op.path.back().keys;
    require(admits::name(key[0]));
    if (adds) {
      require(t.rows("contexts").count(key) == 0, kThere);
      t.containers["snmpAgent"];
      t.rows("contexts")[key];
    } else {
      require(t.rows("contexts").erase(key) != 0, kNotThere);
    }
  } else if (name == "extraIpPorts") {
    require(adds || t.extra_ip_ports, kNotThere);
    if (adds) t.containers["snmpAgent"];
    if (adds) t.extra_ip_ports = op.values;
    if (!adds) t.extra_ip_ports.reset();
  } else if (op.is("create")) {
    require(!t.has(name), kThere);
    t.containers["snmpAgent"];
    t.containers[name];
  } else if (containers().count(name) != 0) {
    remove_container(t, name);
  } else {
    const std::string& container = op.path[op.path.size() - 2].name;
    write_leaf(t, container, op);
    if (adds && container != "system") t.containers["snmpAgent"];
  }
}

}  // namespace

void write_stored(Tables& t, const Operation& op) {
  for (const TableShape& table : shapes()) {
    if (op.path.size() > 2 && table.list == op.path[2].name) return write_row(t, table, op);
  }
  write_settings(t, op);
}

void show_stored(View& view, const Tables& t) {
  for (const TableShape& table : shapes()) {
    for (const auto& [key, row] : t.rows(table.list)) {
      const std::string path = view.entry(table.path(), key) + "/";
      for (std::size_t i = 0; i < key.size(); ++i) view.leaf(path + table.keys[i].name, key[i]);
      for (const auto& [column, value] : row) {
        view.leaf(path + column, column.ends_with("/password") ? "$8$" : value);
      }
    }
  }
  for (const auto& [name, container] : containers()) {
    if (!t.has(name)) continue;
    const Row& leaves = t.containers.at(name);
    for (const auto& [leaf, value] : leaves) view.leaf(container.path + "/" + leaf, value);
  }
  for (const char* name : {"snmpVersions", "snmpEngine"}) {
    if (t.has(name) && t.containers.at(name).empty()) view.empty(containers().at(name).path);
  }
  for (const auto& [key, row] : t.rows("contexts")) {
    view.leaf(view.entry("/confdConfig/snmpAgent/contexts", key) + "/name", key[0]);
  }
  if (t.extra_ip_ports) view.leaf_list("/confdConfig/snmpAgent/extraIpPorts", *t.extra_ip_ports);
  const bool bare = t.has("snmpAgent") && t.containers.at("snmpAgent").empty() &&
                    !t.has("snmpVersions") && !t.has("snmpEngine") && t.rows("contexts").empty() &&
                    !t.extra_ip_ports;
  if (bare) view.empty("/confdConfig/snmpAgent");
}

}  // namespace random_operations
