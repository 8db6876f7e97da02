#include "machine.h"

#include <arpa/inet.h>
#include <netinet/in.h>
#include <poll.h>
#include <signal.h>
#include <sys/socket.h>
#include <unistd.h>

#include <fstream>
#include <stdexcept>

namespace scenario {
namespace {

sockaddr_in loopback(std::uint16_t port) {
  sockaddr_in address{};
  address.sin_family = AF_INET;
  address.sin_port = htons(port);
  address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
  return address;
}

bool can_bind(int kind, std::uint16_t port) {
  const Descriptor probe(::socket(AF_INET, kind | SOCK_CLOEXEC, 0));
  const sockaddr_in address = loopback(port);
  return ::bind(probe.get(), reinterpret_cast<const sockaddr*>(&address), sizeof address) == 0;
}

std::filesystem::path own_directory() {
  std::string name = (std::filesystem::temp_directory_path() / "scenario-XXXXXX").string();
  if (::mkdtemp(name.data()) == nullptr) throw std::runtime_error("mkdtemp: " + name);
  return name;
}

}  // namespace

// Ports below the range from which the kernel gives out its own, from a place on that follows from
// the pid, are nobody else's.
std::uint16_t free_port() {
  constexpr unsigned kFirst = 10240, kCount = 20480, kStep = 7;
  const unsigned start = static_cast<unsigned>(::getpid()) * kStep;
  static unsigned tried = 0;
  while (tried < kCount) {
    const auto port = static_cast<std::uint16_t>(kFirst + (start + tried++) % kCount);
    if (can_bind(SOCK_STREAM, port) && can_bind(SOCK_DGRAM, port)) return port;
  }
  throw std::runtime_error("no free port");
}

Machine::Machine() : directory_(own_directory()), status_port_(free_port()) {
  // A client that ended early is seen by its status, not by our own end.
  ::signal(SIGPIPE, SIG_IGN);
}

Machine::~Machine() {
  daemon_.reset();
  server_.reset();
  std::error_code ignored;
  std::filesystem::remove_all(directory_, ignored);
}

void Machine::start_server(const Strings& options) {
  Strings argv{CONFD_STANDIN, "--port", "0", "--dir", file("db")};
  argv.insert(argv.end(), options.begin(), options.end());
  server_ = std::make_unique<Process>(argv, file("server.err"));
  const std::string announced = "listening on 127.0.0.1:";
  const auto line = server_->line_beginning(announced);
  if (!line) throw std::runtime_error("the server does not listen: " + server_->errors());
  port_ = static_cast<std::uint16_t>(std::stoi(line->substr(announced.size())));
}

std::unique_ptr<Process> Machine::start_transform(const Strings& options, Process::Input input) {
  Strings argv{QUILLET_TRANSFORM, "--status-port", status_port()};
  argv.insert(argv.end(), options.begin(), options.end());
  return std::make_unique<Process>(argv, file("daemon" + std::to_string(++runs_) + ".err"), input);
}

void Machine::start_daemon(const Strings& options, Process::Input input) {
  Strings all{"-P", port(), "-S", "-d"};
  all.insert(all.end(), options.begin(), options.end());
  daemon_ = start_transform(all, input);
  // The line comes before the event loop; the status port answers once that runs.
  if (!daemon_->line_beginning("running")) {
    throw std::runtime_error("the daemon does not run: " + daemon_->errors());
  }
  const auto status = status_query(status_connection());
  if (status != 2) throw std::runtime_error("the daemon does not serve: " + daemon_->errors());
}

int Machine::daemon_ends() {
  const auto status = daemon_->wait();
  if (!status) throw std::runtime_error("the daemon goes on");
  return *status;
}

std::unique_ptr<Process> Machine::start_cli(const Strings& words, Process::Input input) {
  Strings argv{STANDIN_CLI, "-P", port()};
  argv.insert(argv.end(), words.begin(), words.end());
  return std::make_unique<Process>(argv, file("cli" + std::to_string(++runs_) + ".err"), input);
}

std::unique_ptr<NorthboundSession> Machine::session(NorthboundSession::Access access) {
  return std::make_unique<NorthboundSession>(port_, "test", access);
}

Descriptor Machine::status_connection() const {
  Descriptor connection(::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0));
  const sockaddr_in address = loopback(status_port_);
  if (::connect(connection.get(), reinterpret_cast<const sockaddr*>(&address), sizeof address) !=
      0) {
    connection.reset();
  }
  return connection;
}

std::optional<int> Machine::status_query(const Descriptor& connection) {
  const char query = '\n';
  if (::send(connection.get(), &query, 1, MSG_NOSIGNAL) != 1) return std::nullopt;
  pollfd answered{connection.get(), POLLIN, 0};
  const auto patience = std::chrono::duration_cast<std::chrono::milliseconds>(kPatience).count();
  if (::poll(&answered, 1, static_cast<int>(patience)) != 1) return std::nullopt;
  unsigned char answer = 0;
  if (::recv(connection.get(), &answer, 1, 0) != 1) return std::nullopt;
  return answer;
}

std::string Machine::write_file(const std::string& name, const std::string& text) const {
  std::ofstream(file(name), std::ios::binary) << text;
  return file(name);
}

}  // namespace scenario
