#include "process.h"

#include <fcntl.h>
#include <poll.h>
#include <signal.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <fstream>
#include <iterator>
#include <stdexcept>
#include <system_error>

namespace scenario {
namespace {

[[noreturn]] void fail(const char* what) {
  throw std::system_error(errno, std::generic_category(), what);
}

int milliseconds_until(Clock::time_point deadline) {
  const auto left = std::chrono::ceil<std::chrono::milliseconds>(deadline - Clock::now()).count();
  return left > 0 ? static_cast<int>(left) : 0;
}

struct Pipe {
  Descriptor read, write;
  Pipe() {
    std::array<int, 2> ends{};
    if (::pipe2(ends.data(), O_CLOEXEC) != 0) fail("pipe2");
    read = Descriptor(ends[0]);
    write = Descriptor(ends[1]);
  }
};

// In the child, after fork: only calls that are safe there.
[[noreturn]] void become(char* const* argv, int in, int out, int err) {
  ::signal(SIGPIPE, SIG_DFL);  // the test ignores it, and that would be inherited
  if (in >= 0) {
    ::dup2(in, STDIN_FILENO);
  } else {
    ::close(STDIN_FILENO);
  }
  ::dup2(out, STDOUT_FILENO);
  ::dup2(err, STDERR_FILENO);
  ::execv(argv[0], argv);
  ::_exit(127);
}

}  // namespace

Descriptor& Descriptor::operator=(Descriptor&& other) noexcept {
  if (this != &other) {
    reset();
    fd_ = other.release();
  }
  return *this;
}

int Descriptor::release() {
  const int fd = fd_;
  fd_ = -1;
  return fd;
}

void Descriptor::reset() {
  if (fd_ >= 0) ::close(fd_);
  fd_ = -1;
}

Process::Process(const Strings& argv, const std::string& errors, Input input)
    : errors_file_(errors) {
  Pipe in, out;
  const Descriptor null(::open("/dev/null", O_RDONLY | O_CLOEXEC));
  const Descriptor err(::open(errors.c_str(), O_WRONLY | O_CREAT | O_APPEND | O_CLOEXEC, 0600));
  if (null.get() < 0 || err.get() < 0) fail(errors.c_str());
  std::vector<char*> words;
  for (const std::string& word : argv) words.push_back(const_cast<char*>(word.c_str()));
  words.push_back(nullptr);
  const int child_input = input == Input::pipe   ? in.read.get()
                          : input == Input::null ? null.get()
                                                 : -1;
  pid_ = ::fork();
  if (pid_ < 0) fail("fork");
  if (pid_ == 0) become(words.data(), child_input, out.write.get(), err.get());
  pidfd_ = Descriptor(static_cast<int>(::syscall(SYS_pidfd_open, pid_, 0)));
  if (pidfd_.get() < 0) fail("pidfd_open");
  if (input == Input::pipe) {
    input_ = std::move(in.write);
    ::fcntl(input_.get(), F_SETFL, O_NONBLOCK);
  }
  output_ = std::move(out.read);
}

Process::~Process() {
  if (!alive()) return;
  signal(SIGKILL);
  wait();
}

bool Process::alive() { return !wait(Clock::duration::zero()); }

void Process::signal(int number) {
  if (!status_) ::kill(pid_, number);
}

std::optional<int> Process::wait(Clock::duration patience) {
  if (status_) return status_;
  const Clock::time_point deadline = Clock::now() + patience;
  pollfd ended{pidfd_.get(), POLLIN, 0};
  int ready = 0;
  do {
    ready = ::poll(&ended, 1, milliseconds_until(deadline));
  } while (ready < 0 && errno == EINTR);
  if (ready <= 0) return std::nullopt;
  int status = 0;
  if (::waitpid(pid_, &status, 0) != pid_) fail("waitpid");
  status_ = WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
  return status_;
}

// One step of reading output and, when there is any left, writing input. False at the end of the
// output or past the deadline.
bool Process::read_some(Clock::time_point deadline, const std::string* input,
                        std::size_t& written) {
  const bool writing = input != nullptr && input_.get() >= 0;
  std::array<pollfd, 2> fds{
      {{output_.get(), POLLIN, 0}, {writing ? input_.get() : -1, POLLOUT, 0}}};
  const int ready = ::poll(fds.data(), fds.size(), milliseconds_until(deadline));
  if (ready < 0 && errno == EINTR) return true;
  if (ready <= 0) return false;
  if (fds[1].revents != 0) {
    const ssize_t n = ::write(input_.get(), input->data() + written, input->size() - written);
    if (n > 0) written += static_cast<std::size_t>(n);
    if (n <= 0 || written == input->size()) input_.reset();
  }
  if (fds[0].revents == 0) return true;
  std::array<char, 65536> block;
  const ssize_t n = ::read(output_.get(), block.data(), block.size());
  if (n <= 0) return false;
  unread_.append(block.data(), static_cast<std::size_t>(n));
  return true;
}

std::optional<std::string> Process::line_beginning(const std::string& text,
                                                   Clock::duration patience) {
  const Clock::time_point deadline = Clock::now() + patience;
  std::size_t written = 0;
  for (;;) {
    for (std::size_t end = 0; (end = unread_.find('\n')) != std::string::npos;) {
      const std::string line = unread_.substr(0, end);
      unread_.erase(0, end + 1);
      if (line.starts_with(text)) return line;
    }
    if (!read_some(deadline, nullptr, written)) return std::nullopt;
  }
}

bool Process::communicate(const std::string& input, std::string& output, Clock::duration patience) {
  const Clock::time_point deadline = Clock::now() + patience;
  std::size_t written = 0;
  if (input.empty()) input_.reset();
  while (read_some(deadline, &input, written)) {
  }
  output = std::move(unread_);
  unread_.clear();
  return Clock::now() < deadline;
}

void Process::write(const std::string& text) {
  if (::write(input_.get(), text.data(), text.size()) != static_cast<ssize_t>(text.size())) {
    fail("write");
  }
}

std::string Process::errors() const {
  std::ifstream file(errors_file_, std::ios::binary);
  return {std::istreambuf_iterator<char>(file), {}};
}

}  // namespace scenario
