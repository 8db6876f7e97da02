// standin-agent: a stock snmpd at the end of the chain, configured from the server's MIB tables.
#include <confd_lib.h>
#include <sys/resource.h>

#include <csignal>
#include <iostream>

#include "options.h"
#include "platform/client/northbound.h"
#include "supervisor.h"

namespace standin::agent {
namespace {

enum ExitStatus : int { kDone = 0, kNoServer = 1, kCannotServe = 2, kUsage = 3, kDied = 4 };

int report(const std::string& text, int status) {
  std::cerr << "standin-agent: " << text << std::endl;
  return status;
}

void run(const Options& options) {
  confd_init("standin-agent", stderr, CONFD_SILENT);
  if (options.print) {
    const Configuration configuration = make_plan(options).configuration;
    tell_notes(configuration);
    std::cout << configuration.masked() << std::flush;
    return;
  }
  ::signal(SIGPIPE, SIG_IGN);
  // Neither this process nor snmpd leaves users' keys in a core file.
  const rlimit none{};
  ::setrlimit(RLIMIT_CORE, &none);
  Supervisor(options).run();
}

int run_reporting(int argc, const char* const* argv) {
  try {
    const Options options = read_options(argc, argv);
    if (options.help) {
      std::cout << usage();
    } else {
      run(options);
    }
    return kDone;
  } catch (const OptionsError& e) {
    return report(e.what(), kUsage);
  } catch (const CannotServe& e) {
    return report(e.what(), kCannotServe);
  } catch (const SnmpdDied& e) {
    return report(e.what(), kDied);
  } catch (const ConnectionLost& e) {
    return report(std::string(e.what()) + "; start confd-standin, or name its port with -P",
                  kNoServer);
  } catch (const std::exception& e) {
    return report(e.what(), kNoServer);
  }
}

}  // namespace
}  // namespace standin::agent

int main(int argc, char** argv) { return standin::agent::run_reporting(argc, argv); }
