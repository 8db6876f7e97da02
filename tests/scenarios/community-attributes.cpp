#include <gtest/gtest.h>

#include "world.h"

namespace scenario {
namespace {

class CommunityAttributes : public World {
 protected:
  void SetUp() override {
    start_both();
    answers({"create " + kPublic, "create " + kPublic2, "set " + kPublic + "/context-name x"});
  }
  const std::string kPublic = kCommunities + "{public}";
  const std::string kPublic2 = kCommunities + "{public2}";
};

TEST_F(CommunityAttributes, SetReadAndRemoved) {
  EXPECT_EQ(cli({"attr", kPublic, "annotation"}), (Ran{1, "", ""}));
  EXPECT_EQ(cli({"attr", kPublic, "annotation", "of the \"old\" site"}), (Ran{0, "", ""}));
  EXPECT_EQ(cli({"attr", kPublic, "tags", "red", "blue"}), (Ran{0, "", ""}));
  EXPECT_EQ(cli({"attr", kPublic, "annotation"}), (Ran{0, "\"of the \\\"old\\\" site\"\n", ""}));
  EXPECT_EQ(cli({"attr", kPublic, "tags"}), (Ran{0, "red blue\n", ""}));
  EXPECT_EQ(cli({"attr", kPublic2, "annotation"}), (Ran{1, "", ""}));
  EXPECT_EQ(cli({"attr", kPublic, "annotation", "--delete"}), (Ran{0, "", ""}));
  EXPECT_EQ(cli({"attr", kPublic}), (Ran{0, "tags red blue\n", ""}));
  EXPECT_EQ(cli({"attr", kPublic, "tags", "--delete"}), (Ran{0, "", ""}));
  EXPECT_EQ(answers({"attr " + kPublic, "keys /attr-list"}), "not there\n");
}

TEST_F(CommunityAttributes, OfALeafGoWithTheLeaf) {
  const std::string leaf = kPublic + "/context-name";
  answers({"attr " + leaf + " annotation note", "attr " + kPublic + " annotation entry"});
  EXPECT_EQ(answers({"attr " + leaf + " annotation", "delete " + leaf, "set " + leaf + " y",
                     "attr " + leaf + " annotation", "attr " + kPublic + " annotation"}),
            "note\nnot there\nentry\n");
}

TEST_F(CommunityAttributes, GoWithTheEntryButASiblingKeepsItsOwn) {
  const std::string leaf = "/context-name";
  answers({"set " + kPublic2 + leaf + " x", "attr " + kPublic + " annotation one",
           "attr " + kPublic + leaf + " annotation two", "attr " + kPublic2 + " annotation three",
           "attr " + kPublic2 + leaf + " annotation four"});
  answers({"delete " + kPublic});
  answers({"set " + kPublic + leaf + " x"});
  EXPECT_EQ(
      answers({"attr " + kPublic, "attr " + kPublic + leaf, "attr " + kPublic2 + " annotation",
               "attr " + kPublic2 + leaf + " annotation"}),
      "not there\nnot there\nthree\nfour\n");
}

TEST_F(CommunityAttributes, AreForgottenWhenTheTransactionIsAborted) {
  answers({"attr " + kPublic + " annotation kept"});
  EXPECT_EQ(answers({"attr " + kPublic + " annotation lost", "attr " + kPublic2 + " tags lost",
                     "abort", "attr " + kPublic + " annotation", "attr " + kPublic2 + " tags"}),
            "kept\nnot there\n");
}

}  // namespace
}  // namespace scenario
