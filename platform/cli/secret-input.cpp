#include "secret-input.h"

#include <termios.h>
#include <unistd.h>

#include <cerrno>
#include <iostream>

#include "arguments.h"
#include "interrupt.h"
#include "platform/wire/cipher.h"

namespace standin::cli {
namespace {

constexpr std::size_t kLongest = 4096;  // a terminal's own limit of a line

// Echo is off while it lives, and no key ends or stops the program before it is on again.
class SilentTerminal {
 public:
  SilentTerminal() : known_(::tcgetattr(STDIN_FILENO, &before_) == 0) {
    if (!known_) return;
    termios silent = before_;
    silent.c_lflag &= ~static_cast<tcflag_t>(ECHO);
    silent.c_cc[VQUIT] = _POSIX_VDISABLE;
    silent.c_cc[VSUSP] = _POSIX_VDISABLE;
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

// Octet by octet from the descriptor: no stream keeps a copy.
std::string read_unseen(const std::string& prompt) {
  const SilentTerminal silent;
  std::cerr << prompt << std::flush;
  std::string text;
  text.reserve(kLongest);
  for (char c = 0;;) {
    const ssize_t got = ::read(STDIN_FILENO, &c, 1);
    if (got < 0 && errno == EINTR && !interrupt_pending()) continue;
    if (got == 1 && c != '\n') {
      if (text.size() < kLongest) text += c;
      continue;
    }
    std::cerr << '\n';
    if (got == 1) return text;
    cleanse(text);
    if (got == 0) throw UsageError("no value was typed: nothing was set");
    throw Interrupted();
  }
}

std::string read_twice(const std::string& name) {
  const InterruptCatcher catcher;
  std::string text = read_unseen(name + " (not shown): ");
  std::string again = read_unseen(name + " again: ");
  const bool same = text == again;
  cleanse(again);
  if (same) return text;
  cleanse(text);
  throw UsageError("the two differ: nothing was set");
}

}  // namespace

std::string read_secret(std::istream& in, const std::string& name) {
  if (&in == &std::cin && ::isatty(STDIN_FILENO) != 0) return read_twice(name);
  std::string text;
  std::getline(in, text);
  if (!in) throw UsageError("no value on standard input");
  return text;
}

}  // namespace standin::cli
