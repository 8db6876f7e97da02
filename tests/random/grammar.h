// The lines that the generator makes, as data. In a line
//   $name    stands for one of the symbol's alternatives, or for what a function of that name makes
//   <a|b>    stands for one of the texts
//   @LIST:x; stands for the keys of a row that is there, or now and then, and always when there is
//            none, for x; @@LIST:x; does so rarely
#pragma once

#include <map>
#include <string>
#include <vector>

namespace random_operations {

// What is counted as one, with lines that are equally likely.
struct Kind {
  std::string name;
  unsigned weight;
  bool sensible;  // in the long run some must be accepted; else some must be refused
  std::vector<std::string> lines;
};
const std::vector<Kind>& kinds();
const std::map<std::string, std::vector<std::string>>& symbols();

}  // namespace random_operations
