// The daemon's connections to the management server.
#pragma once

#include <confd_dp.h>
#include <netinet/in.h>

namespace quillet {

// One for each daemon, alive as long as the process; the daemon context's opaque pointer.
struct DaemonSockets {
  int ctl_sock;
  int worker_sock;
  int maapi_sock;  // -1 when connected without one
};

// Where the server listens: 127.0.0.1 and the port of fill_confd_addr().
extern sockaddr_in confd_addr;

// MAAPI socket of the transform daemon, used by every transform callback; -1 before it connects.
// The hook daemon uses the one of its own DaemonSockets.
extern int maapi_sock;

// The low 16 bits of `port` count.
void fill_confd_addr(int port);

// Connects control, worker and (with_maapi non-zero) MAAPI socket; ends the process on failure.
confd_daemon_ctx* connect_daemon(const sockaddr_in& addr, const char* name, int with_maapi);

DaemonSockets& daemon_sockets(const confd_daemon_ctx* dctx);
DaemonSockets& daemon_sockets(const confd_trans_ctx* tctx);

}  // namespace quillet
