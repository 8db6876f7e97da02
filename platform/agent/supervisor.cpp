#include "supervisor.h"

#include <poll.h>
#include <signal.h>
#include <sys/random.h>
#include <sys/signalfd.h>

#include <array>
#include <cerrno>
#include <initializer_list>
#include <iostream>

#include "quoting.h"
#include "read-rows.h"
#include "render.h"

namespace standin::agent {
namespace {

FileDescriptor descriptor_of(std::initializer_list<int> numbers) {
  sigset_t set;
  ::sigemptyset(&set);
  for (const int number : numbers) ::sigaddset(&set, number);
  ::pthread_sigmask(SIG_BLOCK, &set, nullptr);
  return FileDescriptor(::signalfd(-1, &set, SFD_CLOEXEC | SFD_NONBLOCK));
}

void clear(const FileDescriptor& signals) {
  signalfd_siginfo info{};
  while (::read(signals.get(), &info, sizeof info) > 0) {
  }
}

std::string random_word() {
  std::string octets(16, '\0');
  if (::getrandom(octets.data(), octets.size(), 0) != static_cast<ssize_t>(octets.size())) {
    throw CannotServe("no random numbers from the system");
  }
  return hex(octets).substr(2);
}

void tell(const std::string& text) { std::cerr << "standin-agent: " << text << std::endl; }

}  // namespace

Signals::Signals() : stop(descriptor_of({SIGTERM, SIGINT})), reload(descriptor_of({SIGHUP})) {}

Plan make_plan(const Options& options) {
  const Rows rows = read_rows(options.port);
  return {render(rows, {options.port_offset, random_word()}), rows.settings.enabled};
}

void tell_notes(const Configuration& configuration) {
  for (const Note& note : configuration.notes) tell(note.row + ": " + note.reason);
}

Supervisor::Supervisor(const Options& options)
    : options_(options), program_(find_snmpd(options.snmpd)), directory_(options.directory) {}

void Supervisor::announce(const std::string& remark) const {
  std::cout << "agent serves on";
  for (const Endpoint& endpoint : configuration_->endpoints) std::cout << ' ' << endpoint.spec();
  std::cout << remark << std::endl;
}

void Supervisor::stop() {
  snmpd_.reset();
  configuration_.reset();
}

bool Supervisor::serve(std::unique_ptr<Configuration> configuration) {
  stop();
  configuration_ = std::move(configuration);
  snmpd_ = std::make_unique<Snmpd>(program_, directory_, *configuration_);
  return snmpd_->wait_until_serving(signals_.stop.get());
}

bool Supervisor::replace(std::unique_ptr<Configuration> next) {
  tell_notes(*next);
  std::unique_ptr<Configuration> before;
  if (configuration_) before = std::make_unique<Configuration>(*configuration_);
  try {
    if (!serve(std::move(next))) return false;
    announce();
  } catch (const CannotServe& e) {
    if (!before) throw;
    tell(std::string(e.what()) + "; the configuration of before is kept");
    if (!serve(std::move(before))) return false;
    announce(" (configuration of before)");
  }
  return true;
}

bool Supervisor::reload() {
  Plan plan;
  try {
    plan = make_plan(options_);
  } catch (const std::exception& e) {
    tell(std::string(e.what()) + "; the configuration of before is kept");
    if (snmpd_) announce(" (configuration of before)");
    return true;
  }
  if (plan.enabled) return replace(std::make_unique<Configuration>(std::move(plan.configuration)));
  stop();
  std::cout << "agent is disabled" << std::endl;
  return true;
}

void Supervisor::run() {
  Plan plan = make_plan(options_);
  if (!plan.enabled) {
    throw CannotServe("the agent is disabled: enable it with /snmp:snmp/agent/enabled true");
  }
  bool go_on = replace(std::make_unique<Configuration>(std::move(plan.configuration)));
  while (go_on) {
    std::array<pollfd, 3> ready{{{signals_.stop.get(), POLLIN, 0},
                                 {signals_.reload.get(), POLLIN, 0},
                                 {snmpd_ ? snmpd_->output() : -1, POLLIN, 0}}};
    if (::poll(ready.data(), ready.size(), -1) < 0 && errno != EINTR) return;
    if (ready[0].revents != 0) return;
    if (ready[1].revents != 0) {
      clear(signals_.reload);
      go_on = reload();
    } else if (ready[2].revents != 0 && !snmpd_->take_output()) {
      throw SnmpdDied("snmpd has ended: " + snmpd_->epitaph() + "; start standin-agent again");
    }
  }
}

}  // namespace standin::agent
