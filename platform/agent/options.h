// The command line.
#pragma once

#include <cstdint>
#include <stdexcept>
#include <string>

namespace standin::agent {

struct OptionsError : std::runtime_error {
  using std::runtime_error::runtime_error;
};

struct Options {
  std::uint16_t port = 4565;
  std::string directory = "standin-agent";
  std::uint32_t port_offset = 0;
  std::string snmpd;  // empty: looked for
  bool print = false;
  bool help = false;
};

// Throws OptionsError.
Options read_options(int argc, const char* const* argv);
const char* usage();

}  // namespace standin::agent
