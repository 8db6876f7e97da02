// A child process with its standard streams, ended by its pid.
#pragma once

#include <sys/types.h>

#include <chrono>
#include <optional>
#include <string>
#include <vector>

namespace scenario {

using Clock = std::chrono::steady_clock;
using Strings = std::vector<std::string>;

inline constexpr std::chrono::seconds kPatience{120};

// A descriptor of its own.
class Descriptor {
 public:
  explicit Descriptor(int fd = -1) : fd_(fd) {}
  ~Descriptor() { reset(); }
  Descriptor(Descriptor&& other) noexcept : fd_(other.release()) {}
  Descriptor& operator=(Descriptor&& other) noexcept;
  int get() const { return fd_; }
  int release();
  void reset();

 private:
  int fd_;
};

class Process {
 public:
  // How standard input is: a pipe that the test holds, /dev/null, or closed.
  enum class Input { pipe, null, closed };

  // Standard output is a pipe; standard error goes to the file `errors`.
  Process(const Strings& argv, const std::string& errors, Input input = Input::null);
  ~Process();  // kills and reaps it
  Process(const Process&) = delete;
  Process& operator=(const Process&) = delete;

  pid_t pid() const { return pid_; }
  bool alive();
  void signal(int number);
  // Exit status, or 128 and the signal's number. Nothing when it has not ended by then.
  std::optional<int> wait(Clock::duration patience = kPatience);
  // Waits for a whole line of standard output that begins so; nothing at its end or too late.
  std::optional<std::string> line_beginning(const std::string& text,
                                            Clock::duration patience = kPatience);
  // Writes the input, closes it and collects standard output to its end; false when too late.
  bool communicate(const std::string& input, std::string& output,
                   Clock::duration patience = kPatience);
  // Short texts only: the pipe must take them whole.
  void write(const std::string& text);
  void close_input() { input_.reset(); }
  std::string errors() const;  // what standard error has so far

 private:
  bool read_some(Clock::time_point deadline, const std::string* input, std::size_t& written);

  pid_t pid_ = -1;
  std::optional<int> status_;
  Descriptor input_, output_, pidfd_;
  std::string unread_;
  std::string errors_file_;
};

}  // namespace scenario
