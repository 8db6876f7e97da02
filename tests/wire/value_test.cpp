#include "platform/wire/value.h"

#include <gtest/gtest.h>

#include <limits>

namespace standin {
namespace {

using namespace std::string_literals;

TEST(ValueText, EachTypePrintsItsForm) {
  const std::pair<Value, std::string> cases[] = {
      {Value(), ""},
      {Value::tag({7, 9}), "9:7"},
      {Value::buf("a \"b\"\n%s"), "a \"b\"\n%s"},
      {Value::text("zo\xc3\xab"), "zo\xc3\xab"},
      {Value::signed_number(Type::int64, std::numeric_limits<std::int64_t>::min()),
       "-9223372036854775808"},
      {Value::unsigned_number(Type::uint64, std::numeric_limits<std::uint64_t>::max()),
       "18446744073709551615"},
      {Value::enumeration(-3), "-3"},
      {Value::boolean(true), "true"},
      {Value::boolean(false), "false"},
      {Value::oid({1, 3, 4294967295u}), "1.3.4294967295"},
      {Value::oid({}), ""},
      {Value::octets("\x80\x00\x7e\xd9"s), "80:00:7e:d9"},
      {Value::octets(""), ""},
      {Value::address("\x7f\x00\x00\x01"s), "127.0.0.1"},
      {Value::address("\x20\x01\x0d\xb8\0\0\0\0\0\0\0\0\0\0\0\1"s), "2001:db8::1"},
      {Value::address("\x01\x02"), "01:02"},
      {Value::list({Value::buf("a"), Value::int32(-1), Value::buf("")}), "a -1 "},
      {Value::list({}), ""},
  };
  for (const auto& [value, text] : cases) EXPECT_EQ(to_text(value), text);
}

TEST(ValueEquality, SameContentOfAnotherTypeDiffers) {
  EXPECT_NE(Value::buf("a"), Value::octets("a"));
  EXPECT_NE(Value::buf("a"), Value::buf("a\0"s));
  EXPECT_NE(Value::int32(1), Value::enumeration(1));
  EXPECT_EQ(Value::list({Value::oid({1})}), Value::list({Value::oid({1})}));
}

TEST(TagNumber, KnownNamesGiveTheLow31BitsOfFnv1a) {
  EXPECT_EQ(tag_number(""), 0x811c9dc5u & 0x7fffffffu);
  EXPECT_EQ(tag_number("a"), 0xe40c292cu & 0x7fffffffu);
  EXPECT_EQ(tag_number("foobar"), 0xbf9cf968u & 0x7fffffffu);
}

}  // namespace
}  // namespace standin
