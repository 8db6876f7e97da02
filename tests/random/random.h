// Numbers that a seed fixes on every platform and with every library.
#pragma once

#include <cstdint>
#include <random>
#include <vector>

namespace random_operations {

class Random {
 public:
  explicit Random(std::uint64_t seed) : engine_(seed) {}
  // 0 to n - 1.
  std::size_t below(std::size_t n) { return static_cast<std::size_t>(engine_() % n); }
  bool percent(unsigned share) { return below(100) < share; }
  template <typename T>
  const T& one_of(const std::vector<T>& all) {
    return all[below(all.size())];
  }

 private:
  std::mt19937_64 engine_;
};

}  // namespace random_operations
