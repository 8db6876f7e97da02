// Words of a tag list: one string, words separated by single spaces (SnmpTagList, RFC 3413
// section 4.1.1). Pure functions; no MAAPI.
#pragma once

#include <confd_lib.h>

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

namespace quillet {

// snmpTargetAddrTagList holds at most this many octets (RFC 3413, SnmpTagList).
inline constexpr std::size_t kMaxTagList = 255;

// Position of the word's first occurrence as a whole word, or nothing.
std::optional<std::size_t> find_word_in_string_list(const char* list_text, std::size_t list_len,
                                                    const char* word_text, std::size_t word_len);

// Both take C_BUF values and set `out` to C_NOEXISTS first, so that it can always be freed.
// 1: `out` is the new list (the caller's to free); 0: nothing to do.
int add_word_to_string_list(const confd_value_t* list, const confd_value_t* word,
                            confd_value_t* out);
int remove_word_from_string_list(const confd_value_t* list, const confd_value_t* word,
                                 confd_value_t* out);

}  // namespace quillet
