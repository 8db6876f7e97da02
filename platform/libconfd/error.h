// The calling thread's error code and text, and the border between exceptions and C callers.
#pragma once

#include <confd_lib.h>

#include <new>
#include <stdexcept>
#include <string>
#include <string_view>

#include "platform/wire/frame.h"
#include "platform/wire/path.h"

namespace standin {

// What a library function throws for its caller to see as confd_errno and confd_lasterr().
struct ApiError : std::runtime_error {
  ApiError(int error_code, const std::string& text) : std::runtime_error(text), code(error_code) {}
  int code;
};

// Sets code and text of this thread; an empty text stands for the code's own. Gives CONFD_ERR, so
// that a failing call reads `return fail(...)`.
int fail(int code, std::string_view text = {});
// CONFD_ERR_OS with what was attempted and the text of `error`.
int fail_os(std::string_view attempted, int error);

// Sets the error for the exception in flight. For catch blocks only.
int fail_for_current_exception();

// Runs the body of an API function: no exception leaves it.
template <typename Body>
int guarded(Body&& body) {
  try {
    return body();
  } catch (...) {
    return fail_for_current_exception();
  }
}

}  // namespace standin
