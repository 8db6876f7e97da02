#include "look.h"

#include <unistd.h>

#include <cstdlib>

namespace standin::cli {
namespace {

constexpr std::string_view escape_of(Ink ink) {
  switch (ink) {
    case Ink::heading:
      return "\x1b[1m";
    case Ink::key:
      return "\x1b[36m";
    case Ink::value:
    case Ink::added:
      return "\x1b[32m";
    case Ink::secret:
    case Ink::changed:
      return "\x1b[33m";
    case Ink::removed:
      return "\x1b[31m";
    case Ink::error:
      return "\x1b[1;31m";
    case Ink::faint:
      return "\x1b[2m";
  }
  return {};
}

}  // namespace

Look choose_look(ColourWhen when, bool terminal, const char* no_color, const char* term) {
  if (when == ColourWhen::always) return {true, true};
  if (!terminal) return {};
  const bool asked_not = no_color != nullptr && *no_color != '\0';
  const bool cannot = term == nullptr || std::string_view(term) == "dumb";
  return {true, when == ColourWhen::automatic && !asked_not && !cannot};
}

Look look_of(int descriptor, ColourWhen when) {
  return choose_look(when, ::isatty(descriptor) != 0, std::getenv("NO_COLOR"), std::getenv("TERM"));
}

std::string painted(Look look, Ink ink, std::string_view text) {
  if (!look.coloured || text.empty()) return std::string(text);
  return std::string(escape_of(ink)).append(text).append("\x1b[0m");
}

std::string visible(std::string_view text) {
  constexpr std::string_view kHex = "0123456789abcdef";
  std::string out;
  for (std::size_t i = 0; i < text.size(); ++i) {
    auto octet = static_cast<unsigned char>(text[i]);
    // C1 controls are two octets in UTF-8, of which the second is the control's number.
    const bool c1 = octet == 0xc2 && i + 1 < text.size() &&
                    (static_cast<unsigned char>(text[i + 1]) & 0xe0) == 0x80;
    if (c1) octet = static_cast<unsigned char>(text[++i]);
    if (octet == '\n') {
      out += "\\n";
    } else if (octet == '\t') {
      out += "\\t";
    } else if (octet < 0x20 || octet == 0x7f || c1) {
      out += {'\\', 'x', kHex[octet >> 4], kHex[octet & 15]};
    } else {
      out += text[i];
    }
  }
  return out;
}

}  // namespace standin::cli
