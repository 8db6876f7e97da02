// standin-cli: the northbound client for people and scripts.
#include <unistd.h>

#include <csignal>
#include <cstdio>
#include <iostream>

#include "batch.h"
#include "help.h"
#include "interrupt.h"
#include "patience.h"
#include "platform/wire/cipher.h"
#include "prompt.h"

namespace standin::cli {
namespace {

// A transaction of its own, committed at once when it wrote.
int run_single(const Arguments& arguments) {
  const Words& words = arguments.command;
  const Call call = parse_command(words);
  if (call.command->stands != Stands::anywhere) {
    throw UsageError(words.front() + " stands in a batch or at the prompt");
  }
  Server server(arguments.port, access_of(call));
  if (::isatty(STDERR_FILENO) != 0) server.while_waiting(Patience(arguments.port));
  Context context{server, std::cout, std::cin, look_of(STDOUT_FILENO, arguments.colour)};
  const Outcome outcome = call.command->run(context, call);
  if (writes(call)) server.session().commit();
  std::cout << std::flush;
  if (outcome == Outcome::not_there) return kNotThere;
  return outcome == Outcome::incomplete ? kRefused : kDone;
}

int run_batch_command(const Arguments& arguments) {
  const Words& words = arguments.command;
  bool keep_going = false;
  for (auto word = words.begin() + 1; word != words.end(); ++word) {
    if (*word != "-k") throw UsageError("usage: batch [-k]");
    keep_going = true;
  }
  Server server(arguments.port, Server::Access::write);
  Context context{server, std::cout, std::cin, look_of(STDOUT_FILENO, arguments.colour)};
  return run_batch(context, std::cerr, keep_going);
}

int run(const Words& words) {
  const Arguments arguments = parse_arguments(words);
  if (arguments.help) {
    print_overview(std::cout, look_of(STDOUT_FILENO, arguments.colour));
    return kDone;
  }
  if (arguments.command.empty()) {
    if (::isatty(STDIN_FILENO) == 0) throw UsageError("no command; --help lists them");
    Server server(arguments.port, Server::Access::write);
    return run_prompt(server, arguments.colour);
  }
  if (arguments.command.front() == "batch") {
    return run_batch_command(arguments);
  }
  return run_single(arguments);
}

// Passwords come through standard input: no copy of it outlives the program's work.
class InputBuffer {
 public:
  InputBuffer() { std::setvbuf(stdin, buffer().data(), _IOFBF, buffer().size()); }
  ~InputBuffer() { cleanse(buffer()); }
  InputBuffer(const InputBuffer&) = delete;
  InputBuffer& operator=(const InputBuffer&) = delete;

 private:
  // The stream outlives us.
  static std::string& buffer() {
    static auto* text = new std::string(BUFSIZ, '\0');
    return *text;
  }
};

int run_reporting(const Words& words) {
  const auto report = [](const std::exception& e, int status) {
    std::cout << std::flush;
    std::cerr << error_line(e.what()) << std::endl;
    return status;
  };
  try {
    return run(words);
  } catch (const Interrupted&) {
    // The terminal is as it was; now the end that whoever started us expects.
    std::raise(SIGINT);
    return kUsage;
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
  const standin::cli::InputBuffer input;
  return standin::cli::run_reporting(standin::cli::Words(argv + 1, argv + argc));
}
