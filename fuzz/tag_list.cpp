// A list and a word, divided by the first newline: what is added is found, what is removed is gone
// once, and nothing else changes.
#include <cstdint>
#include <cstdlib>
#include <string>

#include "transforms/tag-list.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::string input(reinterpret_cast<const char*>(data), size);
  const auto newline = input.find('\n');
  if (newline == std::string::npos) return 0;
  std::string list = input.substr(0, newline);
  std::string word = input.substr(newline + 1);
  confd_value_t l, w, longer, shorter;
  CONFD_SET_BUF(&l, list.data(), list.size());
  CONFD_SET_BUF(&w, word.data(), word.size());
  if (quillet::add_word_to_string_list(&l, &w, &longer) == 1) {
    const auto* text = reinterpret_cast<const char*>(CONFD_GET_BUFPTR(&longer));
    if (!quillet::find_word_in_string_list(text, CONFD_GET_BUFSIZE(&longer), word.data(),
                                           word.size()) &&
        !word.empty()) {
      std::abort();
    }
    if (quillet::remove_word_from_string_list(&longer, &w, &shorter) == 1) {
      if (!word.empty() && !list.empty() && !confd_val_eq(&shorter, &l)) std::abort();
      confd_free_value(&shorter);
    }
  }
  confd_free_value(&longer);
  if (quillet::remove_word_from_string_list(&l, &w, &shorter) == 1 &&
      CONFD_GET_BUFSIZE(&shorter) > list.size()) {
    std::abort();
  }
  confd_free_value(&shorter);
  return 0;
}
