#include "core/initial-config.h"

#include <confd_cdb.h>
#include <confd_maapi.h>
#include <sys/socket.h>

#include "core/daemon-sockets.h"
#include "transforms/engine-id.h"

namespace quillet {
namespace {

// Phase and flags; both zero, which means nothing to do, when they cannot be read.
cdb_phase read_start_phase() {
  const int sock = socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
  if (sock < 0) confd_fatal("failed to open new socket");
  if (cdb_connect(sock, CDB_DATA_SOCKET, reinterpret_cast<const sockaddr*>(&confd_addr),
                  sizeof confd_addr) != CONFD_OK) {
    confd_fatal("failed to connect to CDB");
  }
  cdb_phase phase{};
  cdb_get_phase(sock, &phase);
  cdb_close(sock);
  return phase;
}

}  // namespace

void initial_config_setup() {
  const cdb_phase phase = read_start_phase();
  if (phase.phase != 0 || (phase.flags & CDB_FLAG_INIT) == 0) return;
  int thandle = 0;
  if (maapi_attach_init(maapi_sock, &thandle) != CONFD_OK) {
    confd_fatal("failed to attach the initial transaction - no initial config\n");
  }
  engine_id_setup_if_configured(maapi_sock, thandle);
}

}  // namespace quillet
