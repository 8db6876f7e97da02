// The agent's directory: snmpd's configuration, its state and its log, closed to others.
#pragma once

#include <stdexcept>
#include <string>

#include "platform/wire/file_descriptor.h"

namespace standin::agent {

// snmpd cannot be run; the text says what to do.
struct CannotServe : std::runtime_error {
  using std::runtime_error::runtime_error;
};

class Directory {
 public:
  // Makes it when it is missing, and holds it: one agent at a time. Throws CannotServe.
  explicit Directory(const std::string& path);

  const std::string& path() const { return path_; }  // absolute
  std::string configuration_file() const { return path_ + "/snmpd.conf"; }
  std::string state_path() const { return path_ + "/state"; }
  std::string log_file() const { return path_ + "/snmpd.log"; }

  void write_configuration(const std::string& text) const;
  // Leaves of snmpd's own state what tells managers of its restarts (RFC 3414, snmpEngineBoots):
  // rows that it kept would come back after they were deleted.
  void reset_state() const;

 private:
  void write(const std::string& file, const std::string& text) const;

  std::string path_;
  FileDescriptor lock_;
};

}  // namespace standin::agent
