#include "transforms/agent-settings.h"

#include <confd_maapi.h>

#include "core/daemon-sockets.h"

namespace quillet {

int agent_create_unless_there(int thandle, const char* path) {
  if (maapi_exists(maapi_sock, thandle, path) > 0) return CONFD_OK;
  return maapi_create(maapi_sock, thandle, path);
}

}  // namespace quillet
