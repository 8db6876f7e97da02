// The tag list: words of one column northbound.
#include "target-world.h"

namespace scenario {
namespace {

class TargetTags : public TargetWorld {
 protected:
  void SetUp() override {
    TargetWorld::SetUp();
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
                     "exists " + word("alph"), "exists " + word("lpha")}),
            "zeta\nalpha\nalphabet\ntrue\ntrue\nfalse\nfalse\n");
  // On the MIB side blanks in any number stand between words.
  answers({"set " + kColumn + " \" a  b \""});
  EXPECT_EQ(answers({"get " + kTags, "keys " + kTags, "exists " + word("b"), "delete " + word("a"),
                     "keys " + kTags}),
            "a b\na\nb\ntrue\nb\n");
}

TEST_F(TargetTags, ListNeverOutgrowsItsColumn) {
  const std::string full(253, 'x');
  answers({"set " + kTags + " " + full});
  refused({"create " + word("ab")}, "error: Tag list too long\n");
  refused({"set " + kTags + " " + full + " ab"}, "error: Tag list too long\n");
  changes({"create " + word("a")}, {{kColumn, full + " a"}});
  refused({"delete " + word("none")}, "not there");
  // Octets count, not characters.
  std::string umlauts;
  for (int i = 0; i < 127; ++i) umlauts += "\u00fc";
  refused({"set " + kTags + " " + umlauts + " ab"}, "error: Tag list too long\n");
}

}  // namespace
}  // namespace scenario
