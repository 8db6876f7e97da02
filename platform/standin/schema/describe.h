// What people are told of a node: its kind, what it takes, and what stands below.
#pragma once

#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "schema.h"

namespace standin {

std::string_view kind_of(const Node& node);

// "empty", "enumeration", "ip-address"...
std::string type_of(const Node& node);
// What a leaf admits, as a sentence's part; empty when anything goes.
std::string admitted_of(const Node& node);
std::string_view units_of(const Node& node);

// What may be written: an enumeration's labels, true and false; each with its description.
std::vector<std::pair<std::string, std::string>> labels_of(const Node& node);

// Of a choice that the node holds.
std::string description_of(const Choice& choice);

}  // namespace standin
