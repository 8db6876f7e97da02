#include <gtest/gtest.h>

#include "util/snmp-attribute-store.h"

namespace quillet {
namespace {

TEST(AttrPathCovers, TheNodeAndWhatContinuesBelowIt) {
  const struct {
    const char* node;
    const char* target;
    bool covered;
  } cases[] = {
      {"/snmp:snmp/community{a}", "/snmp:snmp/community{a}", true},
      {"/snmp:snmp/community{a}", "/snmp:snmp/community{a}/name", true},
      {"/snmp:snmp/community", "/snmp:snmp/community{a}/name", true},
      {"/snmp:snmp/target{t}/v1", "/snmp:snmp/target{t}/v1/sec-name", true},
      {"/snmp:snmp/agent/version/v2", "/snmp:snmp/agent/version/v2c", false},
      {"/snmp:snmp/community{a}", "/snmp:snmp/community{ab}", false},
      {"/snmp:snmp/community{ab}", "/snmp:snmp/community{a}", false},
      {"/snmp:snmp/agent/name", "/snmp:snmp/agent", false},
  };
  for (const auto& c : cases) {
    EXPECT_EQ(attr_path_covers(c.node, c.target), c.covered) << c.node << " " << c.target;
  }
}

TEST(AttrXpathLiteral, QuotesNeverEndTheLiteral) {
  EXPECT_EQ(attr_xpath_literal("plain"), "'plain'");
  EXPECT_EQ(attr_xpath_literal("it's"), "\"it's\"");
  EXPECT_EQ(attr_xpath_literal("say \"x\""), "'say \"x\"'");
  EXPECT_EQ(attr_xpath_literal("it's \"x\""), "concat('it',\"'\",'s \"x\"')");
}

TEST(AttributeStore, WithoutANodeNothingIsDeleted) {
  confd_trans_ctx tctx{};
  EXPECT_EQ(snmp_attrs_delete_under(&tctx, nullptr), CONFD_ERR);
  confd_hkeypath_t kp{};
  EXPECT_EQ(snmp_attrs_delete_under(nullptr, &kp), CONFD_ERR);
}

}  // namespace
}  // namespace quillet
