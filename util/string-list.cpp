#include "util/string-list.h"

#include "util/value-guards.h"

namespace quillet {

std::vector<std::string_view> split_words(std::string_view text) {
  std::vector<std::string_view> words;
  while (!text.empty()) {
    const std::size_t end = text.find(' ');
    if (end != 0) words.push_back(text.substr(0, end));
    text.remove_prefix(end == std::string_view::npos ? text.size() : end + 1);
  }
  return words;
}

std::string join_words(const confd_value_t* list, unsigned int count) {
  std::string text;
  for (unsigned int i = 0; i < count; ++i) {
    if (i > 0) text += ' ';
    text += c_text(CONFD_GET_BUFPTR(&list[i]), CONFD_GET_BUFSIZE(&list[i]));
  }
  return text;
}

}  // namespace quillet
