// Sockets of the status tests.
#pragma once

#include <arpa/inet.h>
#include <netinet/in.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

#include <string>

namespace quillet::testing_sockets {

constexpr int kDeadlineMs = 10000;

inline bool readable(int fd) {
  pollfd entry = {.fd = fd, .events = POLLIN, .revents = 0};
  return poll(&entry, 1, kDeadlineMs) == 1;
}

inline int port_of(int sock) {
  sockaddr_in addr{};
  socklen_t size = sizeof addr;
  getsockname(sock, reinterpret_cast<sockaddr*>(&addr), &size);
  return ntohs(addr.sin_port);
}

inline sockaddr_in loopback(int port) {
  sockaddr_in addr{};
  addr.sin_family = AF_INET;
  addr.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
  addr.sin_port = htons(static_cast<in_port_t>(port));
  return addr;
}

inline int connected(int port) {
  const int sock = socket(AF_INET, SOCK_STREAM, 0);
  const sockaddr_in addr = loopback(port);
  if (connect(sock, reinterpret_cast<const sockaddr*>(&addr), sizeof addr) != 0) {
    close(sock);
    return -1;
  }
  return sock;
}

// Closes with a reset instead of an end.
inline void reset(int sock) {
  const linger at_once = {.l_onoff = 1, .l_linger = 0};
  setsockopt(sock, SOL_SOCKET, SO_LINGER, &at_once, sizeof at_once);
  close(sock);
}

// What has arrived, up to `size` octets, with a deadline for the first.
inline std::string received(int sock, std::size_t size) {
  std::string text;
  while (text.size() < size && readable(sock)) {
    char octet = 0;
    if (recv(sock, &octet, 1, 0) <= 0) break;
    text += octet;
  }
  return text;
}

}  // namespace quillet::testing_sockets
