#include "core/standard-descriptors.h"

#include <fcntl.h>
#include <unistd.h>

namespace quillet {

void open_standard_descriptors() {
  int fd = 0;
  do {
    fd = open("/dev/null", O_RDWR);  // the lowest number that is free
  } while (fd >= 0 && fd <= STDERR_FILENO);
  if (fd > STDERR_FILENO) close(fd);
}

}  // namespace quillet
