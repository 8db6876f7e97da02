// A running snmpd: started in the foreground as a child, heard through its log, ended by its pid.
#pragma once

#include <sys/types.h>

#include <string>
#include <vector>

#include "configuration.h"
#include "directory.h"

namespace standin::agent {

// `wanted`, or the snmpd of PATH or the usual places. Throws CannotServe.
std::string find_snmpd(const std::string& wanted);

class Snmpd {
 public:
  // Writes the configuration and starts. Throws CannotServe, for a port in use too.
  Snmpd(const std::string& program, const Directory& directory, const Configuration& configuration);
  // Ends it.
  ~Snmpd();
  Snmpd(const Snmpd&) = delete;
  Snmpd& operator=(const Snmpd&) = delete;

  // Returns true when it serves; false as soon as `stop` is readable. Throws CannotServe when it
  // ends, refuses a line of its configuration, or does not serve in time.
  bool wait_until_serving(int stop);

  // Readable when there is output to take, or at its end.
  int output() const { return output_.get(); }
  // Copies what it has written to its log; false at the end, when it has ended.
  bool take_output();
  // After its end: how it ended, and its last line.
  std::string epitaph();

 private:
  void start(const std::string& program);
  void take_line(const std::string& line);
  [[noreturn]] void refused() const;

  const Directory& directory_;
  const Configuration& configuration_;  // outlives this
  FileDescriptor log_, output_;
  pid_t pid_ = -1;
  std::string unread_, last_words_;
  std::vector<std::string> complaints_;
  bool serves_ = false;
};

}  // namespace standin::agent
