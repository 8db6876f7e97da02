// The mapped schema file: names of tags, and what stands where.
#pragma once

#include <confd_lib.h>

#include <map>
#include <string>
#include <unordered_map>
#include <unordered_set>

#include "platform/wire/schema_file.h"

namespace standin {

// Read-only once published; safe from every thread.
class SchemaMap {
 public:
  explicit SchemaMap(SchemaFile file);

  // The element of that tag below a node (null: at the top), choices and cases passed through;
  // null when there is none.
  const SchemaFileNode* child(const SchemaFileNode* parent, Tag tag) const;
  // Any node's name; null when no node has the tag.
  const char* name(Tag tag) const;
  // Is a leaf of that tag secret anywhere?
  bool secret(Tag tag) const { return secrets_.count(key(tag)) != 0; }

 private:
  static std::uint64_t key(Tag t) { return (std::uint64_t{t.ns} << 32) | t.tag; }

  SchemaFile file_;
  std::map<std::pair<std::uint32_t, Tag>, std::uint32_t> children_;
  std::unordered_map<std::uint64_t, std::uint32_t> by_tag_;
  std::unordered_set<std::uint64_t> secrets_;
};

// The schema in use, or null before confd_mmap_schemas(). Stays valid for ever.
const SchemaMap* schema_map();

// Name of a tag, or its number.
std::string tag_text(Tag tag);

}  // namespace standin
