#include "help.h"

#include <algorithm>
#include <iomanip>
#include <iostream>

#include "platform/wire/nearest.h"

namespace standin::cli {
namespace {

constexpr std::string_view kIndent = "  ";

std::string padded(std::string_view text, std::size_t width) {
  std::string out(text);
  if (out.size() < width) out.append(width - out.size(), ' ');
  return out;
}

// The text from column `at` on, broken at blanks so that it stays within the width.
void print_flowed(std::ostream& out, std::string_view text, std::size_t at, std::size_t width) {
  std::size_t column = at;
  bool first = true;
  while (!text.empty()) {
    const std::size_t end = std::min(text.find(' '), text.size());
    const std::string_view word = text.substr(0, end);
    text.remove_prefix(std::min(end + 1, text.size()));
    if (!first && column + 1 + word.size() > width) {
      out << '\n' << std::string(at, ' ');
      column = at;
      first = true;
    }
    out << (first ? "" : " ") << word;
    column += word.size() + (first ? 0 : 1);
    first = false;
  }
  out << '\n';
}

std::string synopsis(const Command& command) {
  std::string text(command.name);
  if (!command.usage.empty()) text.append(" ").append(command.usage);
  return text;
}

// One line of a table: name, and what is said of it.
struct Row {
  std::string name;
  std::string note;  // between the two
  std::string text;
};

void print_rows(std::ostream& out, const std::vector<Row>& rows, Look look, std::size_t width,
                std::size_t indent) {
  std::size_t names = 0, notes = 0;
  for (const Row& row : rows) {
    names = std::max(names, row.name.size());
    notes = std::max(notes, row.note.size());
  }
  const std::size_t gap = notes == 0 ? 2 : 4;
  for (const Row& row : rows) {
    out << std::string(indent, ' ') << painted(look, Ink::key, padded(row.name, names)) << "  ";
    if (notes > 0) out << painted(look, Ink::faint, padded(row.note, notes)) << "  ";
    print_flowed(out, row.text, indent + names + notes + gap, width);
  }
}

std::string upper(std::string text) {
  for (char& c : text) c = c >= 'a' && c <= 'z' ? static_cast<char>(c - 32) : c;
  return text;
}

std::string key_form(const Words& keys) {
  std::string form;
  for (const std::string& key : keys) form += (form.empty() ? "{" : " ") + upper(key);
  return form + '}';
}

std::string kind_line(const Description& node) {
  std::string text = node.kind;
  if (!node.type.empty() && node.type != node.kind && node.type != "container") {
    text += ", " + node.type;
  }
  if (node.mandatory) text += ", mandatory";
  if (node.secret) text += ", secret: never shown, set it without a value to type it unseen";
  return text;
}

Row child_row(const Description& node, const Description::Child& child) {
  const bool is_key = std::ranges::find(node.keys, child.name) != node.keys.end();
  std::string note = is_key ? "key" : child.kind;
  if (child.mandatory) note += ", mandatory";
  return {child.name, note, child.description};
}

void print_below(std::ostream& out, const Description& node, Look look, std::size_t width) {
  std::vector<Row> rows;
  for (const Description::Child& child : node.children) {
    if (child.choice.empty()) rows.push_back(child_row(node, child));
  }
  if (!rows.empty()) out << kIndent << painted(look, Ink::heading, "below it") << '\n';
  print_rows(out, rows, look, width, 4);
  for (const Description::Choice& choice : node.choices) {
    rows.clear();
    for (const Description::Child& child : node.children) {
      if (child.choice == choice.name) rows.push_back(child_row(node, child));
    }
    out << kIndent << painted(look, Ink::heading, "choice " + choice.name)
        << (choice.mandatory ? ", exactly one of these: " : ", at most one of these: ")
        << choice.description << '\n';
    print_rows(out, rows, look, width, 4);
  }
}

}  // namespace

void print_overview(std::ostream& out, Look look) {
  out << "standin-cli [-P PORT] [--color=auto|always|never] [COMMAND]\n"
         "Without a command, on a terminal: a prompt whose changes stay open until commit.\n\n";
  std::vector<Row> rows;
  for (const Command& command : commands()) {
    rows.push_back({synopsis(command), "", std::string(command.help)});
  }
  rows.push_back({"batch [-k]", "", "commands from standard input in one transaction"});
  print_rows(out, rows, look, kNever, 2);
  out << "\nvalidate, commit, abort and diff stand in a batch or at the prompt only.\n"
         "help COMMAND and help PATH say more; help / names what there is. A first change:\n\n"
         "  create /snmp:snmp/community{public}\n"
         "  set /snmp:snmp/community{public}/sec-name ops\n"
         "  diff\n"
         "  commit\n";
}

void print_command_help(std::ostream& out, const Command& command, Look look) {
  out << painted(look, Ink::heading, synopsis(command)) << '\n' << kIndent << command.help << '\n';
  if (!command.more.empty()) out << kIndent << command.more << '\n';
  if (!command.alias.empty()) out << kIndent << "also: " << command.alias << '\n';
}

void print_description(std::ostream& out, const Description& node, Look look, std::size_t width) {
  out << painted(look, Ink::heading, node.path) << '\n' << kIndent << kind_line(node) << '\n';
  out << kIndent;
  print_flowed(out, node.text, kIndent.size(), width);
  if (!node.keys.empty())
    out << kIndent << "an entry: " << node.path << key_form(node.keys) << '\n';
  if (!node.admitted.empty() && node.labels.empty()) {
    out << kIndent << "value: ";
    print_flowed(out, node.admitted, kIndent.size() + 7, width);
  }
  if (!node.units.empty()) out << kIndent << "units: " << node.units << '\n';
  if (node.dflt) out << kIndent << "default: " << *node.dflt << '\n';
  std::vector<Row> labels;
  labels.reserve(node.labels.size());
  for (const auto& label : node.labels) labels.push_back({label.text, "", label.description});
  if (!labels.empty()) out << kIndent << "one of\n";
  print_rows(out, labels, look, width, 4);
  print_below(out, node, look, width);
}

Outcome run_help(Context& context, const Call& call) {
  if (call.operands.empty()) {
    print_overview(context.out, context.look);
    return Outcome::done;
  }
  const std::string& topic = call.operands.front();
  if (topic.starts_with('/')) {
    print_description(context.out, context.session().describe(parse_path(topic)), context.look);
    return Outcome::done;
  }
  const Command* command = find_command(topic);
  if (command == nullptr) {
    throw UsageError("no help on " + quote_word(topic) + ": it is neither a command nor a path");
  }
  print_command_help(context.out, *command, context.look);
  return Outcome::done;
}

}  // namespace standin::cli
