#include "prompt.h"

#include <unistd.h>

#include <cstdlib>
#include <iostream>

#include "batch.h"
#include "candidates.h"
#include "history.h"
#include "interrupt.h"
#include "line-editor.h"
#include "patience.h"
#include "platform/wire/cipher.h"
#include "platform/wire/path.h"

namespace standin::cli {
namespace {

using Keep = LineEditor::Keep;

class Prompt {
 public:
  Prompt(Server& server, ColourWhen colour)
      : server_(server),
        context_{server, std::cout, std::cin, look_of(STDOUT_FILENO, colour)},
        errors_(look_of(STDERR_FILENO, colour)),
        editor_([this](const std::string& before) { return completion(before); }, history()) {}

  int run();

 private:
  static std::string history() {
    const std::string file = history_file(std::getenv("XDG_STATE_HOME"), std::getenv("HOME"));
    return prepare_history(file) ? file : std::string();
  }

  // What cannot be found out, for want of a server say, is not completed.
  Completion completion(const std::string& before) {
    const Typed typed = typed_before(before);
    return complete(typed, candidates(server_, typed));
  }

  Keep keep(const std::string& line);
  Outcome run_command(const std::string& line);
  Outcome run_call(const Call& call);
  bool may_leave();
  void report(const std::string& text, const std::string& path);
  void lost(const std::string& text);

  Server& server_;
  Context context_;
  Look errors_;
  LineEditor editor_;
  bool changed_ = false;  // something was written since the transaction began
};

// A value that was typed for a secret is kept nowhere, and a line that nobody understood could
// hold one.
Keep Prompt::keep(const std::string& line) {
  try {
    const Call call = parse_command(split_words(line));
    const bool values = call.operands.size() > call.command->values_from;
    if (!values || call.command->values_from == kNever) return Keep::file;
    const Description node = server_.session().describe(parse_path(call.operands.front()));
    return node.secret ? Keep::nowhere : Keep::file;
  } catch (const std::exception&) {
    return Keep::session;
  }
}

void Prompt::report(const std::string& text, const std::string& path) {
  std::string line = error_line(text);
  constexpr std::string_view kHead = "error:";
  line = painted(errors_, Ink::error, kHead) + line.substr(kHead.size());
  std::cerr << line << '\n';
  if (!path.empty() && text.find(path) == std::string::npos) {
    std::cerr << painted(errors_, Ink::faint, "  at " + path) << '\n';
  }
  std::cerr << std::flush;
}

void Prompt::lost(const std::string& text) {
  server_.drop();
  report(text + (changed_ ? "; the uncommitted changes are forgotten" : "") +
             "; the next command connects again",
         {});
  changed_ = false;
}

Outcome Prompt::run_call(const Call& call) {
  const Outcome outcome = run_in_batch(context_, call);
  if (!call.command->done.empty()) {
    std::cout << painted(context_.look, Ink::faint, call.command->done) << std::endl;
  }
  if (call.command->ends_transaction) {
    changed_ = false;
  } else if (writes(call)) {
    changed_ = true;
  }
  return outcome;
}

Outcome Prompt::run_command(const std::string& line) {
  std::string path;
  try {
    const Call call = parse_command(split_words(line));
    const bool has_path = call.command->operands.front() == Operand::path;
    if (has_path && !call.operands.empty()) path = call.operands.front();
    return run_call(call);
  } catch (const ConnectionLost& e) {
    lost(e.what());
  } catch (const WireError& e) {
    lost(std::string("the server's answer cannot be read: ") + e.what());
  } catch (const Interrupted& e) {
    report(e.what(), {});
  } catch (const UsageError& e) {
    report(e.what(), {});
  } catch (const std::runtime_error& e) {
    report(e.what(), path);
  }
  return Outcome::done;
}

// Nothing is lost unasked; at the input's end there is nobody to ask.
bool Prompt::may_leave() {
  if (!changed_) return true;
  std::size_t count = 0;
  try {
    count = server_.session().diff().size();
  } catch (const std::exception&) {
    return true;
  }
  if (count == 0) return true;
  const std::string changes = std::to_string(count) + (count == 1 ? " change" : " changes");
  const auto answer = editor_.read(changes + " not committed. Leave and forget? [y/N] ");
  return !answer || answer->starts_with('y') || answer->starts_with('Y');
}

int Prompt::run() {
  server_.session();
  const InterruptCatcher catcher;
  std::cout << "help lists the commands, Tab completes, commit keeps the changes.\n" << std::flush;
  for (;;) {
    clear_interrupt();
    std::optional<std::string> line = editor_.read(changed_ ? "standin*> " : "standin> ");
    if (!line) {
      std::cout << '\n' << std::flush;
      if (may_leave()) return kDone;
      continue;
    }
    if (line->find_first_not_of(" \t") == std::string::npos) continue;
    editor_.remember(*line, keep(*line));
    const Outcome outcome = run_command(*line);
    cleanse(*line);
    if (outcome == Outcome::leave && may_leave()) return kDone;
  }
}

}  // namespace

int run_prompt(Server& server, ColourWhen colour) {
  server.while_waiting(Patience(server.port()));
  return Prompt(server, colour).run();
}

}  // namespace standin::cli
