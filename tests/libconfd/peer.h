// A scripted server: answers greetings and registrations by itself, MAAPI and CDB requests by a
// function of the test, and leaves daemon sockets to the test after their greeting.
#pragma once

#include <gtest/gtest.h>
#include <netinet/in.h>

#include <atomic>
#include <condition_variable>
#include <functional>
#include <map>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

#include "platform/wire/frame.h"
#include "platform/wire/messages.h"

namespace standin {

inline constexpr auto kPatience = std::chrono::seconds(60);

// A frame whose first element is that number.
FrameWriter frame(std::uint64_t first);
inline FrameWriter frame(Op op) { return frame(static_cast<std::uint64_t>(op)); }
inline FrameWriter refusal(ErrorCode code) { return frame(static_cast<std::uint64_t>(code)); }
// An answer of MAAPI: no error, the change count; results follow.
FrameWriter ok_answer(std::uint64_t change_count = 0);

class Peer {
 public:
  // Gives the octets to send; empty ones close the connection.
  using Answer = std::function<std::string(Op, FrameReader&)>;

  explicit Peer(Answer answer = nullptr);
  ~Peer();

  const sockaddr* address() const { return reinterpret_cast<const sockaddr*>(&address_); }
  static constexpr int address_size() { return sizeof(sockaddr_in); }

  // Set before the connection is made. What a registration, and a greeting, are answered.
  std::function<std::string(FrameReader&)> registration;
  std::string greeting;

  // The first connection of that kind; waits for it.
  int socket_of(SocketKind kind);
  void send(SocketKind kind, FrameWriter&& message) { send(kind, message.take()); }
  void send(SocketKind kind, FrameWriter& message) { send(kind, message.take()); }
  void send(SocketKind kind, const std::string& octets);
  FrameReader receive(SocketKind kind);
  void close_socket(SocketKind kind);

 private:
  void accept_all();
  void serve(int fd);

  Answer answer_;
  sockaddr_in address_{};
  int listener_ = -1;
  std::mutex lock_;
  std::condition_variable changed_;
  std::multimap<SocketKind, int> greeted_;
  std::vector<int> fds_;
  std::vector<std::thread> threads_;
  std::thread acceptor_;
};

// A socket of the library's side, closed at the end.
class Socket {
 public:
  Socket();
  ~Socket();
  Socket(const Socket&) = delete;
  Socket& operator=(const Socket&) = delete;
  operator int() const { return fd_; }

 private:
  int fd_;
};

inline Tag tag_of(std::string_view name) { return {tag_number(name), 7}; }
inline Level element(std::string_view name) { return {Value::tag(tag_of(name))}; }

}  // namespace standin
