#include "secret-input.h"

#include <termios.h>
#include <unistd.h>

#include <iostream>

#include "platform/cli/arguments.h"

namespace standin::cli {
namespace {

// Echo is off while it lives.
class SilentTerminal {
 public:
  SilentTerminal() : known_(::tcgetattr(STDIN_FILENO, &before_) == 0) {
    if (!known_) return;
    termios silent = before_;
    silent.c_lflag &= ~static_cast<tcflag_t>(ECHO);
    ::tcsetattr(STDIN_FILENO, TCSAFLUSH, &silent);
  }
  ~SilentTerminal() {
    if (known_) ::tcsetattr(STDIN_FILENO, TCSAFLUSH, &before_);
  }
  SilentTerminal(const SilentTerminal&) = delete;
  SilentTerminal& operator=(const SilentTerminal&) = delete;

 private:
  termios before_{};
  bool known_;
};

}  // namespace

std::string read_secret(std::istream& in, const char* prompt) {
  std::string text;
  if (&in == &std::cin && ::isatty(STDIN_FILENO) != 0) {
    const SilentTerminal silent;
    std::cerr << prompt << std::flush;
    std::getline(in, text);
    std::cerr << '\n';
  } else {
    std::getline(in, text);
  }
  if (!in) throw UsageError("no value on standard input");
  return text;
}

}  // namespace standin::cli
