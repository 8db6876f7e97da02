#include "platform/standin/data/json.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "platform/standin/schema/schema.h"

namespace standin {
namespace {

TEST(Json, KeepsOrderLinesAndTexts) {
  const Json j =
      parse_json("{\n \"b\": [1, -2.5e3, true, null],\n \"a\": \"\\u00e9\\ud83d\\ude00\\n\"}");
  ASSERT_EQ(j.members.size(), 2U);
  EXPECT_EQ(j.members[0].name, "b");
  ASSERT_EQ(j.members[0].value.items.size(), 4U);
  EXPECT_EQ(j.members[0].value.items[1].text, "-2.5e3");
  EXPECT_EQ(j.members[0].value.items[3].kind, Json::Kind::null);
  EXPECT_EQ(j.members[1].value.line, 3);
  EXPECT_EQ(j.members[1].value.text, "\xc3\xa9\xf0\x9f\x98\x80\n");
}

TEST(Json, RefusesWithTheLine) {
  const std::pair<const char*, const char*> cases[] = {
      {"{\"a\": 1", "line 1: expected \"}\""},
      {"{\"a\"\n: 01}", "line 2: this is no value"},
      {"{\"a\": 1, \"a\": 2}", "line 1: \"a\" stands twice"},
      {"[1,]", "line 1: expected a value"},
      {"\n\n\"x", "line 3: a text without its closing quote"},
      {"\"\\ud800\"", "half of a surrogate pair"},
      {"\"\\q\"", "unknown escape"},
      {"\"a\tb\"", "control character"},
      {"{} x", "unexpected text"},
      {"", "expected a value"},
  };
  for (const auto& [text, reason] : cases) {
    try {
      parse_json(text);
      ADD_FAILURE() << "taken: " << text;
    } catch (const Refusal& refused) {
      EXPECT_THAT(refused.what(), ::testing::HasSubstr(reason)) << text;
    }
  }
  EXPECT_THROW(parse_json(std::string(100000, '[')), Refusal);
}

}  // namespace
}  // namespace standin
