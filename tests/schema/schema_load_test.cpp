// What the modules say of the nodes: kinds, types, annotations, choices; and modules that do not
// load.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <map>

#include "schema_fixture.h"

namespace standin {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;

std::vector<std::string> names(const std::vector<const Node*>& nodes) {
  std::vector<std::string> out;
  for (const Node* n : nodes) out.push_back(n->name);
  return out;
}

TEST(SchemaNodes, PresenceIsOnlyWhatTheModelSays) {
  using Kind = Node::Kind;
  const std::vector<std::pair<std::string, Kind>> kKinds = {
      {"/confdConfig", Kind::container},
      {"/confdConfig/snmpAgent", Kind::presence},
      {"/snmp/target{a}/usm", Kind::container},
      {"/snmp/usm/local/user{u}/auth/sha", Kind::presence},
      {"/snmp/usm/local/user{u}/priv", Kind::presence},  // its must is presence too to libyang
      {"/snmp/agent/version", Kind::container},
  };
  for (const auto& [path, kind] : kKinds) EXPECT_EQ(node_at(path).kind, kind) << path;
}

TEST(SchemaNodes, NorthboundModelHasNoDefaults) {
  for (const Node* n : product_schema().all()) {
    EXPECT_FALSE(n->module == "snmp" && n->dflt) << n->name;
    EXPECT_FALSE(n->description.empty()) << n->module << ' ' << n->name;
  }
}

TEST(SchemaNodes, AnnotationsReachWhatStandsBelow) {
  struct Case {
    std::string path, transform, hook, validated;
    bool stored;
  };
  const std::vector<Case> kCases = {
      {"/snmp", "", "", "", false},
      {"/snmp/community{a}", "community", "community-hook", "", false},
      {"/snmp/community{a}/name", "community", "", "", false},
      {"/snmp/agent/version/v1", "agent", "", "", false},
      {"/snmp/agent/engine-id/from-text", "agent", "", "", true},
      {"/snmp/vacm", "", "", "", false},
      {"/snmp/vacm/group{g}/member{m}/sec-model", "vacm_group", "", "vacm-group", false},
  };
  for (const auto& c : kCases) {
    const Node& n = node_at(c.path);
    EXPECT_EQ(n.transform ? n.transform->callpoint : "", c.transform) << c.path;
    EXPECT_EQ(n.hooked ? n.hooked->hook : "", c.hook) << c.path;
    EXPECT_EQ(n.validated ? n.validated->valpoint : "", c.validated) << c.path;
    EXPECT_EQ(n.stored_root != nullptr, c.stored) << c.path;
    EXPECT_EQ(n.is_external(), !c.transform.empty() && !c.stored) << c.path;
  }
  EXPECT_TRUE(product_schema().has_callpoint("community-hook"));
  EXPECT_FALSE(product_schema().has_callpoint("vacm-group"));
  EXPECT_TRUE(product_schema().has_valpoint("vacm-group"));
}

TEST(SchemaNodes, KeysAndPasswordsAreSecret) {
  const std::string kRow = "/SNMP-USER-BASED-SM-MIB/usmUserTable/usmUserEntry{80:00:00:01:05 a}/";
  const std::string kUser = "/snmp/usm/local/user{u}/";
  for (const auto& path :
       {kRow + "usmUserAuthKey", kRow + "usmUserPrivKey", kRow + "usm-crypto/auth/key",
        kRow + "usm-crypto/priv/password", kUser + "auth/sha/key", kUser + "priv/aes/password"}) {
    EXPECT_TRUE(node_at(path).secret) << path;
  }
  EXPECT_TRUE(node_at(kRow + "usm-crypto/auth/password").encrypted);
  EXPECT_FALSE(node_at(kUser + "auth/sha/password").encrypted);
  EXPECT_FALSE(node_at(kRow + "usmUserName").secret);
}

TEST(SchemaCompact, ParentsComeFirstAndChoicesStandBetween) {
  const SchemaFile file = product_schema().compact();
  std::map<std::string, const SchemaFileNode*> nodes;
  std::vector<std::string> path_of;
  for (const auto& n : file.nodes) {
    ASSERT_LE(n.parent, path_of.size()) << n.name;
    path_of.push_back((n.parent == 0 ? "" : path_of[n.parent - 1]) + "/" + n.name);
    nodes[path_of.back()] = &n;
  }
  EXPECT_EQ(nodes.at("/snmp/target/params")->kind, SchemaFileNode::Kind::choice);
  EXPECT_EQ(nodes.at("/snmp/target/params/v1")->kind, SchemaFileNode::Kind::case_);
  EXPECT_TRUE(nodes.at("/snmp/usm/local/user/auth/protocol/sha/sha/key-type/key/key")->secret);
  EXPECT_EQ(nodes.at("/snmp/vacm/group/access")->keys.size(), 3U);
  EXPECT_EQ(nodes.at("/snmp/vacm/group/access")->prefix, "snmp");
  EXPECT_THAT(nodes.at("/snmp/notify/type")->labels,
              ElementsAre(std::pair(1, "trap"), std::pair(2, "inform")));
}

// ---- modules of a test's own

class Modules : public testing::Test {
 protected:
  Modules() {
    std::string pattern = testing::TempDir() + "yang-XXXXXX";
    directory_ = mkdtemp(pattern.data());
  }
  ~Modules() override { std::filesystem::remove_all(directory_); }

  void write(const std::string& name, const std::string& body) {
    std::ofstream(directory_ / (name + ".yang"))
        << "module " << name << " {\n  yang-version 1.1;\n  namespace \"urn:" << name
        << "\";\n  prefix " << name << ";\n"
        << body << "}\n";
  }
  std::unique_ptr<Schema> load() { return Schema::load({directory_, QUILLET_YANG_DIR}); }
  std::string load_error() {
    try {
      load();
    } catch (const std::runtime_error& e) {
      return e.what();
    }
    return {};
  }

  std::filesystem::path directory_;
};

TEST_F(Modules, BrokenModuleGivesOneLineWithItsPlace) {
  struct Case {
    std::string body, place, reason;
  };
  const std::vector<Case> kCases = {
      {"  leaf a { type strin; }\n", "/broken.yang", "strin"},
      {"  leaf a {\n    tipe string;\n  }\n", "/broken.yang:6: ", "tipe"},
      {"  leaf a { type string;\n", "/broken.yang:", ""},
      {"  import nowhere { prefix n; }\n", "/broken.yang", "nowhere"},
      {"  list l { key \"k\"; leaf a { type string; } }\n", "/broken.yang", "k"},
      {"  leaf a { type decimal64 { fraction-digits 2; } }\n", "broken", "not served"},
      {"  anydata a;\n", "broken: a", "not served"},
  };
  for (const auto& c : kCases) {
    write("broken", c.body);
    const std::string error = load_error();
    EXPECT_THAT(error, HasSubstr(c.place)) << c.body;
    EXPECT_THAT(error, HasSubstr(c.reason)) << c.body;
    EXPECT_EQ(error.find('\n'), std::string::npos) << error;
  }
}

TEST_F(Modules, ImportedModuleThatIsBrokenIsTheOneNamed) {
  write("a-user", "  import z-broken { prefix z; }\n");
  write("z-broken", "  leaf a {\n    tipe string;\n  }\n");
  EXPECT_THAT(load_error(), HasSubstr("/z-broken.yang:6: "));
}

TEST_F(Modules, PrefixOfTwoModulesIsRefused) {
  write("other", "");
  std::ofstream(directory_ / "twin.yang")
      << "module twin { namespace \"urn:twin\"; prefix other; }\n";
  EXPECT_THAT(load_error(), HasSubstr("one prefix"));
}

TEST_F(Modules, NestedChoicesKnowTheOuterCase) {
  write("nest", R"(
    container c {
      choice outer {
        case one { leaf x { type string; } choice inner { leaf y { type empty; } leaf z { type int8; } } }
        leaf two { type string; }
      }
    })");
  const auto schema = load();
  const Node& c = schema->resolve(parse_path("/nest:c")).node();
  const Choice* inner = schema->find_choice(c, "inner");
  ASSERT_NE(inner, nullptr);
  ASSERT_NE(inner->outer, nullptr);
  EXPECT_EQ(inner->outer->name, "outer");
  EXPECT_EQ(inner->outer_case, "one");
  EXPECT_THAT(names(inner->outer->cases[0].nodes), ElementsAre("x", "y", "z"));
  EXPECT_EQ(c.child("z")->choice, inner);
  // The compact form nests them alike.
  const SchemaFile file = schema->compact();
  const auto at = std::ranges::find(file.nodes, "inner", &SchemaFileNode::name);
  ASSERT_NE(at, file.nodes.end());
  EXPECT_EQ(file.nodes[at->parent - 1].name, "one");
}

TEST_F(Modules, PatternOfTheLeafsOwnCountsForOctets) {
  write("hex", R"(
    import standin-annotations { prefix ann; }
    import standin-types { prefix st; }
    leaf even { ann:octets; type st:octets { pattern "(..:..(:..:..)*)?"; } })");
  const auto schema = load();
  const Node& even = schema->resolve(parse_path("/hex:even")).node();
  EXPECT_TRUE(schema->admits(even, Value::octets("abcd")));
  EXPECT_FALSE(schema->admits(even, Value::octets("abc")));
}

TEST_F(Modules, UnprefixedNameOfTwoModulesIsAmbiguous) {
  write("east", "  container both { leaf a { type string; } }\n");
  write("west", "  container both { leaf b { type string; } }\n");
  const auto schema = load();
  EXPECT_THAT(refusal_of([&] { schema->resolve(parse_path("/both")); }), HasSubstr("east, west"));
  EXPECT_EQ(schema->resolve(parse_path("/west:both/b")).node().name, "b");
}

}  // namespace
}  // namespace standin
