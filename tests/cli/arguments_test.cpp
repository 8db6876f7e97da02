#include "platform/cli/arguments.h"

#include <gtest/gtest.h>

#include "platform/cli/attributes.h"
#include "platform/cli/commands.h"
#include "platform/wire/path.h"

namespace standin::cli {
namespace {

using Access = NorthboundSession::Access;

TEST(CliArguments, OptionsStandBeforeTheCommand) {
  struct Case {
    const char* line;
    std::uint16_t port;
    const char* command;
  };
  const Case cases[] = {{"", 4565, ""},
                        {"get /a", 4565, "get /a"},
                        {"-P 1 get /a", 1, "get /a"},
                        {"-P65535 -- set /a -P", 65535, "set /a -P"}};
  for (const Case& c : cases) {
    const Arguments parsed = parse_arguments(split_words(c.line));
    EXPECT_EQ(parsed.port, c.port);
    EXPECT_EQ(parsed.command, split_words(c.command));
  }
  for (const char* line :
       {"-x", "-P", "-P 0", "-P 65536", "-P 12x", "-P -1", "--json", "-P \"\"", "--color=red"}) {
    EXPECT_THROW(parse_arguments(split_words(line)), UsageError) << line;
  }
}

TEST(CliCommands, WordsAreSortedIntoOptionAndOperands) {
  struct Case {
    const char* line;
    bool option;
    const char* operands;
    Access access;
  };
  const Case cases[] = {
      {"show", false, "", Access::read},
      {"show --json /a", true, "/a", Access::read},
      {"show /a --json", true, "/a", Access::read},
      {"set /a -5", false, "/a -5", Access::write},
      {"set /a --", false, "/a --", Access::write},
      {"set -- /a --json", false, "/a --json", Access::write},
      {"set --from-file f /a", true, "/a", Access::write},
      {"set /a --from-file f", false, "/a --from-file f", Access::write},
      {"? set", false, "set", Access::none},
      {"attr /a tags", false, "/a tags", Access::read},
      {"attr /a tags x", false, "/a tags x", Access::write},
      {"attr /a tags --delete", true, "/a tags", Access::write},
      {"attr /a tags -- --delete", false, "/a tags --delete", Access::write},
      {"status", false, "", Access::none},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.line);
    const Call call = parse_command(split_words(c.line));
    EXPECT_EQ(call.option, c.option);
    EXPECT_EQ(call.operands, split_words(c.operands));
    EXPECT_EQ(access_of(call), c.access);
  }
}

TEST(CliCommands, WrongCommandsOptionsAndCountsAreUsageErrors) {
  for (const char* line : {"frobnicate", "get", "get /a /b", "get --json", "case /a", "set",
                           "set -x /a", "set --from-file", "set --from-file f", "commit x", "load",
                           "show /a /b", "start now", "attr --delete"}) {
    EXPECT_THROW(parse_command(split_words(line)), UsageError) << line;
  }
}

TEST(ErrorLine, IsOneLine) {
  EXPECT_EQ(error_line("no\nsuch\tnode\x7f!\n"), "error: no such node !");
  EXPECT_EQ(error_line("ends in a blank: "), "error: ends in a blank: ");
  EXPECT_EQ(error_line(""), "error: ");
}

TEST(CliAttributes, NamesAndNumbersGoBothWays) {
  for (const char* name : {"annotation", "tags", "inactive", "42"}) {
    EXPECT_EQ(attribute_name(attribute_number(name)), name);
  }
  EXPECT_EQ(attribute_number("0x80000000"), attribute_number("tags"));
  for (const char* name : {"", "tag", "12x", "-1", "4294967296", "0x"}) {
    EXPECT_THROW(attribute_number(name), UsageError) << name;
  }
}

TEST(CliAttributes, ValuesFollowTheAttribute) {
  struct Case {
    std::string name;
    Words given;
    Value value;
    Words shown;
  };
  const Case cases[] = {
      {"annotation", {"a b"}, Value::buf("a b"), {"a b"}},
      {"annotation", {""}, Value::buf(""), {""}},
      {"tags",
       {"red blue", "\"a b\""},
       Value::list({Value::buf("red"), Value::buf("blue"), Value::buf("a b")}),
       {"red", "blue", "a b"}},
      {"tags", {""}, Value::list({}), {}},
      {"inactive", {""}, Value::boolean(true), {}},
      {"7", {"x"}, Value::buf("x"), {"x"}},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.name);
    const Value value = attribute_value(attribute_number(c.name), c.given);
    EXPECT_EQ(value, c.value);
    EXPECT_EQ(attribute_words(value), c.shown);
  }
  EXPECT_THROW(attribute_value(attribute_number("annotation"), {"a", "b"}), UsageError);
  EXPECT_THROW(attribute_value(attribute_number("inactive"), {"false"}), UsageError);
  EXPECT_THROW(attribute_value(attribute_number("tags"), {"\"open"}), PathError);
}

}  // namespace
}  // namespace standin::cli
