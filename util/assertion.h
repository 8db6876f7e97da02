#pragma once

namespace quillet {

// Prints "FILE:LINE: FUNCTION: assertion failed: EXPRESSION" on standard error and aborts.
[[noreturn]] void assertion_failed(const char* expression, const char* file, int line,
                                   const char* function);

}  // namespace quillet

// In every build, unlike assert(): for what the caller's contract or the schema guarantees.
#define QUILLET_ASSERT(expression) \
  ((expression) ? (void)0 : ::quillet::assertion_failed(#expression, __FILE__, __LINE__, __func__))
