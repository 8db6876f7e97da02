// What is said on one connection, from the first frame to the last.
#pragma once

#include <chrono>
#include <cstdint>

#include "platform/standin/engine/engine.h"

namespace standin {

inline constexpr std::chrono::seconds kHelloTimeout{10};

// Serves the connection on the calling thread until it ends, or until a daemon has taken it over.
// Never throws. What cannot be read as a message ends this connection and nothing else.
void serve_connection(Engine& engine, const SocketPtr& socket, std::uint16_t port);

}  // namespace standin
