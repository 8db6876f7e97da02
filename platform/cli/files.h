// Files that a command names.
#pragma once

#include <string>

namespace standin::cli {

// What the file holds; its buffer is no other's. Throws Refused with the name and the reason.
std::string read_file(const std::string& name);
// The same without the newline at its end. The caller cleanses it.
std::string read_value_file(const std::string& name);

}  // namespace standin::cli
