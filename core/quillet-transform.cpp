// Entry of both modes: the daemon, and the short-lived client that waits for one.
#include <confd_dp.h>
#include <confd_maapi.h>
#include <pthread.h>

#include <csignal>
#include <cstdio>

#include "core/daemon-sockets.h"
#include "core/event-loop.h"
#include "core/initial-config.h"
#include "core/log.h"
#include "core/options.h"
#include "core/registration.h"
#include "core/standard-descriptors.h"
#include "status/daemon-status.h"
#include "util/value-guards.h"

namespace quillet {
namespace {

constexpr char kModule[] = "quillet-transform";

int wait_until_running() {
  const int wanted = STATUS_RUNNING;
  const int result = wait_for_status(&wanted, 1);
  if (result != 0 && result != 1) {
    log_error(LOG_LEVEL_CRIT, kModule, __LINE__, "wait for status failed");
  }
  return result;
}

// Tags and keypaths mean nothing to the callbacks before this.
void load_schemas() {
  char* text = nullptr;
  if (maapi_get_schema_file_path(maapi_sock, &text) != CONFD_OK) {
    confd_fatal("Quillet: Failed to get schema file path - %s\n", confd_lasterr());
  }
  const MallocPtr<char> path(text);
  if (confd_mmap_schemas(path.get()) != CONFD_OK) {
    confd_fatal("Failed to mmap schemas from %s\n", path.get());
  }
}

confd_daemon_ctx* start_transform_daemon() {
  confd_daemon_ctx* dctx = connect_daemon(confd_addr, "quillet-transform", 1);
  maapi_sock = daemon_sockets(dctx).maapi_sock;
  load_schemas();
  register_transform_daemon(dctx);
  return dctx;
}

void start_hook_daemon() {
  confd_daemon_ctx* dctx = connect_daemon(confd_addr, "quillet-hook", 1);
  register_hook_daemon(dctx);
  pthread_t thread{};
  if (pthread_create(&thread, nullptr, hook_thread_main, dctx) != 0) {
    confd_fatal("Failed to create hook daemon thread\n");
  }
}

// Returns only when the status port cannot be opened, which is no failure: another instance
// serves it.
int run_daemon(const Options& options) {
  daemon_status = STATUS_STARTING;
  if (status_server_open() != 0) {
    log_error(LOG_LEVEL_CRIT, kModule, __LINE__, "Failed to open status socket()");
    return 0;
  }
  fill_confd_addr(options.confd_port);
  confd_init_vsn_sz("quillet-transform", stderr,
                    static_cast<confd_debug_level>(options.debug_level), CONFD_LIB_VSN, MAXDEPTH,
                    MAXKEYLEN);
  confd_daemon_ctx* dctx = start_transform_daemon();
  initial_config_setup();
  if (options.print_running) {
    std::puts("running");
    std::fflush(stdout);
  }
  start_hook_daemon();
  run_event_loop(dctx, options.watch_stdin ? 1 : 0, 1);
}

}  // namespace
}  // namespace quillet

int main(int argc, char** argv) {
  quillet::open_standard_descriptors();
  // A peer that has gone is an error of the call that finds it out, never the end of the process.
  std::signal(SIGPIPE, SIG_IGN);
  const quillet::Options options = quillet::parse_options(argc, argv);
  return options.wait_for_init ? quillet::wait_until_running() : quillet::run_daemon(options);
}
