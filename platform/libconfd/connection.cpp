#include "connection.h"

#include <errno.h>
#include <netinet/tcp.h>
#include <poll.h>

#include "error.h"
#include "op_names.h"
#include "platform/wire/cipher.h"
#include "trace.h"

namespace standin {
namespace {

// Gives 0 or an errno. An interrupted connect goes on by itself and is waited for.
int connect_socket(int sock, const sockaddr* addr, int addrlen) {
  if (::connect(sock, addr, static_cast<socklen_t>(addrlen)) == 0) return 0;
  if (errno != EINTR && errno != EINPROGRESS) return errno;
  pollfd done{sock, POLLOUT, 0};
  while (::poll(&done, 1, -1) < 0)
    if (errno != EINTR) return errno;
  int error = 0;
  socklen_t size = sizeof error;
  if (::getsockopt(sock, SOL_SOCKET, SO_ERROR, &error, &size) != 0) return errno;
  return error;
}

// Requests are small and each waits for its answer: nothing is gained by collecting them.
void send_at_once(int sock, const sockaddr* addr) {
  if (addr->sa_family != AF_INET && addr->sa_family != AF_INET6) return;
  const int on = 1;
  ::setsockopt(sock, IPPROTO_TCP, TCP_NODELAY, &on, sizeof on);
}

int io_failure(IoResult result, const char* attempted) {
  const int error = errno;
  if (result == IoResult::closed) {
    fail(CONFD_ERR_OS, "connection closed by the server");
    return CONFD_EOF;
  }
  if (result == IoResult::error && error == EMSGSIZE)
    return fail(CONFD_ERR_PROTOCOL, "frame longer than any message");
  if (result == IoResult::timeout) return fail_os(attempted, ETIMEDOUT);
  if (error == EPIPE || error == ECONNRESET) {
    fail_os(attempted, error);
    return CONFD_EOF;
  }
  return fail_os(attempted, error);
}

}  // namespace

FrameWriter request(Op op) {
  FrameWriter w;
  w.put(std::uint64_t{static_cast<std::uint16_t>(op)});
  return w;
}

int send_message(int sock, FrameWriter& message) {
  std::string frame = message.take();
  const std::size_t size = frame.size();
  const IoResult sent = send_frame(sock, frame);
  const int error = errno;
  cleanse(frame);  // passwords travel as text
  errno = error;
  if (sent != IoResult::ok) return io_failure(sent, "send");
  if (tracing(CONFD_PROTO_TRACE))
    trace_line("socket " + std::to_string(sock) + " sent " + std::to_string(size) + " octets");
  return CONFD_OK;
}

int receive_payload(int sock, std::string& payload) {
  if (const IoResult got = recv_frame(sock, payload); got != IoResult::ok)
    return io_failure(got, "receive");
  if (tracing(CONFD_PROTO_TRACE))
    trace_line("socket " + std::to_string(sock) + " received " +
               std::to_string(payload.size() + kFrameHeader) + " octets");
  return CONFD_OK;
}

int answer_status(FrameReader& answer) {
  const std::uint64_t code = answer.number();
  if (code == 0) return CONFD_OK;
  const std::string text = answer.text();
  if (code > CONFD_ERR_CONFLICT) throw WireError("answer with an unknown error code");
  return fail(static_cast<int>(code), text);
}

int connect_and_greet(int sock, const sockaddr* addr, int addrlen, SocketKind kind,
                      std::string_view name, std::uint64_t daemon_id, std::uint64_t& id) {
  if (addr == nullptr) return fail(CONFD_ERR_APIUSE, "no address to connect to");
  if (const int error = connect_socket(sock, addr, addrlen); error != 0)
    return fail_os("connect", error);
  send_at_once(sock, addr);
  FrameWriter hello = request(Op::hello);
  hello.put(kWireVersion).put(std::uint64_t(kind)).put(name).put(daemon_id);
  std::string payload;
  int result = send_message(sock, hello);
  if (result == CONFD_OK) result = receive_payload(sock, payload);
  if (result != CONFD_OK) return CONFD_ERR;
  FrameReader answer(payload);
  if (answer_status(answer) != CONFD_OK) return CONFD_ERR;
  id = answer.number();
  return CONFD_OK;
}

}  // namespace standin
