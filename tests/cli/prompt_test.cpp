#include "platform/cli/prompt.h"

#include <gtest/gtest.h>

namespace standin::cli {
namespace {

TEST(CompletionPlace, FollowsFromWhatStandsBeforeTheCursor) {
  using Kind = CompletionPlace::Kind;
  struct Case {
    std::string line;
    Kind kind;
    std::string path;
  };
  const Case cases[] = {
      {"", Kind::command, ""},
      {"ge", Kind::command, ""},
      {"get ", Kind::path, "/"},
      {"get /snmp:snmp/com", Kind::path, "/snmp:snmp/com"},
      {"get /a{b c", Kind::path, "/a{b c"},
      {"get /a{\"} \\\" b", Kind::path, "/a{\"} \\\" b"},
      {"set /a{b c}/d ", Kind::value, "/a{b c}/d"},
      {"set /a{\"b } c\"}/d tr", Kind::value, "/a{\"b } c\"}/d"},
      {"get /a b", Kind::nothing, ""},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.line);
    const CompletionPlace place = completion_place(c.line);
    EXPECT_EQ(place.kind, c.kind);
    EXPECT_EQ(place.path, c.path);
  }
}

}  // namespace
}  // namespace standin::cli
