#include "util/string-list.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "util/value-guards.h"

namespace quillet {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

TEST(SplitWords, OnlyBlanksSeparate) {
  EXPECT_THAT(split_words("a bc d"), ElementsAre("a", "bc", "d"));
  EXPECT_THAT(split_words("  a  bc "), ElementsAre("a", "bc"));
  EXPECT_THAT(split_words("a\tb"), ElementsAre("a\tb"));
  EXPECT_THAT(split_words(""), IsEmpty());
  EXPECT_THAT(split_words("   "), IsEmpty());
}

std::string joined(const std::vector<std::string_view>& words) {
  std::vector<confd_value_t> values;
  for (const auto word : words) values.push_back(buf_value(word));
  return join_words(values.data(), static_cast<unsigned int>(values.size()));
}

TEST(JoinWords, OneBlankBetweenAndNoneAtTheEnds) {
  EXPECT_EQ(joined({}), "");
  EXPECT_EQ(joined({"a"}), "a");
  EXPECT_EQ(joined({"a", "bc", "d"}), "a bc d");
}

TEST(JoinWords, WordEndsAtItsFirstNul) {
  EXPECT_EQ(joined({std::string_view("ab\0cd", 5), "e"}), "ab e");
}

TEST(JoinWordsDeathTest, ElementOfAnotherTypeStopsTheProcess) {
  const confd_value_t number = int32_value(1);
  EXPECT_DEATH(join_words(&number, 1), "list\\[i\\]\\)->type == C_BUF");
}

}  // namespace
}  // namespace quillet
