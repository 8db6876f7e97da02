#include "shrink.h"

#include <algorithm>

#include "run.h"

namespace random_operations {
namespace {

using Lines = std::vector<std::string>;

Lines without(const Lines& lines, std::size_t begin, std::size_t end) {
  Lines rest(lines.begin(), lines.begin() + static_cast<std::ptrdiff_t>(begin));
  rest.insert(rest.end(), lines.begin() + static_cast<std::ptrdiff_t>(end), lines.end());
  return rest;
}

// What is wrong, without the keys and values that it is wrong with: a shorter script has to fail in
// the same way.
std::string kind_of(const Failure& failure) {
  std::string kind = failure.text.substr(0, failure.text.find('\n'));
  kind.erase(std::min(kind.find(" = "), kind.size()));
  for (std::size_t at = 0; (at = kind.find('{', at)) != std::string::npos;) {
    kind.erase(at, kind.find('}', at) - at + 1);
  }
  return kind;
}

}  // namespace

std::optional<Failure> play(const Lines& lines) {
  Run run;
  for (std::size_t i = 0; i < lines.size(); ++i) {
    try {
      run.step(parse(lines[i]));
    } catch (const Disagreement& disagreement) {
      return Failure{i, disagreement.text};
    }
  }
  return std::nullopt;
}

Shortest shrink(const Lines& lines, const Failure& failure, std::chrono::seconds limit) {
  const auto deadline = std::chrono::steady_clock::now() + limit;
  const std::string kind = kind_of(failure);
  Shortest best{lines, failure};
  std::size_t chunk = std::max<std::size_t>(best.lines.size() / 2, 1);
  for (;;) {
    bool shorter = false;
    for (std::size_t begin = 0; begin < best.lines.size();) {
      if (std::chrono::steady_clock::now() > deadline) return best;
      Lines attempt = without(best.lines, begin, std::min(begin + chunk, best.lines.size()));
      if (auto fails = play(attempt); fails && kind_of(*fails) == kind) {
        attempt.resize(fails->at + 1);
        best = {std::move(attempt), std::move(*fails)};
        shorter = true;
      } else {
        begin += chunk;
      }
    }
    if (chunk > 1) {
      chunk /= 2;
    } else if (!shorter) {
      return best;
    }
  }
}

}  // namespace random_operations
