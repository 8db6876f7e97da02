#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "usm-world.h"

namespace scenario {
namespace {

using testing::HasSubstr;
using testing::Not;

const std::string kText = "set " + kSettings + "/from-text ";

class UsmRelocalization : public UsmWorld {
 protected:
  std::string column(const std::string& engine, const std::string& name, const std::string& leaf) {
    return get(row(engine, name) + "/" + leaf);
  }
};

class UsmStartUp : public World {};

TEST_F(UsmRelocalization, LocalUsersMoveAndRemoteOnesStay) {
  answers({"set " + local("u1") + "/auth/sha/password maplesyrup",
           "set " + local("u1") + "/priv/aes/password maplesyrup2",
           "set " + local("u1") + "/security-name boss",
           "attr " + local("u1") + "/auth annotation important",
           "set " + local("u2") + "/auth/md5/key " + kKey16, "create " + local("u3"),
           "set " + remote(kOther, "r") + "/auth/md5/password maplesyrup"});
  const std::string remote_key = column(kOther, "r", "usmUserAuthKey");
  const std::string sha_key = localized("sha", "maplesyrup", kNewId) + "\n";
  const std::string aes_key = localized("sha", "maplesyrup2", kNewId, 16) + "\n";
  answers({kText + "xyz"});
  EXPECT_EQ(cli({"keys", kUsmTable}).out,
            kOther + " r\n" + kNewId + " u1\n" + kNewId + " u2\n" + kNewId + " u3\n");
  EXPECT_EQ(column(kNewId, "u1", "usmUserAuthKey"), sha_key);
  EXPECT_EQ(column(kNewId, "u1", "usm-crypto/auth/key"), sha_key);
  EXPECT_EQ(column(kNewId, "u1", "usmUserPrivKey"), aes_key);
  EXPECT_EQ(column(kNewId, "u1", "usm-crypto/priv/key"), aes_key);
  EXPECT_EQ(column(kNewId, "u2", "usmUserAuthKey"), kKey16 + "\n");
  EXPECT_EQ(column(kOther, "r", "usmUserAuthKey"), remote_key);
  EXPECT_EQ(answers({"keys " + kLocal + "/user", "get " + local("u1") + "/security-name",
                     "case " + local("u1") + "/auth/sha key-type",
                     "attr " + local("u1") + "/auth annotation", "keys " + kUsm + "/remote"}),
            "u1\nu2\nu3\nboss\npassword\nimportant\n" + kOther + "\n");
  // A key that was given for the former engine is named, since nobody can derive it.
  EXPECT_THAT(daemon_->errors(), HasSubstr("user u2, auth: "));
  EXPECT_THAT(daemon_->errors(), Not(HasSubstr("user u1")));
}

TEST_F(UsmRelocalization, FormerIdAndAnAbortGiveTheFirstKeysBack) {
  answers({"set " + local("u") + "/auth/md5/password maplesyrup",
           "set " + local("u") + "/priv/des/password maplesyrup",
           "set " + local("key-only") + "/auth/md5/key " + kKey16});
  const std::string before = json(kUsmTable);
  answers({kText + "xyz"});
  EXPECT_NE(json(kUsmTable), before);
  answers({kText + "abc"});
  EXPECT_EQ(json(kUsmTable), before);
  answers({kText + "xyz", "abort"});
  EXPECT_EQ(json(kUsmTable), before);
  EXPECT_EQ(get(kEngineId), kOwnId + "\n");
  // Number and method in one transaction end at the last ID.
  answers({"set " + kSettings + "/enterprise-number 1", "set " + kSettings + "/other 01:02"});
  const std::string id = "80:00:00:01:05:01:02";
  EXPECT_EQ(cli({"keys", kUsmTable}).out, id + " key-only\n" + id + " u\n");
  EXPECT_EQ(column(id, "u", "usmUserAuthKey"), localized("md5", "maplesyrup", id) + "\n");
}

TEST_F(UsmRelocalization, IdUnderWhichAUserStandsIsRefusedAndTheSameIdTouchesNoKey) {
  answers({"set " + local("u") + "/auth/md5/key " + kKey16, "create " + remote(kNewId, "other")});
  const std::string text = "error: cannot change engine-id - conflicting remote user exists\n";
  refused({kText + "xyz"}, text, kUsmTable);
  refused({kText + "xyz"}, text, "/snmp:snmp/agent");
  EXPECT_EQ(get(kEngineId), kOwnId + "\n");
  answers({kText + "abc"});
  EXPECT_EQ(column(kOwnId, "u", "usmUserAuthKey"), kKey16 + "\n");
  EXPECT_THAT(daemon_->errors(), Not(HasSubstr("user u")));
}

TEST_F(UsmRelocalization, BrokenSideIsNamedAndTheRestGoesOn) {
  answers({"set " + local("u1") + "/auth/md5/password maplesyrup",
           "set " + local("u1") + "/priv/des/password maplesyrup",
           "set " + local("u2") + "/auth/md5/password maplesyrup"});
  // A password of which no key can be made.
  std::string wide;
  for (int i = 0; i < 100; ++i) wide += "\xf0\x9f\x94\x91";
  answers({"set " + row(kOwnId, "u1") + "/usm-crypto/auth/password " + wide,
           // A protocol of which the daemon knows no key, and a row that says it has one.
           "create " + row(kOwnId, "u3"),
           "set " + row(kOwnId, "u3") + "/usmUserAuthProtocol 1.3.6.1.6.3.10.1.1.4",
           "set " + row(kOwnId, "u3") + "/usmUserAuthKey " + kKey16,
           "set " + row(kOwnId, "u3") + "/usm-crypto/auth/key " + kKey16,
           "set " + row(kOwnId, "u3") + "/usm-crypto/auth/password maplesyrup"});
  const std::string old_key = column(kOwnId, "u1", "usmUserAuthKey");
  answers({kText + "xyz"});
  EXPECT_EQ(column(kNewId, "u1", "usmUserAuthKey"), old_key);
  EXPECT_EQ(column(kNewId, "u1", "usmUserPrivKey"), localized("md5", "maplesyrup", kNewId) + "\n");
  EXPECT_EQ(column(kNewId, "u2", "usmUserAuthKey"), localized("md5", "maplesyrup", kNewId) + "\n");
  EXPECT_EQ(column(kNewId, "u3", "usmUserAuthKey"), "\n");
  EXPECT_THAT(daemon_->errors(), HasSubstr("user u1, auth: password longer than 255 octets"));
  EXPECT_THAT(daemon_->errors(), HasSubstr("user u3, auth: no key can be made"));
}

TEST_F(UsmRelocalization, HundredUsersMoveInOneTransaction) {
  constexpr int kCount = 100;
  Strings lines;
  for (int i = 0; i < kCount; ++i) {
    const std::string name = "u" + std::to_string(1000 + i);
    lines.push_back("set " + local(name) + "/auth/sha/password maplesyrup" + name);
    lines.push_back("create " + remote(kOther, name));
  }
  answers(lines);
  answers({kText + "xyz"});
  std::string expected;
  for (int i = 0; i < kCount; ++i) expected += kOther + " u" + std::to_string(1000 + i) + "\n";
  for (int i = 0; i < kCount; ++i) expected += kNewId + " u" + std::to_string(1000 + i) + "\n";
  EXPECT_EQ(cli({"keys", kUsmTable}).out, expected);
  EXPECT_EQ(column(kNewId, "u1099", "usmUserAuthKey"),
            localized("sha", "maplesyrupu1099", kNewId) + "\n");
}

// The initial configuration has the users of another machine, under its engine ID.
TEST_F(UsmStartUp, InitialUsersMoveToTheDerivedId) {
  const std::string key = localized("md5", "maplesyrup", kOther);
  start_server({"--init", write_file("init.json", R"({
    "snmp:snmp": {"agent": {"engine-id": {"enterprise-number": 32473, "from-text": "abc"}}},
    "confd_dyncfg:confdConfig": {"snmpAgent": {"snmpEngine": {"snmpEngineID": ")" +
                                                      kOther + R"("}}},
    "SNMP-USER-BASED-SM-MIB:SNMP-USER-BASED-SM-MIB": {"usmUserTable": {"usmUserEntry": [
      {"usmUserEngineID": ")" + kOther + R"(", "usmUserName": "joe",
       "usmUserAuthProtocol": "1.3.6.1.6.3.10.1.1.2", "usmUserAuthKey": ")" +
                                                      key + R"(",
       "usm-crypto": {"auth": {"key": ")" + key + R"(", "password": "maplesyrup"}}}]}}})")});
  start_daemon();
  EXPECT_EQ(cli({"start"}), (Ran{0, "", ""}));
  EXPECT_EQ(cli({"keys", kUsmTable}).out, kOwnId + " joe\n");
  EXPECT_EQ(cli({"get", row(kOwnId, "joe") + "/usmUserAuthKey"}).out,
            localized("md5", "maplesyrup", kOwnId) + "\n");
  EXPECT_EQ(answers({"keys " + kLocal + "/user", "case " + local("joe") + "/auth/md5 key-type"}),
            "joe\npassword\n");
}

}  // namespace
}  // namespace scenario
