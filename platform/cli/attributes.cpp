#include "attributes.h"

#include <charconv>

#include "platform/wire/path.h"

namespace standin::cli {
namespace {

// Numbers and types are those of the library's CONFD_ATTR_* constants.
constexpr std::uint32_t kInactive = 0x00000000U;
constexpr std::uint32_t kTags = 0x80000000U;
constexpr std::uint32_t kAnnotation = 0x80000001U;

constexpr struct {
  std::uint32_t number;
  std::string_view name;
} kNames[] = {{kAnnotation, "annotation"}, {kTags, "tags"}, {kInactive, "inactive"}};

}  // namespace

std::uint32_t attribute_number(const std::string& name) {
  for (const auto& known : kNames) {
    if (known.name == name) return known.number;
  }
  const bool hex = name.starts_with("0x");
  const char* begin = name.data() + (hex ? 2 : 0);
  const char* end = name.data() + name.size();
  std::uint32_t number = 0;
  const auto [stop, error] = std::from_chars(begin, end, number, hex ? 16 : 10);
  if (error != std::errc() || stop != end) {
    throw UsageError("unknown attribute " + quote_word(name) +
                     ": it is one of annotation, tags, inactive, or a number");
  }
  return number;
}

Words attribute_names() {
  Words names;
  for (const auto& known : kNames) names.emplace_back(known.name);
  return names;
}

std::string attribute_name(std::uint32_t number) {
  for (const auto& known : kNames) {
    if (known.number == number) return std::string(known.name);
  }
  return std::to_string(number);
}

Value attribute_value(std::uint32_t number, const Words& arguments) {
  if (number == kTags) {
    std::vector<Value> tags;
    for (const std::string& argument : arguments) {
      for (std::string& word : split_words(argument)) tags.push_back(Value::buf(std::move(word)));
    }
    return Value::list(std::move(tags));
  }
  if (arguments.size() != 1)
    throw UsageError("only tags have several values: a text with blanks stands in double quotes");
  if (number == kInactive) {
    if (!arguments[0].empty() && arguments[0] != "true") {
      throw UsageError("inactive has no value: set it with \"\"");
    }
    return Value::boolean(true);
  }
  return Value::buf(arguments[0]);
}

Words attribute_words(const Value& value) {
  if (value.is(Type::boolean)) return {};
  if (!value.is(Type::list)) return {to_text(value)};
  Words words;
  for (const Value& item : value.items()) words.push_back(to_text(item));
  return words;
}

}  // namespace standin::cli
