#include "line-editor.h"

#include <poll.h>
#include <readline/history.h>
#include <readline/readline.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <memory>

#include "interrupt.h"

namespace standin::cli {
namespace {

constexpr int kMostRemembered = 1000;
constexpr std::size_t kMostShown = 200;
constexpr int kTick = 200;       // milliseconds; a signal just before the wait does not end it
constexpr int kAbortSearch = 7;  // Ctrl-G

// readline's functions have no argument for it.
LineEditor::Completer* completer = nullptr;

struct FreeText {
  void operator()(char* text) const { std::free(text); }
};

// readline takes the first one for the common beginning and does not list it.
void list(Words words) {
  const std::size_t left_out = words.size() > kMostShown ? words.size() - kMostShown : 0;
  words.resize(words.size() - left_out);
  if (left_out > 0) words.push_back("(" + std::to_string(left_out) + " more)");
  std::size_t longest = 0;
  std::string none;
  std::vector<char*> matches{none.data()};
  for (std::string& word : words) {
    longest = std::max(longest, word.size());
    matches.push_back(word.data());
  }
  matches.push_back(nullptr);
  rl_display_match_list(matches.data(), static_cast<int>(words.size()), static_cast<int>(longest));
  rl_forced_update_display();
}

// No exception may cross readline's frames; what cannot be completed is not.
int complete_here(int, int) {
  try {
    const std::string before(rl_line_buffer, static_cast<std::size_t>(rl_point));
    const Completion found = (*completer)(before);
    const std::string had = before.substr(found.start);
    if (found.text.empty() && found.shown.empty()) {
      rl_ding();
    } else if (found.text != had) {
      rl_begin_undo_group();
      rl_delete_text(static_cast<int>(found.start), rl_point);
      rl_point = static_cast<int>(found.start);
      rl_insert_text(found.text.c_str());
      rl_end_undo_group();
    } else if (!found.shown.empty()) {
      list(found.shown);
    }
  } catch (const std::exception&) {
    rl_ding();
  }
  return 0;
}

// Waits for a key. Ctrl-C gives up a search, or else the line.
int read_key(FILE* stream) {
  for (;;) {
    rl_check_signals();
    if (interrupt_pending()) {
      if (RL_ISSTATE(RL_STATE_ISEARCH | RL_STATE_NSEARCH)) return kAbortSearch;
      clear_interrupt();
      rl_replace_line("", 0);
      return '\n';
    }
    pollfd entry{::fileno(stream), POLLIN, 0};
    const int ready = ::poll(&entry, 1, kTick);
    if (ready < 0 && errno != EINTR) return EOF;
    if (ready <= 0) continue;
    unsigned char key = 0;
    const ssize_t got = ::read(entry.fd, &key, 1);
    if (got == 1) return key;
    if (got == 0 || (errno != EINTR && errno != EAGAIN)) return EOF;
  }
}

}  // namespace

LineEditor::LineEditor(Completer given, std::string history) : history_(std::move(history)) {
  static Completer kept;
  kept = std::move(given);
  completer = &kept;
  rl_readline_name = "standin-cli";
  rl_getc_function = read_key;
  rl_variable_bind("enable-bracketed-paste", "off");
  rl_initialize();
  rl_bind_key('\t', complete_here);
  ::using_history();
  ::stifle_history(kMostRemembered);
  if (history_.empty()) return;
  ::read_history(history_.c_str());
  ::history_truncate_file(history_.c_str(), kMostRemembered);
  ::chmod(history_.c_str(), 0600);
}

LineEditor::~LineEditor() { completer = nullptr; }

std::optional<std::string> LineEditor::read(const std::string& prompt) {
  const InterruptCatcher catcher;
  const std::unique_ptr<char, FreeText> text(::readline(prompt.c_str()));
  if (!text) return std::nullopt;
  return std::string(text.get());
}

void LineEditor::remember(const std::string& line, Keep keep) {
  if (keep == Keep::nowhere) return;
  const HIST_ENTRY* last =
      history_length > 0 ? ::history_get(history_base + history_length - 1) : nullptr;
  if (last != nullptr && line == last->line) return;
  ::add_history(line.c_str());
  if (keep == Keep::file && !history_.empty()) ::append_history(1, history_.c_str());
}

}  // namespace standin::cli
