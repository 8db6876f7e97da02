// XPath expressions as clients write them: declared prefixes, and first names without one.
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "platform/standin/schema/schema.h"

namespace standin {

// Puts module names, which libyang wants, in the place of declared prefixes, and before a first
// name without one. Throws Refusal (xpath): unknown prefix, unknown or ambiguous first name, a
// literal without its closing quote.
std::string with_module_names(const Schema& schema, std::string_view expression);

// The plain shape /a/b[c="x"][starts-with(d,'y')]/e, in which each predicate looks at one leaf of
// its step. Literals may be concat() of literals.
struct PlainStep {
  struct Predicate {
    const Node* leaf = nullptr;
    bool starts_with = false;
    std::string literal;
  };
  const Node* node = nullptr;
  std::vector<Predicate> predicates;
};
// Nothing when the expression has another shape. Takes what with_module_names() gives.
std::optional<std::vector<PlainStep>> plain_path(const Schema& schema, std::string_view expression);

}  // namespace standin
