#include "server_records.h"

#include <algorithm>
#include <stdexcept>
#include <unordered_map>

#include "key_codec.h"

namespace standin {
namespace {

constexpr std::uint16_t kLastId = 0xfff0;

using Numbers = std::unordered_map<std::string, std::uint16_t>;

// Paths begin with a slash, so that no path's record is the mark's.
std::string committed_key() { return std::string(kSchemaIdPrefix) + "committed"; }
std::string first_path_key() { return std::string(kSchemaIdPrefix) + "/"; }

std::string name_path(const Node& node) {
  const std::string own = "/" + node.module + ":" + node.name;
  return node.parent ? name_path(*node.parent) + own : own;
}

std::uint16_t read_number(const Record& record) {
  const std::string& v = record.second;
  const unsigned n =
      v.size() == 2 ? static_cast<std::uint8_t>(v[0]) << 8 | static_cast<std::uint8_t>(v[1]) : 0U;
  if (n == 0 || n > kLastId)
    throw std::runtime_error("the database is damaged: no number for the node " +
                             record.first.substr(kSchemaIdPrefix.size()));
  return static_cast<std::uint16_t>(n);
}

// The numbers by path, and the highest one.
Numbers read_numbers(Store& store, std::uint16_t& highest) {
  Numbers numbers;
  std::vector<bool> used(kLastId + 1U);
  for (auto r = store.seek(first_path_key()); r && r->first.starts_with(first_path_key());
       r = store.next(r->first)) {
    const std::uint16_t n = read_number(*r);
    if (used[n])
      throw std::runtime_error("the database is damaged: two nodes have the number " +
                               std::to_string(n));
    used[n] = true;
    highest = std::max(highest, n);
    numbers.emplace(r->first.substr(kSchemaIdPrefix.size()), n);
  }
  return numbers;
}

}  // namespace

void assign_node_ids(const std::vector<Node*>& nodes, Store& store) {
  std::uint16_t highest = 0;
  const Numbers numbers = read_numbers(store, highest);
  Batch added;
  for (Node* node : nodes) {
    const std::string path = name_path(*node);
    if (const auto known = numbers.find(path); known != numbers.end()) {
      node->id = known->second;
      continue;
    }
    if (highest == kLastId) throw std::runtime_error("the schema has too many nodes");
    node->id = ++highest;
    std::string value;
    append_id(value, node->id);
    added.emplace(std::string(kSchemaIdPrefix) + path, std::move(value));
  }
  if (!added.empty()) store.apply(added);
}

bool ever_committed(Store& store) { return store.get(committed_key()).has_value(); }

void mark_committed(Batch& batch) { batch[committed_key()] = std::string(); }

}  // namespace standin
