// Event loop of a daemon.
//
// One loop and one thread for each daemon: the library calls a daemon's callbacks only inside its
// confd_fd_ready(), so all callbacks of a daemon run on its loop's thread. The status port belongs
// to the loop that is told to serve it.
#pragma once

#include <confd_dp.h>

namespace quillet {

// Serves the daemon's control and worker sockets; standard input when watch_stdin is 1 (its end
// ends the process with status 0); the status port when serve_status is non-zero, setting the
// status to running first. Never returns: the process ends when a socket closes or fails.
[[noreturn]] void run_event_loop(confd_daemon_ctx* dctx, int watch_stdin, int serve_status);

// Thread entry of the hook daemon; the argument is its confd_daemon_ctx.
void* hook_thread_main(void* dctx);

}  // namespace quillet
