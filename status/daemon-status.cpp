#include "status/daemon-status.h"

#include <arpa/inet.h>
#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <thread>

#include "core/log.h"

namespace quillet {

int daemon_status = 0;

namespace {

constexpr char kModule[] = "daemon-status";
constexpr int kBacklog = 10;
constexpr int kBindRetries = 15;
constexpr char kQuery = '\n';

int status_port = 8879;
int listen_fd = -1;
std::array<int, STATUS_MAX_CLIENTS> clients{};
bool clients_initialised = false;

int close_and_fail(int sock) {
  close(sock);
  return -1;
}

// Binds to the status port; a port in use may be a predecessor that is still ending.
bool bind_with_retries(int sock, std::chrono::milliseconds pause) {
  sockaddr_in addr{};
  addr.sin_family = AF_INET;
  addr.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
  addr.sin_port = htons(static_cast<in_port_t>(status_port));
  for (int retries = 0;; ++retries) {
    if (bind(sock, reinterpret_cast<const sockaddr*>(&addr), sizeof addr) == 0) return true;
    if (errno != EADDRINUSE || retries == kBindRetries) return false;
    std::this_thread::sleep_for(pause);
  }
}

// Closes the client and frees its slot.
int drop_client(int client) {
  const int result = close(client);
  if (result != 0) {
    log_error(LOG_LEVEL_CRIT, kModule, __LINE__, "close() failed: %s (%d)", std::strerror(errno),
              errno);
  }
  std::replace(clients.begin(), clients.end(), client, -1);
  return result != 0 ? -1 : 0;
}

int answer_query(int client) {
  const char answer = static_cast<char>(daemon_status & 0xff);
  ssize_t sent = 0;
  do {
    sent = send(client, &answer, 1, MSG_NOSIGNAL | MSG_DONTWAIT);
  } while (sent == 0);
  if (sent > 0) return 0;
  log_error(LOG_LEVEL_CRIT, kModule, __LINE__, "send() failed: %s (%d)", std::strerror(errno),
            errno);
  drop_client(client);
  return -1;
}

int report_receive_failure(int client) {
  const int code = errno;
  log_error(LOG_LEVEL_CRIT, kModule, __LINE__, "recv() failed: %s (%d)", std::strerror(code), code);
  log_error(LOG_LEVEL_CRIT, kModule, __LINE__, "Failed to receive msg");
  // The slot stays: the next read sees the end. But for a descriptor that is no socket it never
  // comes.
  if (code == EBADF || code == ENOTSOCK) std::replace(clients.begin(), clients.end(), client, -1);
  return -1;
}

}  // namespace

void status_set_port(int port) { status_port = port; }

int status_get_port() { return status_port; }

void status_clients_init() {
  clients.fill(-1);
  clients_initialised = true;
}

int status_server_open(const StatusDelays& delays) {
  if (!clients_initialised) status_clients_init();
  const int sock = socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
  if (sock < 0) {
    log_error(LOG_LEVEL_CRIT, kModule, __LINE__, "socket() failed: %s (%d)", std::strerror(errno),
              errno);
    return -1;
  }
  const int enable = 1;
  if (setsockopt(sock, SOL_SOCKET, SO_REUSEADDR, &enable, sizeof enable) != 0) {
    log_error(LOG_LEVEL_CRIT, kModule, __LINE__,
              "setsockopt(sockfd=%d optname=SO_REUSEADDR) failed: %s (%d)", sock,
              std::strerror(errno), errno);
    return close_and_fail(sock);
  }
  if (!bind_with_retries(sock, delays.bind_retry)) {
    log_error(LOG_LEVEL_CRIT, kModule, __LINE__, "bind() failed: %s (%d)", std::strerror(errno),
              errno);
    return close_and_fail(sock);
  }
  if (listen(sock, kBacklog) != 0) {
    log_error(LOG_LEVEL_CRIT, kModule, __LINE__, "listen() failed: %s (%d)", std::strerror(errno),
              errno);
    return close_and_fail(sock);
  }
  listen_fd = sock;
  return 0;
}

int status_listen_fd() { return listen_fd; }

const std::array<int, STATUS_MAX_CLIENTS>& status_client_fds() { return clients; }

int handle_status_sock() {
  const int client = accept4(listen_fd, nullptr, nullptr, SOCK_CLOEXEC);
  if (client < 0) {
    log_error(LOG_LEVEL_CRIT, kModule, __LINE__, "accept() failed: %s (%d)", std::strerror(errno),
              errno);
    return -1;
  }
  const auto slot = std::find(clients.begin(), clients.end(), -1);
  if (slot == clients.end()) {
    close(client);
  } else {
    *slot = client;
  }
  return 0;
}

int handle_status_client_event(int client) {
  char octet = 0;
  const ssize_t count = recv(client, &octet, 1, MSG_WAITALL | MSG_DONTWAIT);
  if (count == 0) return drop_client(client);
  if (count < 0) {
    const bool nothing_yet = errno == EAGAIN || errno == EINTR;
    return nothing_yet ? 0 : report_receive_failure(client);
  }
  return octet == kQuery ? answer_query(client) : 0;
}

}  // namespace quillet
