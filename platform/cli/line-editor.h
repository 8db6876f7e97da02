// The one place that knows readline: a line with editing, completion and history.
#pragma once

#include <functional>
#include <optional>
#include <string>

#include "platform/cli/completion.h"

namespace standin::cli {

// There is one terminal, so there is one editor at a time.
class LineEditor {
 public:
  // What stands before the cursor to what it can be completed to.
  using Completer = std::function<Completion(const std::string&)>;

  // `history`: a file, or empty for none.
  LineEditor(Completer completer, std::string history);
  ~LineEditor();
  LineEditor(const LineEditor&) = delete;
  LineEditor& operator=(const LineEditor&) = delete;

  // Nothing at the end of the input; empty after Ctrl-C.
  std::optional<std::string> read(const std::string& prompt);

  // Whether the arrow keys find the line again, and later sessions too.
  enum class Keep : std::uint8_t { nowhere, session, file };
  void remember(const std::string& line, Keep keep);

 private:
  std::string history_;
};

}  // namespace standin::cli
