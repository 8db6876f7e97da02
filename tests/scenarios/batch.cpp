#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <signal.h>

#include "world.h"

namespace scenario {
namespace {

class Batch : public Running {
 protected:
  const std::string kC = kCommunities + "{c}";
};

TEST_F(Batch, FirstErrorAbortsAllAndWithKTheRestIsCommitted) {
  const Strings lines = {"create " + kC, "delete " + kC + "/sec-name", "exists " + kC};
  const std::string refusal = "error: Tried to delete invalid tag: sec-name\n";
  EXPECT_EQ(batch(lines), (Ran{2, "", refusal}));
  EXPECT_EQ(cli({"exists", kC}), (Ran{1, "", ""}));
  EXPECT_EQ(batch(lines, {"-k"}), (Ran{2, refusal + "true\n", ""}));
  EXPECT_EQ(cli({"exists", kC}), (Ran{0, "", ""}));
}

TEST_F(Batch, CommitInTheMiddleKeepsWhatStandsBefore) {
  EXPECT_EQ(batch({"create " + kC, "commit", "create " + kCommunities + "{d}", "abort",
                   "create " + kCommunities + "{e}", "delete " + kC + "/sec-name"})
                .status,
            2);
  EXPECT_EQ(answers({"keys " + kCommunities, "keys " + kRows}), "c\nc\n");
}

TEST_F(Batch, AnswersAreFlushedOneByOneAndAKilledClientLeavesNothing) {
  for (const bool killed : {true, false}) {
    const auto process = start_cli({"batch"}, Process::Input::pipe);
    process->write("create " + kC + "\nexists " + kC + "\n");
    EXPECT_EQ(process->line_beginning(""), "true");
    EXPECT_EQ(cli({"exists", kC}).status, 1) << "seen before its commit";
    if (killed) process->signal(SIGKILL);
    process->close_input();
    EXPECT_EQ(process->wait(), killed ? 128 + SIGKILL : 0);
    EXPECT_EQ(cli({"exists", kC}).status, killed ? 1 : 0);
  }
}

TEST_F(Batch, UsageErrorsAloneEndWithStatusThree) {
  for (const Strings& words :
       {Strings{"frobnicate"}, Strings{"get"}, Strings{"commit"}, Strings{"batch", "-x"}}) {
    const Ran ran = cli(words);
    EXPECT_EQ(ran.status, 3) << words[0] << ' ' << ran;
    EXPECT_EQ(ran.out, "");
    EXPECT_THAT(ran.err, testing::MatchesRegex("error: [^\n]+\n"));
  }
}

TEST_F(Batch, StatusNamesDaemonsAndTheirCallpoints) {
  EXPECT_THAT(
      cli({"status"}).out,
      testing::AllOf(testing::HasSubstr("phase 2\nport " + port() + "\n"),
                     testing::ContainsRegex("daemon quillet-transform connected[^\n]* community"),
                     testing::ContainsRegex("daemon quillet-hook connected[^\n]* community-hook")));
}

}  // namespace
}  // namespace scenario
