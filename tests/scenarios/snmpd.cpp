#include "snmpd.h"

#include <gtest/gtest.h>
#include <signal.h>

#include <algorithm>
#include <filesystem>

#include "machine.h"

namespace scenario {

std::string hex_number(std::string text) {
  std::erase_if(text, [](char c) { return c == ':' || c == '\n'; });
  return "0x" + text;
}

Snmpd::Snmpd(std::string directory, std::string server_port)
    : directory_(std::move(directory)), server_port_(std::move(server_port)), port_(free_port()) {
  std::filesystem::create_directories(directory_ + "/managers");
}

Strings Snmpd::settings() const {
  const std::string agent = "/snmp:snmp/agent/";
  return {"set " + agent + "enabled true",   "set " + agent + "ip 127.0.0.1",
          "set " + agent + "port " + port(), "create " + agent + "version/v1",
          "create " + agent + "version/v2c", "create " + agent + "version/v3"};
}

std::unique_ptr<Process> Snmpd::launch(const Strings& options) {
  Strings words{STANDIN_AGENT, "-P", server_port_, "--dir", directory_ + "/agent"};
  words.insert(words.end(), options.begin(), options.end());
  return std::make_unique<Process>(words, directory_ + "/agent" + std::to_string(++runs_) + ".err");
}

int Snmpd::end() {
  if (!agent_) return -1;
  agent_->signal(SIGTERM);
  const int status = agent_->wait().value_or(-1);
  agent_.reset();
  return status;
}

void Snmpd::start(const Strings& options) {
  end();
  agent_ = launch(options);
  ASSERT_TRUE(agent_->line_beginning("agent serves on")) << agent_->errors();
}

std::string Snmpd::reload() {
  agent_->signal(SIGHUP);
  const auto line = agent_->line_beginning("agent ");
  EXPECT_TRUE(line) << agent_->errors();
  return line.value_or("");
}

std::unique_ptr<Process> Snmpd::run(Strings words, const std::string& name) const {
  const std::string own = directory_ + "/managers";
  words.insert(words.begin(), {"/usr/bin/env", "SNMP_PERSISTENT_DIR=" + own, "SNMPCONFPATH=" + own,
                               "MIBS=", "LC_ALL=C"});
  return std::make_unique<Process>(words, directory_ + "/" + name + ".err");
}

std::string Snmpd::ask(Strings words, const Strings& objects) const {
  words.push_back("udp:127.0.0.1:" + port());
  words.insert(words.end(), objects.begin(), objects.end());
  const auto process = run(words, "manager");
  std::string out;
  EXPECT_TRUE(process->communicate("", out)) << words.front() << " hangs";
  return out;
}

}  // namespace scenario
