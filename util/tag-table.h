// Tables that map the northbound elements of a transform, by tag.
#pragma once

#include <confd_lib.h>

#include <cstddef>

namespace quillet {

// The row of a tag, or null. A row is any aggregate with a member `tag`.
template <typename Row, std::size_t N>
constexpr const Row* find_by_tag(const Row (&table)[N], u_int32_t tag) {
  for (const Row& row : table) {
    if (row.tag == tag) return &row;
  }
  return nullptr;
}

}  // namespace quillet
