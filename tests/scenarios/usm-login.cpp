// Users log in to the distribution's agent with the keys as they stand in usmUserTable.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>

#include "snmpd.h"
#include "usm-world.h"

namespace scenario {
namespace {

constexpr char kSysName[] = ".1.3.6.1.2.1.1.5.0";
constexpr char kAnswer[] = "\"quillet\"\n";

struct Login {
  std::string name, auth, priv;  // cases; the passwords are made from the names
  std::string auth_password() const { return name + " authenticates"; }
  std::string priv_password() const { return name + " encrypts"; }
};
const Login kLogins[] = {{"none", "", ""},         {"md5", "md5", ""},
                         {"sha", "sha", ""},       {"md5des", "md5", "des"},
                         {"md5aes", "md5", "aes"}, {"shades", "sha", "des"},
                         {"shaaes", "sha", "aes"}};

std::string upper(std::string text) {
  std::transform(text.begin(), text.end(), text.begin(),
                 [](unsigned char c) { return static_cast<char>(std::toupper(c)); });
  return text;
}

class UsmLogin : public UsmWorld {
 protected:
  void SetUp() override {
    UsmWorld::SetUp();
    snmpd_ = std::make_unique<Snmpd>(file("snmp"), port());
    const std::string everybody = "/snmp:snmp/vacm/group{everybody}";
    Strings lines = snmpd_->settings();
    lines.insert(lines.end(),
                 {"set /SNMPv2_MIB:SNMPv2-MIB/system/sysName quillet",
                  "create /snmp:snmp/vacm/view{all}/subtree{1.3}/included",
                  "set " + everybody + "/access{\"\" usm no-auth-no-priv}/read-view all"});
    for (const Login& u : kLogins) {
      lines.push_back("create " + local(u.name));
      lines.push_back("set " + everybody + "/member{" + u.name + "}/sec-model usm");
      if (!u.auth.empty()) {
        lines.push_back("set " + local(u.name) + "/auth/" + u.auth + "/password \"" +
                        u.auth_password() + "\"");
      }
      if (!u.priv.empty()) {
        lines.push_back("set " + local(u.name) + "/priv/" + u.priv + "/password \"" +
                        u.priv_password() + "\"");
      }
    }
    answers(lines);
  }

  // What a user reads at a security level with these passwords.
  std::string read_as(const Login& u, const std::string& level, const std::string& suffix = {}) {
    Strings words{"snmpget", "-v3", "-Oqv", "-t", "2", "-r", "3", "-u", u.name, "-l", level};
    if (level != "noAuthNoPriv") {
      words.insert(words.end(), {"-a", upper(u.auth), "-A", u.auth_password() + suffix});
    }
    if (level == "authPriv") {
      words.insert(words.end(), {"-x", upper(u.priv), "-X", u.priv_password()});
    }
    return snmpd_->ask(words, {kSysName});
  }

  void everybody_logs_in() {
    for (const Login& u : kLogins) {
      EXPECT_EQ(read_as(u, "noAuthNoPriv"), kAnswer) << u.name;
      if (!u.auth.empty()) {
        EXPECT_EQ(read_as(u, "authNoPriv"), kAnswer) << u.name;
      }
      if (!u.priv.empty()) {
        EXPECT_EQ(read_as(u, "authPriv"), kAnswer) << u.name;
      }
    }
  }

  std::unique_ptr<Snmpd> snmpd_;
};

TEST_F(UsmLogin, EveryUserLogsInBeforeAndAfterTheEngineIdChanged) {
  snmpd_->start();
  ASSERT_FALSE(HasFatalFailure());
  everybody_logs_in();
  EXPECT_EQ(read_as(kLogins[1], "authNoPriv", " not"), "");
  answers({"set " + kSettings + "/from-text xyz"});
  snmpd_->reload();
  everybody_logs_in();
}

}  // namespace
}  // namespace scenario
