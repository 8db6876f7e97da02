#include "batch.h"

#include <iostream>
#include <string>

namespace standin::cli {

Outcome run_in_batch(Context& context, const Call& call) {
  const Outcome outcome = call.command->run(context, call);
  if (call.command->truth) {
    context.out << (outcome == Outcome::done ? "true\n" : "false\n");
  } else if (outcome == Outcome::not_there) {
    context.out << "not there\n";
  }
  context.out << std::flush;
  return outcome;
}

namespace {

// Empty lines and comments do nothing.
Outcome run_line(Context& context, const std::string& line) {
  const std::size_t begin = line.find_first_not_of(" \t");
  if (begin == std::string::npos || line[begin] == '#') return Outcome::done;
  const Call call = parse_command(split_words(line));
  if (call.command->stands == Stands::at_prompt) {
    throw UsageError(std::string(call.command->name) + " stands at the prompt");
  }
  return run_in_batch(context, call);
}

}  // namespace

int run_batch(Context& context, std::ostream& errors, bool keep_going) {
  int status = kDone;
  context.session();  // the transaction begins before the first line is read
  // The text of what was refused, if anything was.
  const auto attempt = [&](auto&& action) -> std::string {
    try {
      action();
      return {};
    } catch (const UsageError& e) {
      return error_line(e.what());
    } catch (const PathError& e) {
      return error_line(e.what());
    } catch (const Refused& e) {
      return error_line(e.what());
    }
  };
  for (std::string line; std::getline(context.in, line);) {
    const std::string error = attempt([&] {
      if (run_line(context, line) == Outcome::incomplete) status = kRefused;
    });
    if (error.empty()) continue;
    status = kRefused;
    if (!keep_going) {
      errors << error << std::endl;
      context.session().abort();
      return status;
    }
    context.out << error << std::endl;
  }
  const std::string error = attempt([&] { context.session().commit(); });
  if (error.empty()) return status;
  errors << error << std::endl;
  return kRefused;
}

}  // namespace standin::cli
