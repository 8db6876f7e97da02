// The stored side as a model keeps it: rows of the MIB tables and the agent's settings, as texts.
#pragma once

#include <map>
#include <optional>
#include <string>
#include <vector>

#include "operation.h"
#include "texts.h"

namespace random_operations {

using Row = std::map<std::string, std::string>;  // columns that are set

std::optional<std::string> column(const Row& row, const std::string& name);

// Numbers, object identifiers and security levels by value, all else by octets.
struct KeyOrder {
  bool operator()(const Key& a, const Key& b) const;
};
using Table = std::map<Key, Row, KeyOrder>;

struct Column {
  std::string name;
  Admits admits;
  const char* otherwise = nullptr;  // the value while it is not set
};

struct TableShape {
  std::string module, table, list;
  std::vector<Column> keys, columns;

  std::string path() const { return "/" + module + "/" + table + "/" + list; }
  const Column* column(const std::string& name) const;
};
const std::vector<TableShape>& shapes();
const TableShape& shape(const std::string& list);

// What is not a table: leaves of a container, and leaf-lists.
struct Tables {
  std::map<std::string, Table> tables;  // by list
  // By container. Those with presence are there when they have an element here.
  std::map<std::string, Row> containers;
  std::optional<std::vector<std::string>> extra_ip_ports;

  Table& rows(const std::string& list) { return tables[list]; }
  const Table& rows(const std::string& list) const;
  // The value that reads: the column's, or its default.
  static std::optional<std::string> value(const std::string& list, const Row& row,
                                          const std::string& column);
  bool has(const std::string& container) const { return containers.count(container) != 0; }
  // The engine ID in force; nothing while there is no engine.
  std::optional<std::string> engine_id() const;
};

inline constexpr const char* kDefaultEngineId = "80:00:7e:d9:05:00:00:00:00";

}  // namespace random_operations
