// Values that are not to be seen on the screen.
#pragma once

#include <iosfwd>
#include <string>

namespace standin::cli {

// Reads one line, as it stands. When standard input is a terminal, `prompt` is shown there and
// nothing is echoed. Throws UsageError at the end of the input. The caller cleanses the text.
std::string read_secret(std::istream& in, const char* prompt);

}  // namespace standin::cli
