// ./demo, run as a newcomer runs it, with the programs that are built already.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <map>

#include "machine.h"

namespace scenario {
namespace {

using testing::HasSubstr;

struct Shown {
  int status = -1;
  std::string out, err;
};

class Demo : public ::testing::Test, protected Machine {
 protected:
  Shown run() {
    Strings argv{"/usr/bin/env", "QUILLET_DIR=" + file("demo"), std::string("QUILLET_BIN=") + BIN};
    for (const auto& [name, port] : ports_)
      argv.push_back("QUILLET_" + name + "=" + std::to_string(port));
    argv.push_back(DEMO);
    Process demo(argv, file("demo.err"));
    Shown shown;
    demo.communicate("", shown.out);
    shown.status = demo.wait().value_or(-1);
    shown.err = demo.errors();
    return shown;
  }

  std::map<std::string, std::uint16_t> ports_{{"PORT", free_port()},
                                              {"STATUS_PORT", free_port()},
                                              {"AGENT_PORT", free_port()},
                                              {"TRAP_PORT", free_port()}};
};

TEST_F(Demo, ShowsTheWholeWayAndFindsWhatItConfigured) {
  const Shown first = run();
  ASSERT_EQ(first.status, 0) << first.out << first.err;
  // Each command's answer is checked by the script itself; these are the things to see.
  std::size_t from = 0;
  for (const char* text :
       {"snmpCommunityName public", "TRAP2, SNMP v2c, community public: coldStart",
        "INFORM, SNMP v2c, community public: coldStart", "snmpget -v2c", "\"router-1\"",
        "snmpget -v3", "\"router-1\"", "authenticationFailure", "set /snmp:snmp/agent/engine-id",
        "kill -HUP", "snmpget -v3", "\"router-1\"", "error: Invalid subtree", "$ standin-cli"}) {
    const std::size_t at = first.out.find(text, from);
    ASSERT_NE(at, std::string::npos) << text << "\n" << first.out;
    from = at;
  }
  EXPECT_EQ(first.err, "");
  const Shown second = run();
  EXPECT_EQ(second.status, 0) << second.out << second.err;
  EXPECT_THAT(second.out, HasSubstr("is used again"));
  EXPECT_EQ(second.out.find("standin-cli load"), std::string::npos);
}

TEST_F(Demo, BusyPortIsOneLineAndTheWayOn) {
  start_server();
  ports_["PORT"] = static_cast<std::uint16_t>(std::stoi(port()));
  const Shown shown = run();
  EXPECT_EQ(shown.status, 1);
  EXPECT_EQ(shown.err, "error: port " + port() +
                           " is in use: end the program that has it, or choose another with "
                           "QUILLET_PORT=N\n");
}

}  // namespace
}  // namespace scenario
