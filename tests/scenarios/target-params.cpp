// The choice of a target's protocol, and the params rows behind it.
#include "target-world.h"

namespace scenario {
namespace {

const std::string kNone = "not there";

struct Protocol {
  std::string name, leaf;  // the case, and the leaf that holds the security name
  std::string mp_model, security_model;
};
const Protocol kProtocols[] = {
    {"v1", "v1/sec-name", "0", "1"},
    {"v2c", "v2c/sec-name", "1", "2"},
    {"usm", "usm/user-name", "3", "3"},
};

class TargetParams : public TargetWorld {
 protected:
  std::string selected(const std::string& name) {
    return answers({"case " + target(name) + " params"});
  }
  // A row of the address table as another program writes it, naming this params row.
  static Strings mib_target(const std::string& name, const std::string& params_row) {
    return {"create " + addr(name), "set " + addr(name, "Params") + " " + params_row};
  }
  static Strings mib_params(const std::string& name, const std::string& mp_model,
                            const std::string& security_model, const std::string& security_name) {
    return {"create " + params(name), "set " + params(name, "MPModel") + " " + mp_model,
            "set " + params(name, "SecurityModel") + " " + security_model,
            "set " + params(name, "SecurityName") + " " + security_name,
            "set " + params(name, "SecurityLevel") + " authPriv"};
  }
  static Strings joined(std::initializer_list<Strings> parts) {
    Strings all;
    for (const Strings& part : parts) all.insert(all.end(), part.begin(), part.end());
    return all;
  }
};

TEST_F(TargetParams, EachCaseIsReachedFromEachOther) {
  for (const Protocol& from : kProtocols) {
    for (const Protocol& to : kProtocols) {
      for (const bool named : {false, true}) {
        if (&from == &to) continue;
        SCOPED_TRACE(from.name + " -> " + to.name + (named ? "" : ", before the name"));
        answers({"set " + target("t", from.leaf) + " one"});
        if (!named) answers({"delete " + target("t", from.leaf)});
        if (from.name == "usm") answers({"set " + target("t", "usm/sec-level") + " auth-priv"});
        // v1 and v2c have put the level to the least, usm leaves it there.
        changes({"set " + target("t", to.leaf) + " two"},
                {{params("ConfD1", "MPModel"), to.mp_model},
                 {params("ConfD1", "SecurityModel"), to.security_model},
                 {params("ConfD1", "SecurityName"), "two"},
                 {params("ConfD1", "SecurityLevel"), "noAuthNoPriv"},
                 {target("t", to.leaf), "two"}});
        EXPECT_EQ(selected("t"), to.name + "\n");
        answers({"delete " + target("t")});
      }
    }
  }
}

TEST_F(TargetParams, UsmKeepsTheLevelOfItsRow) {
  answers({"set " + target("t", "usm/user-name") + " admin"});
  EXPECT_EQ(answers({"get " + target("t", "usm/sec-level")}), kNone + "\n");
  changes({"set " + target("t", "usm/sec-level") + " auth-priv"},
          {{params("ConfD1", "SecurityLevel"), "authPriv"}});
  changes({"delete " + target("t", "usm/sec-level")}, {{params("ConfD1", "SecurityLevel"), kNone}});
  // A row of another model with a level of its own, as only the MIB side can write it.
  answers({"set " + target("t", "v2c/sec-name") + " public",
           "set " + params("ConfD1", "SecurityLevel") + " authNoPriv"});
  changes({"set " + target("t", "usm/user-name") + " admin"},
          {{target("t", "usm/sec-level"), "auth-no-priv"}});
}

TEST_F(TargetParams, SharedRowIsSplitOnTheFirstWriteOfOneOfItsUsers) {
  for (const std::string& line : {"set " + target("a", "usm/user-name") + " mine",
                                  "set " + target("a", "usm/sec-level") + " no-auth-no-priv",
                                  "set " + target("a", "v2c/sec-name") + " mine"}) {
    SCOPED_TRACE(line);
    answers(joined({mib_params("shared", "3", "3", "both"), mib_target("a", "shared"),
                    mib_target("b", "shared")}));
    const std::string before = json(params("shared"));
    const bool level = line.find("level") != std::string::npos;
    const bool other_case = line.find("v2c") != std::string::npos;
    changes({line},
            {{addr("a", "Params"), "ConfD1"},
             {addr("b", "Params"), "shared"},
             {params("ConfD1", "MPModel"), other_case ? "1" : "3"},
             {params("ConfD1", "SecurityModel"), other_case ? "2" : "3"},
             {params("ConfD1", "SecurityName"), level ? "both" : "mine"},
             {params("ConfD1", "SecurityLevel"), level || other_case ? "noAuthNoPriv" : "authPriv"},
             {params("ConfD1", "StorageType"), "nonVolatile"}});
    EXPECT_EQ(json(params("shared")), before);
    // Now each has one of its own: the next writes change rows in place.
    changes({"set " + target("b", "usm/user-name") + " theirs"},
            {{addr("b", "Params"), "shared"}, {params("shared", "SecurityName"), "theirs"}});
    answers({"delete " + target("a"), "delete " + target("b")});
    EXPECT_EQ(answers({"keys " + kParamsRows}), "");
  }
}

TEST_F(TargetParams, ModelsThatNoCaseStandsForAreRefused) {
  answers(joined({mib_params("p", "2", "3", "x"), mib_target("t", "p")}));
  EXPECT_EQ(cli({"case", target("t"), "params"}),
            (Ran{2, "", "error: Inconsistent parameters setting: 2\n"}));
  const Ran shown = cli({"show", target("t")});
  EXPECT_EQ(shown.status, 2);
  EXPECT_THAT(shown.out, testing::HasSubstr("error: Inconsistent parameters setting: 2"));
  // It can be repaired from either side.
  changes({"set " + target("t", "usm/user-name") + " x"}, {{params("p", "MPModel"), "3"}});
  EXPECT_EQ(selected("t"), "usm\n");
}

TEST_F(TargetParams, RowsThatMissColumnsShowNoCase) {
  answers({"create " + params("empty"), "create " + addr("none"), "create " + addr("dangling"),
           "set " + addr("dangling", "Params") + " nowhere", "create " + addr("bare"),
           "set " + addr("bare", "Params") + " empty"});
  EXPECT_EQ(answers({"keys " + kTargets}), "bare\ndangling\nnone\n");
  for (const std::string name : {"none", "dangling", "bare"}) {
    SCOPED_TRACE(name);
    EXPECT_EQ(selected(name), kNone + "\n");
    changes({}, {{target(name, "v1/sec-name"), kNone},
                 {target(name, "usm/user-name"), kNone},
                 {target(name, "usm/sec-level"), kNone},
                 {target(name, "ip"), kNone},
                 {target(name, "retries"), "3"}});
    EXPECT_EQ(cli({"show", target(name)}).status, 0);
  }
  refused({"set " + target("none", "v1/sec-name") + " x"}, "error: Target has no parameters\n");
  refused({"set " + target("none", "usm/sec-level") + " auth-priv"},
          "error: Target has no parameters\n");
  refused({"set " + target("dangling", "usm/user-name") + " x"},
          "error: Set of snmpTargetParamsSecurityModel failed.\n");
  // A row without a model takes the case that is written; the others count as naming no row.
  changes({"set " + target("bare", "v1/sec-name") + " x"},
          {{addr("bare", "Params"), "empty"}, {params("empty", "MPModel"), "0"}});
  answers({"delete " + target("none"), "delete " + target("dangling"), "delete " + target("bare")});
  EXPECT_EQ(answers({"keys " + kAddrRows, "keys " + kParamsRows}), "");
}

}  // namespace
}  // namespace scenario
