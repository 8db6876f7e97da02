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
  print_tree(out, everything());
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

TEST(PrintJson, NothingIsAnEmptyObject) {
  std::ostringstream out;
  print_json(out, {});
  EXPECT_EQ(out.str(), "{}\n");
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
  print_diff(out, {{'+', "/a", {}, "x y"}, {'-', "/b", {}, {}}, {'~', "/c", "1", "2"}});
  EXPECT_EQ(out.str(), "+ /a \"x y\"\n- /b\n~ /c 1 -> 2\n");
}

}  // namespace
}  // namespace standin::cli
