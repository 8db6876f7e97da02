#include "printing.h"

#include <ostream>

#include "platform/wire/messages.h"
#include "platform/wire/path.h"

namespace standin::cli {
namespace {

std::string value_text(const std::string& value, Look look) {
  if (!look.aligned) return quote_word(value);
  return value == kSecretMask ? std::string(kSecretSet) : visible(quote_word(value));
}

Ink ink_of(const Change& change) {
  if (change.kind == '+') return Ink::added;
  return change.kind == '-' ? Ink::removed : Ink::changed;
}

}  // namespace

void print_words(std::ostream& out, const Words& words) {
  const char* between = "";
  for (const std::string& word : words) {
    out << between << quote_word(word);
    between = " ";
  }
  out << '\n';
}

void print_diff(std::ostream& out, const std::vector<Change>& changes, Look look) {
  for (const Change& change : changes) {
    std::string line = change.kind + (' ' + change.path);
    if (change.before) line += ' ' + value_text(*change.before, look);
    if (change.before && change.after) line += " ->";
    if (change.after) line += ' ' + value_text(*change.after, look);
    out << painted(look, ink_of(change), line) << '\n';
  }
}

void print_status(std::ostream& out, const ServerState& state) {
  out << "phase " << state.phase << "\nport " << state.port << '\n';
  for (const DaemonState& daemon : state.daemons) {
    out << "daemon " << quote_word(daemon.name) << (daemon.connected ? " connected" : " gone");
    for (const std::string& callpoint : daemon.callpoints) out << ' ' << callpoint;
    out << '\n';
  }
  out << "transactions " << state.transactions << '\n';
}

}  // namespace standin::cli
