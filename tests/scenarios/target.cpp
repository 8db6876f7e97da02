#include "target-world.h"

namespace scenario {
namespace {

const std::string kUdpIpv4 = "1.3.6.1.2.1.100.1.1";
const std::string kUdpIpv6 = "1.3.6.1.2.1.100.1.2";
const std::string kNone = "not there";

class Target : public TargetWorld {
 protected:
  // A target that can be committed.
  void SetUp() override {
    TargetWorld::SetUp();
    answers({"set " + target("t", "v1/sec-name") + " public"});
  }
};

TEST_F(Target, AddressThroughAllItsStates) {
  struct Step {
    std::string line;
    std::string ip, port, domain, octets;
  };
  const std::string ip = target("t", "ip"), port = target("t", "port");
  const std::string v6 = "20:01:0d:b8:00:00:00:00:00:00:00:00:00:00:00:01:";
  const Step steps[] = {
      {"set " + ip + " 10.0.0.1", "10.0.0.1", "162", kUdpIpv4, "0a:00:00:01:00:a2"},
      {"set " + port + " 1162", "10.0.0.1", "1162", kUdpIpv4, "0a:00:00:01:04:8a"},
      {"set " + ip + " 2001:db8::1", "2001:db8::1", "1162", kUdpIpv6, v6 + "04:8a"},
      {"set " + port + " 65535", "2001:db8::1", "65535", kUdpIpv6, v6 + "ff:ff"},
      {"delete " + port, "2001:db8::1", "0", kUdpIpv6, v6 + "00:00"},
      {"set " + ip + " 10.0.0.2", "10.0.0.2", "0", kUdpIpv4, "0a:00:00:02:00:00"},
      {"delete " + ip, kNone, kNone, kNone, kNone},
      // Without a domain the octets are kept, but not shown.
      {"set " + port + " 1162", kNone, kNone, kNone, "00:00:00:00:04:8a"},
      {"set " + ip + " 2001:db8::1", "2001:db8::1", "1162", kUdpIpv6, v6 + "04:8a"},
      {"delete " + ip, kNone, kNone, kNone, kNone},
      {"set " + ip + " 2001:db8::1", "2001:db8::1", "162", kUdpIpv6, v6 + "00:a2"},
  };
  for (const Step& step : steps) {
    SCOPED_TRACE(step.line);
    changes({step.line}, {{ip, step.ip},
                          {port, step.port},
                          {addr("t", "TDomain"), step.domain},
                          {addr("t", "TAddress"), step.octets}});
  }
}

TEST_F(Target, RefusalsNameTheReasonAndChangeNothing) {
  answers({"set " + target("t", "ip") + " 10.0.0.1"});
  const std::pair<std::string, std::string> cases[] = {
      {"create " + target("t"), "already exists"},
      {"delete " + target("none"), "not there"},
      {"delete " + target("t", "name"), "error: Tried to delete invalid tag: name\n"},
      {"delete " + target("t", "v1"), "error: Missing mandatory case selection (v1/v2c/usm)\n"},
      {"delete " + target("t", "tls"), "not there"},
      {"create " + target("new"), "params"},
      {"set " + target("t", "ip") + " fe80::1%eth0", "ip"},
      {"set " + target("t", "port") + " 65536", "port"},
      {"set " + target("t", "timeout") + " 2147483648", "timeout"},
      {"set " + target("t", "retries") + " 256", "retries"},
      {"set " + target("t", "engine-id") + " 80:00:7e:d9", "engine-id"},
      {"set " + target("t", "tag") + " \"two words\"", "tag"},
      {"set " + target("t", "tag") + " a b a",
       "invalid value \"a\" for /snmp:snmp/target/tag: it stands there twice"},
      {"create " + target(std::string(33, 'x')), "name"},
  };
  for (const auto& [command, text] : cases) refused({command}, text);
}

TEST_F(Target, BatchWithOneBadChangeLeavesNothingOfIt) {
  Strings lines;
  for (int i = 0; i < 20; ++i) {
    lines.push_back("set " + target("n" + std::to_string(i), "usm/user-name") + " admin");
  }
  lines.push_back("delete " + target("t", "name"));
  refused(lines, "error: Tried to delete invalid tag: name\n");
  lines.pop_back();
  answers(lines);
  EXPECT_EQ(answers({"get " + target("n19", "usm/user-name"), "get " + addr("n19", "Params")}),
            "admin\nConfD21\n");
}

TEST_F(Target, ShowIsTakenBackByLoad) {
  answers({"set " + target("t", "ip") + " 2001:db8::1", "set " + target("t", "tag") + " a b",
           "set " + target("u", "usm/user-name") + " admin",
           "set " + target("u", "usm/sec-level") + " auth-priv",
           "set " + target("u", "engine-id") + " 80:00:7e:d9:04:01"});
  loads_back(kTargets, {"delete " + target("t"), "delete " + target("u")});
}

}  // namespace
}  // namespace scenario
