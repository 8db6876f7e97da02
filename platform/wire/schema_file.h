// The compact schema file: names, tags, kinds, types and keys, written by the server beside its
// database and mapped by the library, so that keypaths and tags print without libyang.
#pragma once

#include <cstdint>
#include <string>
#include <utility>
#include <vector>

#include "platform/wire/value.h"

namespace standin {

struct SchemaFileNode {
  enum class Kind : std::uint8_t { container, list, leaf, leaf_list, choice, case_ };
  Tag tag;
  std::string name;
  std::string prefix;  // of its module
  Kind kind = Kind::leaf;
  std::uint32_t parent = 0;  // index + 1 of the parent node, 0 at the top; choices and cases too
  Type type = Type::buf;     // leaf and leaf-list
  bool secret = false;       // encrypted string or key: masked in traces
  std::vector<Tag> keys;     // list, in order
  std::vector<std::pair<std::int32_t, std::string>> labels;  // enumeration
};

struct SchemaFile {
  std::vector<SchemaFileNode> nodes;  // parents before children
};

// Throws std::runtime_error; the file is written aside and renamed into place, mode 0644.
void write_schema_file(const std::string& path, const SchemaFile& schema);
// Throws std::runtime_error with a sentence for a file that is not one, is cut, or lies.
SchemaFile read_schema_file(const std::string& path);

}  // namespace standin
