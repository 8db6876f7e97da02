// Values that are not to be seen on the screen.
#pragma once

#include <iosfwd>
#include <string>

namespace standin::cli {

// The value of a secret: on a terminal typed twice without echo, after a line that names it;
// otherwise the next line of `in`, as it stands. The caller cleanses it. Throws UsageError when
// there is none or the two differ, Interrupted for Ctrl-C.
std::string read_secret(std::istream& in, const std::string& name);

}  // namespace standin::cli
