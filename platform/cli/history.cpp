#include "history.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <filesystem>

namespace standin::cli {

std::string history_file(const char* state_home, const char* home) {
  // A relative one is to be ignored (XDG Base Directory Specification, "Basics").
  std::string folder;
  if (state_home != nullptr && *state_home == '/') {
    folder = state_home;
  } else if (home != nullptr && *home == '/') {
    folder = std::string(home) + "/.local/state";
  }
  return folder.empty() ? folder : folder + "/standin-cli/history";
}

bool prepare_history(const std::string& file) {
  if (file.empty()) return false;
  std::error_code error;
  std::filesystem::create_directories(std::filesystem::path(file).parent_path(), error);
  const int fd = ::open(file.c_str(), O_WRONLY | O_CREAT | O_APPEND | O_CLOEXEC, 0600);
  if (fd < 0) return false;
  const bool mine = ::fchmod(fd, 0600) == 0;
  ::close(fd);
  return mine;
}

}  // namespace standin::cli
