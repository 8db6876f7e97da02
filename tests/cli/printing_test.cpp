#include "platform/cli/printing.h"

#include <gtest/gtest.h>

#include <sstream>

namespace standin::cli {
namespace {

ShownNode leaf(const std::string& name, const std::string& text, JsonForm form = JsonForm::quoted) {
  ShownNode node{.kind = NodeKind::leaf, .name = name, .module = "m"};
  node.texts = {text};
  node.form = form;
  return node;
}

// Every kind of node, and one of another module below.
std::vector<ShownNode> everything() {
  ShownNode top{.kind = NodeKind::container, .name = "top", .module = "m"};
  ShownNode list{.kind = NodeKind::list, .name = "entry", .module = "m"};
  ShownNode secret = leaf("key", "$8$xyz");
  secret.secret = true;
  list.entries = {{{"a b"}, {leaf("name", "a b"), secret}}, {{"c"}, {leaf("name", "c")}}};
  ShownNode words{.kind = NodeKind::leaf_list, .name = "words", .module = "m"};
  words.texts = {"x", "y z"};
  ShownNode none{.kind = NodeKind::leaf_list, .name = "none", .module = "m"};
  ShownNode broken{.kind = NodeKind::error, .name = "broken", .module = "m"};
  broken.texts = {"Unknown tag: broken"};
  ShownNode other = leaf("other", "18446744073709551615");
  other.module = "n";
  top.children = {leaf("count", "5", JsonForm::raw),
                  leaf("on", "true", JsonForm::raw),
                  leaf("flag", "", JsonForm::empty),
                  list,
                  words,
                  none,
                  broken,
                  other};
  return {top};
}

TEST(PrintTree, IsIndentedAndMasksSecrets) {
  std::ostringstream out;
  print_tree(out, everything(), {});
  EXPECT_EQ(out.str(), R"(top
  count 5
  on true
  flag
  entry "a b"
    key ********
  entry c
  words x "y z"
  none
  broken error: Unknown tag: broken
  other 18446744073709551615
)");
}

TEST(PrintTree, ForPeopleIsAlignedColouredAndHarmless) {
  ShownNode top{.kind = NodeKind::container, .name = "top", .module = "m"};
  ShownNode secret = leaf("password", "$8$xyz");
  secret.secret = true;
  top.children = {secret, leaf("on", "x\x1b[2J\n\xc2\x9b")};
  std::ostringstream aligned, coloured;
  print_tree(aligned, {top}, {true, false});
  EXPECT_EQ(aligned.str(), "top\n  password  (set)\n  on        \"x\\x1b[2J\\n\\x9b\"\n");
  print_tree(coloured, {top}, {true, true});
  EXPECT_EQ(coloured.str(),
            "\x1b[1mtop\x1b[0m\n  password  \x1b[33m(set)\x1b[0m\n"
            "  on        \x1b[32m\"x\\x1b[2J\\n\\x9b\"\x1b[0m\n");
}

TEST(ChooseLook, FollowsTheOptionTheTerminalAndTheEnvironment) {
  struct Case {
    ColourWhen when;
    bool terminal;
    const char *no_color, *term;
    bool aligned, coloured;
  };
  using enum ColourWhen;
  const Case cases[] = {
      {automatic, true, nullptr, "xterm", true, true},
      {automatic, true, "1", "xterm", true, false},
      {automatic, true, nullptr, "dumb", true, false},
      {automatic, false, nullptr, "xterm", false, false},
      {never, true, nullptr, "xterm", true, false},
      {always, false, "1", "dumb", true, true},
  };
  for (const Case& c : cases) {
    const Look look = choose_look(c.when, c.terminal, c.no_color, c.term);
    EXPECT_EQ(look.aligned, c.aligned) << &c - cases;
    EXPECT_EQ(look.coloured, c.coloured) << &c - cases;
  }
}

TEST(PrintJson, FollowsTheYangEncoding) {
  std::ostringstream out;
  print_json(out, everything());
  EXPECT_EQ(out.str(), R"({
  "m:top": {
    "count": 5,
    "on": true,
    "flag": [null],
    "entry": [
      {
        "name": "a b",
        "key": "$8$xyz"
      },
      {
        "name": "c"
      }
    ],
    "words": [
      "x",
      "y z"
    ],
    "none": [],
    "n:other": "18446744073709551615"
  }
}
)");
}

TEST(JsonString, EscapesWhatJsonAsksFor) {
  EXPECT_EQ(json_string("a\"b\\c\n\t\x01/\xc3\xbc"), "\"a\\\"b\\\\c\\n\\t\\u0001/\xc3\xbc\"");
}

TEST(PrintStatus, NamesEachDaemonOnALine) {
  std::ostringstream out;
  print_status(out, {4565, 2, {{"one", true, {"a", "b"}}, {"two", false, {}}}, 3});
  EXPECT_EQ(out.str(),
            "phase 2\nport 4565\ndaemon one connected a b\ndaemon two gone\ntransactions 3\n");
}

TEST(PrintDiff, ShowsBeforeAndAfter) {
  std::ostringstream out;
  print_diff(out, {{'+', "/a", {}, "x y"}, {'-', "/b", {}, {}}, {'~', "/c", "1", "2"}}, {});
  EXPECT_EQ(out.str(), "+ /a \"x y\"\n- /b\n~ /c 1 -> 2\n");
  std::ostringstream people;
  print_diff(people, {{'~', "/key", "********", "********"}}, {true, true});
  EXPECT_EQ(people.str(), "\x1b[33m~ /key (set) -> (set)\x1b[0m\n");
}

}  // namespace
}  // namespace standin::cli
