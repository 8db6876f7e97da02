// The life of the agent: read, render, run snmpd, and again on demand.
#pragma once

#include <memory>
#include <string>

#include "configuration.h"
#include "directory.h"
#include "options.h"
#include "snmpd.h"

namespace standin::agent {

// snmpd ended by itself; the text has its last words.
struct SnmpdDied : std::runtime_error {
  using std::runtime_error::runtime_error;
};

// The signals that it lives by, as descriptors to be waited for. Block them before any thread.
struct Signals {
  Signals();
  FileDescriptor stop, reload;
};

// What the rows give now. Throws as read_rows().
struct Plan {
  Configuration configuration;
  bool enabled = false;
};
Plan make_plan(const Options& options);
// On standard error, a line for each row.
void tell_notes(const Configuration& configuration);

class Supervisor {
 public:
  // Finds snmpd and takes the directory. Throws CannotServe.
  explicit Supervisor(const Options& options);

  // Until a signal ends it. Throws what make_plan() does, CannotServe, SnmpdDied.
  void run();

 private:
  // False when a signal came meanwhile.
  bool serve(std::unique_ptr<Configuration> configuration);
  bool reload();
  bool replace(std::unique_ptr<Configuration> next);
  void stop();
  void announce(const std::string& remark = {}) const;

  Options options_;
  std::string program_;
  Directory directory_;
  Signals signals_;
  std::unique_ptr<Configuration> configuration_;
  std::unique_ptr<Snmpd> snmpd_;  // after the configuration that it refers to
};

}  // namespace standin::agent
