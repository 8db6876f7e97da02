// Attributes of nodes that a transform answers.
#include <gtest/gtest.h>

#include "world.h"

namespace scenario {
namespace {

class Attributes : public Running {};

TEST_F(Attributes, AreSetReadAndRemovedAndForgottenByAnAbort) {
  const std::string entry = kCommunities + "{public}";
  answers({"create " + entry});
  EXPECT_EQ(cli({"attr", entry, "annotation"}), (Ran{1, "", ""}));
  EXPECT_EQ(cli({"attr", entry, "annotation", "of the \"old\" site"}), (Ran{0, "", ""}));
  EXPECT_EQ(cli({"attr", entry, "tags", "red", "blue"}), (Ran{0, "", ""}));
  EXPECT_EQ(cli({"attr", entry, "annotation"}), (Ran{0, "\"of the \\\"old\\\" site\"\n", ""}));
  EXPECT_EQ(answers({"attr " + entry + " annotation lost", "abort", "attr " + entry + " annotation",
                     "attr " + entry + " annotation --delete", "attr " + entry,
                     "attr " + entry + " tags --delete", "attr " + entry}),
            "\"of the \\\"old\\\" site\"\ntags red blue\nnot there\n");
  EXPECT_EQ(cli({"keys", "/attr-list"}).out, "");
}

struct Case {
  std::string deleted;        // with "@" for its name
  std::string node;           // below it, or empty
  std::string make;           // what is written there for the node to be
  std::string name, sibling;  // the second begins with the first
};

TEST_F(Attributes, GoWithTheirNodeAndItsAncestorsButASiblingKeepsItsOwn) {
  const Case cases[] = {
      {"/snmp:snmp/community{@}", "", "", "a", "ab"},
      {"/snmp:snmp/community{@}/context-name", "", " x", "a", "ab"},
      {"/snmp:snmp/community{@}", "/context-name", " x", "a", "ab"},
      {"/snmp:snmp/notify{@}", "/type", " trap", "a", "ab"},
      {"/snmp:snmp/target{@}", "/v1/sec-name", " x", "a", "ab"},
      {"/snmp:snmp/agent/context{@}", "", "", "a", "ab"},
      {"/snmp:snmp/agent/extra-ip-port{::1 @}", "", "", "162", "1621"},
      {"/snmp:snmp/agent/version/@", "", "", "v1", "v2c"},
      {"/snmp:snmp/usm/remote{80:00:00:00:05:@}", "/user{joe}", "", "01", "01:01"},
      {"/snmp:snmp/vacm/group{@}", "/access{ctx v1 auth-priv}", "", "a", "ab"},
      {"/snmp:snmp/vacm/group{g}/member{@}", "/sec-model", " v1", "a", "ab"},
      {"/snmp:snmp/vacm/view{@}", "/subtree{1}/included", "", "a", "ab"},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.deleted + c.node);
    Strings make, reads;
    std::string gone;
    for (const std::string& name : {c.name, c.sibling}) {
      gone = c.deleted;
      gone.replace(gone.find('@'), 1, name);
      make.push_back((c.make.empty() ? "create " : "set ") + gone + c.node + c.make);
      reads.push_back("attr " + gone + c.node + " annotation");
    }
    gone = c.deleted;
    gone.replace(gone.find('@'), 1, c.name);
    answers(make);
    answers({reads[0] + " one", reads[1] + " two"});
    EXPECT_EQ(answers(reads), "one\ntwo\n");
    answers({"delete " + gone});
    EXPECT_EQ(answers({make[0], reads[0], reads[1]}), "not there\ntwo\n");
  }
}

}  // namespace
}  // namespace scenario
