// Whole trees: reading, loading, and the way back.
#include "fake_transform.h"

namespace standin::test {
namespace {

using ::testing::HasSubstr;
using Tree = DataTest;

// "target{a}(name=a,v2c(sec-name=s))"
std::string print(const Schema& schema, const std::vector<TreeNode>& nodes) {
  std::string out;
  for (const TreeNode& t : nodes) {
    if (!out.empty()) out += ",";
    out += t.node->name;
    for (std::size_t i = 0; i < t.keys.size(); ++i) {
      out += (i == 0 ? "{" : " ") + schema.print(*t.node->keys[i], t.keys[i]);
    }
    if (!t.keys.empty()) out += "}";
    if (t.value) out += "=" + schema.print(*t.node, *t.value);
    if (!t.error.empty()) out += "!" + t.error;
    if (!t.children.empty()) out += "(" + print(schema, t.children) + ")";
  }
  return out;
}

TEST_F(Tree, ReadsOnlyTheSelectedCaseWithTheWayToIt) {
  set("/snmp:snmp/target{a}/v2c/sec-name", "s");
  set("/snmp:snmp/target{a}/port", "162");
  const auto read = [&](const char* path) {
    return print(schema(), read_tree(data, schema(), at(path), false));
  };
  EXPECT_EQ(read("/snmp:snmp/target"), "snmp(target{a}(name=a,port=162,v2c(sec-name=s)))");
  EXPECT_EQ(read("/snmp:snmp/target{a}/port"), "snmp(target{a}(name=a,port=162))");
  EXPECT_EQ(read("/snmp:snmp/target{a}/name"), "snmp(target{a}(name=a))");
  EXPECT_EQ(read("/snmp:snmp/target{b}"), "");
  create("/snmp:snmp/target{b}/usm");
  EXPECT_EQ(read("/snmp:snmp/target{b}"), "snmp(target{b}(name=b,usm))");
}

TEST_F(Tree, RefusedReadStandsInItsPlaceAndTheRestIsRead) {
  set("/snmp:snmp/target{a}/port", "162");
  daemon.refuse["get /snmp:snmp/target{a}/ip"] = "Problem retrieving target address";
  EXPECT_EQ(print(schema(), read_tree(data, schema(), at("/snmp:snmp/target"), false)),
            "snmp(target{a}(name=a,ip!Problem retrieving target address,port=162))");
  // Cases that cannot be told: the text stands where each choice does.
  daemon.refuse = {{"get_case /snmp:snmp/target{a}", "no case"}};
  EXPECT_EQ(print(schema(), read_tree(data, schema(), at("/snmp:snmp/target"), false)),
            "snmp(target{a}(name=a,port=162,tls!no case,v1!no case))");
}

TEST_F(Tree, MibDefaultsOnlyOnRequest) {
  const std::string row =
      "/SNMP_TARGET_MIB:SNMP-TARGET-MIB/snmpTargetAddrTable/snmpTargetAddrEntry{a}";
  create(row);
  EXPECT_EQ(print(schema(), read_tree(data, schema(), at(row + "/snmpTargetAddrTimeout"), false)),
            "");
  EXPECT_THAT(print(schema(), read_tree(data, schema(), at(row), true)),
              HasSubstr("snmpTargetAddrTimeout=1500"));
}

TEST_F(Tree, LoadWritesInSchemaOrderAndMerges) {
  const char* json = R"({"snmp:snmp": {"target": [
      {"v2c": {"sec-name": "s"}, "tag": ["y", "x"], "port": 162, "ip": "192.0.2.1", "name": "a"},
      {"name": "b", "usm": {}}]}})";
  EXPECT_EQ(load_json(data, schema(), json), 8U);
  const std::string a = "/snmp:snmp/target{a}";
  const std::string b = "/snmp:snmp/target{b}";
  EXPECT_EQ(daemon.take_calls(),
            (Calls{"get " + a + "/name", "create " + a, "set " + a + "/ip = 192.0.2.1",
                   "set " + a + "/port = 162", "set " + a + "/tag = y x", "get_case " + a,
                   "set_case " + a + " params v2c", "get_case " + a,
                   "set " + a + "/v2c/sec-name = s", "get " + b + "/name", "create " + b,
                   "get_case " + b, "set_case " + b + " params usm"}));
  EXPECT_EQ(load_json(data, schema(), json), 4U) << "what is there is left alone, values are set";
}

TEST_F(Tree, LoadIsAllOrNothing) {
  const char* json = R"({"snmp:snmp": {"agent": {"engine-id": {"enterprise-number": 1}},
    "community": [{"index": "c",
                   "sec-name": "refused"}]}})";
  daemon.refuse["set /snmp:snmp/community{c}/sec-name = refused"] = "no such name";
  const std::string text = refusal([&] { load_json(data, schema(), json); });
  EXPECT_EQ(text, "line 3: /snmp:snmp/community{c}/sec-name: no such name");
  EXPECT_FALSE(data.exists(at("/snmp:snmp/agent/engine-id")));
  EXPECT_TRUE(data.touched().empty());
}

TEST_F(Tree, LoadRefusesWithPathAndLine) {
  const std::pair<const char*, const char*> cases[] = {
      {R"({"snmp:snmp": {"tarjet": []}})", "line 1: /snmp:snmp: unknown element \"tarjet\""},
      {R"({"snmp:snmp": {"target": [{"port": 1}]}})", "an entry without its key \"name\""},
      {"{\"snmp:snmp\": {\"target\": [{\"name\": \"a\",\n\"port\": \"1\"}]}}",
       "line 2: /snmp:snmp/target{a}/port"},
      {R"({"snmp:snmp": {"target": [{"name": "a", "v1": {}, "usm": {}}]}})",
       "only one case of choice \"params\""},
      {R"({"snmp:snmp": {"agent": {"version": {"v1": true}}}})", "expected [null]"},
      {R"({"snmp:snmp": {"target": {"name": "a"}}})", "expected an array of entries"},
      {R"([])", "expected an object"},
  };
  for (const auto& [json, reason] : cases) {
    const std::string text = refusal([&, text = json] { load_json(data, schema(), text); });
    EXPECT_THAT(text, HasSubstr(reason));
    EXPECT_EQ(text.find("line "), text.rfind("line ")) << text;
  }
  const std::string secret = refusal([&] {
    load_json(
        data, schema(),
        R"({"snmp:snmp": {"usm": {"local": {"user": [{"name": "u", "auth": {"md5": {"password": "hushhus"}}}]}}}})");
  });
  EXPECT_THAT(secret, HasSubstr("password"));
  EXPECT_THAT(secret, ::testing::Not(HasSubstr("hushhus")));
}

}  // namespace
}  // namespace standin::test
