#include "candidates.h"

#include <filesystem>

#include "attributes.h"
#include "platform/wire/path.h"

namespace standin::cli {
namespace {

using Kind = Typed::Kind;
using Candidates = std::vector<Candidate>;
using Wanted = NorthboundSession::Wanted;

Candidates command_names() {
  Candidates found;
  for (const Command& command : commands()) {
    found.push_back({std::string(command.name), command.most > 0 ? " " : ""});
  }
  return found;
}

// What follows the name of a node.
std::string behind(const Description::Child& child) {
  if (child.kind == "list") return "{";
  if (child.kind.ends_with("container")) return "/";
  return child.kind == "leaf" ? " " : "";
}

Description described(Server& server, const std::string& path) {
  return server.session().describe(path.empty() ? Path{} : parse_path(path));
}

Candidates element_names(Server& server, const Typed& typed) {
  if (typed.path.empty()) return {{"/", ""}};
  Candidates found;
  for (const auto& child : described(server, typed.path).children) {
    found.push_back({child.name, behind(child)});
  }
  return found;
}

Candidates key_words(Server& server, const Typed& typed) {
  const std::size_t needed = std::max<std::size_t>(1, described(server, typed.path).keys.size());
  Candidates found;
  for (std::string& word :
       server.session().complete(parse_path(typed.path), Wanted::key, typed.keys, typed.word)) {
    found.push_back({std::move(word), typed.keys.size() + 1 < needed ? " " : "}"});
  }
  return found;
}

Candidates value_words(Server& server, const Typed& typed) {
  Candidates found;
  for (std::string& word :
       server.session().complete(parse_path(typed.path), Wanted::value, {}, typed.word)) {
    found.push_back({std::move(word), " "});
  }
  return found;
}

Candidates choice_names(Server& server, const Typed& typed) {
  Candidates found;
  for (const auto& choice : described(server, typed.path).choices) {
    found.push_back({choice.name, " "});
  }
  return found;
}

Candidates file_names(const std::string& begun) {
  namespace fs = std::filesystem;
  const std::size_t slash = begun.rfind('/');
  const std::string folder = slash == std::string::npos ? "" : begun.substr(0, slash + 1);
  std::error_code error;
  Candidates found;
  for (fs::directory_iterator at(folder.empty() ? "." : folder, error), end; at != end;
       at.increment(error)) {
    const std::string name = at->path().filename().string();
    const bool hidden = name.starts_with('.') && !begun.substr(folder.size()).starts_with('.');
    if (hidden) continue;
    const bool is_folder = at->is_directory(error);
    found.push_back({folder + name + (is_folder ? "/" : ""), is_folder ? "" : " "});
  }
  return found;
}

}  // namespace

std::vector<Candidate> candidates(Server& server, const Typed& typed) {
  switch (typed.kind) {
    case Kind::nothing:
      return {};
    case Kind::command:
    case Kind::topic:
      return command_names();
    case Kind::option:
      return {{std::string(typed.command->option.name), " "}};
    case Kind::name:
      return element_names(server, typed);
    case Kind::key:
      return key_words(server, typed);
    case Kind::entry:
      if (described(server, typed.path).children.empty()) return {};
      return {{"/", ""}};
    case Kind::value:
      return value_words(server, typed);
    case Kind::choice:
      return choice_names(server, typed);
    case Kind::attribute: {
      Candidates found;
      for (const std::string& name : attribute_names()) found.push_back({name, " "});
      return found;
    }
    case Kind::file:
      return file_names(typed.word);
  }
  return {};
}

}  // namespace standin::cli
