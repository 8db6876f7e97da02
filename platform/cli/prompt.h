// The interactive prompt.
#pragma once

#include <string>

#include "platform/cli/commands.h"

namespace standin::cli {

// What stands before the cursor, and so what may follow.
struct CompletionPlace {
  enum class Kind : std::uint8_t { nothing, command, path, value } kind = Kind::nothing;
  std::string command;
  std::string path;  // as far as it is written; whole for a value
};
CompletionPlace completion_place(const std::string& before_cursor);

// Reads commands from the terminal until its end, "quit" or "exit". Returns an ExitStatus.
// Throws ConnectionLost, WireError.
int run_prompt(NorthboundSession& session);

}  // namespace standin::cli
