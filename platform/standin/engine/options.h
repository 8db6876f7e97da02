// The server's command line.
#pragma once

#include <cstdint>
#include <stdexcept>
#include <string>

#include "platform/standin/engine/engine.h"

namespace standin {

struct Options {
  EngineOptions engine;
  std::uint16_t port = 4565;
  bool help = false;
};

// One line that says what is wrong with the arguments.
struct OptionsError : std::runtime_error {
  using std::runtime_error::runtime_error;
};

// `argv` as main() has it. Throws OptionsError.
Options read_options(int argc, const char* const* argv);
std::string usage();

}  // namespace standin
