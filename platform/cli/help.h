// Help: the commands, one command, and what the model says of a node.
#pragma once

#include <iosfwd>

#include "platform/cli/commands.h"

namespace standin::cli {

// The options of the program, the whole table of commands, and a first change.
void print_overview(std::ostream& out, Look look);
void print_command_help(std::ostream& out, const Command& command, Look look);
// `width`: columns of the terminal.
void print_description(std::ostream& out, const Description& node, Look look,
                       std::size_t width = 100);

// help [COMMAND | PATH]
Outcome run_help(Context& context, const Call& call);

}  // namespace standin::cli
