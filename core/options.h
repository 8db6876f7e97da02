// Command line of both modes.
#pragma once

namespace quillet {

struct Options {
  bool wait_for_init = false;
  int confd_port = 4565;
  bool watch_stdin = false;    // -c
  bool print_running = false;  // -S
  int debug_level = 2;         // CONFD_TRACE
};

// Applies the options in the order given; --status-port goes to the status service at once. An
// unknown option costs getopt's diagnostic on standard error and nothing else; operands are
// ignored. Numbers have atoi semantics: text that is not a number gives 0.
Options parse_options(int argc, char** argv);

}  // namespace quillet
