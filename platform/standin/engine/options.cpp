#include "platform/standin/engine/options.h"

#include <charconv>
#include <filesystem>
#include <string_view>

namespace standin {
namespace {

constexpr const char* kDefaultDirectory = "standin-db";
constexpr double kLongestTimeout = 86400;

std::uint16_t read_port(const std::string& text) {
  std::uint16_t port = 0;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), port);
  if (error != std::errc() || end != text.data() + text.size())
    throw OptionsError("--port: not a port number: " + text);
  return port;
}

std::chrono::milliseconds read_timeout(const std::string& text) {
  double seconds = 0;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), seconds);
  if (error != std::errc() || end != text.data() + text.size() || !(seconds >= 0.001) ||
      seconds > kLongestTimeout)
    throw OptionsError("--timeout: not a number of seconds: " + text);
  return std::chrono::milliseconds(static_cast<std::int64_t>(seconds * 1000));
}

// The modules that came with this program, wherever the whole was put; the build tree has the same
// layout. A program that was copied away from them takes those of the system.
std::string default_yang() {
  std::error_code ignored;
  const auto program = std::filesystem::read_symlink("/proc/self/exe", ignored);
  const auto beside = (program.parent_path() / STANDIN_YANG_FROM_PROGRAM).lexically_normal();
  if (std::filesystem::is_directory(beside, ignored)) return beside;
  return STANDIN_INSTALLED_YANG;
}

bool known(const std::string& name) {
  return name == "--port" || name == "--dir" || name == "--init" || name == "--timeout" ||
         name == "--yang";
}

// REQUIRES: a known name.
void take(Options& options, const std::string& name, const std::string& value) {
  if (name == "--port")
    options.port = read_port(value);
  else if (name == "--dir")
    options.engine.directory = value;
  else if (name == "--init")
    options.engine.init_file = value;
  else if (name == "--timeout")
    options.engine.timeout = read_timeout(value);
  else
    options.engine.yang.push_back(value);
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
    const std::size_t equals = name.starts_with("--") ? name.find('=') : std::string::npos;
    std::string value;
    if (equals != std::string::npos) {
      value = name.substr(equals + 1);
      name.resize(equals);
    }
    if (!known(name)) throw OptionsError("unknown option: " + name);
    if (equals == std::string::npos) {
      if (++i == argc) throw OptionsError(name + " needs a value");
      value = argv[i];
    }
    if (value.empty()) throw OptionsError(name + " needs a value");
    take(options, name, value);
  }
  if (options.engine.directory.empty()) options.engine.directory = kDefaultDirectory;
  if (options.engine.yang.empty()) options.engine.yang = {default_yang()};
  return options;
}

std::string usage() {
  return "usage: confd-standin [--port N] [--dir DIR] [--init FILE] [--timeout S] [--yang DIR]...\n"
         "  --port N      listen on 127.0.0.1:N (default 4565; 0 picks a free port)\n"
         "  --dir DIR     keep everything in DIR (default ./" +
         std::string(kDefaultDirectory) +
         "; made when missing)\n"
         "  --init FILE   initial configuration (JSON), while nothing was ever committed\n"
         "  --timeout S   longest silence of a daemon in seconds (default 30)\n"
         "  --yang DIR    read the YANG modules of DIR; may be repeated\n"
         "                (default: those that were installed with the program)\n"
         "  --help        this text\n";
}

}  // namespace standin
