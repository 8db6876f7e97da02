// The tag list: words of one column northbound.
#include "target-world.h"

namespace scenario {
namespace {

class TargetTags : public TargetWorld {
 protected:
  void SetUp() override {
    start_both();
    answers({"set " + target("t", "v1/sec-name") + " public"});
  }
  static std::string word(const std::string& text) { return target("t", "tag{" + text + "}"); }
  const std::string kTags = target("t", "tag");
  const std::string kColumn = addr("t", "TagList");
};

TEST_F(TargetTags, WordsAreAddedAndTakenOneByOne) {
  struct Step {
    std::string line, list;
  };
  const Step steps[] = {
      {"set " + kTags + " a", "a"},
      {"create " + word("foobar"), "a foobar"},
      {"create " + word("bar"), "a foobar bar"},  // no part of another word counts
      {"create " + word("foo"), "a foobar bar foo"},
      {"create " + word("a"), "a foobar bar foo"},  // twice is once
      {"delete " + word("bar"), "a foobar foo"},
      {"delete " + word("foo"), "a foobar"},
      {"delete " + word("a"), "foobar"},
      {"delete " + word("foobar"), ""},
      {"create " + word("x"), "x"},
      {"set " + kTags + " y x z", "y x z"},
      {"delete " + kTags, ""},
  };
  for (const Step& step : steps) {
    SCOPED_TRACE(step.line);
    changes({step.line},
            {{kColumn, step.list}, {kTags, step.list.empty() ? "not there" : step.list}});
  }
}

TEST_F(TargetTags, AreWalkedInOrderAndAskedOneByOne) {
  answers({"set " + kTags + " zeta alpha alphabet"});
  EXPECT_EQ(answers({"keys " + kTags, "exists " + word("alpha"), "exists " + word("alphabet"),
                     "exists " + word("alph"), "exists " + word("lpha"), "exists " + word("zeta")}),
            "zeta\nalpha\nalphabet\ntrue\ntrue\nfalse\nfalse\ntrue\n");
}

TEST_F(TargetTags, ListsOfTheMibSideAreRead) {
  // Blanks in any number stand between words there.
  answers({"set " + kColumn + " \" a  b \""});
  changes({}, {{kTags, "a b"}});
  EXPECT_EQ(answers({"keys " + kTags, "exists " + word("a"), "exists " + word("b")}),
            "a\nb\ntrue\ntrue\n");
  answers({"delete " + word("a")});
  EXPECT_EQ(answers({"keys " + kTags}), "b\n");
}

TEST_F(TargetTags, ListNeverOutgrowsItsColumn) {
  const std::string full(253, 'x');
  answers({"set " + kTags + " " + full});
  refused({"create " + word("ab")}, "error: Tag list too long\n");
  refused({"set " + kTags + " " + full + " ab"}, "error: Tag list too long\n");
  changes({"create " + word("a")}, {{kColumn, full + " a"}});
  refused({"delete " + word("none")}, "not there");
  // Octets count, not characters: here 100 and 30 of two octets each.
  const auto umlauts = [](int count) {
    std::string text;
    for (int i = 0; i < count; ++i) text += "\xc3\xbc";
    return text;
  };
  refused({"set " + kTags + " " + umlauts(100) + " " + umlauts(30)}, "error: Tag list too long\n");
}

}  // namespace
}  // namespace scenario
