// Reads all that the agent is configured with, over MAAPI, in one read transaction.
#pragma once

#include <cstdint>
#include <stdexcept>

#include "rows.h"

namespace standin::agent {

// The server was reached, and a read failed.
struct ReadError : std::runtime_error {
  using std::runtime_error::runtime_error;
};

// From the server on 127.0.0.1:`port`. Throws ConnectionLost when there is none, ReadError.
Rows read_rows(std::uint16_t port);

}  // namespace standin::agent
