// What an operator, or fate, does next: mostly what makes sense in the state there is, with a small
// vocabulary, so that names meet.
#pragma once

#include <map>
#include <string>
#include <vector>

#include "model.h"
#include "random.h"

namespace random_operations {

struct Situation {
  Random& random;
  const Tables& t;
};

// A way to make a line; empty when there is nothing to do it with.
struct Maker {
  std::string kind;
  unsigned weight;
  bool sensible;  // some must be accepted in the long run; else some must be refused
  std::string (*make)(Situation&);
};
std::vector<Maker> community_makers();
std::vector<Maker> target_makers();
std::vector<Maker> agent_makers();
std::vector<Maker> usm_makers();
std::vector<Maker> vacm_makers();
std::vector<Maker> transaction_makers();

class Generator {
 public:
  explicit Generator(std::uint64_t seed);
  struct Choice {
    const Maker* maker;
    std::string line;
  };
  Choice next(const Tables& t);
  const std::vector<Maker>& makers() const { return makers_; }

 private:
  Random random_;
  std::vector<Maker> makers_;
  unsigned total_ = 0;
};

// Words and names that all areas share.
namespace vocabulary {
std::string name(Situation& s);
std::string text(Situation& s);
std::string ip(Situation& s);
std::string engine(Situation& s);
std::string tag(Situation& s);
std::string number(Situation& s, const std::vector<const char*>& all);
// A key that is in the table, but for a share.
Key row(Situation& s, const std::string& list, const Key& otherwise, unsigned share = 30);
std::string set(const std::string& path, const std::string& value);
std::string set_all(const std::string& path, const std::vector<std::string>& values);
}  // namespace vocabulary

}  // namespace random_operations
