#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "usm-world.h"

namespace scenario {
namespace {

using testing::HasSubstr;

class Usm : public UsmWorld {};
class UsmWithoutEngineId : public Running {};

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

TEST_F(Usm, NewUserIsARowOfDefaultsAndItsSecurityNameIsShownWhenItDiffers) {
  const std::string user = remote(kOther, "joe"), mib = row(kOther, "joe");
  EXPECT_EQ(answers({"create " + user, "get " + mib + "/usmUserSecurityName",
                     "get " + mib + "/usmUserStorageType", "get " + mib + "/usmUserAuthProtocol",
                     "get " + mib + "/usmUserAuthKey", "exists " + user + "/auth",
                     "exists " + user + "/priv"}),
            "joe\nnonVolatile\n1.3.6.1.6.3.10.1.1.1\nnot there\nfalse\nfalse\n");
  const std::string leaf = user + "/security-name", column = mib + "/usmUserSecurityName";
  EXPECT_EQ(answers({"get " + leaf, "set " + leaf + " operator", "get " + leaf, "get " + column,
                     "delete " + leaf, "get " + leaf, "get " + column, "set " + leaf + " joe",
                     "get " + leaf}),
            "not there\noperator\noperator\nnot there\njoe\nnot there\n");
}

TEST_F(UsmWithoutEngineId, NoLocalUserIsMadeAndRemoteOnesAre) {
  for (const Strings& write :
       {Strings{"create", local("joe")}, Strings{"set", local("joe") + "/security-name", "x"}}) {
    EXPECT_EQ(cli(write), (Ran{2, "", "error: no local engine-id\n"}));
  }
  EXPECT_EQ(
      answers({"keys " + kLocal + "/user", "exists " + local("joe"),
               "get " + local("joe") + "/security-name", "case " + local("joe") + "/auth protocol",
               "keys " + kUsmTable, "create " + remote(kOther, "joe"), "keys " + kUsm + "/remote"}),
      "false\nnot there\nnot there\n" + kOther + "\n");
}

TEST_F(Usm, ProtocolsOfRowsThatOthersWroteAreToldByTheirLastTwoNumbers) {
  const std::string user = remote(kOther, "joe"), column = row(kOther, "joe") + "/usmUser";
  const Strings reads = {"case " + user + "/auth protocol", "exists " + user + "/auth",
                         "case " + user + "/priv protocol", "exists " + user + "/priv"};
  answers({"set " + column + "AuthProtocol 9.9.9.9.9.9.9.9.1.2",
           "set " + column + "PrivProtocol 1.3.6.1.6.3.10.1.2.4"});
  EXPECT_EQ(answers(reads), "md5\ntrue\naes\ntrue\n");
  answers({"set " + column + "AuthProtocol 1.3.6.1.6.3.10.1.1.3.7",
           "set " + column + "PrivProtocol 1.3.6.1.6.3.10.1.2.1"});
  EXPECT_EQ(answers(reads), "sha\ntrue\nnot there\nfalse\n");
}

TEST_F(Usm, UnsupportedProtocolIsRefusedToReadersAndCanBeRemoved) {
  const std::string user = remote(kOther, "joe");
  for (const std::string oid : {"1.3.6.1.6.3.10.1.2.3", "0"}) {
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

TEST_F(Usm, RefusalsSayWhy) {
  answers({"create " + local("joe"), "set " + local("joe") + "/auth/md5/key " + kKey16,
           "create " + remote(kOther, "joe")});
  std::string long_id = "80";
  for (int i = 0; i < 32; ++i) long_id += ":00";
  const std::pair<std::string, std::string> cases[] = {
      {"create " + remote(kOwnId, "new"),
       "error: remote user cannot have the local engine-id assigned\n"},
      {"delete " + local("joe") + "/name", "error: Tried to delete invalid tag: name\n"},
      {"delete " + remote(kOther) + "/engine-id",
       "error: Tried to delete invalid tag: engine-id\n"},
      {"delete " + local("joe") + "/auth/md5", "error: Invalid case selection\n"},
      {"delete " + remote(kOther, "none"), "not there"},
      {"set " + local("joe") + "/auth/md5/key " + kKey20, "key"},
      {"set " + local("joe") + "/auth/sha/key " + kKey16, "key"},
      {"create " + remote("80:00:00:00", "x"), "engine-id"},
      {"create " + remote(long_id, "x"), "engine-id"},
      {"create " + local("\"\""), "name"},
  };
  for (const auto& [command, text] : cases) {
    refused({command}, text, kUsm);
    refused({command}, text, kUsmTable);
  }
}

}  // namespace
}  // namespace scenario
