// What an operator, or fate, does next: mostly what makes sense in the state there is.
#pragma once

#include <string>

#include "grammar.h"
#include "model.h"
#include "random.h"

namespace random_operations {

class Generator {
 public:
  explicit Generator(std::uint64_t seed);
  struct Choice {
    const Kind* kind;
    std::string line;
  };
  Choice next(const Tables& t);

 private:
  std::string expand(const std::string& text);
  std::string symbol(const std::string& name);
  std::string row(const std::string& list, const std::string& otherwise, unsigned share);
  // The keys of some row; nothing when there is none.
  const Key* some(const std::string& list);
  std::string user();
  std::string access();
  std::string subtree();

  Random random_;
  const Tables* tables_ = nullptr;
  unsigned total_ = 0;
};

}  // namespace random_operations
