// Words in a text, as the MIB keeps tag lists (RFC 3413, SnmpTagList): separated by blanks.
#pragma once

#include <confd_lib.h>

#include <string>
#include <string_view>
#include <vector>

namespace quillet {

// Words separated by any number of blanks (0x20 only); views into `text`.
std::vector<std::string_view> split_words(std::string_view text);

// The texts of a list of C_BUF values, each up to its first NUL, with one blank between them.
std::string join_words(const confd_value_t* list, unsigned int count);

}  // namespace quillet
