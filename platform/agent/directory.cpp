#include "directory.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>

#include <cerrno>
#include <cstring>
#include <filesystem>
#include <fstream>

namespace standin::agent {
namespace {

constexpr mode_t kOwnerOnly = 0700, kOwnerFile = 0600, kOthers = 077;

[[noreturn]] void fail(const std::string& what) {
  throw CannotServe(what + ": " + std::strerror(errno) + "; choose another with --dir");
}

void make(const std::string& path) {
  if (::mkdir(path.c_str(), kOwnerOnly) != 0 && errno != EEXIST) fail("cannot make " + path);
}

void must_be_closed(const std::string& path) {
  struct stat about {};
  if (::stat(path.c_str(), &about) != 0 || !S_ISDIR(about.st_mode)) {
    throw CannotServe(path + " is no directory; choose another with --dir");
  }
  if (about.st_uid != ::geteuid() || (about.st_mode & kOthers) != 0) {
    throw CannotServe(path +
                      " is open to others and would hold keys: chmod 700 it, or name one "
                      "that does not exist with --dir");
  }
}

}  // namespace

Directory::Directory(const std::string& path)
    : path_(std::filesystem::absolute(path).lexically_normal().string()) {
  if (path_.find_first_of(":\n") != std::string::npos) {
    throw CannotServe("snmpd takes no directory with a colon: " + path_);
  }
  make(path_);
  must_be_closed(path_);
  lock_ = FileDescriptor(::open(path_.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
  if (!lock_ || ::flock(lock_.get(), LOCK_EX | LOCK_NB) != 0) {
    throw CannotServe(path_ +
                      " is used by another standin-agent: end it, or choose another "
                      "directory with --dir");
  }
  make(state_path());
}

void Directory::write(const std::string& file, const std::string& text) const {
  const std::string next = file + ".new";
  const FileDescriptor out(
      ::open(next.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, kOwnerFile));
  if (!out) fail("cannot write " + next);
  for (std::size_t done = 0; done < text.size();) {
    const ssize_t n = ::write(out.get(), text.data() + done, text.size() - done);
    if (n < 0 && errno != EINTR) fail("cannot write " + next);
    if (n > 0) done += static_cast<std::size_t>(n);
  }
  if (::rename(next.c_str(), file.c_str()) != 0) fail("cannot write " + file);
}

void Directory::write_configuration(const std::string& text) const {
  write(configuration_file(), text);
}

void Directory::reset_state() const {
  const std::string file = state_path() + "/snmpd.conf";
  std::ifstream in(file);
  std::string kept;
  for (std::string line; std::getline(in, line);) {
    if (line.starts_with("engineBoots ") || line.starts_with("oldEngineID ")) kept += line + "\n";
  }
  write(file, kept);
}

}  // namespace standin::agent
