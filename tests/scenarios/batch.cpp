#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <signal.h>

#include "world.h"

namespace scenario {
namespace {

class Batch : public World {
 protected:
  void SetUp() override { start_both(); }
  const std::string kC = kCommunities + "{c}";
};

TEST_F(Batch, CommitsAtTheEndAndAnswersInOrder) {
  EXPECT_EQ(batch({"# a comment", "", "exists " + kC, "create " + kC, "exists " + kC,
                   "get " + kC + "/name", "set " + kC + "/context-name \"\"",
                   "get " + kC + "/context-name", "keys " + kCommunities}),
            (Ran{0, "false\ntrue\nnot there\n\nc\n", ""}));
  EXPECT_EQ(cli({"exists", kC}), (Ran{0, "", ""}));
}

TEST_F(Batch, FirstErrorAbortsAll) {
  EXPECT_EQ(batch({"create " + kC, "delete " + kC + "/sec-name", "exists " + kC}),
            (Ran{2, "", "error: Tried to delete invalid tag: sec-name\n"}));
  EXPECT_EQ(cli({"exists", kC}).status, 1);
}

TEST_F(Batch, GoesOnWithKAndCommitsTheRest) {
  EXPECT_EQ(batch({"create " + kC, "delete " + kC + "/sec-name", "exists " + kC}, {"-k"}),
            (Ran{2, "error: Tried to delete invalid tag: sec-name\ntrue\n", ""}));
  EXPECT_EQ(cli({"exists", kC}).status, 0);
}

TEST_F(Batch, AbortLeavesNothing) {
  EXPECT_EQ(
      answers({"create " + kC, "set " + kC + "/name x", "abort", "exists " + kC, "keys " + kRows}),
      "false\n");
  EXPECT_EQ(answers({"keys " + kCommunities, "keys " + kRows}), "");
}

TEST_F(Batch, CommitInTheMiddleKeepsWhatStandsBefore) {
  EXPECT_EQ(batch({"create " + kC, "commit", "create " + kCommunities + "{d}",
                   "delete " + kC + "/sec-name"})
                .status,
            2);
  EXPECT_EQ(cli({"keys", kCommunities}).out, "c\n");
}

TEST_F(Batch, AnswersAreFlushedOneByOne) {
  const auto process = start_cli({"batch"}, Process::Input::pipe);
  process->write("create " + kC + "\nexists " + kC + "\n");
  EXPECT_EQ(process->line_beginning(""), "true");
  EXPECT_EQ(cli({"exists", kC}).status, 1) << "seen before its commit";
  process->close_input();
  EXPECT_EQ(process->wait(), 0);
  EXPECT_EQ(cli({"exists", kC}).status, 0);
}

TEST_F(Batch, VanishedClientLeavesNothing) {
  const auto process = start_cli({"batch"}, Process::Input::pipe);
  process->write("create " + kC + "\nexists " + kC + "\n");
  EXPECT_EQ(process->line_beginning(""), "true");
  process->signal(SIGKILL);
  EXPECT_EQ(process->wait(), 128 + SIGKILL);
  EXPECT_EQ(answers({"exists " + kC, "create " + kC}), "false\n");
}

TEST_F(Batch, LaterCommitOfAChangedNodeIsRefused) {
  answers({"create " + kC});
  const auto first = session(), second = session();
  const auto leaf = standin::parse_path(kC + "/context-name");
  first->set(leaf, {"one"});
  second->set(leaf, {"two"});
  first->commit();
  EXPECT_THROW(second->commit(), standin::Refused);
  second->abort();
  EXPECT_EQ(second->get(leaf)->texts, Strings{"one"});
}

TEST_F(Batch, DiffShowsWhatChanged) {
  const std::string out = answers({"create " + kC, "diff", "abort", "diff"});
  EXPECT_THAT(out, testing::HasSubstr("+ "));
  EXPECT_THAT(out, testing::HasSubstr("{c}"));
}

TEST_F(Batch, UsageErrorsAloneEndWithStatusThree) {
  for (const Strings& words :
       {Strings{"frobnicate"}, Strings{"get"}, Strings{"get", "/a", "/b"}, Strings{"show", "--xml"},
        Strings{"commit"}, Strings{"batch", "-x"}}) {
    const Ran ran = cli(words);
    EXPECT_EQ(ran.status, 3) << words[0] << ' ' << ran;
    EXPECT_EQ(ran.out, "");
    EXPECT_THAT(ran.err, testing::MatchesRegex("error: [^\n]+\n"));
  }
}

TEST_F(Batch, StatusNamesDaemonsAndTheirCallpoints) {
  const Ran ran = cli({"status"});
  EXPECT_EQ(ran.status, 0);
  EXPECT_THAT(ran.out, testing::HasSubstr("phase 2\nport " + port() + "\n"));
  EXPECT_THAT(ran.out,
              testing::ContainsRegex("daemon quillet-transform connected[^\n]* community"));
  EXPECT_THAT(ran.out,
              testing::ContainsRegex("daemon quillet-hook connected[^\n]* community-hook"));
}

}  // namespace
}  // namespace scenario
