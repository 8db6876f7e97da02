// What goes wrong: one line that says why and what to do, and a status.
#include <arpa/inet.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <signal.h>
#include <sys/socket.h>
#include <sys/stat.h>

#include <filesystem>
#include <fstream>

#include "tests/scenarios/snmpd.h"
#include "tests/scenarios/world.h"

namespace scenario {
namespace {

using ::testing::HasSubstr;
using ::testing::StartsWith;

constexpr char kKept[] = "agent serves on udp:127.0.0.1:";

class SnmpdRefusals : public World {
 protected:
  void SetUp() override {
    start_both();
    snmpd_ = std::make_unique<Snmpd>(file("snmp"), port());
    answers(snmpd_->settings());
  }

  // Runs the agent to its end: its status, and its last line.
  std::pair<int, std::string> refused(const Strings& options) {
    const auto agent = snmpd_->launch(options);
    const int status = agent->wait().value_or(-1);
    std::string text = agent->errors();
    if (!text.empty()) text.pop_back();
    return {status, text.substr(text.rfind('\n') + 1)};
  }

  // The distribution's snmpd after some commands of a shell.
  std::string snmpd_after(const std::string& name, const std::string& commands) {
    const std::string script =
        write_file(name, "#!/bin/sh\n" + commands + "\nexec /usr/sbin/snmpd \"$@\"\n");
    ::chmod(script.c_str(), 0700);
    return script;
  }

  std::unique_ptr<Snmpd> snmpd_;
};

struct Taken {
  Taken() : port(free_port()), socket(::socket(AF_INET, SOCK_DGRAM | SOCK_CLOEXEC, 0)) {
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_port = htons(port);
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    ::bind(socket.get(), reinterpret_cast<const sockaddr*>(&address), sizeof address);
  }
  std::uint16_t port;
  Descriptor socket;
};

TEST_F(SnmpdRefusals, EachIsOneLineWithTheWayOn) {
  const std::string open = file("open");
  std::filesystem::create_directory(open);
  ::chmod(open.c_str(), 0755);
  const struct {
    Strings options;
    int status;
    std::string text;
  } cases[] = {
      {{"--snmpd", "/nowhere/snmpd"},
       2,
       "cannot run /nowhere/snmpd: No such file or directory; name an snmpd with --snmpd"},
      {{"--bogus", "1"}, 3, "unknown option: --bogus; --help lists them"},
      {{"--dir", open}, 2, open + " is open to others and would hold keys: chmod 700 it"},
      {{"--snmpd", snmpd_after("no-luck", "echo no luck >&2; exit 1")},
       2,
       "snmpd does not start: status 1, last words: no luck"},
      {{"--port-offset", "65535"}, 2, "there is no address to serve on"},
  };
  for (const auto& c : cases) {
    const auto [status, text] = refused(c.options);
    EXPECT_EQ(status, c.status) << text;
    EXPECT_THAT(text, StartsWith("standin-agent: " + c.text));
  }

  // snmpd's own verdict on its configuration, by the distribution's program.
  const auto [bad, bad_text] =
      refused({"--snmpd",
               snmpd_after("bogus", "echo 'bogus words' >> \"${SNMPCONFPATH%%:*}/snmpd.conf\"")});
  EXPECT_EQ(bad, 2);
  EXPECT_THAT(bad_text, StartsWith("standin-agent: snmpd refuses "));
  EXPECT_THAT(bad_text, HasSubstr("Unknown token: bogus"));

  answers({"set /snmp:snmp/agent/enabled false"});
  const auto [disabled, disabled_text] = refused({});
  EXPECT_EQ(disabled, 2);
  EXPECT_THAT(disabled_text, HasSubstr("the agent is disabled"));

  daemon_.reset();
  server_.reset();
  const auto [alone, alone_text] = refused({});
  EXPECT_EQ(alone, 1);
  EXPECT_EQ(alone_text, "standin-agent: no server on port " + World::port() +
                            ": Connection refused; start confd-standin, or name its port with -P");
}

TEST_F(SnmpdRefusals, ARereadThatCannotBeServedKeepsTheOneBefore) {
  snmpd_->start();
  ASSERT_FALSE(HasFatalFailure());
  const std::string before = kKept + snmpd_->port();
  const Taken taken;
  const std::string in_use = std::to_string(taken.port);
  answers({"create /snmp:snmp/agent/extra-ip-port{127.0.0.1 " + in_use + "}"});
  EXPECT_EQ(snmpd_->reload(), before + " (configuration of before)");
  EXPECT_THAT(snmpd_->agent().errors(),
              HasSubstr("udp:127.0.0.1:" + in_use + " is in use: end the program that has it"));
  const auto [status, text] = refused({"--dir", file("second")});
  EXPECT_EQ(status, 2) << "the first one has the port: " << text;
  EXPECT_THAT(refused({}).second, HasSubstr("is used by another standin-agent"));

  answers({"delete /snmp:snmp/agent/extra-ip-port{127.0.0.1 " + in_use + "}",
           "set /snmp:snmp/agent/enabled false"});
  EXPECT_EQ(snmpd_->reload(), "agent is disabled");
  answers({"set /snmp:snmp/agent/enabled true"});
  EXPECT_EQ(snmpd_->reload(), before);

  daemon_.reset();
  server_->signal(SIGTERM);
  server_->wait();
  server_.reset();
  EXPECT_EQ(snmpd_->reload(), before + " (configuration of before)");
  EXPECT_EQ(snmpd_->end(), 0);
}

TEST_F(SnmpdRefusals, TheDeathOfSnmpdIsReportedWithItsLastWords) {
  snmpd_->start({"--snmpd", snmpd_after("snmpd", "echo $$ > " + file("pid"))});
  ASSERT_FALSE(HasFatalFailure());
  pid_t pid = 0;
  std::ifstream(file("pid")) >> pid;
  ASSERT_GT(pid, 1);
  ::kill(pid, SIGKILL);
  EXPECT_EQ(snmpd_->agent().wait(), 4);
  EXPECT_THAT(
      snmpd_->agent().errors(),
      HasSubstr("standin-agent: snmpd has ended: killed by signal 9, last words: NET-SNMP"));
}

}  // namespace
}  // namespace scenario
