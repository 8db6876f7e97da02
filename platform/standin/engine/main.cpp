// confd-standin: the management server that everything runs on when there is no other.
#include <fcntl.h>
#include <sys/signalfd.h>
#include <unistd.h>

#include <csignal>
#include <cstdio>
#include <exception>
#include <iostream>

#include "platform/standin/engine/options.h"
#include "platform/standin/engine/server.h"

namespace standin {
namespace {

constexpr int kFailed = 1;
constexpr int kUsage = 3;

// Sockets and the database must not land where the standard streams are expected.
void fill_standard_descriptors() {
  for (;;) {
    const int fd = ::open("/dev/null", O_RDWR);
    if (fd > 2 || fd < 0) {
      if (fd > 2) ::close(fd);
      return;
    }
  }
}

// Before the first thread: they all inherit the mask, so that the signals come here only.
int termination_signals() {
  ::signal(SIGPIPE, SIG_IGN);
  ::signal(SIGXFSZ, SIG_IGN);  // a write past a limit is a failed write
  sigset_t set;
  ::sigemptyset(&set);
  ::sigaddset(&set, SIGTERM);
  ::sigaddset(&set, SIGINT);
  ::pthread_sigmask(SIG_BLOCK, &set, nullptr);
  return ::signalfd(-1, &set, SFD_CLOEXEC);
}

void serve(const Options& options) {
  const Descriptor stop(termination_signals());
  Engine engine(options.engine);
  Server server(engine, options.port);
  std::cout << "listening on 127.0.0.1:" << server.port() << std::endl;
  server.run(stop.fd());
}

int run(int argc, const char* const* argv) {
  try {
    const Options options = read_options(argc, argv);
    if (options.help) {
      std::cout << usage();
      return 0;
    }
    serve(options);
    return 0;
  } catch (const OptionsError& e) {
    std::cerr << "confd-standin: " << e.what() << std::endl;
    return kUsage;
  } catch (const std::exception& e) {
    std::cerr << "confd-standin: " << e.what() << std::endl;
    return kFailed;
  }
}

}  // namespace
}  // namespace standin

int main(int argc, char** argv) {
  standin::fill_standard_descriptors();
  return standin::run(argc, argv);
}
