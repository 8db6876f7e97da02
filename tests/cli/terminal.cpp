#include "terminal.h"

#include <poll.h>
#include <pty.h>
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <cstdlib>
#include <stdexcept>

namespace scenario {
namespace {

std::vector<char*> pointers(const Strings& texts) {
  std::vector<char*> all;
  all.reserve(texts.size() + 1);
  for (const std::string& text : texts) all.push_back(const_cast<char*>(text.c_str()));
  all.push_back(nullptr);
  return all;
}

Strings environment_with(const Strings& more) {
  Strings all = more;
  all.emplace_back("TERM=xterm");
  for (char** entry = environ; *entry != nullptr; ++entry) {
    const std::string text = *entry;
    if (!text.starts_with("TERM=") && !text.starts_with("NO_COLOR=")) all.push_back(text);
  }
  return all;
}

}  // namespace

Terminal::Terminal(const Strings& argv, const Strings& environment) {
  const Strings variables = environment_with(environment);
  const std::vector<char*> words = pointers(argv), settings = pointers(variables);
  winsize size{50, 200, 0, 0};  // no line of a test is broken
  int master = -1;
  pid_ = ::forkpty(&master, nullptr, nullptr, &size);
  if (pid_ < 0) throw std::runtime_error("forkpty");
  if (pid_ == 0) {
    ::execve(words[0], words.data(), settings.data());
    ::_exit(127);
  }
  terminal_ = Descriptor(master);
}

Terminal::~Terminal() {
  ::kill(pid_, SIGKILL);
  ::waitpid(pid_, nullptr, 0);
}

void Terminal::type(const std::string& keys) {
  if (::write(terminal_.get(), keys.data(), keys.size()) != static_cast<ssize_t>(keys.size())) {
    throw std::runtime_error("the terminal takes no more keys");
  }
}

bool Terminal::read_some(Clock::time_point deadline) {
  const auto left = std::chrono::ceil<std::chrono::milliseconds>(deadline - Clock::now()).count();
  pollfd entry{terminal_.get(), POLLIN, 0};
  if (left <= 0 || ::poll(&entry, 1, static_cast<int>(left)) <= 0) return false;
  std::array<char, 4096> block;
  const ssize_t got = ::read(terminal_.get(), block.data(), block.size());
  if (got <= 0) return false;  // EIO: the program has ended
  unread_.append(block.data(), static_cast<std::size_t>(got));
  all_.append(block.data(), static_cast<std::size_t>(got));
  return true;
}

std::string Terminal::until(const std::string& text) {
  const Clock::time_point deadline = Clock::now() + kPatience;
  for (;;) {
    if (const std::size_t at = unread_.find(text); at != std::string::npos) {
      const std::string before = unread_.substr(0, at + text.size());
      unread_.erase(0, before.size());
      return before;
    }
    if (!read_some(deadline)) throw std::runtime_error("no '" + text + "' in: " + unread_);
  }
}

std::string Terminal::line(const std::string& text) {
  type(text + "\n");
  std::string output = until("\nstandin");
  until("> ");
  return output;
}

std::string Terminal::rest() {
  const Clock::time_point deadline = Clock::now() + kPatience;
  while (read_some(deadline)) {
  }
  return std::move(unread_);
}

}  // namespace scenario
