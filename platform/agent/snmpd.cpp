#include "snmpd.h"

#include <arpa/inet.h>
#include <fcntl.h>
#include <poll.h>
#include <signal.h>
#include <sys/prctl.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <charconv>
#include <chrono>
#include <cstdlib>
#include <cstring>
#include <iostream>
#include <sstream>

namespace standin::agent {
namespace {

using Clock = std::chrono::steady_clock;
// While it starts it asks each target of v3 informs for its engine ID, and waits for the answer.
constexpr std::chrono::seconds kPatience{60}, kSlow{3};
constexpr std::chrono::seconds kLastPatience{2};  // at its end
constexpr const char* kServing = "NET-SNMP version";

int milliseconds_until(Clock::time_point deadline) {
  const auto left = std::chrono::ceil<std::chrono::milliseconds>(deadline - Clock::now()).count();
  return left > 0 ? static_cast<int>(left) : 0;
}

// snmpd's own text does not tell a port that is in use from one that only root may bind.
void must_be_free(const Endpoint& endpoint) {
  const FileDescriptor probe(
      ::socket(endpoint.v6 ? AF_INET6 : AF_INET, SOCK_DGRAM | SOCK_CLOEXEC, 0));
  int result = -1;
  if (endpoint.v6) {
    sockaddr_in6 address{};
    address.sin6_family = AF_INET6;
    address.sin6_port = htons(static_cast<std::uint16_t>(endpoint.port));
    ::inet_pton(AF_INET6, endpoint.address.c_str(), &address.sin6_addr);
    result = ::bind(probe.get(), reinterpret_cast<const sockaddr*>(&address), sizeof address);
  } else {
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_port = htons(static_cast<std::uint16_t>(endpoint.port));
    ::inet_pton(AF_INET, endpoint.address.c_str(), &address.sin_addr);
    result = ::bind(probe.get(), reinterpret_cast<const sockaddr*>(&address), sizeof address);
  }
  if (result == 0) return;
  const int error = errno;
  if (error == EADDRINUSE) {
    throw CannotServe(endpoint.spec() +
                      " is in use: end the program that has it, or choose other "
                      "ports with --port-offset");
  }
  if (error == EACCES) {
    throw CannotServe(endpoint.spec() +
                      " is for root: choose ports from 1024 on with "
                      "--port-offset");
  }
  throw CannotServe(endpoint.spec() + " cannot be bound: " + std::strerror(error));
}

std::vector<std::string> environment_of(const Directory& directory) {
  // It reads its state only where it is in the path. No MIB modules: only numbers are read here,
  // and reading them takes long.
  return {"SNMPCONFPATH=" + directory.path() + ":" + directory.state_path(),
          "SNMP_PERSISTENT_DIR=" + directory.state_path(),
          "MIBS=",
          "MIBDIRS=",
          "LC_ALL=C",
          "PATH=/usr/bin:/bin"};
}

std::vector<char*> pointers(std::vector<std::string>& words) {
  std::vector<char*> all;
  all.reserve(words.size() + 1);
  for (std::string& word : words) all.push_back(word.data());
  all.push_back(nullptr);
  return all;
}

// In the child, after fork: only calls that are safe there.
[[noreturn]] void become(char* const* argv, char* const* environment, int out, pid_t parent) {
  sigset_t none;
  ::sigemptyset(&none);
  ::sigprocmask(SIG_SETMASK, &none, nullptr);
  ::signal(SIGPIPE, SIG_DFL);
  ::umask(077);
  ::prctl(PR_SET_PDEATHSIG, SIGTERM);
  if (::getppid() != parent) ::_exit(1);
  const int null = ::open("/dev/null", O_RDWR);
  ::dup2(null, STDIN_FILENO);
  ::dup2(out, STDOUT_FILENO);
  ::dup2(out, STDERR_FILENO);
  ::execve(argv[0], argv, environment);
  ::_exit(127);
}

// "FILE: line N: Error: TEXT" of our own file -> N; 0 for any other line.
std::size_t complaint_line(const std::string& line, const std::string& file) {
  const std::string before = file + ": line ";
  if (!line.starts_with(before)) return 0;
  std::size_t number = 0;
  std::from_chars(line.data() + before.size(), line.data() + line.size(), number);
  return number;
}

}  // namespace

std::string find_snmpd(const std::string& wanted) {
  if (!wanted.empty()) {
    if (::access(wanted.c_str(), X_OK) == 0) return wanted;
    throw CannotServe("cannot run " + wanted + ": " + std::strerror(errno) +
                      "; name an snmpd with --snmpd");
  }
  const char* path = std::getenv("PATH");
  std::istringstream places(std::string(path == nullptr ? "" : path) +
                            ":/usr/sbin:/usr/local/sbin");
  for (std::string place; std::getline(places, place, ':');) {
    const std::string program = place + "/snmpd";
    if (place.starts_with('/') && ::access(program.c_str(), X_OK) == 0) return program;
  }
  throw CannotServe("there is no snmpd: install the package snmpd, or name one with --snmpd");
}

Snmpd::Snmpd(const std::string& program, const Directory& directory,
             const Configuration& configuration)
    : directory_(directory), configuration_(configuration) {
  // By itself it would listen on all addresses of the machine.
  if (configuration.endpoints.empty()) {
    throw CannotServe(
        "there is no address to serve on: set /snmp:snmp/agent/ip and port, or "
        "choose another --port-offset");
  }
  for (const Endpoint& endpoint : configuration.endpoints) must_be_free(endpoint);
  directory.write_configuration(configuration.text());
  directory.reset_state();
  log_ = FileDescriptor(
      ::open(directory.log_file().c_str(), O_WRONLY | O_CREAT | O_APPEND | O_CLOEXEC, 0600));
  start(program);
}

void Snmpd::start(const std::string& program) {
  std::array<int, 2> ends{};
  if (::pipe2(ends.data(), O_CLOEXEC) != 0) {
    throw CannotServe(std::string("cannot make a pipe: ") + std::strerror(errno));
  }
  output_ = FileDescriptor(ends[0]);
  const FileDescriptor theirs(ends[1]);
  ::fcntl(output_.get(), F_SETFL, O_NONBLOCK);
  // -Le: each line at once. Without smux, a TCP port of its own.
  std::vector<std::string> words{program, "-f", "-Le", "-I", "-smux"};
  std::vector<std::string> settings = environment_of(directory_);
  const auto argv = pointers(words);
  const auto environment = pointers(settings);
  const pid_t parent = ::getpid();
  pid_ = ::fork();
  if (pid_ < 0) throw CannotServe(std::string("cannot fork: ") + std::strerror(errno));
  if (pid_ == 0) become(argv.data(), environment.data(), theirs.get(), parent);
}

std::string Snmpd::epitaph() {
  int status = 0;
  while (::waitpid(pid_, &status, 0) < 0 && errno == EINTR) {
  }
  pid_ = -1;
  const std::string how = WIFSIGNALED(status)
                              ? "killed by signal " + std::to_string(WTERMSIG(status))
                              : "status " + std::to_string(WEXITSTATUS(status));
  return how + ", last words: " + (last_words_.empty() ? "none" : last_words_);
}

Snmpd::~Snmpd() {
  if (pid_ <= 0) return;
  ::kill(pid_, SIGTERM);
  // At its end it sends a last notification, and may wait for a target. Its output ends with it.
  const Clock::time_point deadline = Clock::now() + kLastPatience;
  bool more = true;
  while (more && Clock::now() < deadline) {
    pollfd ready{output_.get(), POLLIN, 0};
    if (::poll(&ready, 1, milliseconds_until(deadline)) > 0) more = take_output();
  }
  if (more) ::kill(pid_, SIGKILL);
  while (::waitpid(pid_, nullptr, 0) < 0 && errno == EINTR) {
  }
}

void Snmpd::take_line(const std::string& line) {
  if (line.starts_with(kServing)) serves_ = true;
  if (complaint_line(line, directory_.configuration_file()) != 0) complaints_.push_back(line);
  // "Server Exiting with code 1" comes after the reason.
  if (!line.empty() && !line.starts_with("Server Exiting")) last_words_ = line;
}

bool Snmpd::take_output() {
  std::array<char, 4096> block;
  const ssize_t n = ::read(output_.get(), block.data(), block.size());
  if (n < 0) return errno == EAGAIN || errno == EINTR;
  if (n == 0) return false;
  const auto size = static_cast<std::size_t>(n);
  // A full disk costs the log only.
  [[maybe_unused]] const ssize_t logged = ::write(log_.get(), block.data(), size);
  unread_.append(block.data(), size);
  for (std::size_t end = 0; (end = unread_.find('\n')) != std::string::npos;) {
    take_line(unread_.substr(0, end));
    unread_.erase(0, end + 1);
  }
  return true;
}

void Snmpd::refused() const {
  const std::string& first = complaints_.front();
  const std::string file = directory_.configuration_file();
  const std::size_t number = complaint_line(first, file);
  std::string row = file + " line " + std::to_string(number);
  if (number <= configuration_.lines.size()) {
    row = configuration_.lines[number - 1].row + " (" + row + ")";
  }
  const std::size_t text = first.find(": ", file.size() + 2);
  throw CannotServe("snmpd refuses " + row + first.substr(text == std::string::npos ? 0 : text) +
                    "; change the row, and see " + directory_.log_file());
}

bool Snmpd::wait_until_serving(int stop) {
  const Clock::time_point begun = Clock::now();
  bool told = false;
  while (!serves_) {
    const Clock::time_point next = begun + (told ? kPatience : kSlow);
    std::array<pollfd, 2> ready{{{output_.get(), POLLIN, 0}, {stop, POLLIN, 0}}};
    const int count = ::poll(ready.data(), ready.size(), milliseconds_until(next));
    if (count == 0 && told) {
      throw CannotServe("snmpd does not serve: see " + directory_.log_file());
    }
    if (count == 0) {
      std::cerr
          << "standin-agent: snmpd is still starting: it waits for targets of v3 informs to answer"
          << std::endl;
      told = true;
    }
    if (count > 0 && ready[1].revents != 0) return false;
    if (count > 0 && ready[0].revents != 0 && !take_output()) {
      throw CannotServe("snmpd does not start: " + epitaph());
    }
  }
  if (!complaints_.empty()) refused();
  return true;
}

}  // namespace standin::agent
