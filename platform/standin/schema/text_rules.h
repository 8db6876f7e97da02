// Text as it may be stored, and as it may be shown.
#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace standin {

// UTF-8 without control characters other than tab and newline.
bool is_plain_text(std::string_view text);

// Reads "80:00:7E" in either case; the empty text is no octets. Nothing for any other form.
std::optional<std::string> octets_from_text(std::string_view text);

// For a sentence: control characters and what is not UTF-8 escaped as \xHH, cut after some
// hundred octets with "..." in the place of the rest.
std::string one_line(std::string_view text);

}  // namespace standin
