#include "core/options.h"

#include <confd_lib.h>
#include <getopt.h>

#include <cstdlib>

#include "status/daemon-status.h"

namespace quillet {
namespace {

// Long options without a letter of their own.
enum LongOption { kWaitForInit = 256, kStatusPort };

constexpr option kLongOptions[] = {{"wait-for-init", no_argument, nullptr, kWaitForInit},
                                   {"status-port", required_argument, nullptr, kStatusPort},
                                   {nullptr, 0, nullptr, 0}};

// atoi itself is undefined for numbers that do not fit.
int number(const char* text) { return static_cast<int>(std::strtol(text, nullptr, 10)); }

}  // namespace

Options parse_options(int argc, char** argv) {
  Options options;
  optind = 0;  // start afresh, whatever was parsed before in this process
  for (;;) {
    switch (getopt_long(argc, argv, "Scn:tdpsrP:", kLongOptions, nullptr)) {
      case -1:
        return options;
      case kWaitForInit:
        options.wait_for_init = true;
        break;
      case kStatusPort:
        status_set_port(number(optarg));
        break;
      case 'P':
        options.confd_port = number(optarg);
        break;
      case 'c':
        options.watch_stdin = true;
        break;
      case 'S':
        options.print_running = true;
        break;
      case 's':
        options.debug_level = CONFD_SILENT;
        break;
      case 'd':
        options.debug_level = CONFD_DEBUG;
        break;
      case 't':
        options.debug_level = CONFD_TRACE;
        break;
      case 'p':
        options.debug_level = CONFD_PROTO_TRACE;
        break;
      default:
        break;  // -n and -r are accepted for old start scripts and mean nothing
    }
  }
}

}  // namespace quillet
