// The commands: what each is called, takes and does.
#pragma once

#include <iosfwd>
#include <limits>
#include <span>
#include <string_view>

#include "platform/cli/arguments.h"
#include "platform/client/northbound.h"

namespace standin::cli {

enum class Outcome : std::uint8_t {
  done,
  not_there,   // nothing was printed
  incomplete,  // a part of the answer was refused; the rest was printed
};

inline constexpr std::size_t kNever = std::numeric_limits<std::size_t>::max();

struct Command;

// A command with its words sorted out.
struct Call {
  const Command* command = nullptr;
  bool option = false;  // the command's own option was given
  Words operands;
};

// Where a command takes its answers to, and a secret from.
struct Context {
  NorthboundSession& session;
  std::ostream& out;
  std::istream& in;
};

struct Command {
  std::string_view name;
  std::string_view usage;  // what follows the name
  std::string_view help;
  std::size_t least = 0, most = 0;   // operands
  std::size_t writes_from = kNever;  // with so many operands it writes
  std::size_t values_from = kNever;  // operands from here on stand for themselves
  std::string_view option = {};      // the only one it has
  bool needs_transaction = true;
  bool batch_only = false;
  bool truth = false;  // in a batch the outcome is answered as true or false
  Outcome (*run)(Context&, const Call&) = nullptr;
};

std::span<const Command> commands();

// Finds the command of words.front() and sorts its words. Throws UsageError.
Call parse_command(const Words& words);

NorthboundSession::Access access_of(const Call& call);

// The whole table, one command a line.
void print_usage(std::ostream& out);

// The text on one line, control characters blanked.
std::string error_line(std::string_view text);

}  // namespace standin::cli
