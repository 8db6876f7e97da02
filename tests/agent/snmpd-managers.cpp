// Managers at the agent that standin-agent runs: they are let in, and get traps and informs, as the
// operator's configuration says.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <map>

#include "platform/wire/path.h"
#include "tests/scenarios/snmpd.h"
#include "tests/scenarios/world.h"

namespace scenario {
namespace {

using ::testing::HasSubstr;
using ::testing::Not;

constexpr char kSysName[] = ".1.3.6.1.2.1.1.5.0";
constexpr char kBoots[] = ".1.3.6.1.6.3.10.2.1.2.0";
constexpr char kReceiverId[] = "80:00:00:00:01:02:03:99";
const std::string kAuth = "alice authenticates", kPriv = "alice encrypts";

class SnmpdManagers : public World {
 protected:
  void SetUp() override {
    start_both();
    snmpd_ = std::make_unique<Snmpd>(file("snmp"), port());
    answers(snmpd_->settings());
    const std::string remote =
        "/snmp:snmp/usm/remote{" + std::string(kReceiverId) + "}/user{alice}/";
    const std::string admins = "/snmp:snmp/vacm/group{admins}/";
    Strings lines{"set /snmp:snmp/agent/engine-id/enterprise-number 32473",
                  "set /snmp:snmp/agent/engine-id/from-text abc",
                  "set /SNMPv2_MIB:SNMPv2-MIB/system/sysName quillet",
                  "set /snmp:snmp/community{public}/sec-name ops",
                  "set " + admins + "member{ops}/sec-model v2c",
                  "set " + admins + "member{alice}/sec-model usm",
                  "set " + admins + "access{\"\" any no-auth-no-priv}/read-view all",
                  "create /snmp:snmp/vacm/view{all}/subtree{1.3}/included"};
    for (const std::string& user : {std::string("/snmp:snmp/usm/local/user{alice}/"), remote}) {
      lines.push_back("set " + user + "auth/sha/password \"" + kAuth + "\"");
      lines.push_back("set " + user + "priv/aes/password \"" + kPriv + "\"");
    }
    answers(lines);
  }

  static Strings v2c(const std::string& community) {
    return {"snmpget", "-v2c", "-c", community, "-Oqv", "-t", "1", "-r", "1"};
  }
  static Strings v3(const Strings& more = {}) {
    Strings words{"snmpget", "-v3", "-Oqv", "-u", "alice", "-l", "authPriv", "-a", "SHA", "-A",
                  kAuth,     "-x",  "AES",  "-X", kPriv,   "-t", "1",        "-r", "1"};
    words.insert(words.end(), more.begin(), more.end());
    return words;
  }

  // snmptrapd on a port of its own, with the user under its own engine ID, as informs need it, and
  // under the agent's, as traps do.
  std::unique_ptr<Process> start_receiver(const std::string& receiver_port) {
    const std::string user =
        "alice SHA \"" + kAuth + "\" AES \"" + kPriv + "\"\nauthUser log alice priv\n";
    const std::string configuration =
        write_file("snmptrapd.conf", "exactEngineID " + hex_number(kReceiverId) +
                                         "\nauthCommunity log public\n" + "createUser " + user +
                                         "createUser -e 0x80007ed904616263 " + user);
    auto receiver =
        snmpd_->run({"/usr/sbin/snmptrapd", "-f", "-Lo", "-n", "-C", "-c", configuration, "-On",
                     "-F", "%P %v\\n", "udp:127.0.0.1:" + receiver_port},
                    "snmptrapd");
    EXPECT_TRUE(receiver->line_beginning("NET-SNMP version")) << receiver->errors();
    return receiver;
  }

  std::unique_ptr<Snmpd> snmpd_;
};

TEST_F(SnmpdManagers, AreLetInAndStillAreAfterTheEngineIdChanged) {
  snmpd_->start();
  ASSERT_FALSE(HasFatalFailure());
  EXPECT_EQ(snmpd_->ask(v2c("public"), {kSysName}), "\"quillet\"\n");
  EXPECT_EQ(snmpd_->ask(v3(), {kSysName, kBoots}), "\"quillet\"\n1\n");
  answers({"set /snmp:snmp/agent/engine-id/from-text xyz", "delete /snmp:snmp/community{public}"});
  EXPECT_EQ(snmpd_->reload(), "agent serves on udp:127.0.0.1:" + snmpd_->port());
  EXPECT_EQ(snmpd_->ask(v3(), {kSysName, kBoots}), "\"quillet\"\n1\n");
  EXPECT_EQ(snmpd_->ask(v2c("public"), {kSysName}), "") << "deleted, and not brought back";
  snmpd_->reload();
  EXPECT_EQ(snmpd_->ask(v3(), {kBoots}), "2\n") << "the same engine, once more";
  EXPECT_EQ(snmpd_->end(), 0);
}

TEST_F(SnmpdManagers, GetTrapsAndInformsFromTheConfiguredTargets) {
  const std::string receiver_port = std::to_string(free_port());
  const auto receiver = start_receiver(receiver_port);
  Strings lines{"set /snmp:snmp/notify{traps}/tag unconfirmed",
                "set /snmp:snmp/notify{informs}/tag confirmed",
                "set /snmp:snmp/notify{informs}/type inform"};
  for (const std::string name : {"community", "user"}) {
    const std::string target = "/snmp:snmp/target{" + name + "}/";
    lines.insert(lines.end(),
                 {"set " + target + "ip 127.0.0.1", "set " + target + "port " + receiver_port,
                  "set " + target + "tag unconfirmed confirmed"});
  }
  lines.insert(lines.end(), {"set /snmp:snmp/target{community}/v2c/sec-name ops",
                             "set /snmp:snmp/target{user}/usm/user-name alice",
                             "set /snmp:snmp/target{user}/usm/sec-level auth-priv"});
  answers(lines);
  snmpd_->start();
  ASSERT_FALSE(HasFatalFailure());
  // coldStart at its start; authenticationFailure for each wrong community.
  EXPECT_EQ(snmpd_->ask(v2c("wrong"), {kSysName}), "");
  const Strings expected{"INFORM, SNMP v2c, community public", "INFORM, SNMP v3, user alice",
                         "TRAP2, SNMP v2c, community public", "TRAP2, SNMP v3, user alice"};
  std::map<std::string, int> cold, wrong;
  while (cold.size() < expected.size() || wrong.size() < expected.size()) {
    const auto line = receiver->line_beginning("");
    ASSERT_TRUE(line) << receiver->errors() << snmpd_->agent().errors();
    for (const std::string& kind : expected) {
      if (!line->starts_with(kind)) continue;
      if (line->find(".1.3.6.1.6.3.1.1.5.1") != std::string::npos) ++cold[kind];
      if (line->find(".1.3.6.1.6.3.1.1.5.5") != std::string::npos) ++wrong[kind];
    }
  }
}

TEST_F(SnmpdManagers, SeeWhatContextsTagsAndMasksAllow) {
  answers({"create /snmp:snmp/agent/context{branch}",
           "set /snmp:snmp/community{inner}/sec-name ops",
           "set /snmp:snmp/community{inner}/context-name branch",
           "set /snmp:snmp/community{near}/sec-name ops",
           "set /snmp:snmp/community{near}/target-tag here",
           "set /snmp:snmp/community{far}/sec-name ops",
           "set /snmp:snmp/community{far}/target-tag there",
           "set /snmp:snmp/target{n}/ip 127.0.0.1", "set /snmp:snmp/target{n}/tag here",
           "set /snmp:snmp/target{n}/v2c/sec-name ops", "set /snmp:snmp/target{f}/ip 127.0.0.9",
           "set /snmp:snmp/target{f}/tag there", "set /snmp:snmp/target{f}/v2c/sec-name ops",
           "set /snmp:snmp/vacm/group{admins}/access{branch any no-auth-no-priv}/read-view row",
           "create /snmp:snmp/vacm/view{row}/subtree{1.3.6.1.2.1.1.9.1.*.2}/included"});
  snmpd_->start();
  ASSERT_FALSE(HasFatalFailure());
  EXPECT_EQ(snmpd_->ask(v2c("near"), {kSysName}), "\"quillet\"\n");
  EXPECT_EQ(snmpd_->ask(v2c("far"), {kSysName}), "");
  // The second row of a table, in the context only.
  const Strings objects{".1.3.6.1.2.1.1.9.1.2.1", ".1.3.6.1.2.1.1.9.1.2.2"};
  for (const std::string& answer :
       {snmpd_->ask(v2c("inner"), objects), snmpd_->ask(v3({"-n", "branch"}), objects)}) {
    EXPECT_THAT(answer, HasSubstr("No Such"));
    EXPECT_THAT(answer, HasSubstr("\niso.3.6.1.6.3."));
  }
  EXPECT_THAT(snmpd_->ask(v3(), objects), Not(HasSubstr("No Such")));
}

TEST_F(SnmpdManagers, OddNamesAreTheirOwnAndNobodyElses) {
  const std::string odd = R"(#a "b\ 'c)";
  const std::string key = standin::quote_word(odd);
  answers(
      {"set /snmp:snmp/community{" + key + "}/sec-name " + key,
       "set /snmp:snmp/vacm/group{" + key + "}/member{" + key + "}/sec-model v2c",
       "set /snmp:snmp/vacm/group{" + key + "}/access{\"\" any no-auth-no-priv}/read-view " + key,
       "create /snmp:snmp/vacm/view{" + key + "}/subtree{1.3}/included",
       "create /snmp:snmp/community{line}", "set /snmp:snmp/community{line}/sec-name ops"});
  EXPECT_EQ(cli({"set", "/snmp:snmp/community{line}/name", "x\nrwcommunity evil"}).status, 0);
  EXPECT_EQ(cli({"set", "/SNMPv2_MIB:SNMPv2-MIB/system/sysContact", "x\nrwcommunity evil"}).status,
            0);
  snmpd_->start();
  ASSERT_FALSE(HasFatalFailure());
  EXPECT_EQ(snmpd_->ask(v2c(odd), {kSysName}), "\"quillet\"\n");
  EXPECT_EQ(snmpd_->ask(v2c("evil"), {kSysName}), "");
  EXPECT_THAT(snmpd_->agent().errors(),
              HasSubstr("standin-agent: snmpCommunityEntry{line}: left out: snmpd takes no control "
                        "characters in names\n"));
}

}  // namespace
}  // namespace scenario
