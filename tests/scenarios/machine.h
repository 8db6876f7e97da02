// The programs of one machine, in a directory of their own: a server with its database, the daemon,
// and clients. Knows nothing of a test framework.
#pragma once

#include <cstdint>
#include <filesystem>
#include <memory>
#include <optional>
#include <string>

#include "platform/client/northbound.h"
#include "process.h"

namespace scenario {

using standin::NorthboundSession;

// A port of loopback, for TCP and UDP, that nobody has; another one at each call. For programs that
// are told their port beforehand.
std::uint16_t free_port();

// Runs no process by itself; processes that still run are killed with it. Everything throws
// std::runtime_error when a program does not do its part in time.
class Machine {
 public:
  Machine();
  ~Machine();
  Machine(const Machine&) = delete;
  Machine& operator=(const Machine&) = delete;

  // Waits until it listens. Started again, it keeps its directory.
  void start_server(const Strings& options = {});
  // Waits until the status port says that it runs.
  void start_daemon(const Strings& options = {}, Process::Input input = Process::Input::null);
  void start_both() {
    start_server();
    start_daemon();
  }
  // Waits for its end; returns its exit status.
  int daemon_ends();

  std::unique_ptr<NorthboundSession> session(
      NorthboundSession::Access access = NorthboundSession::Access::write);
  std::unique_ptr<Process> start_cli(const Strings& words,
                                     Process::Input input = Process::Input::null);
  std::unique_ptr<Process> start_transform(const Strings& options,
                                           Process::Input input = Process::Input::null);

  // A connection to the status port; -1 inside when it is refused.
  Descriptor status_connection() const;
  // One query: the answer's byte; nothing at the end of the connection or too late.
  static std::optional<int> status_query(const Descriptor& connection);

  std::string file(const std::string& name) const { return (directory_ / name).string(); }
  std::string write_file(const std::string& name, const std::string& text) const;
  std::string status_port() const { return std::to_string(status_port_); }
  std::string port() const { return std::to_string(port_); }

 protected:
  std::unique_ptr<Process> server_, daemon_;

 private:
  std::filesystem::path directory_;
  std::uint16_t port_ = 0;
  std::uint16_t status_port_ = 0;
  int runs_ = 0;
};

}  // namespace scenario
