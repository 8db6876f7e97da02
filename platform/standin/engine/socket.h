// A connected socket, shared by the thread that serves it and the daemon that takes it over.
#pragma once

#include <atomic>
#include <memory>

namespace standin {

// Closes with its last owner. Thread-safe: the descriptor never changes.
class Socket {
 public:
  // `count`: how many sockets are open, kept for the server's limit.
  Socket(int fd, std::shared_ptr<std::atomic<int>> count);
  ~Socket();
  Socket(const Socket&) = delete;
  Socket& operator=(const Socket&) = delete;

  int fd() const { return fd_; }
  // The peer has closed its end, whatever is still to be read.
  bool peer_gone() const;
  // Ends both directions: whoever waits on the socket wakes with end of file.
  void shut() const;

 private:
  const int fd_;
  std::shared_ptr<std::atomic<int>> count_;
};

using SocketPtr = std::shared_ptr<const Socket>;

}  // namespace standin
