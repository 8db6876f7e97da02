// The agent at the end of the chain: the distribution's snmpd, run by standin-agent, and the
// managers of net-snmp that talk to it. All on loopback.
#pragma once

#include <memory>
#include <string>

#include "process.h"

namespace scenario {

// "80:00:7e\n" -> "0x80007e"
std::string hex_number(std::string text);

class Snmpd {
 public:
  // Keeps what it keeps, and finds what it finds, below `directory`; reads from the server there.
  Snmpd(std::string directory, std::string server_port);
  ~Snmpd() { end(); }
  Snmpd(const Snmpd&) = delete;
  Snmpd& operator=(const Snmpd&) = delete;

  // What makes the server's agent one that is served here, as lines of a batch.
  Strings settings() const;
  // Ends the one before. Fails the case when it does not serve.
  void start(const Strings& options = {});
  // After a change of the configuration; waits until it serves again and gives that line.
  std::string reload();
  // Waits for its end; its exit status, -1 when there is none.
  int end();
  Process& agent() { return *agent_; }
  // The agent as it is started, not waited for.
  std::unique_ptr<Process> launch(const Strings& options);

  // A program of net-snmp in this directory's environment.
  std::unique_ptr<Process> run(Strings words, const std::string& name) const;
  // What a manager (snmpget, snmpwalk) prints on the agent's address: "snmpget -v2c -c x", objects.
  std::string ask(Strings words, const Strings& objects) const;

  std::string port() const { return std::to_string(port_); }
  std::string directory() const { return directory_; }

 private:
  std::string directory_, server_port_;
  std::uint16_t port_;
  int runs_ = 0;
  std::unique_ptr<Process> agent_;
};

}  // namespace scenario
