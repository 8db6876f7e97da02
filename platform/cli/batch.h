// Commands one a line, in one transaction.
#pragma once

#include <iosfwd>

#include "platform/cli/commands.h"

namespace standin::cli {

// Runs a command and prints its answer in a batch's form, flushed: what is not there is an answer.
// Throws UsageError, PathError, Refused, ConnectionLost, WireError.
Outcome run_in_batch(Context& context, const Call& call);

// Runs the lines of `context.in` and commits at their end; answers are flushed one by one.
// `keep_going`: a refused command's text stands in the place of its answer and the rest goes on;
// otherwise the first one ends the batch, its text on `errors`. Returns an ExitStatus.
// Throws ConnectionLost, WireError.
int run_batch(Context& context, std::ostream& errors, bool keep_going);

}  // namespace standin::cli
