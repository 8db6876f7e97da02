// Shorter scripts that still fail.
#pragma once

#include <chrono>
#include <optional>
#include <string>
#include <vector>

namespace random_operations {

struct Failure {
  std::size_t at;  // the line after which it shows
  std::string text;
};

// Plays the lines on new programs with a new database.
std::optional<Failure> play(const std::vector<std::string>& lines);

struct Shortest {
  std::vector<std::string> lines;
  Failure failure;
};

// Delta debugging (Zeller and Hildebrandt, 2002), ended by the time given. Each shorter script ends
// where its failure shows.
Shortest shrink(const std::vector<std::string>& lines, const Failure& failure,
                std::chrono::seconds limit);

}  // namespace random_operations
