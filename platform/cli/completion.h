// What is being typed, and what it can be completed to. Pure: where the words come from is the
// business of candidates.h.
#pragma once

#include <string>
#include <vector>

#include "platform/cli/commands.h"

namespace standin::cli {

// The word before the cursor.
struct Typed {
  enum class Kind : std::uint8_t {
    nothing,
    command,
    topic,  // a command or a path
    option,
    name,   // an element of a path
    key,    // inside braces
    entry,  // behind braces
    value,
    choice,
    attribute,
    file,
  } kind = Kind::nothing;
  const Command* command = nullptr;
  std::string path;       // in front of the element ("/" at the top) or the braces, or whole
  Words keys;             // in front of this one in the braces
  std::string word;       // without its quotes
  std::size_t start = 0;  // where it begins in the line, its quote included
  bool quoted = false;    // by an open quote
};
Typed typed_before(const std::string& cursor);

struct Candidate {
  std::string word;
  std::string after;  // what follows it when it is the only one
};

// The line's text from `start` to the cursor is to be `text`. Nothing fits when there is neither a
// text nor anything to show.
struct Completion {
  std::size_t start = 0;
  std::string text;
  Words shown;  // when there are several
};
Completion complete(const Typed& typed, const std::vector<Candidate>& candidates);

}  // namespace standin::cli
