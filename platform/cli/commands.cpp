#include "commands.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <fstream>
#include <iomanip>
#include <iostream>
#include <iterator>

#include "attributes.h"
#include "platform/wire/cipher.h"
#include "printing.h"
#include "secret-input.h"

namespace standin::cli {
namespace {

Path path_of(const Call& call) {
  return call.operands.empty() ? Path{} : parse_path(call.operands.front());
}

Outcome run_get(Context& context, const Call& call) {
  const auto got = context.session.get(path_of(call));
  if (!got) return Outcome::not_there;
  if (got->is_list) {
    print_words(context.out, got->texts);
  } else {
    context.out << got->texts.front() << '\n';
  }
  return Outcome::done;
}

Outcome run_exists(Context& context, const Call& call) {
  return context.session.exists(path_of(call)) ? Outcome::done : Outcome::not_there;
}

Outcome run_keys(Context& context, const Call& call) {
  for (const Words& entry : context.session.keys(path_of(call))) print_words(context.out, entry);
  return Outcome::done;
}

Outcome run_case(Context& context, const Call& call) {
  const auto selected = context.session.selected_case(path_of(call), call.operands[1]);
  if (!selected) return Outcome::not_there;
  context.out << *selected << '\n';
  return Outcome::done;
}

Outcome run_show(Context& context, const Call& call) {
  const NorthboundSession::Tree tree = context.session.show(path_of(call));
  if (call.option) {
    print_json(context.out, tree.nodes);
  } else {
    print_tree(context.out, tree.nodes);
  }
  return tree.complete ? Outcome::done : Outcome::incomplete;
}

// Without a value: an empty leaf is created, a leaf-list emptied, a secret read.
Outcome run_set(Context& context, const Call& call) {
  const Path path = path_of(call);
  Words values(call.operands.begin() + 1, call.operands.end());
  if (values.empty()) {
    const Description node = context.session.describe(path);
    if (node.kind == "leaf" && node.type == "empty") {
      context.session.create(path);
      return Outcome::done;
    }
    if (node.kind == "leaf" && node.secret) {
      values.push_back(read_secret(context.in, "value: "));
    } else if (node.kind != "leaf-list") {
      throw UsageError("set needs a value");
    }
  }
  context.session.set(path, values);
  for (std::string& value : values) cleanse(value);
  return Outcome::done;
}

Outcome run_create(Context& context, const Call& call) {
  context.session.create(path_of(call));
  return Outcome::done;
}

Outcome run_delete(Context& context, const Call& call) {
  context.session.remove(path_of(call));
  return Outcome::done;
}

Outcome run_attr(Context& context, const Call& call) {
  const Path path = path_of(call);
  const Words& operands = call.operands;
  if (call.option && operands.size() != 2) throw UsageError("--delete stands behind a name");
  if (operands.size() == 1) {
    const AttributeValues all = context.session.attributes(path);
    for (const auto& [number, value] : all) {
      context.out << attribute_name(number);
      const Words words = attribute_words(value);
      if (!words.empty()) context.out << ' ';
      print_words(context.out, words);
    }
    return all.empty() ? Outcome::not_there : Outcome::done;
  }
  const std::uint32_t number = attribute_number(operands[1]);
  if (call.option) {
    context.session.set_attribute(path, number, nullptr);
    return Outcome::done;
  }
  if (operands.size() > 2) {
    const Value value = attribute_value(number, Words(operands.begin() + 2, operands.end()));
    context.session.set_attribute(path, number, &value);
    return Outcome::done;
  }
  for (const auto& [found, value] : context.session.attributes(path)) {
    if (found != number) continue;
    print_words(context.out, attribute_words(value));
    return Outcome::done;
  }
  return Outcome::not_there;
}

Outcome run_load(Context& context, const Call& call) {
  const std::string& name = call.operands.front();
  errno = 0;
  std::ifstream file(name, std::ios::binary);
  const std::string json{std::istreambuf_iterator<char>(file), {}};
  if (!file.is_open() || file.bad() || errno == EISDIR) {
    throw Refused(ErrorCode::os, "cannot read " + name + ": " + std::strerror(errno));
  }
  context.session.load(json);
  return Outcome::done;
}

Outcome run_validate(Context& context, const Call&) {
  context.session.validate();
  return Outcome::done;
}

Outcome run_commit(Context& context, const Call&) {
  context.session.commit();
  return Outcome::done;
}

Outcome run_abort(Context& context, const Call&) {
  context.session.abort();
  return Outcome::done;
}

Outcome run_diff(Context& context, const Call&) {
  print_diff(context.out, context.session.diff());
  return Outcome::done;
}

Outcome run_start(Context& context, const Call&) {
  context.session.start();
  return Outcome::done;
}

Outcome run_status(Context& context, const Call&) {
  print_status(context.out, context.session.status());
  return Outcome::done;
}

// Where the last word of a path begins: a name behind a slash, a key or value behind a blank.
std::size_t last_word(std::string_view text) {
  std::size_t begins = 0;
  bool keys = false;
  bool quoted = false;
  for (std::size_t i = 0; i < text.size(); ++i) {
    const char c = text[i];
    if (quoted) {
      if (c == '\\') ++i;
      quoted = c != '"';
    } else if (c == '"') {
      quoted = true;
    } else if (c == ' ' || c == '{' || (c == '/' && !keys)) {
      begins = i + 1;
      keys = keys || c == '{';
    } else if (c == '}') {
      keys = false;
    }
  }
  return begins;
}

// Whole words, in the path's own quoting; the shell's is the shell's.
Outcome run_complete(Context& context, const Call& call) {
  const std::string& text = call.operands.front();
  const std::string before = text.substr(0, last_word(text));
  for (const std::string& word : context.session.complete(text)) {
    context.out << before << quote_word(word) << '\n';
  }
  return Outcome::done;
}

constexpr Command kCommands[] = {
    {.name = "get",
     .usage = "PATH",
     .help = "a leaf's value, or a leaf-list's values",
     .least = 1,
     .most = 1,
     .run = run_get},
    {.name = "exists",
     .usage = "PATH",
     .help = "whether it is there",
     .least = 1,
     .most = 1,
     .truth = true,
     .run = run_exists},
    {.name = "keys",
     .usage = "PATH",
     .help = "the entries of a list or leaf-list",
     .least = 1,
     .most = 1,
     .run = run_keys},
    {.name = "case",
     .usage = "PATH CHOICE",
     .help = "the selected case",
     .least = 2,
     .most = 2,
     .run = run_case},
    {.name = "show",
     .usage = "[--json] [PATH]",
     .help = "everything at and below it",
     .least = 0,
     .most = 1,
     .option = "--json",
     .run = run_show},
    {.name = "set",
     .usage = "PATH [VALUE...]",
     .help = "write a leaf or a whole leaf-list",
     .least = 1,
     .most = kNever,
     .writes_from = 0,
     .values_from = 1,
     .run = run_set},
    {.name = "create",
     .usage = "PATH",
     .help = "create an entry or a container",
     .least = 1,
     .most = 1,
     .writes_from = 0,
     .run = run_create},
    {.name = "delete",
     .usage = "PATH",
     .help = "delete it with all below",
     .least = 1,
     .most = 1,
     .writes_from = 0,
     .run = run_delete},
    {.name = "attr",
     .usage = "PATH [NAME [VALUE... | --delete]]",
     .help = "annotation, tags, inactive (\"\" sets it), or a number",
     .least = 1,
     .most = kNever,
     .writes_from = 3,
     .values_from = 2,
     .option = "--delete",
     .run = run_attr},
    {.name = "load",
     .usage = "FILE",
     .help = "merge a JSON file",
     .least = 1,
     .most = 1,
     .writes_from = 0,
     .run = run_load},
    {.name = "validate",
     .usage = "",
     .help = "check as commit does",
     .writes_from = 0,
     .batch_only = true,
     .run = run_validate},
    {.name = "commit",
     .usage = "",
     .help = "keep the changes",
     .writes_from = 0,
     .batch_only = true,
     .run = run_commit},
    {.name = "abort",
     .usage = "",
     .help = "forget the changes",
     .writes_from = 0,
     .batch_only = true,
     .run = run_abort},
    {.name = "diff",
     .usage = "",
     .help = "what has changed",
     .writes_from = 0,
     .batch_only = true,
     .run = run_diff},
    {.name = "complete",
     .usage = "TEXT",
     .help = "what a path that begins so may become, for shells",
     .least = 1,
     .most = 1,
     .run = run_complete},
    {.name = "start",
     .usage = "",
     .help = "end phase 0",
     .needs_transaction = false,
     .run = run_start},
    {.name = "status",
     .usage = "",
     .help = "phase, port, daemons, open transactions",
     .needs_transaction = false,
     .run = run_status},
};

void print_command(std::ostream& out, const std::string& synopsis, std::string_view help) {
  out << "  " << std::left << std::setw(40) << synopsis << ' ' << help << '\n';
}

}  // namespace

std::span<const Command> commands() { return kCommands; }

Call parse_command(const Words& words) {
  const auto* command = std::find_if(std::begin(kCommands), std::end(kCommands),
                                     [&](const Command& c) { return c.name == words.front(); });
  if (command == std::end(kCommands)) {
    throw UsageError("unknown command " + quote_word(words.front()));
  }
  Call call{command, false, {}};
  bool ended = false;  // by "--"
  for (auto word = words.begin() + 1; word != words.end(); ++word) {
    const std::size_t place = call.operands.size();
    const bool is_value = place >= command->values_from;
    const bool may_be_option =
        !is_value || (place == command->values_from && !command->option.empty());
    if (!ended && may_be_option) {
      if (*word == "--") {
        ended = true;
        continue;
      }
      if (*word == command->option) {
        call.option = true;
        continue;
      }
      if (!is_value && word->size() > 1 && word->front() == '-') {
        throw UsageError("unknown option " + *word);
      }
    }
    call.operands.push_back(*word);
  }
  if (call.operands.size() < command->least || call.operands.size() > command->most) {
    throw UsageError("usage: " + std::string(command->name) + ' ' + std::string(command->usage));
  }
  return call;
}

NorthboundSession::Access access_of(const Call& call) {
  if (!call.command->needs_transaction) return NorthboundSession::Access::none;
  const bool writes = call.operands.size() >= call.command->writes_from ||
                      (call.option && call.command->writes_from != kNever);
  return writes ? NorthboundSession::Access::write : NorthboundSession::Access::read;
}

void print_usage(std::ostream& out) {
  out << "standin-cli [-P PORT] [COMMAND]\n";
  for (const Command& command : kCommands) {
    print_command(out, std::string(command.name) + ' ' + std::string(command.usage), command.help);
  }
  print_command(out, "batch [-k]", "commands from standard input in one transaction");
  out << "validate, commit, abort and diff stand in a batch or at the prompt only.\n";
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
