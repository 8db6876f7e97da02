#include "transforms/tag-list.h"

namespace quillet {
namespace {

std::string_view octets_of(const unsigned char* data, std::size_t size) {
  return {reinterpret_cast<const char*>(data), size};
}

void set_out(confd_value_t* out, const std::string& text) {
  confd_value_t view;
  CONFD_SET_BUF(&view, const_cast<char*>(text.data()), text.size());
  confd_value_dup_to(&view, out);
}

}  // namespace

std::optional<std::size_t> find_word_in_string_list(const char* list_text, std::size_t list_len,
                                                    const char* word_text, std::size_t word_len) {
  const std::string_view list(list_text, list_len);
  const std::string_view word(word_text, word_len);
  for (std::size_t at = 0; at < list.size(); ++at) {
    at = list.find(word, at);
    if (at == std::string_view::npos) return std::nullopt;
    const bool starts = at == 0 || list[at - 1] == ' ';
    const std::size_t after = at + word.size();
    const bool ends = after == list.size() || list[after] == ' ';
    if (starts && ends) return at;
  }
  return std::nullopt;
}

int add_word_to_string_list(const confd_value_t* haystack, const confd_value_t* needle,
                            confd_value_t* out) {
  CONFD_SET_NOEXISTS(out);
  const std::string_view list = octets_of(CONFD_GET_BUFPTR(haystack), CONFD_GET_BUFSIZE(haystack));
  const std::string_view word = octets_of(CONFD_GET_BUFPTR(needle), CONFD_GET_BUFSIZE(needle));
  if (find_word_in_string_list(list.data(), list.size(), word.data(), word.size())) return 0;
  std::string text(list);
  if (!text.empty()) text += ' ';
  set_out(out, text.append(word));
  return 1;
}

int remove_word_from_string_list(const confd_value_t* haystack, const confd_value_t* needle,
                                 confd_value_t* out) {
  CONFD_SET_NOEXISTS(out);
  const std::string_view list = octets_of(CONFD_GET_BUFPTR(haystack), CONFD_GET_BUFSIZE(haystack));
  const std::string_view word = octets_of(CONFD_GET_BUFPTR(needle), CONFD_GET_BUFSIZE(needle));
  const auto at = find_word_in_string_list(list.data(), list.size(), word.data(), word.size());
  if (!at) return 0;
  // The word goes with the one space that follows it, or, for the last word, precedes it.
  std::string text(list);
  if (*at + word.size() < list.size()) {
    text.erase(*at, word.size() + 1);
  } else {
    text.erase(*at > 0 ? *at - 1 : 0);
  }
  set_out(out, text);
  return 1;
}

}  // namespace quillet
