#include <gtest/gtest.h>

#include <string>

#include "transforms/snmp-community-transform.h"
#include "util/keypath.h"
#include "util/value-guards.h"

namespace quillet {
namespace {

TEST(CommunityName, EqualToTheIndexReadsAsUnset) {
  const struct {
    std::string_view index;
    std::string_view name;
    bool shown;
  } cases[] = {{"public", "public", false},
               {"public", "ops", true},
               {"public", "publi", true},
               {"publi", "public", true},
               {"public", std::string_view("public\0x", 8), false}};
  for (const auto& c : cases) {
    const confd_value_t index = buf_value(c.index);
    EXPECT_EQ(community_name_shown(&index, buf_value(c.name)), c.shown) << c.index << c.name;
  }
}

TEST(CommunityNameDeathTest, KeyOfAnotherTypeStopsTheProcess) {
  const confd_value_t number = int32_value(1);
  const confd_value_t text = buf_value("x");
  EXPECT_DEATH(community_name_shown(&number, text), "\\(index\\)->type == C_BUF");
  EXPECT_DEATH(community_name_shown(&text, number), "\\(&v\\)->type == C_BUF");
}

TEST(Keypath, LevelsThatAreNotThereAreNoValue) {
  confd_hkeypath_t kp{};
  kp.len = 1;
  kp.v[0][0] = xmltag_value(1, 2);
  kp.v[1][0] = xmltag_value(3, 4);  // past the length: not part of the path
  EXPECT_TRUE(kp_is_tag(&kp, 0));
  for (const int level : {-1, 1, MAXDEPTH, MAXDEPTH + 1}) {
    EXPECT_EQ(kp_value(&kp, level)->type, C_NOEXISTS) << level;
  }
  EXPECT_EQ(kp_value(&kp, 0, MAXKEYLEN)->type, C_NOEXISTS);
}

}  // namespace
}  // namespace quillet
