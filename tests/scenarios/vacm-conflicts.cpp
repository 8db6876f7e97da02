// A pair of security model and security name that two groups claim.
#include <gmock/gmock.h>

#include "vacm.h"

namespace scenario {
namespace {

class VacmConflicts : public VacmGroups {
 protected:
  void SetUp() override {
    VacmGroups::SetUp();
    answers(mib_rows(kExample));
  }
  static std::string refusal(const std::string& path, int count) {
    return "error: " + path +
           ": Specific sec. model and member's sec. name combination must be unique for one "
           "group! (found " +
           std::to_string(count) + " conflict(s))\n";
  }
  const std::string take_v1_ = "set " + models("g2", "alice") + " v1 usm";
  const std::string path_ = models("g2", "alice");
  const std::string moved_ =
      table({{"1", "alice", "g2"}, {"2", "alice", "g1"}, {"3", "alice", "g2"}, {"3", "bob", "g1"}});
};

TEST_F(VacmConflicts, RefusedOnceAtValidateOrCommitAndThenPassed) {
  EXPECT_EQ(told({take_v1_, "show " + kGroupTable, "validate", "validate", "abort"}),
            moved_ + refusal(path_, 1));
  EXPECT_EQ(told({take_v1_, "commit", "get " + models("g1", "alice"), "commit"}),
            refusal(path_, 1) + "v2c\n");
  EXPECT_EQ(rows(), moved_);
}

TEST_F(VacmConflicts, ARefusedCommitAloneLeavesNothing) {
  const Ran ran = cli({"set", models("g2", "alice"), "v1", "usm"});
  EXPECT_EQ(ran, (Ran{2, "", refusal(path_, 1)}));
  EXPECT_EQ(rows(), table(kExample));
  EXPECT_EQ(cli({"set", models("g1", "carol"), "v1"}), (Ran{0, "", ""}));
}

TEST_F(VacmConflicts, EachTakenRowCounts) {
  EXPECT_EQ(told({"set " + models("g2", "alice") + " v1 v2c usm", "validate", "abort"}),
            refusal(path_, 2));
  EXPECT_EQ(told({take_v1_, "create " + models("g2", "bob") + "{usm}", "validate", "abort"}),
            refusal(path_, 2));
  // The same row taken again by the group that has it is no further conflict.
  EXPECT_EQ(
      told({take_v1_, take_v1_, "create " + models("g2", "alice") + "{v1}", "validate", "abort"}),
      refusal(path_, 1));
  // Back and forth: both groups claim the row of the other.
  EXPECT_EQ(told({take_v1_, "set " + models("g1", "alice") + " v1 v2c", "validate", "abort"}),
            refusal(path_, 2));
}

TEST_F(VacmConflicts, SingleEntryMovesTheRowLikeAWholeWrite) {
  const std::string entry = models("g2", "alice") + "{v1}";
  EXPECT_EQ(told({"create " + entry, "show " + kGroupTable, "validate", "abort"}),
            moved_ + refusal(entry, 1));
}

TEST_F(VacmConflicts, ResolvedByTheLosingGroupsWriteOnly) {
  struct Case {
    Strings lines;
    int left;
  };
  const Case cases[] = {
      {{take_v1_, "set " + models("g1", "alice") + " v2c"}, 0},
      {{"create " + models("g2", "alice") + "{v1}", "set " + models("g1", "alice") + " v2c"}, 0},
      {{"set " + models("g2", "alice") + " v1 v2c", "set " + models("g1", "alice") + " v2c"}, 2},
      {{"set " + models("g2", "alice") + " v1 v2c", "set " + models("g1", "alice")}, 0},
      {{take_v1_, "delete " + models("g1", "alice")}, 1},
      {{take_v1_, "delete " + member("g1", "alice")}, 1},
      {{take_v1_, "delete " + group("g1")}, 1},
      {{take_v1_, "set " + models("g1", "bob") + " usm"}, 1},
      {{take_v1_, "delete " + models("g2", "alice") + "{v1}"}, 1},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(testing::PrintToString(c.lines));
    Strings lines = c.lines;
    lines.insert(lines.end(), {"validate", "abort"});
    const std::string out = told(lines);
    if (c.left == 0) {
      EXPECT_EQ(out, "");
    } else {
      EXPECT_THAT(out, testing::HasSubstr("(found " + std::to_string(c.left) + " conflict(s))\n"));
    }
  }
  EXPECT_EQ(rows(), table(kExample));
}

// A group that lost a row and won it back: deleting it withdraws the first claim only.
TEST_F(VacmConflicts, RowWonBackStaysWhenItsClaimIsWithdrawn) {
  const Strings back_and_forth = {take_v1_, "set " + models("g1", "alice") + " v1 v2c"};
  Strings lines = back_and_forth;
  lines.insert(lines.end(), {"delete " + group("g1"), "show " + kGroupTable, "validate",
                             "delete " + group("g1"), "show " + kGroupTable, "abort"});
  const std::string out = told(lines);
  EXPECT_THAT(out, testing::StartsWith(table({{"1", "alice", "g1"}, {"3", "alice", "g2"}})));
  EXPECT_THAT(out, testing::HasSubstr("(found 1 conflict(s))\n"));
  EXPECT_THAT(out, testing::EndsWith(table({{"3", "alice", "g2"}})));
}

TEST_F(VacmConflicts, NothingLeaksIntoAnotherTransaction) {
  EXPECT_EQ(told({take_v1_, "abort", "set " + models("g1", "carol") + " v1", "commit"}), "");
  auto vanished = session();
  vanished->set(standin::parse_path(models("g2", "alice")), {"v1", "usm"});
  EXPECT_EQ(told({"set " + models("g1", "dave") + " v1", "commit"}), "")
      << "of another client's open transaction";
  vanished.reset();
  EXPECT_EQ(answers({"set " + models("g1", "eve") + " v1", "keys " + group("g1") + "/member"}),
            "alice\nbob\ncarol\ndave\neve\n");
}

TEST_F(VacmConflicts, NamesThatLookLikeTwoPartsAreTwoConflicts) {
  answers({"set " + models("c", "a;b") + " v1", "set " + models("b;c", "a") + " v1"});
  EXPECT_THAT(told({"set " + models("g2", "a;b") + " v1", "set " + models("g2", "a") + " v1",
                    "validate", "abort"}),
              testing::HasSubstr("(found 2 conflict(s))\n"));
}

}  // namespace
}  // namespace scenario
