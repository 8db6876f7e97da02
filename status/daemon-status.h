// Status service: a loopback TCP port on which the daemon says how far it is.
//
// Protocol: each newline octet (0x0a) that a client sends is a query, answered by one octet, the
// low 8 bits of the status; any other octet is ignored. A connection carries any number of queries.
//
// Thread safety: none needed. The server is driven by the transform daemon's event loop only.
#pragma once

#include <array>
#include <chrono>
#include <cstddef>

namespace quillet {

constexpr int STATUS_STARTING = 1;
constexpr int STATUS_RUNNING = 2;
constexpr std::size_t STATUS_MAX_CLIENTS = 10;

// What the port answers; 0 until the daemon starts.
extern int daemon_status;

// Pauses between attempts; production values. Tests shorten them.
struct StatusDelays {
  std::chrono::milliseconds bind_retry{20000};
  std::chrono::milliseconds connect_retry{3000};
  std::chrono::milliseconds query_interval{1000};
};

// TCP port of both sides, 8879 at first.
void status_set_port(int port);
int status_get_port();

// --- server ---------------------------------------------------------------------------------

void status_clients_init();
// Listens on 127.0.0.1. A port in use is tried 16 times. Returns 0, or -1 (logged).
int status_server_open(const StatusDelays& delays = {});
// -1 when not open.
int status_listen_fd();
// One slot for each client, -1 when free.
const std::array<int, STATUS_MAX_CLIENTS>& status_client_fds();
// Accepts one client; one too many is closed at once. Returns 0, or -1 when accept failed (logged).
int handle_status_sock();
// Serves one octet, or the end, of a client. Never blocks: a client that does not take its answer
// is closed. Returns 0, or -1 on a failure (logged).
int handle_status_client_event(int client);

// --- client ---------------------------------------------------------------------------------

// A connected socket, or -1 (logged). A refused connection is tried 10 times.
int connect_to_sts_server(const StatusDelays& delays = {});
// One query. Returns 0 with the status, or -1.
int get_status(int sock, int* status);
// Asks until one of the wanted values is answered: 0; 1 after 15 other answers; 2 when the
// connection or a query failed.
int wait_for_status(const int* wanted, int count, const StatusDelays& delays = {});

}  // namespace quillet
