#include "prompt.h"

#include <readline/history.h>
#include <readline/readline.h>

#include <cstdlib>
#include <cstring>
#include <iostream>
#include <memory>

#include "batch.h"

namespace standin::cli {
namespace {

// readline's completion is a function without an argument of its own.
NorthboundSession* completing = nullptr;

Words candidates(const CompletionPlace& place) {
  Words words;
  switch (place.kind) {
    case CompletionPlace::Kind::command:
      for (const Command& command : commands()) words.emplace_back(command.name);
      words.insert(words.end(), {"help", "quit"});
      return words;
    case CompletionPlace::Kind::path:
      words = completing->complete(place.path);
      for (std::string& word : words) word = quote_word(word);
      return words;
    case CompletionPlace::Kind::value:
      return completing->complete(place.path + ' ');
    case CompletionPlace::Kind::nothing:
      break;
  }
  return words;
}

// readline frees the array and its texts.
char** matches_for(const char* text, const Words& words) {
  Words fitting;
  for (const std::string& word : words) {
    if (word.starts_with(text)) fitting.push_back(word);
  }
  if (fitting.empty()) return nullptr;
  std::string common = fitting.front();
  for (const std::string& word : fitting) {
    std::size_t same = 0;
    while (same < common.size() && same < word.size() && common[same] == word[same]) ++same;
    common.resize(same);
  }
  auto** matches = static_cast<char**>(std::calloc(fitting.size() + 2, sizeof(char*)));
  if (matches == nullptr) return nullptr;
  matches[0] = ::strdup(common.c_str());
  if (fitting.size() > 1) {
    for (std::size_t i = 0; i < fitting.size(); ++i) matches[i + 1] = ::strdup(fitting[i].c_str());
  }
  return matches;
}

// No exception may cross readline's frames; what cannot be completed is not.
char** complete_line(const char* text, int, int) {
  rl_attempted_completion_over = 1;
  try {
    const std::string before(rl_line_buffer, static_cast<std::size_t>(rl_point));
    const CompletionPlace place = completion_place(before);
    const bool inside_path = place.kind == CompletionPlace::Kind::path;
    rl_completion_append_character = inside_path ? '\0' : ' ';
    return matches_for(text, candidates(place));
  } catch (const std::exception&) {
    return nullptr;
  }
}

struct FreeText {
  void operator()(char* text) const { std::free(text); }
};

void run_command(Context& context, const std::string& line) {
  try {
    run_line(context, line);
  } catch (const UsageError& e) {
    std::cerr << error_line(e.what()) << std::endl;
  } catch (const PathError& e) {
    std::cerr << error_line(e.what()) << std::endl;
  } catch (const Refused& e) {
    std::cerr << error_line(e.what()) << std::endl;
  }
}

}  // namespace

CompletionPlace completion_place(const std::string& before_cursor) {
  using Kind = CompletionPlace::Kind;
  const std::size_t begin = before_cursor.find_first_not_of(' ');
  const std::size_t end = begin == std::string::npos ? begin : before_cursor.find(' ', begin);
  if (end == std::string::npos) return {Kind::command, {}, {}};
  const std::string command = before_cursor.substr(begin, end - begin);
  const std::size_t operand = before_cursor.find_first_not_of(' ', end);
  if (operand == std::string::npos) return {Kind::path, command, "/"};
  // A blank ends the path unless it stands between braces or quotes.
  bool quoted = false;
  int braces = 0;
  for (std::size_t i = operand; i < before_cursor.size(); ++i) {
    const char c = before_cursor[i];
    if (quoted && c == '\\') {
      ++i;
    } else if (c == '"') {
      quoted = !quoted;
    } else if (!quoted && c == '{') {
      ++braces;
    } else if (!quoted && c == '}') {
      --braces;
    } else if (!quoted && braces <= 0 && c == ' ') {
      const std::string path = before_cursor.substr(operand, i - operand);
      return command == "set" ? CompletionPlace{Kind::value, command, path} : CompletionPlace{};
    }
  }
  return {Kind::path, command, before_cursor.substr(operand)};
}

int run_prompt(NorthboundSession& session) {
  completing = &session;
  rl_readline_name = "standin-cli";
  rl_attempted_completion_function = complete_line;
  rl_completer_word_break_characters = " /{}";
  Context context{session, std::cout, std::cin};
  for (;;) {
    const std::unique_ptr<char, FreeText> text(::readline("standin> "));
    if (text == nullptr) break;
    const std::string line(text.get());
    if (line.find_first_not_of(" \t") == std::string::npos) continue;
    ::add_history(line.c_str());
    const Words words{line.substr(0, line.find(' '))};
    if (words[0] == "quit" || words[0] == "exit") break;
    if (words[0] == "help") {
      print_usage(std::cout);
      std::cout << "quit leaves the prompt; what was not committed is forgotten.\n" << std::flush;
      continue;
    }
    run_command(context, line);
  }
  completing = nullptr;
  return kDone;
}

}  // namespace standin::cli
