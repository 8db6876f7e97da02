// The compact schema file: a damaged one is refused, never believed.
#include "platform/wire/schema_file.h"

#include <sys/mman.h>
#include <unistd.h>

#include <cstdint>
#include <cstdlib>
#include <stdexcept>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  // In memory, named by its descriptor: the reader takes a path.
  const int fd = memfd_create("schema", MFD_CLOEXEC);
  if (fd < 0 || write(fd, data, size) != static_cast<ssize_t>(size)) std::abort();
  try {
    const auto schema = standin::read_schema_file("/proc/self/fd/" + std::to_string(fd));
    for (std::size_t i = 0; i < schema.nodes.size(); ++i) {
      if (schema.nodes[i].parent > i) std::abort();
    }
  } catch (const std::runtime_error&) {
  }
  close(fd);
  return 0;
}
