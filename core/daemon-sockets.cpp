#include "core/daemon-sockets.h"

#include <arpa/inet.h>
#include <confd_maapi.h>
#include <sys/socket.h>

#include <cstdlib>

namespace quillet {

sockaddr_in confd_addr{};
int maapi_sock = -1;

namespace {

const sockaddr* generic(const sockaddr_in& addr) {
  return reinterpret_cast<const sockaddr*>(&addr);
}

int open_socket(const char* failure) {
  const int sock = socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
  if (sock < 0) confd_fatal("%s", failure);
  return sock;
}

int connect_daemon_socket(confd_daemon_ctx* dctx, confd_sock_type kind, const sockaddr_in& addr,
                          const char* failure) {
  const int sock = open_socket(failure);
  if (confd_connect(dctx, sock, kind, generic(addr), sizeof addr) < 0) {
    confd_fatal("Failed to confd_connect() to confd \n");
  }
  return sock;
}

int connect_maapi_socket(const sockaddr_in& addr) {
  const int sock = open_socket("Failed to open maapisocket\n");
  if (maapi_connect(sock, generic(addr), sizeof addr) < 0) {
    confd_fatal("Failed to maapi_connect() to confd \n");
  }
  return sock;
}

}  // namespace

void fill_confd_addr(int port) {
  confd_addr.sin_family = AF_INET;
  confd_addr.sin_addr.s_addr = inet_addr("127.0.0.1");
  confd_addr.sin_port = htons(static_cast<in_port_t>(port));
}

confd_daemon_ctx* connect_daemon(const sockaddr_in& addr, const char* name, int with_maapi) {
  confd_daemon_ctx* dctx = confd_init_daemon(name);
  if (dctx == nullptr) confd_fatal("Failed to initialize confd\n");
  const int ctl = connect_daemon_socket(dctx, CONTROL_SOCKET, addr, "Failed to open ctlsocket\n");
  const int worker =
      connect_daemon_socket(dctx, WORKER_SOCKET, addr, "Failed to open workersocket\n");
  const int maapi = with_maapi != 0 ? connect_maapi_socket(addr) : -1;

  auto* sockets = static_cast<DaemonSockets*>(std::calloc(1, sizeof(DaemonSockets)));
  if (sockets == nullptr) confd_fatal("Failed to malloc");
  *sockets = {.ctl_sock = ctl, .worker_sock = worker, .maapi_sock = maapi};
  dctx->d_opaque = sockets;
  return dctx;
}

DaemonSockets& daemon_sockets(const confd_daemon_ctx* dctx) {
  return *static_cast<DaemonSockets*>(dctx->d_opaque);
}

DaemonSockets& daemon_sockets(const confd_trans_ctx* tctx) { return daemon_sockets(tctx->dx); }

}  // namespace quillet
