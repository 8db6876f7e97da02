// Types of leaves: libyang's in our terms, and what they admit, as a sentence.
#pragma once

#include <string>

#include "schema_impl.h"

namespace standin {

const lysc_type* libyang_type(const lysc_node* leaf);

// On one line: YANG texts are broken and indented as their file is. Null is no text.
std::string flowed(const char* text);

// Sets type, type_name and labels. `octets`: the leaf is annotated so; `oid`: a leaf type that
// only object identifiers have, or null. Throws std::runtime_error for a type that no value of the
// wire can hold.
void describe_type(Node& node, const lysc_type* type, bool octets, const lysc_type* oid);

// What is needed, e.g. "a whole number of 0 to 65535 is needed"; empty for a type that has nothing
// of the kind to say (strings, object identifiers).
std::string requirement(const Node& node);

// Lengths of strings and octets, counted in octets. A string's length in the model bounds its
// octets from above too. Empty when the size is admitted, else what is needed.
std::string size_problem(const Node& node, std::size_t octets);

// What a leaf admits, for people: "1 to 32 octets", "a whole number of 0 to 65535"; empty when
// anything goes.
std::string admitted(const Node& node);

// Patterns of a string, those of the types that it is derived from included.
std::size_t pattern_count(const Node& node);

// The sentence of a pattern of the type, when `message` is one.
bool is_pattern_message(const Node& node, std::string_view message);

}  // namespace standin
