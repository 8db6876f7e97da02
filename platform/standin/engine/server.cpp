#include "platform/standin/engine/server.h"

#include <arpa/inet.h>
#include <fcntl.h>
#include <netinet/in.h>
#include <netinet/tcp.h>
#include <poll.h>
#include <sys/eventfd.h>
#include <sys/socket.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <stdexcept>

#include "platform/standin/engine/connection.h"

namespace standin {
namespace {

// How long to leave a system alone that has no descriptors or memory left.
constexpr int kBackOffMs = 100;

int open_listener(std::uint16_t port) {
  const int fd = ::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0);
  if (fd < 0)
    throw std::runtime_error(std::string("cannot open a socket: ") + std::strerror(errno));
  const int on = 1;
  ::setsockopt(fd, SOL_SOCKET, SO_REUSEADDR, &on, sizeof on);
  sockaddr_in address{};
  address.sin_family = AF_INET;
  address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
  address.sin_port = htons(port);
  if (::bind(fd, reinterpret_cast<const sockaddr*>(&address), sizeof address) != 0 ||
      ::listen(fd, SOMAXCONN) != 0) {
    const std::string reason = std::strerror(errno);
    ::close(fd);
    throw std::runtime_error("cannot listen on 127.0.0.1:" + std::to_string(port) + ": " + reason);
  }
  return fd;
}

std::uint16_t bound_port(int fd) {
  sockaddr_in address{};
  socklen_t size = sizeof address;
  if (::getsockname(fd, reinterpret_cast<sockaddr*>(&address), &size) != 0)
    throw std::runtime_error(std::string("cannot read the port: ") + std::strerror(errno));
  return ntohs(address.sin_port);
}

}  // namespace

Descriptor::~Descriptor() {
  if (fd_ >= 0) ::close(fd_);
}

Server::Server(Engine& engine, std::uint16_t port)
    : engine_(engine),
      listening_(open_listener(port)),
      ended_(::eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK)),
      port_(bound_port(listening_.fd())) {
  if (ended_.fd() < 0)
    throw std::runtime_error(std::string("cannot open an event: ") + std::strerror(errno));
}

Server::~Server() {
  {
    const std::lock_guard lock(engine_.monitor().mutex);
    engine_.stop();
  }
  {
    const std::lock_guard lock(mutex_);
    for (const Served& s : served_)
      if (s.socket) s.socket->shut();
  }
  // Nobody adds to the list any more: it is this thread that accepts.
  for (Served& s : served_) s.thread.join();
}

void Server::run(int stop_fd) {
  bool tired = false;
  for (;;) {
    // A negative descriptor is passed over.
    pollfd entries[] = {
        {stop_fd, POLLIN, 0}, {ended_.fd(), POLLIN, 0}, {tired ? -1 : listening_.fd(), POLLIN, 0}};
    if (::poll(entries, 3, tired ? kBackOffMs : -1) < 0 && errno != EINTR)
      throw std::runtime_error(std::string("cannot wait for connections: ") + std::strerror(errno));
    tired = false;
    if (entries[0].revents != 0) return;
    if (entries[1].revents != 0) reap();
    if (entries[2].revents != 0) tired = !accept_one();
  }
}

bool Server::accept_one() {
  const int fd = ::accept4(listening_.fd(), nullptr, nullptr, SOCK_CLOEXEC);
  if (fd < 0) return errno != EMFILE && errno != ENFILE && errno != ENOBUFS && errno != ENOMEM;
  if (*open_ >= kMostConnections) {
    ::close(fd);
    return true;
  }
  const int on = 1;
  ::setsockopt(fd, IPPROTO_TCP, TCP_NODELAY, &on, sizeof on);
  try {
    start(fd);
  } catch (const std::exception&) {
    return false;
  }
  return true;
}

void Server::start(int fd) {
  const std::lock_guard lock(mutex_);
  served_.emplace_back();
  Served& mine = served_.back();
  try {
    mine.socket = std::make_shared<const Socket>(fd, open_);
    mine.thread = std::thread([this, &mine] {
      serve_connection(engine_, mine.socket, port_);
      {
        const std::lock_guard done(mutex_);
        mine.socket.reset();
        mine.done = true;
      }
      const std::uint64_t one = 1;
      // Cannot block, and a full counter has been noticed already.
      [[maybe_unused]] const auto n = ::write(ended_.fd(), &one, sizeof one);
    });
  } catch (...) {
    served_.pop_back();
    throw;
  }
}

void Server::reap() {
  std::uint64_t count = 0;
  [[maybe_unused]] const auto n = ::read(ended_.fd(), &count, sizeof count);
  std::list<Served> ended;
  {
    const std::lock_guard lock(mutex_);
    for (auto s = served_.begin(); s != served_.end();) {
      const auto next = std::next(s);
      if (s->done) ended.splice(ended.end(), served_, s);
      s = next;
    }
  }
  for (Served& s : ended) s.thread.join();
}

}  // namespace standin
