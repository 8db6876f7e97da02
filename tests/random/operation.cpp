#include "operation.h"

#include "platform/wire/path.h"

namespace random_operations {
namespace {

constexpr std::string_view kFault = "# fault: ";

std::vector<Operation::Step> steps_of(const std::string& text) {
  std::vector<Operation::Step> steps;
  for (const standin::PathStep& step : standin::parse_path(text)) {
    if (step.kind == standin::PathStep::Kind::name) {
      steps.push_back({step.name.substr(step.name.find(':') + 1), {}});
      continue;
    }
    for (const standin::Value& key : step.keys) steps.back().keys.push_back(key.bytes());
  }
  return steps;
}

}  // namespace

Operation parse(const std::string& line) {
  Operation op;
  op.line = line;
  if (line.starts_with(kFault)) {
    op.fault = true;
    op.verb = line.substr(kFault.size());
    return op;
  }
  std::vector<std::string> all = standin::split_words(line);
  op.verb = all.at(0);
  if (all.size() > 1) op.path = steps_of(all[1]);
  const bool writes = op.is("set") || op.is("create") || op.is("delete");
  const bool known = writes
                         ? op.path.size() > 1
                         : op.is("show") || op.is("validate") || op.is("commit") || op.is("abort");
  if (!known) throw standin::PathError("the model has nothing for: " + line);
  for (std::size_t i = 2; i < all.size(); ++i) op.values.push_back(std::move(all[i]));
  return op;
}

std::string words(const std::vector<std::string>& values) {
  std::string text;
  for (const std::string& value : values) {
    if (!text.empty()) text += ' ';
    text += standin::quote_word(value);
  }
  return text;
}

std::string braces(const Key& keys) { return "{" + words(keys) + "}"; }

bool is_idle(std::string_view line) {
  const std::size_t begin = line.find_first_not_of(" \t");
  return begin == std::string_view::npos || (line[begin] == '#' && !line.starts_with(kFault));
}

}  // namespace random_operations
