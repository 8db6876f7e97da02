#include "platform/standin/engine/socket.h"

#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

namespace standin {

Socket::Socket(int fd, std::shared_ptr<std::atomic<int>> count)
    : fd_(fd), count_(std::move(count)) {
  ++*count_;
}

Socket::~Socket() {
  ::close(fd_);
  --*count_;
}

bool Socket::peer_gone() const {
  pollfd entry{fd_, POLLRDHUP, 0};
  return ::poll(&entry, 1, 0) > 0;
}

void Socket::shut() const { ::shutdown(fd_, SHUT_RDWR); }

}  // namespace standin
