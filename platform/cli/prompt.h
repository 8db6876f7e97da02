// The interactive prompt: a transaction that stays open from command to command.
#pragma once

#include "platform/cli/commands.h"

namespace standin::cli {

// Reads commands from the terminal until its end or "quit". Returns an ExitStatus. Throws
// ConnectionLost when there is no server to begin with.
int run_prompt(Server& server, ColourWhen colour);

}  // namespace standin::cli
