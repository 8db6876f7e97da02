// Connecting a caller's socket, and single frames on it. Errors are left in confd_errno.
#pragma once

#include <confd_lib.h>

#include <string>

#include "platform/wire/frame.h"
#include "platform/wire/messages.h"

namespace standin {

// Connects and introduces; gives CONFD_OK and the id that the server assigned.
int connect_and_greet(int sock, const sockaddr* addr, int addrlen, SocketKind kind,
                      std::string_view name, std::uint64_t daemon_id, std::uint64_t& id);

// A request of its operation; elements follow.
FrameWriter request(Op op);

// Sends a whole frame. CONFD_OK, CONFD_EOF when the peer has closed, or CONFD_ERR.
int send_message(int sock, FrameWriter& message);
// Receives one frame's payload, with the same results; nothing is read from it yet.
int receive_payload(int sock, std::string& payload);

// Reads the head of an answer. CONFD_OK: the results follow. CONFD_ERR: the peer refused, with its
// code and text. Throws WireError.
int answer_status(FrameReader& answer);

}  // namespace standin
