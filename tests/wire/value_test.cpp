#include "platform/wire/value.h"

#include <gtest/gtest.h>

namespace standin {
namespace {

TEST(TagNumber, KnownNamesGiveTheLow31BitsOfFnv1a) {
  EXPECT_EQ(tag_number(""), 0x811c9dc5u & 0x7fffffffu);
  EXPECT_EQ(tag_number("a"), 0xe40c292cu & 0x7fffffffu);
  EXPECT_EQ(tag_number("foobar"), 0xbf9cf968u & 0x7fffffffu);
}

}  // namespace
}  // namespace standin
