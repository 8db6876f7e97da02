// Answers as text: words, trees for people, JSON for programs.
#pragma once

#include <iosfwd>
#include <string_view>
#include <vector>

#include "platform/cli/arguments.h"
#include "platform/client/northbound.h"

namespace standin::cli {

// For people, a secret that is there; kSecretMask stands for it otherwise.
inline constexpr std::string_view kSecretSet = "(set)";

// One line, blanks between, quoted by the rule for words.
void print_words(std::ostream& out, const Words& words);

// Indented, a node a line; secrets masked. Aligned: the values of siblings in one column.
void print_tree(std::ostream& out, const std::vector<ShownNode>& nodes, Look look);

// RFC 7951, ended by a newline. Nodes whose read was refused are left out.
void print_json(std::ostream& out, const std::vector<ShownNode>& nodes);
// RFC 8259, section 7.
std::string json_string(std::string_view text);

void print_diff(std::ostream& out, const std::vector<Change>& changes, Look look);
void print_status(std::ostream& out, const ServerState& state);

}  // namespace standin::cli
