#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "world.h"

namespace scenario {
namespace {

// The initial data: an engine ID to be derived, and a community that waits for it.
constexpr const char* kInitial = R"({
  "snmp:snmp": {"agent": {"engine-id": {"enterprise-number": 32473, "from-text": "first"}}},
  "SNMP-COMMUNITY-MIB:SNMP-COMMUNITY-MIB": {"snmpCommunityTable": {"snmpCommunityEntry": [
    {"snmpCommunityIndex": "public", "snmpCommunityName": "public",
     "snmpCommunitySecurityName": "public"}]}}
})";
// RFC 3411, SnmpEngineID: 32473 with the first bit set, format 4, the text.
constexpr const char* kDerived = "80:00:7e:d9:04:66:69:72:73:74\n";

class Phases : public World {
 protected:
  std::string phase() {
    const std::string out = cli({"status"}).out;
    return out.substr(0, out.find('\n'));
  }
};

TEST_F(Phases, InitialTransactionIsAttachedInPhaseZeroAndCommittedByStart) {
  start_server({"--init", write_file("init.json", kInitial)});
  EXPECT_EQ(phase(), "phase 0");
  start_daemon();
  EXPECT_EQ(cli({"start"}), (Ran{0, "", ""}));
  EXPECT_EQ(phase(), "phase 2");
  EXPECT_EQ(cli({"get", kEngineId}).out, kDerived);
  EXPECT_EQ(cli({"get", kRows + "{public}/snmpCommunityContextEngineID"}).out, kDerived);
  EXPECT_EQ(cli({"keys", kCommunities}).out, "public\n");
}

TEST_F(Phases, StartedServerNeverGoesBackToPhaseZero) {
  const std::string init = write_file("init.json", kInitial);
  start_server({"--init", init});
  EXPECT_EQ(cli({"start"}).status, 0);
  server_.reset();
  start_server({"--init", init});
  EXPECT_EQ(phase(), "phase 2");
  start_daemon();
  EXPECT_EQ(cli({"start"}), (Ran{0, "", ""}));
  // No daemon was there in phase 0, and in phase 2 none looks at the settings by itself.
  EXPECT_NE(cli({"get", kEngineId}).out, kDerived);
}

TEST_F(Phases, WithoutInitialDataTheServerIsInPhaseTwoAtOnce) {
  start_server();
  EXPECT_EQ(phase(), "phase 2");
}

TEST_F(Phases, InitialDataThatCannotBeTakenIsRefused) {
  const std::string bad =
      write_file("bad.json", R"({"snmp:snmp": {"community": [{"index": "transformed"}]}})");
  EXPECT_THROW(start_server({"--init", bad}), std::runtime_error);
  EXPECT_EQ(server_->wait().value_or(0), 1);
  EXPECT_THAT(server_->errors(), testing::HasSubstr("community"));
  server_.reset();
}

}  // namespace
}  // namespace scenario
