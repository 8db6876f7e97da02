// Text to OID and mask and back is the identity for every accepted text.
#include <cstdint>
#include <cstdlib>
#include <string_view>

#include "transforms/subtree-text.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::string_view text(reinterpret_cast<const char*>(data), size);
  const auto subtree = quillet::parse_subtree_text(text);
  if (!subtree) return 0;
  if (quillet::subtree_text(subtree->oid.data(), subtree->oid.size()) != text) std::abort();
  if (subtree->oid.size() > quillet::kMaxSubIdentifiers || subtree->mask.size() > 16) std::abort();
  return 0;
}
