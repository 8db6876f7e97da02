// Ctrl-C as something that is asked for instead of the end of the program.
#pragma once

#include <csignal>
#include <stdexcept>

namespace standin::cli {

// What was being typed is given up.
struct Interrupted : std::runtime_error {
  Interrupted() : std::runtime_error("interrupted") {}
};

// While one lives, SIGINT only sets a mark and ends system calls that wait. They nest.
class InterruptCatcher {
 public:
  InterruptCatcher();
  ~InterruptCatcher();
  InterruptCatcher(const InterruptCatcher&) = delete;
  InterruptCatcher& operator=(const InterruptCatcher&) = delete;

 private:
  struct sigaction before_ {};
};

bool interrupt_pending();
void clear_interrupt();

}  // namespace standin::cli
