#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdlib>
#include <string>
#include <utility>
#include <vector>

#include "util/snmp-queue-utils.h"

namespace quillet {
namespace {

using ::testing::ElementsAre;

TEST(QueueInt, TakenPastItsEndStaysUsable) {
  queue_int* q = queue_int_new();
  EXPECT_EQ(queue_int_out(q), -1);
  EXPECT_EQ(q->count, 0);
  for (const int value : {7, 8, 9}) queue_int_in(q, value);
  EXPECT_EQ(queue_int_get_item(q, 0), 7);
  EXPECT_EQ(queue_int_get_item(q, 2), 9);
  EXPECT_EQ(queue_int_get_item(q, 3), -1);
  EXPECT_EQ(queue_int_get_item(q, -1), -1);
  EXPECT_EQ(queue_int_out(q), 7);
  EXPECT_EQ(queue_int_get_item(q, 0), 8);
  EXPECT_EQ(q->count, 2);
  queue_int_destroy(q);
}

class QueueChararr : public ::testing::Test {
 protected:
  void SetUp() override { q_ = queue_chararr_new(); }
  void TearDown() override { queue_chararr_destroy(q_); }
  void put(const std::string& text) {
    queue_chararr_in(q_, text.data(), static_cast<int>(text.size()));
  }
  queue_chararr* q_ = nullptr;
};

TEST_F(QueueChararr, HandsOutInOrderWithTheNulCounted) {
  put("one");
  put("");
  int length = 0;
  char* text = queue_chararr_out(q_, &length);
  EXPECT_STREQ(text, "one");
  EXPECT_EQ(length, 4);
  std::free(text);
  text = queue_chararr_out(q_, &length);
  EXPECT_STREQ(text, "");
  EXPECT_EQ(length, 1);
  std::free(text);
  EXPECT_EQ(queue_chararr_out(q_, &length), nullptr);
  EXPECT_EQ(length, 0);
  EXPECT_EQ(q_->count, 0);
}

TEST_F(QueueChararr, ContainsOnlyWholeStrings) {
  put("abc");
  EXPECT_EQ(queue_chararr_contains(q_, "ab", 2), 0);
  EXPECT_EQ(queue_chararr_contains(q_, "abcd", 4), 0);
  EXPECT_EQ(queue_chararr_contains(q_, "abc!", 3), 1);
  put("ab");
  EXPECT_EQ(queue_chararr_contains(q_, "ab", 2), 1);
}

TEST_F(QueueChararr, IteratorIsSortedAndOutlivesTheQueue) {
  for (const char* text : {"b", "abc", "a", "b"}) put(text);
  queue_chararr_iter* iter = queue_chararr_iter_new(q_);
  queue_chararr_destroy(std::exchange(q_, queue_chararr_new()));
  EXPECT_EQ(iter->width, 4);
  std::vector<std::string> names;
  while (iter->index < iter->count) names.emplace_back(queue_chararr_iter_next(iter));
  EXPECT_THAT(names, ElementsAre("a", "abc", "b", "b"));
  queue_chararr_iter_destroy(iter);
}

TEST(QmapStrStr, SetReplacesAndDeleteUnlinks) {
  qmap_str_str* m = qmap_str_str_new();
  qmap_str_str_set(m, "k", "1", 1);
  qmap_str_str_set(m, "k", "234", 2);
  EXPECT_EQ(m->count, 1);
  EXPECT_STREQ(qmap_str_str_value(m, "k"), "23");
  qmap_str_str_set(m, "l", "x", 1);
  qmap_str_str_set(m, "n", "y", 1);
  qmap_str_str_del(m, "absent");
  EXPECT_EQ(m->count, 3);
  qmap_str_str_del(m, "l");
  EXPECT_EQ(qmap_str_str_value(m, "l"), nullptr);
  ::testing::internal::CaptureStdout();
  qmap_str_str_print(m);
  EXPECT_EQ(::testing::internal::GetCapturedStdout(),
            "\nprinting validation map (len: 2) >>>\n\tk => 23\n\tn => y\n");
  qmap_str_str_destroy(m);
}

TEST(ContainersDeathTest, NullStopsTheProcessWithTheExpression) {
  EXPECT_DEATH(queue_int_in(nullptr, 1), "queue_int_in: .*q != NULL");
  EXPECT_DEATH(queue_chararr_maxlen(nullptr), "queue_chararr_maxlen: .*q != NULL");
  EXPECT_DEATH(qmap_str_str_value(nullptr, "k"), "qmap_str_str_value: .*m != NULL");
}

}  // namespace
}  // namespace quillet
