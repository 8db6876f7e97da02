#include "peer.h"

#include <sys/socket.h>
#include <unistd.h>

namespace standin {

FrameWriter frame(std::uint64_t first) {
  FrameWriter w;
  w.put(first);
  return w;
}

FrameWriter ok_answer(std::uint64_t change_count) {
  FrameWriter w = frame(std::uint64_t{0});
  w.put(change_count);
  return w;
}

Socket::Socket() : fd_(::socket(AF_INET, SOCK_STREAM, 0)) {}
Socket::~Socket() { ::close(fd_); }

Peer::Peer(Answer answer) : answer_(std::move(answer)) {
  listener_ = ::socket(AF_INET, SOCK_STREAM, 0);
  address_.sin_family = AF_INET;
  address_.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
  socklen_t size = sizeof address_;
  if (::bind(listener_, address(), size) != 0 || ::listen(listener_, 8) != 0 ||
      ::getsockname(listener_, reinterpret_cast<sockaddr*>(&address_), &size) != 0)
    ADD_FAILURE() << "no port for the scripted server";
  acceptor_ = std::thread([this] { accept_all(); });
}

Peer::~Peer() {
  ::shutdown(listener_, SHUT_RDWR);
  acceptor_.join();
  for (const int fd : fds_) ::shutdown(fd, SHUT_RDWR);
  for (std::thread& t : threads_) t.join();
  for (const int fd : fds_) ::close(fd);
  ::close(listener_);
}

void Peer::accept_all() {
  for (int fd; (fd = ::accept(listener_, nullptr, nullptr)) >= 0;) {
    const std::scoped_lock guard(lock_);
    fds_.push_back(fd);
    threads_.emplace_back([this, fd] { serve(fd); });
  }
}

void Peer::serve(int fd) {
  std::string payload;
  if (recv_frame(fd, payload) != IoResult::ok) return;
  FrameReader hello(payload);
  EXPECT_EQ(hello.number(), std::uint64_t(Op::hello));
  EXPECT_EQ(hello.number(), kWireVersion);
  const auto kind = static_cast<SocketKind>(hello.number());
  const std::string accepted = greeting.empty() ? frame(std::uint64_t{0}).put(7u).take() : greeting;
  if (kind == SocketKind::control || kind == SocketKind::worker) {
    send_frame(fd, accepted);
    if (kind == SocketKind::control && recv_frame(fd, payload) == IoResult::ok) {
      FrameReader request(payload);
      request.number();
      send_frame(fd, registration ? registration(request) : frame(std::uint64_t{0}).take());
    }
  }
  {
    const std::scoped_lock guard(lock_);
    greeted_.emplace(kind, fd);
    changed_.notify_all();
  }
  if (kind == SocketKind::control || kind == SocketKind::worker) return;
  send_frame(fd, accepted);
  while (recv_frame(fd, payload) == IoResult::ok) {
    FrameReader request(payload);
    const Op op = static_cast<Op>(request.number());
    const std::string octets = answer_(op, request);
    if (octets.empty()) {
      ::shutdown(fd, SHUT_RDWR);
      return;
    }
    send_frame(fd, octets);
  }
}

int Peer::socket_of(SocketKind kind) {
  std::unique_lock guard(lock_);
  if (!changed_.wait_for(guard, kPatience, [&] { return greeted_.count(kind) != 0; })) {
    ADD_FAILURE() << "no connection of kind " << int(kind);
    return -1;
  }
  return greeted_.find(kind)->second;
}

void Peer::send(SocketKind kind, const std::string& octets) {
  EXPECT_EQ(send_frame(socket_of(kind), octets), IoResult::ok);
}

FrameReader Peer::receive(SocketKind kind) {
  std::string payload;
  EXPECT_EQ(recv_frame(socket_of(kind), payload, std::chrono::steady_clock::now() + kPatience),
            IoResult::ok);
  return FrameReader(payload);
}

void Peer::close_socket(SocketKind kind) { ::shutdown(socket_of(kind), SHUT_RDWR); }

}  // namespace standin
