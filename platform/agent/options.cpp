#include "options.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <limits>

namespace standin::agent {
namespace {

std::uint16_t number(const std::string& name, const std::string& text, std::uint16_t least) {
  std::uint16_t value = 0;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
  if (error != std::errc() || end != text.data() + text.size() || value < least) {
    throw OptionsError(name + ": not a number from " + std::to_string(least) +
                       " to 65535: " + text);
  }
  return value;
}

void take(Options& options, const std::string& name, const std::string& value) {
  constexpr std::array kNames{"-P", "--port-offset", "--dir", "--snmpd"};
  if (std::ranges::find(kNames, name) == kNames.end()) {
    throw OptionsError("unknown option: " + name + "; --help lists them");
  }
  if (value.empty()) throw OptionsError(name + " needs a value");
  if (name == "-P") {
    options.port = number(name, value, 1);
  } else if (name == "--port-offset") {
    options.port_offset = number(name, value, 0);
  } else if (name == "--dir") {
    options.directory = value;
  } else {
    options.snmpd = value;
  }
}

}  // namespace

Options read_options(int argc, const char* const* argv) {
  Options options;
  for (int i = 1; i < argc; ++i) {
    std::string name = argv[i];
    if (name == "--help" || name == "-h") {
      options.help = true;
      return options;
    }
    if (name == "--print") {
      options.print = true;
      continue;
    }
    const std::size_t equals = name.starts_with("--") ? name.find('=') : std::string::npos;
    if (equals != std::string::npos) {
      take(options, name.substr(0, equals), name.substr(equals + 1));
    } else if (name.starts_with("-P") && name.size() > 2) {
      take(options, "-P", name.substr(2));
    } else {
      take(options, name, i + 1 < argc ? argv[++i] : "");
    }
  }
  return options;
}

const char* usage() {
  return "usage: standin-agent [-P PORT] [--dir DIR] [--port-offset N] [--snmpd PATH] [--print]\n"
         "\n"
         "Runs a stock snmpd (net-snmp) with the server's SNMP configuration, on loopback only.\n"
         "\n"
         "  -P PORT          the server's port (default 4565)\n"
         "  --dir DIR        keep configuration, log and state in DIR (default ./standin-agent;\n"
         "                   made when missing; must be closed to others, mode 0700)\n"
         "  --port-offset N  add N to each configured UDP port (default 0)\n"
         "  --snmpd PATH     the snmpd to run (default: the one of PATH, or /usr/sbin/snmpd)\n"
         "  --print          write the configuration to standard output and end; users' keys and\n"
         "                   the agent's own community are masked: the whole is in DIR/snmpd.conf\n"
         "                   while the agent runs\n"
         "\n"
         "When snmpd serves, the line \"agent serves on udp:ADDRESS:PORT ...\" is printed.\n"
         "Notifications go to the targets as they are configured, wherever they are. What snmpd\n"
         "cannot be told is listed on standard error, a line for each row.\n"
         "\n"
         "SIGHUP reads everything again, restarts snmpd and prints the line again; when that\n"
         "fails, the configuration of before is kept. SIGTERM and SIGINT end both.\n"
         "\n"
         "Exit status: 0 ended by a signal, or printed; 1 the server is not there or refuses;\n"
         "2 snmpd is missing or cannot serve (port in use, configuration refused, agent disabled,\n"
         "directory unusable); 3 wrong call; 4 snmpd has ended by itself.\n";
}

}  // namespace standin::agent
