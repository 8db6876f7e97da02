// The words that could stand where something is typed: from the command table, the model, the
// data, and the file system.
#pragma once

#include <vector>

#include "platform/cli/completion.h"

namespace standin::cli {

// Throws Refused, PathError, ConnectionLost, WireError.
std::vector<Candidate> candidates(Server& server, const Typed& typed);

}  // namespace standin::cli
