// Users log in to an agent of the distribution that is given the rows as they stand in
// usmUserTable.
#include <arpa/inet.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/socket.h>
#include <unistd.h>

#include <algorithm>

#include "usm-world.h"

namespace scenario {
namespace {

constexpr char kAgentProgram[] = "/usr/sbin/snmpd";
constexpr char kGetProgram[] = "/usr/bin/snmpget";
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

// "80:00:7e\n" -> "0x80007e"
std::string hex_number(std::string text) {
  std::erase_if(text, [](char c) { return c == ':' || c == '\n'; });
  return "0x" + text;
}

std::uint16_t free_udp_port() {
  const Descriptor probe(::socket(AF_INET, SOCK_DGRAM | SOCK_CLOEXEC, 0));
  sockaddr_in address{};
  address.sin_family = AF_INET;
  address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
  socklen_t size = sizeof address;
  auto* any = reinterpret_cast<sockaddr*>(&address);
  if (::bind(probe.get(), any, size) != 0 || ::getsockname(probe.get(), any, &size) != 0) return 0;
  return ntohs(address.sin_port);
}

class UsmLogin : public UsmWorld {
 protected:
  void SetUp() override {
    if (::access(kAgentProgram, X_OK) != 0 || ::access(kGetProgram, X_OK) != 0) {
      GTEST_SKIP() << "snmp and snmpd are not installed";
    }
    UsmWorld::SetUp();
    Strings lines;
    for (const Login& u : kLogins) {
      lines.push_back("create " + local(u.name));
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

  // The rows under an engine ID, in the agent's own words.
  std::string agent_configuration(const std::string& engine_id) {
    std::string text = "exactEngineID " + hex_number(engine_id) + "\nsysName quillet\n";
    for (const Login& u : kLogins) {
      const std::string r = row(engine_id, u.name);
      text += "createUser -e " + hex_number(engine_id) + " " + u.name;
      if (!u.auth.empty()) {
        text += " " + upper(u.auth) + " -l " + hex_number(get(r + "/usmUserAuthKey"));
      }
      if (!u.priv.empty()) {
        text += " " + upper(u.priv) + " -l " + hex_number(get(r + "/usmUserPrivKey"));
      }
      text += "\nrouser " + u.name + " noauth .1\n";
    }
    return text;
  }

  // A program that keeps what it keeps, and finds what it finds, in this case's directory.
  std::unique_ptr<Process> start_snmp(Strings words, const std::string& name) {
    const std::string directory = file("snmp");
    std::filesystem::create_directories(directory);
    words.insert(words.begin(), {"/usr/bin/env", "SNMP_PERSISTENT_DIR=" + directory,
                                 "SNMPCONFPATH=" + directory, "MIBS=", "LC_ALL=C"});
    return std::make_unique<Process>(words, file(name + ".err"));
  }

  void start_agent(const std::string& engine_id) {
    agent_.reset();
    std::filesystem::remove_all(file("snmp"));
    address_ = "127.0.0.1:" + std::to_string(free_udp_port());
    const std::string configuration = write_file("snmpd.conf", agent_configuration(engine_id));
    agent_ = start_snmp(
        {kAgentProgram, "-f", "-Lo", "-C", "-c", configuration, "-I",
         "system_mib,usmConf,vacm_conf,snmpEngine,usmStats,usmUser,vacm_vars", "udp:" + address_},
        "snmpd");
    ASSERT_TRUE(agent_->line_beginning("NET-SNMP version")) << agent_->errors();
  }

  // What a user reads at a security level with these passwords.
  std::string read_as(const Login& u, const std::string& level, const std::string& suffix = {}) {
    Strings words{kGetProgram, "-v3", "-Oqv", "-t", "2", "-r", "3", "-u", u.name, "-l", level};
    if (level != "noAuthNoPriv") {
      words.insert(words.end(), {"-a", upper(u.auth), "-A", u.auth_password() + suffix});
    }
    if (level == "authPriv") {
      words.insert(words.end(), {"-x", upper(u.priv), "-X", u.priv_password()});
    }
    words.insert(words.end(), {address_, kSysName});
    const auto process = start_snmp(words, "snmpget");
    std::string out;
    EXPECT_TRUE(process->communicate("", out));
    return out;
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

  std::unique_ptr<Process> agent_;
  std::string address_;
};

TEST_F(UsmLogin, EveryUserLogsInBeforeAndAfterTheEngineIdChanged) {
  start_agent(kOwnId);
  everybody_logs_in();
  EXPECT_EQ(read_as(kLogins[1], "authNoPriv", " not"), "");
  answers({"set " + kSettings + "/from-text xyz"});
  start_agent(kNewId);
  everybody_logs_in();
}

}  // namespace
}  // namespace scenario
