// A line's words, sorted out by the table of commands.
#include <algorithm>

#include "commands.h"
#include "platform/wire/nearest.h"

namespace standin::cli {
namespace {

bool is_option(const Command& command, const Words& operands, const std::string& word) {
  if (command.option.name.empty() || word != command.option.name) return false;
  return command.option.operand.empty() ? operands.size() <= command.values_from : operands.empty();
}

// Its option stands among the operands, so that "--" may be needed there.
bool is_flagged(const Command& command) {
  return !command.option.name.empty() && command.option.operand.empty();
}

std::string usage_of(const Command& command) {
  return "usage: " + std::string(command.name) + (command.usage.empty() ? "" : " ") +
         std::string(command.usage);
}

[[noreturn]] void unknown_command(const std::string& name) {
  if (name == "batch") throw UsageError("batch is for the shell: here each line is one already");
  std::vector<std::string> names;
  for (const Command& command : commands()) names.emplace_back(command.name);
  const std::string meant = nearest(name, names);
  throw UsageError("unknown command " + quote_word(name) +
                   (meant.empty() ? "; help lists them" : ": did you mean " + meant + "?"));
}

}  // namespace

const Command* find_command(std::string_view name) {
  const auto all = commands();
  const auto found = std::ranges::find_if(
      all, [&](const Command& c) { return c.name == name || c.alias == name; });
  return found == all.end() || name.empty() ? nullptr : &*found;
}

Call parse_command(const Words& words) {
  const Command* command = find_command(words.front());
  if (command == nullptr) unknown_command(words.front());
  Call call{command, false, {}, {}};
  bool ended = false;  // by "--"
  for (auto word = words.begin() + 1; word != words.end(); ++word) {
    const std::size_t place = call.operands.size();
    const bool is_value = place >= command->values_from;
    if (!ended && is_option(*command, call.operands, *word)) {
      call.option = true;
      if (command->option.operand.empty()) continue;
      if (++word == words.end())
        throw UsageError(std::string(command->option.name) + " needs a file");
      call.option_operand = *word;
      continue;
    }
    const bool may_end = !is_value || (place == command->values_from && is_flagged(*command));
    if (!ended && may_end && *word == "--") {
      ended = true;
      continue;
    }
    if (!ended && !is_value && word->size() > 1 && word->front() == '-') {
      throw UsageError("unknown option " + *word + ": " + usage_of(*command));
    }
    call.operands.push_back(*word);
  }
  if (call.operands.size() < command->least || call.operands.size() > command->most) {
    throw UsageError(usage_of(*command));
  }
  return call;
}

NorthboundSession::Access access_of(const Call& call) {
  if (!call.command->needs_transaction) return NorthboundSession::Access::none;
  const bool writes = call.operands.size() >= call.command->writes_from ||
                      (call.option && call.command->writes_from != kNever);
  return writes ? NorthboundSession::Access::write : NorthboundSession::Access::read;
}

std::string error_line(std::string_view text) {
  while (text.ends_with('\n')) text.remove_suffix(1);
  std::string line = "error: ";
  for (const char c : text) {
    line += static_cast<unsigned char>(c) < 0x20 || c == 0x7f ? ' ' : c;
  }
  return line;
}

}  // namespace standin::cli
