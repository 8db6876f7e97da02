// The tables of northbound-bench.
#pragma once

#include <cstddef>
#include <vector>

namespace quillet::bench {

struct Sizes {
  std::vector<std::size_t> communities{100, 1000, 10000};
  std::vector<std::size_t> targets{100, 1000, 3000};
  std::size_t rounds = 9;
  std::size_t operations = 200;  // of a round
  std::vector<std::size_t> listen_addresses{10, 100, 1000};
  std::vector<std::size_t> groups{10, 30, 100};
  std::vector<std::size_t> users{1, 100};
};

void communities(const Sizes& sizes);
void targets(const Sizes& sizes);
void access(const Sizes& sizes);

}  // namespace quillet::bench
