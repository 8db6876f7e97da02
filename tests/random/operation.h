// One line of a script: what an operator does, or what befalls the machine meanwhile.
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace random_operations {

using Key = std::vector<std::string>;

// Everything but faults is a line that `standin-cli batch -k` understands; a fault is a comment to
// it, "# fault: server-killed".
struct Operation {
  struct Step {
    std::string name;  // without prefix
    Key keys;          // empty: no braces
  };
  std::string line;
  std::string verb;  // the first word, or the fault's name
  bool fault = false;
  std::vector<Step> path;
  std::vector<std::string> values;

  bool is(std::string_view v) const { return verb == v; }
  const std::string& leaf() const { return path.back().name; }
  const std::string& value() const { return values.at(0); }
};

// Throws standin::PathError.
Operation parse(const std::string& line);

// "{a "b c"}", as it stands in a path.
std::string braces(const Key& keys);
std::string words(const std::vector<std::string>& values);

// A comment that is not a fault, or an empty line.
bool is_idle(std::string_view line);

}  // namespace random_operations
