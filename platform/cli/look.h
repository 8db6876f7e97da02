// How answers look: plain for scripts, aligned for people, coloured where that is wanted.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace standin::cli {

enum class ColourWhen : std::uint8_t { automatic, always, never };

struct Look {
  bool aligned = false;
  bool coloured = false;
};

// `no_color` and `term` are the environment's variables of these names, null when unset. Colour
// forced onto something that is no terminal asks for the form for people as well.
Look choose_look(ColourWhen when, bool terminal, const char* no_color, const char* term);
// The same, for a descriptor of this process and its environment.
Look look_of(int descriptor, ColourWhen when);

enum class Ink : std::uint8_t {
  heading,
  key,
  value,
  secret,
  added,
  removed,
  changed,
  error,
  faint
};

// The text in the ink's colour, or as it is.
std::string painted(Look look, Ink ink, std::string_view text);

// Characters that would move a terminal's cursor as \n, \t or \xHH.
std::string visible(std::string_view text);

}  // namespace standin::cli
