// What may come next in a path that is being typed, and what a node is.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "platform/standin/engine/transaction.h"

namespace standin {

// Candidates for the last word of "/snmp:snmp/comm", "/snmp:snmp/community{pub" (keys that there
// are), or, after a blank behind a whole path, for its value. Whole words that begin with what is
// there, unquoted; none for what cannot be read.
std::vector<std::string> complete(Transaction& t, const Schema& schema, std::string_view so_far);

// Labels of an enumeration, the values of a boolean, the choices that an entry or container holds.
std::vector<std::string> labels_of(const Node& node);
std::string kind_of(const Node& node);

}  // namespace standin
