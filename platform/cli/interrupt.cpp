#include "interrupt.h"

namespace standin::cli {
namespace {

volatile std::sig_atomic_t pending = 0;

void mark(int) { pending = 1; }

}  // namespace

InterruptCatcher::InterruptCatcher() {
  struct sigaction action {};
  action.sa_handler = mark;
  sigemptyset(&action.sa_mask);
  ::sigaction(SIGINT, &action, &before_);
}

InterruptCatcher::~InterruptCatcher() { ::sigaction(SIGINT, &before_, nullptr); }

bool interrupt_pending() { return pending != 0; }
void clear_interrupt() { pending = 0; }

}  // namespace standin::cli
