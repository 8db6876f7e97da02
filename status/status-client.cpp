// Client side of the status service, for the short-lived process that waits for a daemon.
#include <netdb.h>
#include <sys/socket.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <memory>
#include <thread>

#include "core/log.h"
#include "status/daemon-status.h"

namespace quillet {
namespace {

constexpr char kModule[] = "daemon-status";
constexpr int kConnectAttempts = 10;
constexpr int kQueryAttempts = 15;
constexpr char kQuery = '\n';

struct AddrInfoDeleter {
  void operator()(addrinfo* info) const { freeaddrinfo(info); }
};
using AddrInfoPtr = std::unique_ptr<addrinfo, AddrInfoDeleter>;

// Null when the address cannot be resolved (logged).
AddrInfoPtr resolve_server() {
  std::array<char, 20> service{};
  std::snprintf(service.data(), service.size(), "%d", status_get_port());
  addrinfo hints{};
  hints.ai_family = AF_INET;
  hints.ai_socktype = SOCK_STREAM;
  addrinfo* result = nullptr;
  const int code = getaddrinfo("127.0.0.1", service.data(), &hints, &result);
  if (code == 0) return AddrInfoPtr(result);
  if (code == EAI_SYSTEM) {
    log_error(LOG_LEVEL_CRIT, kModule, __LINE__, "getaddrinfo() failed: %s (%d)",
              std::strerror(errno), errno);
  }
  log_error(LOG_LEVEL_CRIT, kModule, __LINE__, "getaddrinfo() failed: %s (%d)", gai_strerror(code),
            code);
  return nullptr;
}

// A daemon that is about to start does not listen yet.
bool connect_with_retries(int sock, const addrinfo& server, std::chrono::milliseconds pause) {
  for (int refused = 0; connect(sock, server.ai_addr, server.ai_addrlen) != 0;) {
    if (errno != ECONNREFUSED) {
      log_error(LOG_LEVEL_CRIT, kModule, __LINE__, "connect() failed: %s (%d)",
                std::strerror(errno), errno);
      return false;
    }
    if (++refused == kConnectAttempts) {
      log_error(LOG_LEVEL_CRIT, kModule, __LINE__, "connect(): Connection refused (%d). Giving up.",
                errno);
      return false;
    }
    std::this_thread::sleep_for(pause);
  }
  return true;
}

int ask_until(int sock, const int* wanted, int count, std::chrono::milliseconds pause) {
  for (int answers = 0;;) {
    int status = 0;
    if (get_status(sock, &status) != 0) {
      log_error(LOG_LEVEL_CRIT, kModule, __LINE__, "get_status() failed");
      return 2;
    }
    if (std::find(wanted, wanted + count, status) != wanted + count) return 0;
    if (++answers == kQueryAttempts) return 1;
    std::this_thread::sleep_for(pause);
  }
}

}  // namespace

int connect_to_sts_server(const StatusDelays& delays) {
  const AddrInfoPtr server = resolve_server();
  if (server == nullptr) return -1;
  const int sock = socket(server->ai_family, server->ai_socktype, server->ai_protocol);
  if (sock < 0) {
    log_error(LOG_LEVEL_CRIT, kModule, __LINE__, "socket() failed: %s (%d)", std::strerror(errno),
              errno);
    return -1;
  }
  if (connect_with_retries(sock, *server, delays.connect_retry)) return sock;
  close(sock);
  return -1;
}

int get_status(int sock, int* status) {
  ssize_t count = 0;
  do {
    count = send(sock, &kQuery, 1, MSG_NOSIGNAL);
  } while (count == 0);
  if (count < 0) {
    log_error(LOG_LEVEL_CRIT, kModule, __LINE__, "send() failed: %s (%d)", std::strerror(errno),
              errno);
    return -1;
  }
  unsigned char octet = 0;
  count = recv(sock, &octet, 1, 0);
  if (count < 0) {
    log_error(LOG_LEVEL_CRIT, kModule, __LINE__, "recv() failed: %s (%d)", std::strerror(errno),
              errno);
  }
  if (count <= 0) return -1;
  *status = octet;
  return 0;
}

int wait_for_status(const int* wanted, int count, const StatusDelays& delays) {
  const int sock = connect_to_sts_server(delays);
  if (sock < 0) {
    log_error(LOG_LEVEL_CRIT, kModule, __LINE__, "connect_to_sts_server() failed");
    return 2;
  }
  const int result = ask_until(sock, wanted, count, delays.query_interval);
  if (close(sock) != 0) {
    log_error(LOG_LEVEL_CRIT, kModule, __LINE__, "close() failed: %s (%d)", std::strerror(errno),
              errno);
  }
  return result;
}

}  // namespace quillet
