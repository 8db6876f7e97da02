// A program on a terminal of its own, and somebody who types.
#pragma once

#include <sys/types.h>

#include <optional>
#include <string>

#include "tests/scenarios/process.h"

namespace scenario {

class Terminal {
 public:
  // `environment`: NAME=VALUE, in addition to what the test has, with TERM=xterm and no NO_COLOR.
  Terminal(const Strings& argv, const Strings& environment);
  ~Terminal();  // kills and reaps it
  Terminal(const Terminal&) = delete;
  Terminal& operator=(const Terminal&) = delete;

  void type(const std::string& keys);
  // Everything up to and including the text, which is then behind us. Throws std::runtime_error
  // with what came instead when it does not come in time.
  std::string until(const std::string& text);
  // Types a line; its echo, and what the program wrote before its next prompt.
  std::string line(const std::string& text);
  // The rest, to the program's end.
  std::string rest();
  const std::string& everything() const { return all_; }

 private:
  bool read_some(Clock::time_point deadline);

  pid_t pid_ = -1;
  Descriptor terminal_;
  std::string unread_;
  std::string all_;
};

}  // namespace scenario
