// The modules of the tree, loaded once for a test program.
#pragma once

#include <string>

#include "platform/standin/schema/schema.h"

namespace standin {

inline Schema& product_schema() {
  static const auto schema = Schema::load({QUILLET_MODEL_DIR, QUILLET_YANG_DIR});
  return *schema;
}

inline NodePath resolve(const std::string& path) {
  return product_schema().resolve(parse_path(path));
}

inline const Node& node_at(const std::string& path) { return resolve(path).node(); }

// The refusal's text, or nothing when `action` succeeded.
template <typename Action>
std::string refusal_of(Action action, ErrorCode* code = nullptr) {
  try {
    action();
  } catch (const Refusal& r) {
    if (code != nullptr) *code = r.code;
    return r.what();
  }
  return {};
}

}  // namespace standin
