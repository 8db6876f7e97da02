#include "platform/wire/path.h"

#include <gmock/gmock.h>

namespace standin {
namespace {

using ::testing::HasSubstr;

// A path in a form that shows where each word begins and ends.
std::string shape(const Path& path) {
  std::string out;
  for (const PathStep& step : path) {
    if (step.kind == PathStep::Kind::name) out += "/" + step.name;
    if (step.kind == PathStep::Kind::tag) out += "#" + to_text(Value::tag(step.tag));
    for (const Value& key : step.keys) {
      EXPECT_TRUE(step.kind == PathStep::Kind::keys);
      out += "[" + to_text(key) + "]";
    }
  }
  return out;
}

TEST(PathText, WellFormedTextGivesItsSteps) {
  const std::pair<const char*, const char*> cases[] = {
      {"/", ""},
      {"///", ""},
      {"/snmp:snmp", "/snmp:snmp"},
      {"/snmp:snmp/community{public}/name", "/snmp:snmp/community[public]/name"},
      {"/a//b///c/", "/a/b/c"},
      {"/a{x}/", "/a[x]"},
      {"/a{1 2\t3}", "/a[1][2][3]"},
      {"/a{ x  y }", "/a[x][y]"},
      {R"(/a{""})", "/a[]"},
      {R"(/a{"" usm ""}/b)", "/a[][usm][]/b"},
      {R"(/a{"b c" d}/e)", "/a[b c][d]/e"},
      {R"(/a{"{}/\"\\"}/b)", R"(/a[{}/"\]/b)"},
      {"/a{%s%n}", "/a[%s%n]"},
      {"/a{zo\xc3\xab \xff}", "/a[zo\xc3\xab][\xff]"},
      {"/a{x/y:z[1]}", "/a[x/y:z[1]]"},
      {"/SNMP_TARGET_MIB:SNMP-TARGET-MIB/a.b_c-d", "/SNMP_TARGET_MIB:SNMP-TARGET-MIB/a.b_c-d"},
  };
  for (const auto& [text, expected] : cases) EXPECT_EQ(shape(parse_path(text)), expected) << text;
}

TEST(PathText, MalformedTextIsRefusedWithItsPlace) {
  const std::pair<const char*, const char*> cases[] = {
      {"", "no slash at the beginning of the path at character 1"},
      {"a/b", "no slash at the beginning of the path at character 1"},
      {"/{x}", "no element name at character 2"},
      {"/a/{x}", "no element name at character 4"},
      {"/a{x}{y}", "unexpected '{' at character 6"},
      {"/a{x}b", "unexpected 'b' at character 6"},
      {"/a b", "unexpected ' ' at character 3"},
      {"/a}", "unexpected '}' at character 3"},
      {"/a{}", "braces without a key at character 3"},
      {"/a{ ", "brace without an end at character 3"},
      {"/a{x", "brace without an end at character 3"},
      {R"(/a{"x)", "quote without an end at character 4"},
      {R"(/a{"x\)", "quote without an end at character 4"},
      {R"(/a{"x\n"})", "backslash before neither a quote nor a backslash at character 6"},
      {R"(/a{"x"y})", "'y' inside a key outside quotes at character 7"},
      {R"(/a{x"y"})", "'\"' inside a key outside quotes at character 5"},
      {"/a{x{y}}", "'{' inside a key outside quotes at character 5"},
      {R"(/a{x\})", "'\\' inside a key outside quotes at character 5"},
      {"/:a", "misplaced colon at character 2"},
      {"/a:", "misplaced colon at character 2"},
      {"/a:b:c", "misplaced colon at character 2"},
      {"/a%s", "unexpected '%' at character 3"},
  };
  for (const auto& [text, message] : cases) {
    try {
      const Path path = parse_path(text);
      ADD_FAILURE() << text << " gave " << shape(path);
    } catch (const PathError& e) {
      EXPECT_THAT(e.what(), HasSubstr(message)) << text;
    }
  }
}

TEST(CommandLine, WordsFollowTheRuleAndPathsStayWhole) {
  const std::pair<const char*, std::vector<std::string>> cases[] = {
      {"", {}},
      {" \t ", {}},
      {"get /a", {"get", "/a"}},
      {R"(set /a{"x y" z}/b "v w" "")", {"set", R"(/a{"x y" z}/b)", "v w", ""}},
      {R"(set "/a{\"x\"}" "\\")", {"set", R"(/a{"x"})", "\\"}},
      {R"(get /a{"}\""}/b c)", {"get", R"(/a{"}\""}/b)", "c"}},
      {"a %s zo\xc3\xab", {"a", "%s", "zo\xc3\xab"}},
  };
  for (const auto& [line, words] : cases) EXPECT_EQ(split_words(line), words) << line;
}

TEST(CommandLine, WordsThatNeedQuotesAreRefusedWithoutThem) {
  for (const char* line :
       {"a\"b\"", "a\\b", "a}", "a{b", "a{b{c}}", "\"a", "\"a\"b", "\"\\x\"", "a{\"b}", "\"a\\"}) {
    EXPECT_THROW(split_words(line), PathError) << line;
  }
}

TEST(CommandLine, RefusalDoesNotRepeatTheLine) {
  try {
    split_words("set /a/password \"maplesyrup");
    FAIL();
  } catch (const PathError& e) {
    EXPECT_STREQ(e.what(), "quote without an end at character 17 of the line");
  }
}

TEST(QuoteWord, QuotesOnlyWhatNeedsThem) {
  for (const char* plain : {"plain/1:2%s", "\xc3\xab"}) EXPECT_EQ(quote_word(plain), plain);
  for (const char* word : {"", "a b", "a\tb", "a\nb", "{", "}"})
    EXPECT_EQ(quote_word(word), '"' + std::string(word) + '"');
  EXPECT_EQ(quote_word("\"\\"), R"("\"\\")");
}

TEST(QuoteWord, EveryOctetComesBackFromALineAndFromAPath) {
  for (int octet = 1; octet < 256; ++octet) {
    const std::string word = {'a', static_cast<char>(octet), 'b'};
    EXPECT_EQ(split_words("x " + quote_word(word)), (std::vector<std::string>{"x", word}));
    EXPECT_EQ(parse_path("/x{" + quote_word(word) + "}")[1].keys, Level{Value::text(word)});
  }
}

TEST(KeypathToPath, ElementsBecomeTagsAndKeysStayTyped) {
  const Keypath kp = {{Value::tag({1, 2})},
                      {Value::tag({3, 2})},
                      {Value::oid({1, 3}), Value::int32(4)},
                      {Value::tag({5, 2})}};
  const Path path = to_path(kp);
  EXPECT_EQ(shape(path), "#2:1#2:3[1.3][4]#2:5");
  EXPECT_EQ(path[2].keys, kp[2]);
}

}  // namespace
}  // namespace standin
