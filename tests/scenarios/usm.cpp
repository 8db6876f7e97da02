#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "usm-world.h"

namespace scenario {
namespace {

using testing::HasSubstr;

class Usm : public UsmWorld {};

TEST_F(Usm, UsersOfSeveralEnginesAreListedUnderTheirs) {
  answers({"create " + local("joe"), "create " + local("ann"), "create " + remote(kOther, "joe"),
           "create " + remote(kOther, "bob"), "create " + remote(kOther2, "joe"),
           "create " + remote("ff:00:00:00:05", "joe")});
  EXPECT_EQ(answers({"keys " + kLocal + "/user", "keys " + kUsm + "/remote",
                     "keys " + remote(kOther) + "/user", "keys " + remote(kOther2) + "/user"}),
            "ann\njoe\n" + kOther + "\n" + kOther2 + "\nff:00:00:00:05\nbob\njoe\njoe\n");
  EXPECT_EQ(cli({"keys", kUsmTable}).out, kOther + " bob\n" + kOther + " joe\n" + kOther2 +
                                              " joe\n" + kOwnId + " ann\n" + kOwnId + " joe\n" +
                                              "ff:00:00:00:05 joe\n");
  EXPECT_EQ(answers({"exists " + local("joe"), "exists " + local("bob"),
                     "exists " + remote(kOther, "bob"), "exists " + remote(kOther2, "bob"),
                     "exists " + remote("80:00:00:00:06"), "get " + local("ann") + "/name",
                     "get " + remote(kOther) + "/engine-id",
                     // Asked for by name, the agent's own engine is there; it is never listed.
                     "exists " + remote(kOwnId)}),
            "true\nfalse\ntrue\nfalse\nfalse\nann\n" + kOther + "\ntrue\n");
}

TEST_F(Usm, NewUserIsARowOfDefaultsThatReadsAsNothingMore) {
  answers({"create " + remote(kOther, "joe")});
  const std::string r = row(kOther, "joe"), user = remote(kOther, "joe");
  EXPECT_EQ(answers({"get " + r + "/usmUserSecurityName", "get " + r + "/usmUserStorageType",
                     "get " + r + "/usmUserAuthProtocol", "get " + r + "/usmUserAuthKey",
                     "exists " + user + "/security-name", "exists " + user + "/auth",
                     "exists " + user + "/priv"}),
            "joe\nnonVolatile\n1.3.6.1.6.3.10.1.1.1\nnot there\nfalse\nfalse\nfalse\n");
}

TEST_F(Usm, SecurityNameIsShownWhenItDiffersFromTheName) {
  const std::string leaf = local("joe") + "/security-name";
  const std::string column = row(kOwnId, "joe") + "/usmUserSecurityName";
  EXPECT_EQ(answers({"set " + leaf + " operator", "get " + leaf, "get " + column, "delete " + leaf,
                     "get " + leaf, "get " + column, "set " + leaf + " joe", "get " + leaf}),
            "operator\noperator\nnot there\njoe\nnot there\n");
}

TEST_F(Usm, WithoutEngineIdNoLocalUserIsMadeAndRemoteOnesAre) {
  server_.reset();
  daemon_->wait();
  daemon_.reset();
  std::filesystem::remove_all(file("db"));
  start_both();
  EXPECT_EQ(cli({"create", local("joe")}), (Ran{2, "", "error: no local engine-id\n"}));
  EXPECT_EQ(cli({"set", local("joe") + "/security-name", "x"}),
            (Ran{2, "", "error: no local engine-id\n"}));
  EXPECT_EQ(
      answers({"keys " + kLocal + "/user", "exists " + local("joe"),
               "get " + local("joe") + "/security-name", "case " + local("joe") + "/auth protocol",
               "keys " + kUsmTable, "create " + remote(kOther, "joe"), "keys " + kUsm + "/remote"}),
      "false\nnot there\nnot there\n" + kOther + "\n");
}

TEST_F(Usm, RemoteUserOfTheAgentsOwnEngineIsRefused) {
  EXPECT_EQ(cli({"create", remote(kOwnId, "joe")}),
            (Ran{2, "", "error: remote user cannot have the local engine-id assigned\n"}));
  EXPECT_EQ(cli({"keys", kUsmTable}).out, "");
}

struct Stored {
  std::string side, oid, selected;  // of `case SIDE protocol`
};

TEST_F(Usm, ProtocolsOfRowsThatOthersWroteAreToldByTheirLastTwoNumbers) {
  const Stored cases[] = {
      {"auth", "1.3.6.1.6.3.10.1.1.1", "not there"}, {"auth", "1.3.6.1.6.3.10.1.1.2", "md5"},
      {"auth", "1.3.6.1.6.3.10.1.1.3", "sha"},       {"auth", "9.9.9.9.9.9.9.9.1.2", "md5"},
      {"auth", "1.3.6.1.6.3.10.1.1.3.7", "sha"},     {"priv", "1.3.6.1.6.3.10.1.2.1", "not there"},
      {"priv", "1.3.6.1.6.3.10.1.2.2", "des"},       {"priv", "1.3.6.1.6.3.10.1.2.4", "aes"},
  };
  answers({"create " + row(kOther, "joe")});
  const std::string user = remote(kOther, "joe");
  for (const Stored& c : cases) {
    SCOPED_TRACE(c.side + " " + c.oid);
    const std::string column =
        row(kOther, "joe") + (c.side == "auth" ? "/usmUserAuthProtocol" : "/usmUserPrivProtocol");
    const std::string there = c.selected == "not there" ? "false\n" : "true\n";
    EXPECT_EQ(answers({"set " + column + " " + c.oid, "case " + user + "/" + c.side + " protocol",
                       "exists " + user + "/" + c.side}),
              c.selected + "\n" + there);
  }
}

TEST_F(Usm, UnsupportedProtocolIsRefusedToReadersAndCanBeRemoved) {
  const std::string user = remote(kOther, "joe");
  for (const std::string oid : {"1.3.6.1.6.3.10.1.2.3", "1.3.6.1.6.3.10.1.3.2", "1.3.6", "0"}) {
    SCOPED_TRACE(oid);
    answers({"create " + row(kOther, "joe"),
             "set " + row(kOther, "joe") + "/usmUserPrivProtocol " + oid});
    EXPECT_EQ(told({"case " + user + "/priv protocol", "exists " + user + "/priv",
                    "get " + user + "/priv/des/password", "get " + user + "/name"}),
              "error: Unsupported protocol stored in MIB\n"
              "error: Problem retrieving protocol value\n"
              "error: Problem retrieving stored protocol value\njoe\n");
    const Ran shown = cli({"show", kUsm});
    EXPECT_EQ(shown.status, 2);
    EXPECT_THAT(shown.out, HasSubstr("priv error: Problem retrieving protocol value"));
    EXPECT_EQ(cli({"delete", user + "/priv"}).status, 0);
    EXPECT_EQ(get(row(kOther, "joe") + "/usmUserPrivProtocol"), "1.3.6.1.6.3.10.1.2.1\n");
    answers({"delete " + user});
  }
}

TEST_F(Usm, RowWithoutAnyColumnReadsAsAUserWithoutSides) {
  answers({"create " + row(kOwnId, "bare")});
  EXPECT_EQ(answers({"keys " + kLocal + "/user", "get " + local("bare") + "/security-name",
                     "case " + local("bare") + "/auth protocol",
                     "case " + local("bare") + "/auth/md5 key-type",
                     "get " + local("bare") + "/auth/md5/key"}),
            "bare\nnot there\nnot there\nnot there\nnot there\n");
  EXPECT_EQ(cli({"show", kLocal}).out, "snmp\n  usm\n    local\n      user bare\n");
}

TEST_F(Usm, RemovedUsersAndEnginesTakeTheirRowsAndAttributesAlong) {
  answers({"create " + local("joe"), "create " + remote(kOther, "joe"),
           "create " + remote(kOther, "ann"), "create " + remote(kOther2, "joe"),
           "attr " + remote(kOther, "ann") + " annotation note"});
  EXPECT_EQ(cli({"delete", remote(kOther)}).status, 0);
  EXPECT_EQ(cli({"keys", kUsmTable}).out, kOther2 + " joe\n" + kOwnId + " joe\n");
  EXPECT_EQ(cli({"delete", local("joe")}).status, 0);
  EXPECT_EQ(
      answers({"exists " + remote(kOther), "keys " + kUsmTable, "keys " + kLocal + "/user",
               "create " + remote(kOther, "ann"), "attr " + remote(kOther, "ann") + " annotation"}),
      "false\n" + kOther2 + " joe\nnot there\n");
  EXPECT_EQ(cli({"delete", remote(kOther, "none")}).status, 2);
}

TEST_F(Usm, RefusalsSayWhy) {
  answers({"create " + local("joe"), "set " + local("joe") + "/auth/md5/key " + kKey16,
           "create " + remote(kOther, "joe")});
  const std::pair<std::string, std::string> cases[] = {
      {"delete " + local("joe") + "/name", "error: Tried to delete invalid tag: name\n"},
      {"delete " + remote(kOther) + "/engine-id",
       "error: Tried to delete invalid tag: engine-id\n"},
      {"delete " + local("joe") + "/auth/md5", "error: Invalid case selection\n"},
      {"set " + local("joe") + "/auth/md5/key " + kKey20, "error: "},
      {"set " + local("joe") + "/auth/sha/key " + kKey16, "error: "},
      {"set " + local("joe") + "/auth/md5/password 1234567", "error: "},
      {"create " + remote("80:00:00:00") + "/user{x}", "error: "},
      {"create " + local("\"\""), "error: "},
  };
  const std::string before = cli({"show", "--json", kUsm}).out;
  for (const auto& [command, text] : cases) {
    SCOPED_TRACE(command);
    const Ran ran = batch({command}, {"-k"});
    EXPECT_EQ(ran.status, 2);
    EXPECT_THAT(ran.out, testing::StartsWith(text));
  }
  std::string engine = "80";
  for (int i = 0; i < 32; ++i) engine += ":00";
  EXPECT_EQ(cli({"create", remote(engine, "joe")}).status, 2);
  EXPECT_EQ(cli({"show", "--json", kUsm}).out, before);
}

}  // namespace
}  // namespace scenario
