#include "arguments.h"

#include <charconv>

namespace standin::cli {
namespace {

constexpr std::string_view kColour = "--color=";

std::uint16_t parse_port(const std::string& text) {
  std::uint16_t port = 0;
  const char* end = text.data() + text.size();
  const auto [stop, error] = std::from_chars(text.data(), end, port);
  if (error != std::errc() || stop != end || port == 0) {
    throw UsageError("not a port: \"" + text + "\"");
  }
  return port;
}

ColourWhen parse_colour(const std::string& text) {
  if (text == "auto") return ColourWhen::automatic;
  if (text == "always") return ColourWhen::always;
  if (text == "never") return ColourWhen::never;
  throw UsageError("--color is one of auto, always, never");
}

}  // namespace

Arguments parse_arguments(const Words& words) {
  Arguments arguments;
  std::size_t i = 0;
  for (; i < words.size() && words[i].size() > 1 && words[i][0] == '-'; ++i) {
    const std::string& word = words[i];
    if (word == "--") {
      ++i;
      break;
    }
    if (word == "-h" || word == "--help") {
      arguments.help = true;
    } else if (word == "-P") {
      if (++i == words.size()) throw UsageError("-P needs a port");
      arguments.port = parse_port(words[i]);
    } else if (word.starts_with("-P")) {
      arguments.port = parse_port(word.substr(2));
    } else if (word.starts_with(kColour)) {
      arguments.colour = parse_colour(word.substr(kColour.size()));
    } else {
      throw UsageError("unknown option " + word);
    }
  }
  arguments.command.assign(words.begin() + static_cast<std::ptrdiff_t>(i), words.end());
  return arguments;
}

}  // namespace standin::cli
