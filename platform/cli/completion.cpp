#include "completion.h"

#include <algorithm>

#include "platform/wire/path.h"

namespace standin::cli {
namespace {

using Kind = Typed::Kind;

// Where the last word of a text begins, and where in it a path's last element does. Quotes hide
// braces, slashes and blanks; braces hide blanks and slashes.
struct Scan {
  std::size_t word = 0;                                    // offset of the last word
  std::vector<std::pair<std::size_t, std::size_t>> words;  // those that a blank has ended
  std::size_t slash = std::string::npos;                   // the last one of the last word
  std::size_t brace = std::string::npos;                   // open in it
  bool quoted = false;                                     // a quote is open

  explicit Scan(std::string_view text) {
    for (std::size_t i = 0; i < text.size(); ++i) {
      const char c = text[i];
      if (quoted && c == '\\') {
        ++i;
      } else if (c == '"') {
        quoted = !quoted;
      } else if (!quoted) {
        step(c, i);
      }
    }
  }

 private:
  void step(char c, std::size_t i) {
    if (c == '{') brace = i;
    if (c == '}') brace = std::string::npos;
    if (brace != std::string::npos) return;
    if (c == '/') slash = i;
    if (c != ' ' && c != '\t') return;
    if (i > word) words.emplace_back(word, i);
    word = i + 1;
    slash = std::string::npos;
  }
};

// As it was typed, without the quote that opens it and the backslashes behind that.
std::string unquoted(std::string_view typed) {
  if (!typed.starts_with('"')) return std::string(typed);
  std::string word;
  for (std::size_t i = 1; i < typed.size(); ++i) {
    if (typed[i] == '\\' && i + 1 < typed.size()) ++i;
    word += typed[i];
  }
  return word;
}

void set_word(Typed& typed, std::string_view line, std::size_t start) {
  typed.start = start;
  typed.quoted = start < line.size() && line[start] == '"';
  typed.word = unquoted(line.substr(start));
}

// Inside braces the keys are words of their own.
void in_braces(Typed& typed, std::string_view line, const Scan& scan) {
  const std::size_t inside = scan.brace + 1;
  const Scan keys(line.substr(inside));
  typed.kind = Kind::key;
  typed.path = line.substr(scan.word, scan.brace - scan.word);
  for (const auto& [from, to] : keys.words) {
    std::string key = unquoted(line.substr(inside + from, to - from));
    if (line[inside + from] == '"' && key.ends_with('"')) key.pop_back();
    typed.keys.push_back(std::move(key));
  }
  set_word(typed, line, inside + keys.word);
}

void in_path(Typed& typed, std::string_view line, const Scan& scan) {
  if (scan.brace != std::string::npos) return in_braces(typed, line, scan);
  typed.kind = Kind::name;
  if (line.ends_with('}')) {
    typed.kind = Kind::entry;
    typed.path = line.substr(scan.word);
    typed.start = line.size();
  } else if (scan.slash == std::string::npos) {
    set_word(typed, line, scan.word);
  } else {
    const std::size_t size = std::max<std::size_t>(scan.slash - scan.word, 1);
    typed.path = line.substr(scan.word, size);
    set_word(typed, line, scan.slash + 1);
  }
}

// Which operand the last word is. An option's own operand is a file.
Operand operand_at(const Command& command, const Words& before, std::size_t& place) {
  for (std::size_t i = 1; i < before.size(); ++i) {
    const bool option = place == 0 && before[i].starts_with('-');
    if (option && !command.option.operand.empty() && before[i] == command.option.name) {
      if (++i == before.size()) return Operand::file;
    } else if (!option) {
      ++place;
    }
  }
  return command.operands[std::min(place, command.operands.size() - 1)];
}

std::string common_prefix(const std::vector<Candidate>& candidates) {
  std::string common = candidates.front().word;
  for (const Candidate& c : candidates) {
    const auto differ = std::ranges::mismatch(common, c.word);
    common.erase(differ.in1, common.end());
  }
  // Never the half of a character.
  while (!common.empty() && std::ranges::any_of(candidates, [&](const Candidate& c) {
    return c.word.size() > common.size() && (c.word[common.size()] & 0xc0) == 0x80;
  })) {
    common.pop_back();
  }
  return common;
}

// The beginning of a word; the quote stays open.
std::string begun(const std::string& word, bool quoted) {
  std::string text = quote_word(word);
  if (!text.starts_with('"')) return quoted ? '"' + text : text;
  text.pop_back();
  return text;
}

}  // namespace

Typed typed_before(const std::string& cursor) {
  const Scan scan(cursor);
  Typed typed;
  typed.start = cursor.size();
  if (scan.words.empty()) {
    typed.kind = Kind::command;
    set_word(typed, cursor, scan.word);
    return typed;
  }
  Words before;
  for (const auto& [from, to] : scan.words) before.push_back(cursor.substr(from, to - from));
  typed.command = find_command(before.front());
  if (typed.command == nullptr) return typed;
  std::size_t place = 0;
  const Operand operand = operand_at(*typed.command, before, place);
  const bool bare = scan.word < cursor.size();
  if (place == 0 && bare && cursor[scan.word] == '-' && operand != Operand::file) {
    typed.kind = Kind::option;
    set_word(typed, cursor, scan.word);
    return typed;
  }
  const bool path =
      operand == Operand::path || (operand == Operand::topic && bare && cursor[scan.word] == '/');
  if (path) {
    in_path(typed, cursor, scan);
    return typed;
  }
  if (place > 0) typed.path = before[before.size() - place];
  set_word(typed, cursor, scan.word);
  constexpr std::pair<Operand, Kind> kKinds[] = {{Operand::value, Kind::value},
                                                 {Operand::choice, Kind::choice},
                                                 {Operand::attribute, Kind::attribute},
                                                 {Operand::file, Kind::file},
                                                 {Operand::topic, Kind::topic}};
  for (const auto& [takes, kind] : kKinds) {
    if (takes == operand) typed.kind = kind;
  }
  return typed;
}

Completion complete(const Typed& typed, const std::vector<Candidate>& candidates) {
  std::vector<Candidate> fitting;
  for (const Candidate& c : candidates) {
    if (c.word.starts_with(typed.word)) fitting.push_back(c);
  }
  if (fitting.empty()) return {typed.start, {}, {}};
  if (fitting.size() == 1) {
    const Candidate& only = fitting.front();
    return {typed.start, quote_word(only.word) + only.after, {}};
  }
  Words shown;
  shown.reserve(fitting.size());
  for (const Candidate& c : fitting) shown.push_back(quote_word(c.word));
  const std::string common = common_prefix(fitting);
  const bool nothing_yet = common.empty() && !typed.quoted;
  return {typed.start, nothing_yet ? "" : begun(common, typed.quoted), std::move(shown)};
}

}  // namespace standin::cli
