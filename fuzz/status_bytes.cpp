// Any octets from a status client: one answer for each newline, none for the rest.
#include <sys/socket.h>
#include <unistd.h>

#include <algorithm>
#include <cstdint>
#include <cstdlib>

#include "status/daemon-status.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  size = std::min<std::size_t>(size, 4096);
  int pair[2];
  if (::socketpair(AF_UNIX, SOCK_STREAM, 0, pair) != 0) return 0;
  quillet::status_clients_init();
  for (std::size_t i = 0; i < size; ++i) {
    if (::send(pair[1], &data[i], 1, MSG_NOSIGNAL) != 1) std::abort();
    if (quillet::handle_status_client_event(pair[0]) != 0) std::abort();
    char answer = 0;
    const bool answered = ::recv(pair[1], &answer, 1, MSG_DONTWAIT) == 1;
    if (answered != (data[i] == '\n')) std::abort();
  }
  ::close(pair[1]);
  if (quillet::handle_status_client_event(pair[0]) != 0) std::abort();
  return 0;
}
