// Which northbound operation calls what, in which order, and what is left after a refusal.
#include "fake_transform.h"

namespace standin::test {
namespace {

using ::testing::HasSubstr;
using Operations = DataTest;

TEST_F(Operations, ReadsAskTheCallbackOfTheirKind) {
  create("/snmp:snmp/vacm/group{g}/member{m}/sec-model{usm}");
  create("/snmp:snmp/target{a}/v2c");
  daemon.take_calls();
  struct Case {
    const char* path;
    bool there;
    Calls calls;
  };
  const std::vector<Case> cases{
      {"/snmp:snmp/target{a}", true, {"get /snmp:snmp/target{a}/name"}},
      {"/snmp:snmp/target{b}", false, {"get /snmp:snmp/target{b}/name"}},
      {"/snmp:snmp/target", true, {"next /snmp:snmp/target"}},
      {"/snmp:snmp/target{a}/ip", false, {"get /snmp:snmp/target{a}/ip"}},
      {"/snmp:snmp/target{a}/name", true, {"get /snmp:snmp/target{a}/name"}},
      {"/snmp:snmp/target{a}/v2c", true, {"get_case /snmp:snmp/target{a}"}},
      {"/snmp:snmp/target{a}/usm", false, {"get_case /snmp:snmp/target{a}"}},
      {"/snmp:snmp/target{a}/tag{x}", false, {"exists /snmp:snmp/target{a}/tag{x}"}},
      {"/snmp:snmp/target{a}/tag", false, {"get /snmp:snmp/target{a}/tag"}},
      {"/snmp:snmp/agent/version", true, {}},
      {"/snmp:snmp/agent/version/v1", false, {"exists /snmp:snmp/agent/version/v1"}},
      {"/snmp:snmp/usm/local/user{u}/auth", false, {"exists /snmp:snmp/usm/local/user{u}/auth"}},
      {"/snmp:snmp/agent/engine-id", false, {}},
      {"/snmp:snmp", true, {}},
  };
  for (const Case& c : cases) {
    EXPECT_EQ(data.exists(at(c.path)), c.there) << c.path;
    EXPECT_EQ(daemon.take_calls(), c.calls) << c.path;
  }
}

TEST_F(Operations, QuestionsThatDoNotFitTheirNodeReachNoDaemon) {
  for (const char* path : {"/snmp:snmp/usm", "/snmp:snmp/target{a}", "/snmp:snmp/agent/version"})
    EXPECT_FALSE(data.get(at(path))) << path;
  for (const char* path : {"/snmp:snmp/target", "/snmp:snmp/vacm/view{v}/subtree"})
    EXPECT_THAT(refusal([&] { data.selected(at(path), *at(path).node().choices.front()); }),
                HasSubstr("names no entry"));
  EXPECT_EQ(daemon.take_calls(), Calls{});
}

TEST_F(Operations, CreateMakesMissingAncestorsFirst) {
  create("/snmp:snmp/vacm/group{g}/access{\"\" usm auth-priv}");
  const std::string access = "/snmp:snmp/vacm/group{g}/access{\"\" usm auth-priv}";
  EXPECT_EQ(daemon.take_calls(),
            (Calls{"get /snmp:snmp/vacm/group{g}/name", "get " + access + "/context",
                   "create /snmp:snmp/vacm/group{g}", "create " + access}));
  EXPECT_THAT(refusal([&] { create(access); }), HasSubstr("already exists"));
}

TEST_F(Operations, LeafListEntryIsCreatedWithoutAskingAndTheWholeIsAList) {
  for (const char* path : {"/snmp:snmp/target{a}", "/snmp:snmp/target{a}/tag{x}"}) create(path);
  daemon.take_calls();
  create("/snmp:snmp/target{a}/tag{x}");
  EXPECT_EQ(daemon.take_calls(),
            (Calls{"get /snmp:snmp/target{a}/name", "create /snmp:snmp/target{a}/tag{x}"}));
  set("/snmp:snmp/target{a}/tag", "x");
  EXPECT_EQ(data.get(at("/snmp:snmp/target{a}/tag")), Value::list({Value::buf("x")}));
}

// A group without rows reads as not there; what stands below it can be written all the same.
TEST_F(Operations, GroupThatDoesNotReadAsPresentIsCreatedAndDeletedThroughWhatIsBelow) {
  const std::string group = "/snmp:snmp/vacm/group{g}";
  const std::string access = group + "/access{\"\" usm auth-priv}";
  create(access);
  daemon.hidden.insert(group);
  daemon.take_calls();
  set(access + "/read-view", "v");
  EXPECT_EQ(daemon.take_calls(), (Calls{"get " + group + "/name", "get " + access + "/context",
                                        "create " + group, "set " + access + "/read-view = v"}));
  remove(group);
  EXPECT_EQ(daemon.take_calls(), (Calls{"get " + group + "/name", "next " + group + "/member",
                                        "next " + group + "/access", "remove " + group}));
}

TEST_F(Operations, CaseChangesFromTheOutsideIn) {
  const std::string user = "/snmp:snmp/usm/local/user{u}";
  set(user + "/auth/md5/password", "correct horse");
  EXPECT_EQ(daemon.take_calls(),
            (Calls{"get " + user + "/name", "create " + user, "create " + user + "/auth",
                   "set_case " + user + "/auth protocol md5", "create " + user + "/auth/md5",
                   "set_case " + user + "/auth/md5 key-type password",
                   "set " + user + "/auth/md5/password = correct horse"}));
  set(user + "/auth/sha/password", "correct horse");
  EXPECT_EQ(
      daemon.take_calls(),
      (Calls{"get " + user + "/name", "exists " + user + "/auth", "get_case " + user + "/auth",
             "exists " + user + "/auth/md5", "set_case " + user + "/auth protocol sha",
             "remove " + user + "/auth/md5", "create " + user + "/auth/sha",
             "set_case " + user + "/auth/sha key-type password",
             "set " + user + "/auth/sha/password = correct horse"}));
}

TEST_F(Operations, CaseOfPlainContainersRemovesTheLeavesThatStoodThere) {
  const std::string target = "/snmp:snmp/target{a}";
  create(target);
  set(target + "/v1/sec-name", "one");
  daemon.take_calls();
  set(target + "/v2c/sec-name", "two");
  EXPECT_EQ(daemon.take_calls(),
            (Calls{"get " + target + "/name", "get_case " + target,
                   "get " + target + "/v1/sec-name", "set_case " + target + " params v2c",
                   "remove " + target + "/v1/sec-name", "set " + target + "/v2c/sec-name = two"}));
  // A container without presence is selected, never passed on.
  create(target + "/usm");
  EXPECT_EQ(
      daemon.take_calls(),
      (Calls{"get " + target + "/name", "get_case " + target, "get " + target + "/v2c/sec-name",
             "set_case " + target + " params usm", "remove " + target + "/v2c/sec-name"}));
}

TEST_F(Operations, DeleteOfWhatMakesUpACaseClearsItFirst) {
  const std::string subtree = "/snmp:snmp/vacm/view{v}/subtree{1.3}";
  create(subtree + "/included");
  daemon.take_calls();
  const std::string clear = "set_case " + subtree + " type none";
  daemon.refuse[clear] = "Missing mandatory choice: excluded/included";
  EXPECT_EQ(refusal([&] { remove(subtree + "/included"); }),
            "Missing mandatory choice: excluded/included");
  EXPECT_EQ(daemon.take_calls(), (Calls{"exists " + subtree + "/included", clear}));
  daemon.refuse.clear();
  remove(subtree + "/included");
  EXPECT_EQ(daemon.take_calls(),
            (Calls{"exists " + subtree + "/included", clear, "remove " + subtree + "/included"}));

  create("/snmp:snmp/target{a}/v1");
  set("/snmp:snmp/target{a}/v1/sec-name", "n");
  daemon.take_calls();
  remove("/snmp:snmp/target{a}/v1/sec-name");  // a leaf inside clears nothing
  EXPECT_EQ(daemon.take_calls(), (Calls{"get /snmp:snmp/target{a}/v1/sec-name",
                                        "remove /snmp:snmp/target{a}/v1/sec-name"}));
}

TEST_F(Operations, DeleteCallsOnceForTheNodeNamed) {
  create("/snmp:snmp/target{a}");
  create("/snmp:snmp/target{b}");
  set("/snmp:snmp/target{a}/port", "162");
  create("/snmp:snmp/agent/version/v1");
  create("/snmp:snmp/agent/version/v3");
  daemon.take_calls();
  EXPECT_THAT(refusal([&] { remove("/snmp:snmp/target{c}"); }),
              HasSubstr("/snmp:snmp/target{c}: not there"));
  EXPECT_THAT(refusal([&] { remove("/snmp:snmp/target{a}/ip"); }), HasSubstr("not there"));
  daemon.take_calls();
  remove("/snmp:snmp/target");
  EXPECT_EQ(daemon.take_calls(),
            (Calls{"next /snmp:snmp/target", "next /snmp:snmp/target", "next /snmp:snmp/target",
                   "remove /snmp:snmp/target{a}", "remove /snmp:snmp/target{b}"}));
  remove("/snmp:snmp/agent/version");
  EXPECT_EQ(daemon.take_calls(),
            (Calls{"exists /snmp:snmp/agent/version/v1", "exists /snmp:snmp/agent/version/v2c",
                   "exists /snmp:snmp/agent/version/v3", "remove /snmp:snmp/agent/version/v1",
                   "remove /snmp:snmp/agent/version/v3"}));
  EXPECT_THAT(refusal([&] { remove("/snmp:snmp/agent/version"); }), HasSubstr("not there"));
}

TEST_F(Operations, BrokenRowIsHandedOnForRepairOnly) {
  const std::string user = "/snmp:snmp/usm/local/user{u}";
  const std::string broken = "Problem retrieving protocol value";
  create(user);
  daemon.refuse["exists " + user + "/priv"] = broken;
  daemon.refuse["get_case " + user + "/priv"] = "Unsupported protocol stored in MIB";
  daemon.take_calls();
  EXPECT_EQ(refusal([&] { data.exists(at(user + "/priv")); }), broken);
  EXPECT_EQ(refusal([&] { create(user + "/priv"); }), broken);
  daemon.take_calls();
  set(user + "/priv/aes/password", "correct horse");
  EXPECT_EQ(
      daemon.take_calls(),
      (Calls{"get " + user + "/name", "exists " + user + "/priv", "get_case " + user + "/priv",
             "set_case " + user + "/priv protocol aes", "create " + user + "/priv/aes",
             "set_case " + user + "/priv/aes key-type password",
             "set " + user + "/priv/aes/password = correct horse"}));
  remove(user + "/priv");
  EXPECT_EQ(daemon.take_calls(), (Calls{"exists " + user + "/priv", "remove " + user + "/priv"}));
}

TEST_F(Operations, RefusalUndoesNestedWritesAndTraces) {
  const std::string row =
      "/SNMP_COMMUNITY_MIB:SNMP-COMMUNITY-MIB/snmpCommunityTable/snmpCommunityEntry{c}";
  daemon.during = [&](const std::string& call) {
    if (call == "create /snmp:snmp/community{c}") data.create(at(row), Data::Ancestors::require);
  };
  daemon.refuse["hook create /snmp:snmp/community{c}"] = "no";
  EXPECT_EQ(refusal([&] { create("/snmp:snmp/community{c}"); }), "no");
  EXPECT_FALSE(data.exists(at(row)));
  EXPECT_TRUE(data.touched().empty());
  EXPECT_TRUE(writes->empty());
}

TEST_F(Operations, HookRunsAfterTheTransformOfTheSameOperation) {
  set("/snmp:snmp/community{c}/sec-name", "s");
  EXPECT_EQ(
      daemon.take_calls(),
      (Calls{"get /snmp:snmp/community{c}/index", "create /snmp:snmp/community{c}",
             "hook create /snmp:snmp/community{c}", "set /snmp:snmp/community{c}/sec-name = s"}));
  daemon.not_live["community-hook"] = Serving::gone;
  EXPECT_THAT(refusal([&] { create("/snmp:snmp/community{d}"); }), HasSubstr("community-hook"));
  EXPECT_EQ(daemon.take_calls(), Calls{}) << "the transform must not have been asked to create it";
}

TEST_F(Operations, CallpointsWithoutADaemon) {
  const NodePath target = at("/snmp:snmp/target{a}");
  daemon.not_live["target"] = Serving::never_registered;
  EXPECT_FALSE(data.exists(target));
  EXPECT_EQ(get("/snmp:snmp/target{a}/ip"), "not there");
  EXPECT_THAT(refusal([&] { create("/snmp:snmp/target{a}"); }), HasSubstr("\"target\""));
  daemon.not_live["target"] = Serving::gone;
  EXPECT_THAT(refusal([&] { data.exists(target); }), HasSubstr("has gone"));
  EXPECT_THAT(refusal([&] { set("/snmp:snmp/target{a}/port", "1"); }), HasSubstr("has gone"));
  daemon.not_live.clear();
  daemon.lacks = {
      {"target", Op::cb_create}, {"target", Op::cb_get_case}, {"target", Op::cb_set_case}};
  daemon.take_calls();
  create("/snmp:snmp/target{a}/v1");
  EXPECT_EQ(daemon.take_calls(), Calls{"get /snmp:snmp/target{a}/name"});
}

TEST_F(Operations, RefusedValueReachesNoDaemon) {
  create("/snmp:snmp/target{a}");
  daemon.take_calls();
  EXPECT_THAT(refusal([&] { set("/snmp:snmp/target{a}/port", "65536"); }), HasSubstr("port"));
  EXPECT_THAT(refusal([&] { set("/snmp:snmp/usm/local/user{u}/auth/md5/password", "short"); }),
              ::testing::Not(HasSubstr("short")));
  EXPECT_EQ(daemon.take_calls(), Calls{});
}

TEST_F(Operations, StoredSubtreeIsStoredFirstThenHandedOn) {
  const std::string engine = "/snmp:snmp/agent/engine-id";
  std::string seen;
  daemon.during = [&](const std::string& call) {
    if (call.compare(0, 4, "set ") == 0)
      seen = get(engine + "/from-text") + " " + get(engine + "/other");
  };
  set(engine + "/enterprise-number", "8072");
  EXPECT_EQ(daemon.take_calls(),
            (Calls{"create " + engine, "set " + engine + "/enterprise-number = 8072"}));
  daemon.lacks = {{"agent", Op::cb_set_case}};
  set(engine + "/from-text", "hello");
  EXPECT_EQ(seen, "hello not there");
  daemon.take_calls();
  set(engine + "/other", "aa:bb");  // a change of method removes the old leaf first
  EXPECT_EQ(daemon.take_calls(),
            (Calls{"remove " + engine + "/from-text", "set " + engine + "/other = aa:bb"}));
  EXPECT_EQ(seen, "not there aa:bb");
  daemon.refuse["set " + engine + "/from-text = no"] = "Invalid engine-id: taken";
  EXPECT_EQ(refusal([&] { set(engine + "/from-text", "no"); }), "Invalid engine-id: taken");
  EXPECT_EQ(get(engine + "/other"), "aa:bb");
  EXPECT_EQ(get(engine + "/from-text"), "not there");
}

TEST_F(Operations, AttributesGoWhereTheNodeIsAnswered) {
  const std::string engine = "/snmp:snmp/agent/engine-id";
  const std::string row =
      "/SNMP_COMMUNITY_MIB:SNMP-COMMUNITY-MIB/snmpCommunityTable/snmpCommunityEntry{c}";
  const Value note = Value::buf("why");
  const auto annotate = [&](const std::string& path) { data.set_attribute(at(path), 7, &note); };
  EXPECT_THAT(refusal([&] { annotate("/snmp:snmp/target{a}"); }), HasSubstr("not there"));
  create("/snmp:snmp/target{a}");
  create(engine);
  create(row);
  daemon.take_calls();
  annotate("/snmp:snmp/target{a}");
  annotate(engine);
  annotate(row);
  annotate("/snmp:snmp");
  EXPECT_EQ(daemon.take_calls(), (Calls{"get /snmp:snmp/target{a}/name",
                                        "set_attr /snmp:snmp/target{a}", "set_attr " + engine}));
  data.remove(at(engine), Data::Ancestors::create);
  for (const char* path : {row.c_str(), "/snmp:snmp"})
    EXPECT_EQ(data.attributes(at(path)), (Attributes{{7, note}})) << path;
  daemon.lacks = {{"target", Op::cb_set_attr}};
  EXPECT_THAT(refusal([&] { annotate("/snmp:snmp/target{a}"); }), HasSubstr("keeps no attributes"));
}

}  // namespace
}  // namespace standin::test
