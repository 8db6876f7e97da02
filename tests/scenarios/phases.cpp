// The initial transaction: open in phase 0, and the daemon attaches to it only then.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "world.h"

namespace scenario {
namespace {

class Phases : public World {
 protected:
  // Settings of the engine ID, a community that waits for it and one with another's.
  std::string initial(const std::string& settings) {
    return write_file("init.json", R"({
      "snmp:snmp": {"agent": {"engine-id": {"enterprise-number": 32473, )" +
                                       settings + R"(}}},
      "confd_dyncfg:confdConfig": {"snmpAgent": {"port": 161}},
      "SNMP-COMMUNITY-MIB:SNMP-COMMUNITY-MIB": {"snmpCommunityTable": {"snmpCommunityEntry": [
        {"snmpCommunityIndex": "a", "snmpCommunitySecurityName": "a"},
        {"snmpCommunityIndex": "b", "snmpCommunityContextEngineID": "01:02:03:04:05"}]}}})");
  }
  std::string phase() {
    const std::string out = cli({"status"}).out;
    return out.substr(0, out.find('\n'));
  }
  // Both sides, once phase 0 is over.
  std::string started() {
    answers({"start"});
    EXPECT_EQ(phase(), "phase 2");
    return answers({"keys " + kCommunities, "get " + kEngineId,
                    "get " + kRows + "{a}/snmpCommunityContextEngineID",
                    "get " + kRows + "{b}/snmpCommunityContextEngineID"});
  }
};

TEST_F(Phases, EngineIdIsDerivedAtStartUpForAllCommunities) {
  start_server({"--init", initial(R"("from-ip": "192.0.2.1")")});
  EXPECT_EQ(phase(), "phase 0");
  start_daemon();
  const std::string id = "80:00:7e:d9:01:c0:00:02:01\n";
  EXPECT_EQ(started(), "a\nb\n" + id + id + id);
}

TEST_F(Phases, SettingsThatGiveNoIdChangeNothing) {
  start_server({"--init", initial(R"("other": "zz")")});
  start_daemon();
  EXPECT_EQ(started(), "a\nb\nnot there\nnot there\n01:02:03:04:05\n");
}

TEST_F(Phases, StartedServerNeverGoesBackAndNoDaemonLooksAtTheSettingsThen) {
  const Strings options = {"--init", initial(R"("from-text": "first")")};
  start_server(options);
  EXPECT_EQ(cli({"start"}).status, 0);
  server_.reset();
  start_server(options);
  EXPECT_EQ(phase(), "phase 2");
  start_daemon();
  EXPECT_EQ(started(), "a\nb\nnot there\nnot there\n01:02:03:04:05\n");
}

}  // namespace
}  // namespace scenario
