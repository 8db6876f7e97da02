// Writes the C++ header of a YANG module's tag numbers: what a daemon compares tags against.
//   yang-tags --dir DIR... -o HEADER MODULE
#include <fstream>
#include <iostream>
#include <map>
#include <set>
#include <stdexcept>
#include <string>
#include <vector>

#include "platform/standin/schema/schema.h"

namespace {

using standin::Choice;
using standin::Node;
using standin::Schema;

struct Options {
  std::vector<std::string> directories;
  std::string module;
  std::string output;
  bool help = false;
};

constexpr const char* kUsage =
    "usage: yang-tags --dir DIR... -o HEADER MODULE\n"
    "  --dir DIR     look for YANG modules in DIR; may be repeated\n"
    "  -o HEADER     the file to write\n"
    "  --help        this text\n";

Options read_options(const std::vector<std::string>& words) {
  Options options;
  for (std::size_t i = 0; i < words.size(); ++i) {
    if (words[i] == "--help") {
      options.help = true;
      return options;
    }
    const bool takes_value = words[i] == "--dir" || words[i] == "-o";
    if (takes_value && i + 1 == words.size()) throw std::runtime_error(words[i] + " needs a value");
    if (words[i] == "--dir") {
      options.directories.push_back(words[++i]);
    } else if (words[i] == "-o") {
      options.output = words[++i];
    } else if (words[i].starts_with("-") || !options.module.empty()) {
      throw std::runtime_error("unknown argument " + words[i]);
    } else {
      options.module = words[i];
    }
  }
  if (options.directories.empty() || options.module.empty() || options.output.empty()) {
    throw std::runtime_error("directory, header and module are needed; --help explains");
  }
  return options;
}

// Every name of the module, and its namespace's number.
struct Names {
  std::map<std::string, std::uint32_t> tags;
  std::uint32_t ns = 0;
};

Names names_of(Schema& schema, const std::string& module) {
  Names names;
  for (const Node* node : schema.all()) {
    if (node->module != module) continue;
    names.ns = node->tag.ns;
    names.tags.emplace(node->name, node->tag.tag);
    for (const Choice* choice : node->choices) {
      names.tags.emplace(choice->name, choice->tag.tag);
      for (const auto& each : choice->cases) names.tags.emplace(each.name, each.tag.tag);
    }
  }
  if (names.tags.empty()) throw std::runtime_error("no nodes in a module " + module);
  return names;
}

// A YANG name as C++ writes it: `_` for what an identifier lacks, and behind a word of the
// language. `ns` is the header's own.
std::string identifier(const std::string& name) {
  static const std::set<std::string> kTaken = {
      "alignas",   "alignof", "and",      "asm",      "auto",     "bool",      "break",
      "case",      "catch",   "char",     "class",    "concept",  "const",     "continue",
      "default",   "delete",  "do",       "double",   "else",     "enum",      "explicit",
      "export",    "extern",  "false",    "float",    "for",      "friend",    "goto",
      "if",        "inline",  "int",      "long",     "mutable",  "namespace", "new",
      "noexcept",  "not",     "ns",       "nullptr",  "operator", "or",        "private",
      "protected", "public",  "register", "requires", "return",   "short",     "signed",
      "sizeof",    "static",  "struct",   "switch",   "template", "this",      "throw",
      "true",      "try",     "typedef",  "typeid",   "typename", "union",     "unsigned",
      "using",     "virtual", "void",     "volatile", "wchar_t",  "while",     "xor"};
  std::string out = name;
  for (char& c : out) {
    if (c == '-' || c == '.') c = '_';
  }
  return kTaken.contains(out) ? out + '_' : out;
}

void write_header(std::ostream& out, const std::string& module, const Names& names) {
  const std::string space = identifier(module);
  out << "// Tag numbers of the YANG module " << module << ". Generated; do not edit.\n"
      << "#pragma once\n\n#include <cstdint>\n\nnamespace quillet::tags::" << space << " {\n\n"
      << "inline constexpr std::uint32_t ns = " << names.ns << "U;\n";
  std::map<std::string, std::string> written;
  for (const auto& [name, number] : names.tags) {
    const auto [at, fresh] = written.emplace(identifier(name), name);
    if (!fresh) throw std::runtime_error(at->second + " and " + name + " give one identifier");
    out << "inline constexpr std::uint32_t " << at->first << " = " << number << "U;\n";
  }
  out << "\n}  // namespace quillet::tags::" << space << "\n";
}

}  // namespace

int main(int argc, char** argv) {
  try {
    const Options options = read_options({argv + 1, argv + argc});
    if (options.help) {
      std::cout << kUsage;
      return 0;
    }
    const auto schema = Schema::load(options.directories);
    const Names names = names_of(*schema, options.module);
    std::ofstream file(options.output);
    write_header(file, options.module, names);
    if (!file.flush()) throw std::runtime_error(options.output + ": cannot be written");
    return 0;
  } catch (const std::exception& e) {
    std::cerr << "yang-tags: " << e.what() << '\n';
    return 1;
  }
}
