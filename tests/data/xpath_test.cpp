// XPath: the shapes that daemons use, and what libyang evaluates for the rest.
#include "fake_transform.h"

namespace standin::test {
namespace {

using ::testing::HasSubstr;

class XPath : public DataTest {
 protected:
  // Each hit as its path, and its value behind it.
  Calls evaluate(const std::string& expression) {
    Calls out;
    for (const XPathHit& hit : evaluate_xpath(data, schema(), expression)) {
      std::string line = schema().to_text(hit.path);
      if (hit.value) line += " = " + schema().print(hit.path.node(), *hit.value);
      out.push_back(line);
    }
    return out;
  }
  void attribute_path(const std::string& key) {
    data.create(at("/attr-list").with_keys({Value::buf(key)}), Data::Ancestors::create);
  }
  std::string entry(const std::string& key) {
    return schema().to_text(at("/attr-list").with_keys({Value::buf(key)}));
  }
  void group_row(const std::string& model, const std::string& name, const std::string& group) {
    set(kRows + "{" + model + " " + name + "}/vacmGroupName", group);
  }
  const std::string kRows =
      "/SNMP_VIEW_BASED_ACM_MIB:SNMP-VIEW-BASED-ACM-MIB/vacmSecurityToGroupTable/"
      "vacmSecurityToGroupEntry";
};

TEST_F(XPath, StartsWithOnTheKeyWithAnyQuotes) {
  for (const char* key : {"/p", "/p/a", "/p{\"it's\"}", "/pz", "/o", "/q"}) attribute_path(key);
  const std::pair<const char*, Calls> cases[] = {
      {"/attr-list[starts-with(target-path,'/p/')]", {entry("/p/a")}},
      {"/attr-list[starts-with(target-path, \"/p\")]",
       {entry("/p"), entry("/p/a"), entry("/pz"), entry("/p{\"it's\"}")}},
      {"/quillet-attributes:attr-list[starts-with(target-path,concat('/p{\"it',\"'\",'s'))]",
       {entry("/p{\"it's\"}")}},
      {"/attr-list[target-path='/q']", {entry("/q")}},
      {"/attr-list[target-path='/nothing']", {}},
      {"/attr-list[starts-with(target-path,'')][target-path='/o']", {entry("/o")}},
      // By libyang, with the same answers.
      {"/attr-list[string-length(target-path) = 3]/target-path",
       {entry("/pz") + "/target-path = /pz"}},
      {"/attr-list[starts-with(target-path,'/p') and not(contains(target-path,'/a'))][1]",
       {entry("/p")}},
  };
  for (const auto& [expression, hits] : cases) EXPECT_EQ(evaluate(expression), hits) << expression;
}

TEST_F(XPath, TwoPredicatesThenAChild) {
  group_row("1", "alice", "g");
  group_row("3", "alice", "g");
  group_row("2", "alice", "h");
  group_row("2", "\"it's\"", "g");
  EXPECT_EQ(evaluate(kRows + R"([vacmSecurityName="alice"][vacmGroupName="g"]/vacmSecurityModel)"),
            (Calls{kRows + "{1 alice}/vacmSecurityModel = 1",
                   kRows + "{3 alice}/vacmSecurityModel = 3"}));
  EXPECT_EQ(
      evaluate(kRows + R"([vacmSecurityModel>1][vacmGroupName="g"][not(vacmSecurityName="alice")])")
          .size(),
      1U);
  EXPECT_EQ(daemon.take_calls(), Calls{}) << "no transform is asked for what the MIB side holds";
}

TEST_F(XPath, AsksOnlyForWhatTheExpressionTouches) {
  create("/snmp:snmp/target{a}/v1");
  set("/snmp:snmp/target{a}/port", "162");
  daemon.take_calls();
  EXPECT_EQ(evaluate("/snmp:snmp/target[name='a']/port"), Calls{"/snmp:snmp/target{a}/port = 162"});
  EXPECT_EQ(daemon.take_calls(),
            (Calls{"get /snmp:snmp/target{a}/name", "get /snmp:snmp/target{a}/port"}));
  EXPECT_EQ(evaluate("/snmp/target[port > 161]"), Calls{"/snmp:snmp/target{a}"});
  for (const std::string& call : daemon.take_calls())
    EXPECT_THAT(call, HasSubstr("/snmp:snmp/target"));
}

TEST_F(XPath, RefusesWhatItCannotRead) {
  for (const char* expression : {"/attr-list[", "/nothing", "/nope:attr-list", "/attr-list/nothing",
                                 "/attr-list['", "/snmp:snmp/target[name=", ""}) {
    try {
      evaluate(expression);
      ADD_FAILURE() << "taken: " << expression;
    } catch (const Refusal& refused) {
      EXPECT_EQ(refused.code, ErrorCode::xpath) << expression;
    }
  }
}

}  // namespace
}  // namespace standin::test
