#include <confd_cdb.h>
#include <unistd.h>

#include "connection.h"
#include "error.h"
#include "trace.h"

using namespace standin;

int cdb_connect(int sock, enum cdb_sock_type type, const struct sockaddr* addr, int addrlen) {
  return guarded([&] {
    if (type != CDB_DATA_SOCKET) return fail(CONFD_ERR_APIUSE, "no such kind of CDB socket");
    std::uint64_t id = 0;
    return connect_and_greet(sock, addr, addrlen, SocketKind::cdb, program_name(), 0, id);
  });
}

int cdb_get_phase(int sock, struct cdb_phase* phase) {
  return guarded([&] {
    FrameWriter question = request(Op::cdb_phase);
    std::string payload;
    if (send_message(sock, question) != CONFD_OK) return CONFD_ERR;
    if (receive_payload(sock, payload) != CONFD_OK) return CONFD_ERR;
    FrameReader answer(payload);
    if (answer_status(answer) != CONFD_OK) return CONFD_ERR;
    phase->phase = static_cast<int>(answer.number());
    phase->flags = static_cast<int>(answer.number());
    return CONFD_OK;
  });
}

int cdb_close(int sock) { return ::close(sock) == 0 ? CONFD_OK : fail_os("close", errno); }
