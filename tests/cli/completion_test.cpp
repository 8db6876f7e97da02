#include "platform/cli/completion.h"

#include <gtest/gtest.h>

#include "platform/cli/history.h"

namespace standin::cli {
namespace {

using Kind = Typed::Kind;

TEST(Typed, FollowsFromWhatStandsBeforeTheCursor) {
  struct Case {
    std::string line;
    Kind kind;
    std::string path;
    Words keys;
    std::string word;
    std::size_t start;
  };
  const Case cases[] = {
      {"", Kind::command, "", {}, "", 0},
      {"  ge", Kind::command, "", {}, "ge", 2},
      {"frobnicate x", Kind::nothing, "", {}, "", 12},
      {"get ", Kind::name, "", {}, "", 4},
      {"get /s", Kind::name, "/", {}, "s", 5},
      {"get /snmp:snmp/com", Kind::name, "/snmp:snmp", {}, "com", 15},
      {"get /a{b c", Kind::key, "/a", {"b"}, "c", 9},
      {"get /a{\"} \\\" b", Kind::key, "/a", {}, "} \" b", 7},
      {"get /a{\"x y\" ", Kind::key, "/a", {"x y"}, "", 13},
      {"get /a{b}", Kind::entry, "/a{b}", {}, "", 9},
      {"get /a{\"b/}\"}/c", Kind::name, "/a{\"b/}\"}", {}, "c", 14},
      {"set /a{b c}/d ", Kind::value, "/a{b c}/d", {}, "", 14},
      {"set /a{\"b } c\"}/d x \"tr u", Kind::value, "/a{\"b } c\"}/d", {}, "tr u", 20},
      {"set --from-file fi", Kind::file, "", {}, "fi", 16},
      {"set --from-file f /a/", Kind::name, "/a", {}, "", 21},
      {"set --f", Kind::option, "", {}, "--f", 4},
      {"case /a pro", Kind::choice, "/a", {}, "pro", 8},
      {"attr /a t", Kind::attribute, "/a", {}, "t", 8},
      {"load ", Kind::file, "", {}, "", 5},
      {"help se", Kind::topic, "", {}, "se", 5},
      {"help /a/b", Kind::name, "/a", {}, "b", 8},
      {"get /a b", Kind::nothing, "", {}, "", 8},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.line);
    const Typed typed = typed_before(c.line);
    ASSERT_EQ(typed.kind, c.kind);
    if (c.kind == Kind::nothing) continue;
    EXPECT_EQ(typed.path, c.path);
    EXPECT_EQ(typed.keys, c.keys);
    EXPECT_EQ(typed.word, c.word);
    EXPECT_EQ(typed.start, c.start);
  }
}

TEST(Complete, QuotesWhatNeedsItAndStopsWhereWordsDiffer) {
  struct Case {
    std::string line;
    std::vector<Candidate> candidates;
    std::string text;
    Words shown;
  };
  const std::vector<Candidate> keys = {
      {"branch office", "}"}, {"branch \"x\"", "}"}, {"public", "}"}, {"", "}"}};
  const Case cases[] = {
      {"get /a{p", keys, "public}", {}},
      {"get /a{\"p", keys, "public}", {}},
      {"get /a{br", keys, "\"branch ", {"\"branch office\"", "\"branch \\\"x\\\"\""}},
      {"get /a{\"branch \\\"", keys, "\"branch \\\"x\\\"\"}", {}},
      {"get /a{", {{"", "}"}}, "\"\"}", {}},
      {"get /a{", {{"x", "}"}, {"y", "}"}}, "", {"x", "y"}},
      {"get /a{z", keys, "", {}},
      {"get /a{", {{"\xc3\xa4", "}"}, {"\xc3\xb6", "}"}}, "", {"\xc3\xa4", "\xc3\xb6"}},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.line);
    const Completion done = complete(typed_before(c.line), c.candidates);
    EXPECT_EQ(done.text, c.text);
    EXPECT_EQ(done.shown, c.shown);
  }
}

TEST(HistoryFile, StandsInTheStateDirectory) {
  EXPECT_EQ(history_file("/state", "/home/u"), "/state/standin-cli/history");
  EXPECT_EQ(history_file("relative", "/home/u"), "/home/u/.local/state/standin-cli/history");
  EXPECT_EQ(history_file(nullptr, nullptr), "");
}

}  // namespace
}  // namespace standin::cli
