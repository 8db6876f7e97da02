// printf-like text of any length, and text cut to a caller's buffer.
#pragma once

#include <algorithm>
#include <climits>
#include <cstdarg>
#include <cstdio>
#include <cstring>
#include <string>
#include <string_view>

namespace standin {

// Empty for a null or unusable format.
__attribute__((format(printf, 1, 0))) inline std::string format_text(const char* fmt,
                                                                     va_list args) {
  if (fmt == nullptr) return {};
  va_list again;
  va_copy(again, args);
  const int length = std::vsnprintf(nullptr, 0, fmt, args);
  std::string text;
  if (length > 0) {
    text.resize(static_cast<std::size_t>(length));
    std::vsnprintf(text.data(), text.size() + 1, fmt, again);
  }
  va_end(again);
  return text;
}

// Cuts at n - 1 octets and terminates; gives the length that the whole text has.
inline int copy_text(char* buf, int n, std::string_view text) {
  if (buf != nullptr && n > 0) {
    const std::size_t part = std::min(text.size(), static_cast<std::size_t>(n) - 1);
    std::memcpy(buf, text.data(), part);
    buf[part] = '\0';
  }
  return static_cast<int>(std::min<std::size_t>(text.size(), INT_MAX));
}

}  // namespace standin
