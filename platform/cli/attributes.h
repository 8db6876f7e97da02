// Attributes: their names and the words that stand for their values.
#pragma once

#include <cstdint>
#include <string>

#include "platform/cli/arguments.h"
#include "platform/wire/value.h"

namespace standin::cli {

// "annotation", "tags", "inactive", or a number, decimal or 0x... Throws UsageError.
std::uint32_t attribute_number(const std::string& name);
Words attribute_names();
std::string attribute_name(std::uint32_t number);

// The value of words. Tags: each argument is split into words. Inactive: "" or "true".
// Throws UsageError, PathError.
Value attribute_value(std::uint32_t number, const Words& arguments);
// Tags: one word each. Inactive: none.
Words attribute_words(const Value& value);

}  // namespace standin::cli
