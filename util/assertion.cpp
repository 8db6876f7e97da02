#include "util/assertion.h"

#include <array>
#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "core/log.h"

namespace quillet {

void assertion_failed(const char* expression, const char* file, int line, const char* function) {
  std::array<char, 512> text{};
  std::snprintf(text.data(), text.size(), "%s:%d: %s: assertion failed: %s\n", file, line, function,
                expression);
  log_write_stderr(text.data(), std::strlen(text.data()));
  std::abort();
}

}  // namespace quillet
