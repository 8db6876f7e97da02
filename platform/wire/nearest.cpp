#include "platform/wire/nearest.h"

#include <algorithm>
#include <cctype>
#include <numeric>

namespace standin {
namespace {

constexpr std::size_t kMostListed = 12;
constexpr std::size_t kLongestCompared = 64;  // the time grows with the square

bool same_letter(char a, char b) {
  return std::tolower(static_cast<unsigned char>(a)) == std::tolower(static_cast<unsigned char>(b));
}

// Insertions, deletions and exchanges that make one of the other, whatever the case.
std::size_t distance(std::string_view a, std::string_view b) {
  std::vector<std::size_t> row(b.size() + 1);
  std::iota(row.begin(), row.end(), std::size_t{0});
  for (std::size_t i = 0; i < a.size(); ++i) {
    std::size_t diagonal = row[0];
    row[0] = i + 1;
    for (std::size_t j = 0; j < b.size(); ++j) {
      const std::size_t exchange = diagonal + (same_letter(a[i], b[j]) ? 0 : 1);
      diagonal = row[j + 1];
      row[j + 1] = std::min({exchange, row[j] + 1, diagonal + 1});
    }
  }
  return row.back();
}

}  // namespace

std::string nearest(std::string_view wrong, const std::vector<std::string>& known) {
  if (wrong.empty() || wrong.size() > kLongestCompared) return {};
  std::string best;
  std::size_t least = std::max<std::size_t>(1, wrong.size() / 3) + 1;
  for (const std::string& name : known) {
    const std::size_t d = name.starts_with(wrong) ? 1 : distance(wrong, name);
    if (d >= least) continue;
    least = d;
    best = name;
  }
  return best;
}

std::string listed(const std::vector<std::string>& names) {
  std::string text;
  for (std::size_t i = 0; i < names.size() && i < kMostListed; ++i) {
    text += (i == 0 ? "" : ", ") + names[i];
  }
  if (names.size() > kMostListed) {
    text += " and " + std::to_string(names.size() - kMostListed) + " more";
  }
  return text;
}

}  // namespace standin
