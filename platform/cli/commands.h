// The commands: what each is called, takes and does. Parsing, help and completion read this table.
#pragma once

#include <array>
#include <iosfwd>
#include <limits>
#include <span>
#include <string_view>

#include "platform/cli/arguments.h"
#include "platform/cli/server.h"

namespace standin::cli {

enum class Outcome : std::uint8_t {
  done,
  not_there,   // nothing was printed
  incomplete,  // a part of the answer was refused; the rest was printed
  leave,       // the prompt ends
};

inline constexpr std::size_t kNever = std::numeric_limits<std::size_t>::max();

struct Command;

// A command with its words sorted out.
struct Call {
  const Command* command = nullptr;
  bool option = false;         // the command's own option was given
  std::string option_operand;  // what stood behind it
  Words operands;
};

// Where a command takes its answers to, and a secret from.
struct Context {
  Server& server;
  std::ostream& out;
  std::istream& in;
  Look look = {};

  NorthboundSession& session() const { return server.session(); }
};

// What stands in an operand's place; completion offers what fits.
enum class Operand : std::uint8_t { none, path, value, choice, attribute, file, topic };

struct Option {
  std::string_view name = {};
  std::string_view operand = {};  // it has one, and stands before the first operand of the command
};

// Where a command may stand.
enum class Stands : std::uint8_t { anywhere, in_transaction, at_prompt };

struct Command {
  std::string_view name;
  std::string_view alias = {};
  std::string_view usage = {};  // what follows the name
  std::string_view help;
  std::string_view more = {};            // further sentences of its own help
  std::string_view done = {};            // what the prompt says when it is done
  std::size_t least = 0, most = 0;       // operands
  std::array<Operand, 3> operands = {};  // the last one repeats
  std::size_t writes_from = kNever;      // with so many operands it writes
  std::size_t values_from = kNever;      // operands from here on stand for themselves
  Option option = {};                    // the only one it has
  bool needs_transaction = true;
  bool ends_transaction = false;
  Stands stands = Stands::anywhere;
  bool truth = false;  // in a batch the outcome is answered as true or false
  Outcome (*run)(Context&, const Call&) = nullptr;
};

std::span<const Command> commands();
// By name or alias; null when there is none.
const Command* find_command(std::string_view name);

// Finds the command of words.front() and sorts its words. Throws UsageError.
Call parse_command(const Words& words);

NorthboundSession::Access access_of(const Call& call);
inline bool writes(const Call& call) { return access_of(call) == Server::Access::write; }

// The text on one line, control characters blanked.
std::string error_line(std::string_view text);

}  // namespace standin::cli
