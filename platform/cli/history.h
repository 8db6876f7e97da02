// The lines of earlier sessions: which of them are kept, and where.
#pragma once

#include <string>

namespace standin::cli {

// $XDG_STATE_HOME/standin-cli/history, or that below ~/.local/state; empty without a home.
// `state_home` and `home` are the environment's variables, null when unset.
std::string history_file(const char* state_home, const char* home);

// Creates the file, mode 0600, with its folders, and narrows the mode of one that is there.
// Answers whether it can be used.
bool prepare_history(const std::string& file);

}  // namespace standin::cli
