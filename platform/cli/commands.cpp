#include "commands.h"

#include <algorithm>
#include <iostream>
#include <iterator>

#include "attributes.h"
#include "candidates.h"
#include "files.h"
#include "help.h"
#include "platform/wire/cipher.h"
#include "printing.h"
#include "secret-input.h"

namespace standin::cli {
namespace {

Path path_of(const Call& call) {
  return call.operands.empty() ? Path{} : parse_path(call.operands.front());
}

Outcome run_get(Context& context, const Call& call) {
  const auto got = context.session().get(path_of(call));
  if (!got) return Outcome::not_there;
  if (got->is_list) {
    print_words(context.out, got->texts);
  } else {
    context.out << got->texts.front() << '\n';
  }
  return Outcome::done;
}

Outcome run_exists(Context& context, const Call& call) {
  return context.session().exists(path_of(call)) ? Outcome::done : Outcome::not_there;
}

Outcome run_keys(Context& context, const Call& call) {
  for (const Words& entry : context.session().keys(path_of(call))) print_words(context.out, entry);
  return Outcome::done;
}

Outcome run_case(Context& context, const Call& call) {
  const auto selected = context.session().selected_case(path_of(call), call.operands[1]);
  if (!selected) return Outcome::not_there;
  context.out << *selected << '\n';
  return Outcome::done;
}

Outcome run_show(Context& context, const Call& call) {
  const NorthboundSession::Tree tree = context.session().show(path_of(call));
  if (call.option) {
    print_json(context.out, tree.nodes);
  } else {
    print_tree(context.out, tree.nodes, context.look);
  }
  return tree.complete ? Outcome::done : Outcome::incomplete;
}

// What is read of a secret is gone when it has been sent.
class Values {
 public:
  explicit Values(Words words) : words_(std::move(words)) {}
  ~Values() {
    for (std::string& word : words_) cleanse(word);
  }
  Values(const Values&) = delete;
  Values& operator=(const Values&) = delete;
  Words& words() { return words_; }

 private:
  Words words_;
};

// Without a value: an empty leaf is created, a leaf-list emptied, a secret read.
Outcome set_without_value(Context& context, const Path& path) {
  const Description node = context.session().describe(path);
  if (node.is_leaf() && node.type == "empty") {
    context.session().create(path);
  } else if (node.is_leaf() && node.secret) {
    Values values({read_secret(context.in, node.path.substr(node.path.rfind('/') + 1))});
    context.session().set(path, values.words());
  } else if (node.kind == "leaf-list") {
    context.session().set(path, {});
  } else if (node.is_leaf()) {
    throw UsageError("set needs a value" + (node.admitted.empty() ? "" : ": " + node.admitted));
  } else {
    throw UsageError(node.path + " is a " + node.kind + ", which has no value: " +
                     (node.kind == "container" ? "set a leaf below it" : "create makes one"));
  }
  return Outcome::done;
}

Outcome run_set(Context& context, const Call& call) {
  const Path path = path_of(call);
  Values values(Words(call.operands.begin() + 1, call.operands.end()));
  if (call.option) {
    if (!values.words().empty()) throw UsageError("--from-file takes the place of a value");
    values.words().push_back(read_value_file(call.option_operand));
  } else if (values.words().empty()) {
    return set_without_value(context, path);
  }
  context.session().set(path, values.words());
  return Outcome::done;
}

Outcome run_create(Context& context, const Call& call) {
  context.session().create(path_of(call));
  return Outcome::done;
}

Outcome run_delete(Context& context, const Call& call) {
  context.session().remove(path_of(call));
  return Outcome::done;
}

Outcome run_attr(Context& context, const Call& call) {
  const Path path = path_of(call);
  const Words& operands = call.operands;
  if (call.option && operands.size() != 2) throw UsageError("--delete stands behind a name");
  if (operands.size() == 1) {
    const AttributeValues all = context.session().attributes(path);
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
    context.session().set_attribute(path, number, nullptr);
    return Outcome::done;
  }
  if (operands.size() > 2) {
    const Value value = attribute_value(number, Words(operands.begin() + 2, operands.end()));
    context.session().set_attribute(path, number, &value);
    return Outcome::done;
  }
  for (const auto& [found, value] : context.session().attributes(path)) {
    if (found != number) continue;
    print_words(context.out, attribute_words(value));
    return Outcome::done;
  }
  return Outcome::not_there;
}

Outcome run_load(Context& context, const Call& call) {
  const std::string& file = call.operands.front();
  std::string json = read_file(file);
  try {
    context.session().load(json);
  } catch (const Refused& e) {
    cleanse(json);
    throw Refused(e.code, file + ": " + e.what());
  }
  cleanse(json);
  return Outcome::done;
}

Outcome run_validate(Context& context, const Call&) {
  context.session().validate();
  return Outcome::done;
}

Outcome run_commit(Context& context, const Call&) {
  context.session().commit();
  return Outcome::done;
}

Outcome run_abort(Context& context, const Call&) {
  context.session().abort();
  return Outcome::done;
}

Outcome run_diff(Context& context, const Call&) {
  print_diff(context.out, context.session().diff(), context.look);
  return Outcome::done;
}

Outcome run_quit(Context&, const Call&) { return Outcome::leave; }

Outcome run_start(Context& context, const Call&) {
  context.session().start();
  return Outcome::done;
}

Outcome run_status(Context& context, const Call&) {
  print_status(context.out, context.session().status());
  return Outcome::done;
}

// Whole words, in the path's own quoting; the shell's is the shell's.
Outcome run_complete(Context& context, const Call& call) {
  const std::string before = "set ";
  const std::string& text = call.operands.front();
  Typed typed = typed_before(before + text);
  std::vector<Candidate> found = candidates(context.server, typed);
  if (typed.kind == Typed::Kind::value) {
    typed.kind = Typed::Kind::choice;  // which is what follows a path of `case`
    std::ranges::move(candidates(context.server, typed), std::back_inserter(found));
  }
  for (const Candidate& candidate : found) {
    if (!candidate.word.starts_with(typed.word)) continue;
    context.out << text.substr(0, typed.start - before.size()) << quote_word(candidate.word)
                << '\n';
  }
  return Outcome::done;
}

constexpr Command kCommands[] = {
    {.name = "get",
     .usage = "PATH",
     .help = "a leaf's value, or a leaf-list's values",
     .more = "A secret comes in encrypted form.",
     .least = 1,
     .most = 1,
     .operands = {Operand::path},
     .run = run_get},
    {.name = "exists",
     .usage = "PATH",
     .help = "whether it is there",
     .least = 1,
     .most = 1,
     .operands = {Operand::path},
     .truth = true,
     .run = run_exists},
    {.name = "keys",
     .usage = "PATH",
     .help = "the entries of a list or leaf-list",
     .least = 1,
     .most = 1,
     .operands = {Operand::path},
     .run = run_keys},
    {.name = "case",
     .usage = "PATH CHOICE",
     .help = "the selected case",
     .more = "PATH is the node that holds the choice; help PATH names its choices.",
     .least = 2,
     .most = 2,
     .operands = {Operand::path, Operand::choice},
     .run = run_case},
    {.name = "show",
     .usage = "[--json] [PATH]",
     .help = "everything at and below it",
     .more = "--json: RFC 7951, which load takes back; secrets in encrypted form.",
     .least = 0,
     .most = 1,
     .operands = {Operand::path},
     .option = {.name = "--json"},
     .run = run_show},
    {.name = "set",
     .usage = "[--from-file FILE] PATH [VALUE...]",
     .help = "write a leaf or a whole leaf-list",
     .more = "A secret without VALUE is asked for and not echoed, or is the next line of standard "
             "input.\n"
             "  --from-file: the value is what FILE holds, without the newline at its end.",
     .least = 1,
     .most = kNever,
     .operands = {Operand::path, Operand::value, Operand::value},
     .writes_from = 0,
     .values_from = 1,
     .option = {.name = "--from-file", .operand = "FILE"},
     .run = run_set},
    {.name = "create",
     .usage = "PATH",
     .help = "create an entry or a container",
     .more = "What is missing above it is created too.",
     .least = 1,
     .most = 1,
     .operands = {Operand::path},
     .writes_from = 0,
     .run = run_create},
    {.name = "delete",
     .usage = "PATH",
     .help = "delete it with all below",
     .least = 1,
     .most = 1,
     .operands = {Operand::path},
     .writes_from = 0,
     .run = run_delete},
    {.name = "attr",
     .usage = "PATH [NAME [VALUE... | --delete]]",
     .help = "annotation, tags, inactive (\"\" sets it), or a number",
     .least = 1,
     .most = kNever,
     .operands = {Operand::path, Operand::attribute, Operand::none},
     .writes_from = 3,
     .values_from = 2,
     .option = {.name = "--delete"},
     .run = run_attr},
    {.name = "load",
     .usage = "FILE",
     .help = "merge a JSON file",
     .more = "All of it or, when something in it is refused, nothing.",
     .done = "loaded, not committed yet",
     .least = 1,
     .most = 1,
     .operands = {Operand::file},
     .writes_from = 0,
     .run = run_load},
    {.name = "diff",
     .help = "what has changed",
     .more = "+ created, - deleted, ~ changed; secrets are masked.",
     .stands = Stands::in_transaction,
     .run = run_diff},
    {.name = "validate",
     .help = "check as commit does",
     .done = "valid",
     .stands = Stands::in_transaction,
     .run = run_validate},
    {.name = "commit",
     .help = "keep the changes",
     .more = "When it is refused the changes stay open, to be mended or aborted.",
     .done = "committed",
     .writes_from = 0,
     .ends_transaction = true,
     .stands = Stands::in_transaction,
     .run = run_commit},
    {.name = "abort",
     .help = "forget the changes",
     .done = "changes forgotten",
     .writes_from = 0,
     .ends_transaction = true,
     .stands = Stands::in_transaction,
     .run = run_abort},
    {.name = "complete",
     .usage = "TEXT",
     .help = "what a path that begins so may become, for shells",
     .least = 1,
     .most = 1,
     .run = run_complete},
    {.name = "start",
     .help = "end phase 0",
     .more = "In phase 2 it does nothing.",
     .needs_transaction = false,
     .run = run_start},
    {.name = "status",
     .help = "phase, port, daemons, open transactions",
     .needs_transaction = false,
     .run = run_status},
    {.name = "help",
     .alias = "?",
     .usage = "[COMMAND | PATH]",
     .help = "the commands, or what one does, or what a node is",
     .more = "Keys may be left out of PATH.",
     .least = 0,
     .most = 1,
     .operands = {Operand::topic},
     .needs_transaction = false,
     .run = run_help},
    {.name = "quit",
     .alias = "exit",
     .help = "leave the prompt",
     .needs_transaction = false,
     .stands = Stands::at_prompt,
     .run = run_quit},
};

}  // namespace

std::span<const Command> commands() { return kCommands; }

}  // namespace standin::cli
