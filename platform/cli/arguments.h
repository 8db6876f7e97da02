// The command line: options of the program, then a command with its own.
#pragma once

#include <cstdint>
#include <optional>
#include <stdexcept>
#include <string>
#include <vector>

#include "platform/cli/look.h"

namespace standin::cli {

using Words = std::vector<std::string>;

enum ExitStatus : int { kDone = 0, kNotThere = 1, kRefused = 2, kUsage = 3 };

inline constexpr std::uint16_t kDefaultPort = 4565;

// Unknown command or option, wrong number of arguments.
struct UsageError : std::runtime_error {
  using std::runtime_error::runtime_error;
};

struct Arguments {
  std::uint16_t port = kDefaultPort;
  bool help = false;
  ColourWhen colour = ColourWhen::automatic;
  Words command;  // empty: the prompt
};

// `words` without the program's name. Throws UsageError.
Arguments parse_arguments(const Words& words);

}  // namespace standin::cli
