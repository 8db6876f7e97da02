#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>

#include <fstream>
#include <iterator>

#include "usm-world.h"

namespace scenario {
namespace {

using testing::HasSubstr;
using testing::Not;

constexpr char kPassword[] = "maplesyrup";
constexpr char kPassword2[] = "another-maplesyrup";

class UsmKeys : public UsmWorld {
 protected:
  void SetUp() override {
    UsmWorld::SetUp();
    answers({"create " + local("joe")});
  }
  const std::string auth = local("joe") + "/auth", priv = local("joe") + "/priv";
  const std::string mine = row(kOwnId, "joe");
  std::string mib_key(const std::string& side) {
    return get(mine + (side == "auth" ? "/usmUserAuthKey" : "/usmUserPrivKey"));
  }
  std::string copy(const std::string& side) { return get(mine + "/usm-crypto/" + side + "/key"); }
  std::string clear_password_in_database(const std::string& password) {
    for (const auto& entry : std::filesystem::directory_iterator(file("db"))) {
      std::ifstream in(entry.path(), std::ios::binary);
      const std::string bytes{std::istreambuf_iterator<char>(in), {}};
      if (bytes.find(password) != std::string::npos) return entry.path();
    }
    return {};
  }
};

struct Derived {
  std::string side, protocol, digest;
  std::size_t size;
};

TEST_F(UsmKeys, PasswordGivesTheKeyOfItsProtocolAndReadsEncrypted) {
  const Derived cases[] = {{"auth", "md5", "md5", 16}, {"priv", "des", "md5", 16},
                           {"priv", "aes", "md5", 16}, {"auth", "sha", "sha", 20},
                           {"priv", "des", "sha", 16}, {"priv", "aes", "sha", 16}};
  for (const Derived& c : cases) {
    SCOPED_TRACE(c.side + " " + c.protocol + " with " + c.digest);
    const std::string container = local("joe") + "/" + c.side + "/" + c.protocol;
    answers({"set " + container + "/password " + kPassword});
    const std::string expected = localized(c.digest, kPassword, kOwnId, c.size) + "\n";
    EXPECT_EQ(mib_key(c.side), expected);
    EXPECT_EQ(copy(c.side), expected);
    EXPECT_EQ(answers({"case " + local("joe") + "/" + c.side + " protocol",
                       "case " + container + " key-type"}),
              c.protocol + "\npassword\n");
    const std::string read = get(container + "/password");
    EXPECT_THAT(read, testing::StartsWith("$8$"));
    EXPECT_EQ(get(mine + "/usm-crypto/" + c.side + "/password"), read);
  }
}

TEST_F(UsmKeys, PasswordReadBackIsTakenAsItIs) {
  answers({"set " + auth + "/md5/password " + kPassword});
  const std::string encrypted = get(auth + "/md5/password"), key = mib_key("auth");
  answers({"set " + auth + "/md5/password " + encrypted.substr(0, encrypted.size() - 1)});
  EXPECT_EQ(get(auth + "/md5/password"), encrypted);
  EXPECT_EQ(mib_key("auth"), key);
  EXPECT_EQ(cli({"set", auth + "/md5/password", "$8$AAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAA="})
                .status,
            2);
  EXPECT_EQ(mib_key("auth"), key);
}

TEST_F(UsmKeys, KeyAfterPasswordAndPasswordAfterKey) {
  answers({"set " + auth + "/md5/password " + kPassword, "set " + auth + "/md5/key " + kKey16});
  EXPECT_EQ(answers({"case " + auth + "/md5 key-type", "get " + auth + "/md5/key",
                     "get " + mine + "/usmUserAuthKey", "exists " + auth + "/md5/password"}),
            "key\n" + kKey16 + "\n" + kKey16 + "\nfalse\n");
  answers({"set " + auth + "/md5/password " + kPassword});
  EXPECT_EQ(answers({"case " + auth + "/md5 key-type"}), "password\n");
  EXPECT_EQ(mib_key("auth"), localized("md5", kPassword, kOwnId) + "\n");
}

TEST_F(UsmKeys, KeyTypeFollowsColumnAndCopy) {
  const std::string type = "case " + auth + "/md5 key-type", column = mine + "/usmUserAuthKey";
  const std::string kept = mine + "/usm-crypto/auth/key";
  answers({"set " + auth + "/md5/password " + kPassword});
  // Somebody else changes the key: a reader is told so each time, and nothing is written.
  answers({"set " + column + " " + kKey16});
  EXPECT_EQ(cli({"case", auth + "/md5", "key-type"}), (Ran{0, "key\n", ""}));
  EXPECT_EQ(cli({"case", auth + "/md5", "key-type"}), (Ran{0, "key\n", ""}));
  // A transaction that may write takes the copy along.
  EXPECT_EQ(answers({type, "get " + kept, type}), "key\n" + kKey16 + "\npassword\n");
  EXPECT_EQ(answers({"delete " + kept, type, "get " + kept, type}),
            "key\n" + kKey16 + "\npassword\n");
  EXPECT_EQ(answers({"delete " + mine + "/usm-crypto/auth/password", type, type}), "key\nkey\n");
  EXPECT_EQ(answers({"delete " + column, type}), "not there\n");
}

TEST_F(UsmKeys, ProtocolChangedDerivesThePrivacyKeyAnewAndKeepsTheAuthenticationKey) {
  answers({"set " + auth + "/md5/password " + kPassword,
           "set " + priv + "/aes/password " + kPassword2});
  EXPECT_EQ(mib_key("priv"), localized("md5", kPassword2, kOwnId) + "\n");
  answers({"create " + auth + "/sha", "set " + auth + "/sha/password " + kPassword2});
  answers({"set " + auth + "/sha/password " + kPassword});
  EXPECT_EQ(mib_key("priv"), localized("sha", kPassword2, kOwnId, 16) + "\n");
  EXPECT_EQ(copy("priv"), mib_key("priv"));
  EXPECT_EQ(cli({"case", priv + "/aes", "key-type"}).out, "password\n");
  // The protocol alone: the old key stays, and so does the password.
  answers({"set " + auth + "/md5/password " + kPassword});
  const std::string old_key = mib_key("auth");
  answers({"create " + auth + "/sha"});
  EXPECT_EQ(mib_key("auth"), old_key);
  EXPECT_EQ(mib_key("priv"), localized("sha", kPassword2, kOwnId, 16) + "\n");
  EXPECT_EQ(answers({"case " + auth + " protocol", "case " + auth + "/sha key-type"}),
            "sha\npassword\n");
  EXPECT_THAT(daemon_->errors(), Not(HasSubstr("CRIT")));
}

TEST_F(UsmKeys, PrivacyBeforeAuthenticationIsZerosAndSaidSoLoudly) {
  EXPECT_EQ(told({"set " + priv + "/aes/password " + kPassword, "get " + mine + "/usmUserPrivKey",
                  "set " + auth + "/sha/password " + kPassword, "get " + mine + "/usmUserPrivKey"}),
            colons(std::string(16, '\0')) + "\n" + colons(std::string(16, '\0')) + "\n");
  EXPECT_THAT(daemon_->errors(), HasSubstr("CRIT"));
  EXPECT_THAT(daemon_->errors(), HasSubstr("user joe: the privacy password must be set again"));
  answers({"set " + priv + "/aes/password " + kPassword});
  EXPECT_EQ(mib_key("priv"), localized("sha", kPassword, kOwnId, 16) + "\n");
}

TEST_F(UsmKeys, PrivacyWithoutAuthenticationIsNotCommitted) {
  const Ran ran = cli({"set", priv + "/aes/password", kPassword});
  EXPECT_EQ(ran.status, 2);
  EXPECT_THAT(ran.err, HasSubstr("privacy needs authentication"));
  EXPECT_EQ(get(mine + "/usmUserPrivKey"), "");
}

TEST_F(UsmKeys, AnyPasswordOfEightTo255OctetsIsUsedWhole) {
  for (const std::string& password : {std::string("12345678"), std::string(255, 'x'),
                                      std::string("gr\u00fc\u00dfe %s%n 'and' \"more\"")}) {
    SCOPED_TRACE(password);
    EXPECT_EQ(cli({"set", auth + "/sha/password", password}), (Ran{0, "", ""}));
    EXPECT_EQ(mib_key("auth"), localized("sha", password, kOwnId) + "\n");
  }
}

TEST_F(UsmKeys, PasswordThatCannotBeUsedIsRefusedAndNothingIsKept) {
  answers({"set " + auth + "/md5/password " + kPassword});
  const std::string before = mib_key("auth"), encrypted = get(auth + "/md5/password");
  std::string wide;
  for (int i = 0; i < 255; ++i) wide += "\xf0\x9f\x94\x91";
  for (const std::string& password :
       {std::string("1234567"), std::string(256, 'x'), wide, std::string(64, '\xc3')}) {
    const Ran ran = cli({"set", auth + "/md5/password", password});
    EXPECT_EQ(ran.status, 2);
    EXPECT_THAT(ran.err, testing::StartsWith("error: "));
    EXPECT_THAT(ran.err, Not(HasSubstr(password)));
  }
  EXPECT_EQ(cli({"set", auth + "/md5/password", wide}).err,
            "error: password longer than 255 octets\n");
  EXPECT_EQ(mib_key("auth"), before);
  EXPECT_EQ(get(auth + "/md5/password"), encrypted);
}

TEST_F(UsmKeys, SecretsAreNeitherInTheDatabaseNorInAnyLine) {
  // The daemon at its most talkative.
  daemon_->signal(SIGTERM);
  daemon_->wait();
  start_daemon({"-p"});
  answers(
      {"set " + auth + "/sha/password " + kPassword, "set " + priv + "/aes/password " + kPassword});
  const std::string key = mib_key("auth");
  answers({"create " + remote(kOther, "ann"),
           "set " + remote(kOther, "ann") + "/auth/md5/key " + kKey16,
           "case " + auth + "/sha key-type", "set " + kSettings + "/from-text xyz"});
  told({"set " + auth + "/md5/key " + kKey20, "set " + auth + "/md5/password short"});
  EXPECT_EQ(clear_password_in_database(kPassword), "");
  const std::string lines = daemon_->errors() + server_->errors();
  EXPECT_THAT(lines, HasSubstr("usmUserAuthKey"));
  for (const std::string& secret : {std::string(kPassword), key.substr(0, 23), kKey16.substr(0, 23),
                                    localized("sha", kPassword, kNewId).substr(0, 23)}) {
    EXPECT_THAT(lines, Not(HasSubstr(secret)));
  }
  for (const auto& entry : std::filesystem::directory_iterator(file("db"))) {
    struct stat status {};
    ASSERT_EQ(::stat(entry.path().c_str(), &status), 0);
    const bool for_readers = entry.path().filename().string().find("schema") != std::string::npos;
    EXPECT_EQ(status.st_mode & 0077, for_readers ? 0044u : 0u) << entry.path();
  }
}

}  // namespace
}  // namespace scenario
