// Commands one a line, in one transaction.
#pragma once

#include <iosfwd>

#include "platform/cli/commands.h"

namespace standin::cli {

// Runs one line: empty lines and comments do nothing. Prints the answer in a batch's form.
// Throws UsageError, PathError, Refused, ConnectionLost, WireError.
Outcome run_line(Context& context, const std::string& line);

// Runs the lines of `context.in` and commits at their end; answers are flushed one by one.
// `keep_going`: a refused command's text stands in the place of its answer and the rest goes on;
// otherwise the first one ends the batch, its text on `errors`. Returns an ExitStatus.
// Throws ConnectionLost, WireError.
int run_batch(Context& context, std::ostream& errors, bool keep_going);

}  // namespace standin::cli
