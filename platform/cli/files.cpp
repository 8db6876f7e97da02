#include "files.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>

#include "platform/client/northbound.h"
#include "platform/wire/cipher.h"

namespace standin::cli {
namespace {

[[noreturn]] void fail(const std::string& name, const std::string& reason) {
  throw Refused(ErrorCode::os, "cannot read " + name + ": " + reason);
}

class File {
 public:
  explicit File(const std::string& name) : fd_(::open(name.c_str(), O_RDONLY | O_CLOEXEC)) {
    if (fd_ < 0) fail(name, std::strerror(errno));
  }
  ~File() { ::close(fd_); }
  File(const File&) = delete;
  File& operator=(const File&) = delete;
  int fd() const { return fd_; }

 private:
  int fd_;
};

}  // namespace

std::string read_file(const std::string& name) {
  const File file(name);
  std::string text(4096, '\0');
  std::size_t have = 0;
  for (;;) {
    if (have == text.size()) {
      // By hand: what a string leaves behind when it grows could be a password.
      std::string larger(2 * have, '\0');
      larger.replace(0, have, text);
      text.swap(larger);
      cleanse(larger);
    }
    const ssize_t got = ::read(file.fd(), text.data() + have, text.size() - have);
    if (got < 0 && errno == EINTR) continue;
    if (got < 0) fail(name, std::strerror(errno));
    if (got == 0) break;
    have += static_cast<std::size_t>(got);
  }
  text.resize(have);
  return text;
}

std::string read_value_file(const std::string& name) {
  std::string text = read_file(name);
  if (text.ends_with('\n')) text.pop_back();
  return text;
}

}  // namespace standin::cli
