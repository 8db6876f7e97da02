// What several steps of render() ask.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "rows.h"

namespace standin::agent {

// snmpd's buffers: a longer name would be taken for another one.
inline constexpr std::size_t kLongestName = 32;
inline constexpr std::size_t kLongestCommunity = 255;

inline constexpr int kModelV1 = 1, kModelV2c = 2, kModelUsm = 3;
// Status "active" and storage type "readOnly" of a row in the persistent store.
inline constexpr const char* kActiveReadOnly = "1 5 ";
inline constexpr const char* kReadOnlyActive = " 5 1";

// The words of a tag list.
std::vector<std::string> words_of(const std::string& tags);
bool has_tag(const TargetAddress& target, const std::string& tag);
// The IP address of a target in text; empty when its address is none.
std::string ip_text(const TargetAddress& target);

}  // namespace standin::agent
