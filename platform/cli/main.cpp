// standin-cli: the northbound client for people and scripts.
#include <unistd.h>

#include <iostream>

#include "batch.h"
#include "prompt.h"

namespace standin::cli {
namespace {

constexpr const char* kClientName = "standin-cli";

// A transaction of its own, committed at once when it wrote.
int run_single(std::uint16_t port, const Words& words) {
  const Call call = parse_command(words);
  if (call.command->batch_only) {
    throw UsageError(words.front() + " stands in a batch or at the prompt");
  }
  const auto access = access_of(call);
  NorthboundSession session(port, kClientName, access);
  Context context{session, std::cout, std::cin};
  const Outcome outcome = call.command->run(context, call);
  if (access == NorthboundSession::Access::write) session.commit();
  std::cout << std::flush;
  if (outcome == Outcome::not_there) return kNotThere;
  return outcome == Outcome::incomplete ? kRefused : kDone;
}

int run_batch_command(std::uint16_t port, const Words& words) {
  bool keep_going = false;
  for (auto word = words.begin() + 1; word != words.end(); ++word) {
    if (*word != "-k") throw UsageError("usage: batch [-k]");
    keep_going = true;
  }
  NorthboundSession session(port, kClientName, NorthboundSession::Access::write);
  Context context{session, std::cout, std::cin};
  return run_batch(context, std::cerr, keep_going);
}

int run(const Words& words) {
  const Arguments arguments = parse_arguments(words);
  if (arguments.help) {
    print_usage(std::cout);
    return kDone;
  }
  if (arguments.command.empty()) {
    if (::isatty(STDIN_FILENO) == 0) throw UsageError("no command; --help lists them");
    NorthboundSession session(arguments.port, kClientName, NorthboundSession::Access::write);
    return run_prompt(session);
  }
  if (arguments.command.front() == "batch") {
    return run_batch_command(arguments.port, arguments.command);
  }
  return run_single(arguments.port, arguments.command);
}

int run_reporting(const Words& words) {
  const auto report = [](const std::exception& e, int status) {
    std::cout << std::flush;
    std::cerr << error_line(e.what()) << std::endl;
    return status;
  };
  try {
    return run(words);
  } catch (const Refused& e) {
    return report(e, kRefused);
  } catch (const PathError& e) {
    return report(e, kRefused);
  } catch (const std::exception& e) {
    return report(e, kUsage);
  }
}

}  // namespace
}  // namespace standin::cli

int main(int argc, char** argv) {
  return standin::cli::run_reporting(standin::cli::Words(argv + 1, argv + argc));
}
