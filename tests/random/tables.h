// The stored side as a model keeps it: rows of the MIB tables and the agent's settings, as texts.
#pragma once

#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "operation.h"

namespace random_operations {

using Row = std::map<std::string, std::string>;  // columns that are set

// Numbers, object identifiers and security levels by value, all else by octets.
struct KeyOrder {
  bool operator()(const Key& a, const Key& b) const;
};
using Table = std::map<Key, Row, KeyOrder>;

using Admits = bool (*)(const std::string&);

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
  // The value that reads: the column's, or its default.
  static std::optional<std::string> value(const std::string& list, const Row& row,
                                          const std::string& column);
  bool has(const std::string& container) const { return containers.count(container) != 0; }
  // The engine ID in force; nothing while there is no engine.
  std::optional<std::string> engine_id() const;
};

inline constexpr const char* kDefaultEngineId = "80:00:7e:d9:05:00:00:00:00";

// What values the types admit.
namespace admits {
bool name(const std::string& v);           // 1 to 32 octets
bool optional_name(const std::string& v);  // 0 to 32
bool text(const std::string& v);           // 0 to 255
bool any(const std::string& v);
bool tag(const std::string& v);     // as text, no white space
bool word(const std::string& v);    // a tag that is not empty
bool engine(const std::string& v);  // 5 to 32 octets in hexadecimal
bool octets(const std::string& v);
bool oid(const std::string& v);
bool ip(const std::string& v);
bool boolean(const std::string& v);
bool whole(const std::string& v, long long least, long long most);
}  // namespace admits

bool one_of(const std::string& v, std::initializer_list<std::string_view> labels);
// The two names of a security level; nothing is admitted that is not one.
bool is_level(const std::string& shown);
std::string stored_level(const std::string& shown);
std::string shown_level(const std::string& stored);
std::string shown_oid(const std::string& stored);  // 0 as "*"
std::size_t octet_count(const std::string& hex);   // of "80:00:7e"
std::string canonical_ip(const std::string& v);

}  // namespace random_operations
