// Paths and command lines of clients: whatever is accepted prints and reads back the same.
#include <cstdint>
#include <cstdlib>

#include "platform/wire/path.h"

namespace {

using namespace standin;

std::string print(const Path& path) {
  std::string out = "/";
  for (const PathStep& step : path) {
    if (step.kind == PathStep::Kind::name) {
      out += '/' + step.name;
      continue;
    }
    out += '{';
    for (const Value& key : step.keys) out += quote_word(key.bytes()) + ' ';
    out += '}';
  }
  return out;
}

void check_path(std::string_view text) try {
  const Path path = parse_path(text);
  if (parse_path(print(path)) != path) std::abort();
} catch (const PathError&) {
}

void check_line(std::string_view text) try {
  const std::vector<std::string> words = split_words(text);
  std::string line;
  for (const std::string& word : words) line += quote_word(word) + '\t';
  if (split_words(line) != words) std::abort();
} catch (const PathError&) {
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::string_view text(reinterpret_cast<const char*>(data), size);
  check_path(text);
  check_line(text);
  return 0;
}
