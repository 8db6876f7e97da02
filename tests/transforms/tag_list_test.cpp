#include <gtest/gtest.h>

#include <string>

#include "transforms/tag-list.h"

namespace quillet {
namespace {

confd_value_t view(const std::string& text) {
  confd_value_t v;
  CONFD_SET_BUF(&v, const_cast<char*>(text.data()), text.size());
  return v;
}

using Operation = int (*)(const confd_value_t*, const confd_value_t*, confd_value_t*);

// The new list, or "unchanged".
std::string apply(Operation operation, const std::string& list, const std::string& word) {
  const confd_value_t l = view(list);
  const confd_value_t w = view(word);
  confd_value_t out;
  CONFD_SET_BOOL(&out, 1);
  if (operation(&l, &w, &out) == 0) {
    EXPECT_EQ(out.type, C_NOEXISTS);
    return "unchanged";
  }
  std::string text(reinterpret_cast<const char*>(CONFD_GET_BUFPTR(&out)), CONFD_GET_BUFSIZE(&out));
  confd_free_value(&out);
  return text;
}

TEST(TagList, FindLooksAtWholeWords) {
  const struct {
    std::string list, word;
    int at;
  } cases[] = {{"a b", "b", 2},   {"foobar baz", "bar", -1}, {"foobar bar", "bar", 7},
               {"", "a", -1},     {"bar barbar", "bar", 0},  {"barbar bar", "bar", 7},
               {"a  b ", "b", 3}, {"abc", "abcd", -1},       {"xx x", "x", 3}};
  for (const auto& c : cases) {
    const auto at =
        find_word_in_string_list(c.list.data(), c.list.size(), c.word.data(), c.word.size());
    EXPECT_EQ(at ? static_cast<int>(*at) : -1, c.at) << c.word << " in " << c.list;
  }
}

TEST(TagList, AddAppendsAnAbsentWord) {
  EXPECT_EQ(apply(add_word_to_string_list, "", "a"), "a");
  EXPECT_EQ(apply(add_word_to_string_list, "a", "b"), "a b");
  EXPECT_EQ(apply(add_word_to_string_list, "foobar", "bar"), "foobar bar");
  EXPECT_EQ(apply(add_word_to_string_list, "a b", "a"), "unchanged");
}

TEST(TagList, RemoveTakesTheFirstOccurrenceAndOneSpace) {
  EXPECT_EQ(apply(remove_word_from_string_list, "a", "a"), "");
  EXPECT_EQ(apply(remove_word_from_string_list, "a b c", "a"), "b c");
  EXPECT_EQ(apply(remove_word_from_string_list, "a b c", "b"), "a c");
  EXPECT_EQ(apply(remove_word_from_string_list, "a b c", "c"), "a b");
  EXPECT_EQ(apply(remove_word_from_string_list, "ab ab", "ab"), "ab");
  EXPECT_EQ(apply(remove_word_from_string_list, "a b", "x"), "unchanged");
  EXPECT_EQ(apply(remove_word_from_string_list, "a  b", "b"), "a ");
}

TEST(TagList, OtherTypesAreAssertions) {
  confd_value_t number, word = view("a"), out;
  CONFD_SET_INT32(&number, 1);
  EXPECT_DEATH(add_word_to_string_list(&number, &word, &out), "\\(haystack\\)->type == C_BUF");
  EXPECT_DEATH(remove_word_from_string_list(&word, &number, &out), "\\(needle\\)->type == C_BUF");
}

}  // namespace
}  // namespace quillet
