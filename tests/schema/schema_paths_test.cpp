// Paths to nodes and back: prefixes, tags, keys by text and by type.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "schema_fixture.h"

namespace standin {
namespace {

using testing::HasSubstr;

PathStep element(const std::string& name) { return {PathStep::Kind::name, name, {}, {}}; }
PathStep tagged(Tag tag) { return {PathStep::Kind::tag, "", tag, {}}; }
PathStep keyed(Level keys) { return {PathStep::Kind::keys, "", {}, std::move(keys)}; }

TEST(SchemaPaths, TextComesBackInItsOnePrintedForm) {
  const std::vector<std::pair<std::string, std::string>> kPaths = {
      {"/", "/"},
      {"/snmp:snmp", "/snmp:snmp"},
      {"/snmp/community", "/snmp:snmp/community"},
      {"/snmp/snmp:community{public}/snmp:name/", "/snmp:snmp/community{public}/name"},
      {"/snmp//community{\"a \\\" b\"}", "/snmp:snmp/community{\"a \\\" b\"}"},
      {"/snmp/vacm/group{g}/access{\"\" usm auth-priv}/read-view",
       "/snmp:snmp/vacm/group{g}/access{\"\" usm auth-priv}/read-view"},
      {"/snmp/vacm/group{g}/member{m}/sec-model{v2c}",
       "/snmp:snmp/vacm/group{g}/member{m}/sec-model{v2c}"},
      {"/snmp/usm/remote{80:00:7E:D9:05}", "/snmp:snmp/usm/remote{80:00:7e:d9:05}"},
      {"/snmp/agent/extra-ip-port{2001:DB8:0::1 0161}",
       "/snmp:snmp/agent/extra-ip-port{2001:db8::1 161}"},
      {"/confdConfig/snmpAgent//snmpEngine", "/confd_dyncfg:confdConfig/snmpAgent/snmpEngine"},
      {"/SNMP-VIEW-BASED-ACM-MIB/vacmViewTreeFamilyTable/vacmViewTreeFamilyEntry{v 0}",
       "/SNMP_VIEW_BASED_ACM_MIB:SNMP-VIEW-BASED-ACM-MIB/vacmViewTreeFamilyTable/"
       "vacmViewTreeFamilyEntry{v 0}"},
      {"/attr-list{/snmp:snmp/agent}/target-path",
       "/quillet-attributes:attr-list{/snmp:snmp/agent}/target-path"},
  };
  for (const auto& [path, printed] : kPaths) {
    const NodePath resolved = resolve(path);
    EXPECT_EQ(product_schema().to_text(resolved), printed) << path;
    EXPECT_EQ(resolve(printed), resolved) << path;
    EXPECT_EQ(product_schema().resolve(to_keypath(resolved)), resolved) << path;
  }
}

TEST(SchemaPaths, RefusalsNameTheElement) {
  struct Case {
    std::string path;
    ErrorCode code;
    std::string text;
  };
  const std::vector<Case> kCases = {
      {"/nothing", ErrorCode::badpath, "unknown element \"nothing\""},
      {"/SNMP-TARGET-MIB:SNMP-TARGET-MIB", ErrorCode::badpath, "unknown element"},
      {"/snmp:snmp/targets", ErrorCode::badpath,
       "unknown element \"targets\" in /snmp:snmp: did you mean target? There is community"},
      {"/snmp:snmp/confd_dyncfg:agent", ErrorCode::badpath, "unknown element"},
      {"/snmp:snmp/target{a}/params", ErrorCode::badpath,
       "a choice, which no path names; write one of v1, v2c, usm"},
      {"/snmp:snmp/community/name", ErrorCode::badpath,
       "needs keys before \"name\": /snmp:snmp/community{INDEX}/..."},
      {"/snmp:snmp/agent{a}", ErrorCode::badpath, "agent takes no keys"},
      {"/snmp:snmp/community{a}/name/x", ErrorCode::badpath, "name has nothing below it"},
      {"/snmp:snmp/community{a b}", ErrorCode::badvalue, "community takes 1 key, not 2"},
      {"/snmp:snmp/vacm/group{g}/access{\"\" usm}", ErrorCode::badvalue,
       "not 2: /snmp:snmp/vacm/group/access{CONTEXT SEC-MODEL SEC-LEVEL}"},
      {"/snmp:snmp/vacm/group{g}/access{\"\" 3 auth-priv}", ErrorCode::badvalue, "sec-model"},
      {"/snmp:snmp/community{\"\"}", ErrorCode::badvalue, "index: 1 to 32 octets"},
      {"/snmp:snmp/usm/remote{80:00}", ErrorCode::badvalue, "5 to 32 octets"},
      {"/snmp:snmp/agent/extra-ip-port{fe80::1%eth0 161}", ErrorCode::badvalue, "address"},
      {"/snmp:snmp/agent/extra-ip-port{10.0.0.1 70000}", ErrorCode::badvalue, "0 to 65535"},
  };
  for (const auto& c : kCases) {
    ErrorCode code{};
    EXPECT_THAT(refusal_of([&] { resolve(c.path); }, &code), HasSubstr(c.text)) << c.path;
    EXPECT_EQ(code, c.code) << c.path;
  }
}

TEST(SchemaPaths, TagOfAnotherModuleStandsForItsName) {
  const Tag v2c = node_at("/snmp/agent/version/v2c").tag;
  const NodePath path =
      product_schema().resolve(Path{element("confd_dyncfg:confdConfig"), element("snmpAgent"),
                                    element("snmpVersions"), tagged(v2c)});
  EXPECT_EQ(path.node().module, "confd_dyncfg");
  EXPECT_EQ(path.node().name, "v2c");
  const Tag name = node_at("/snmp/agent/name").tag;
  EXPECT_THAT(refusal_of([&] {
                product_schema().resolve(Path{element("confd_dyncfg:confdConfig"), tagged(name)});
              }),
              HasSubstr("\"name\" in /confd_dyncfg:confdConfig"));
}

TEST(SchemaPaths, TypedKeysMustHaveTheKeysType) {
  const Path table{element("SNMP-VIEW-BASED-ACM-MIB"), element("vacmSecurityToGroupTable"),
                   element("vacmSecurityToGroupEntry")};
  const auto with = [&](Level keys) {
    Path path = table;
    path.push_back(keyed(std::move(keys)));
    return path;
  };
  const Level good{Value::int32(3), Value::buf("a}b\"c d")};
  EXPECT_EQ(product_schema().resolve(with(good)).steps.back().keys, good);
  const Level text{Value::text("3"), Value::text("alice")};
  EXPECT_EQ(product_schema().resolve(with(text)).steps.back().keys,
            (Level{Value::int32(3), Value::buf("alice")}));
  const std::vector<Level> kBad = {
      {Value::enumeration(3), Value::buf("alice")},
      {Value::int32(-1), Value::buf("alice")},
      {Value::int32(3), Value::octets("alice")},
      {Value::int32(3), Value()},
      {Value::int32(3), Value::list({Value::buf("alice")})},
      {Value::int32(3), Value::buf(std::string("a\0b", 3))},
      {Value::int32(3), Value::buf("\xff")},
      {},
  };
  for (const auto& keys : kBad) {
    ErrorCode code{};
    EXPECT_NE(refusal_of([&] { product_schema().resolve(with(keys)); }, &code), "");
    EXPECT_EQ(code, ErrorCode::badvalue);
  }
}

TEST(SchemaPaths, KeysWithoutAListAreRefused) {
  const PathStep key = keyed({Value::buf("a")});
  const auto text = [](const Path& path) {
    return refusal_of([&] { product_schema().resolve(path); });
  };
  EXPECT_THAT(text({key}), HasSubstr("does not begin with keys"));
  EXPECT_THAT(text({element("snmp"), element("community"), key, key}), HasSubstr("keys already"));
}

}  // namespace
}  // namespace standin
