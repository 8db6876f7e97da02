#include "error.h"

#include <errno.h>
#include <unistd.h>

#include <algorithm>
#include <cstdarg>
#include <cstdlib>
#include <cstring>
#include <system_error>

#include "platform/wire/messages.h"
#include "text.h"
#include "trace.h"

namespace standin {
namespace {

// Plain memory, so that it can still be read while the thread's destructors run.
constexpr std::size_t kTextRoom = 8192;
thread_local int t_code = CONFD_OK;
thread_local char t_text[kTextRoom] = "";

struct CodeText {
  int code;
  const char* text;
};
constexpr CodeText kCodeTexts[] = {
    {CONFD_OK, "no error"},
    {CONFD_ERR_NOEXISTS, "item does not exist"},
    {CONFD_ERR_ALREADY_EXISTS, "item already exists"},
    {CONFD_ERR_ACCESS, "transaction cannot be written"},
    {CONFD_ERR_BADPATH, "bad path"},
    {CONFD_ERR_BADTYPE, "value of a wrong type"},
    {CONFD_ERR_BADVALUE, "value that the type does not admit"},
    {CONFD_ERR_MALLOC, "out of memory"},
    {CONFD_ERR_OS, "system call failed"},
    {CONFD_ERR_PROTOCOL, "protocol error"},
    {CONFD_ERR_NOSESSION, "no such transaction"},
    {CONFD_ERR_INUSE, "name or callpoint in use"},
    {CONFD_ERR_NO_KEYS, "no crypto keys, or not the right ones"},
    {CONFD_ERR_XPATH, "expression cannot be evaluated"},
    {CONFD_ERR_APIUSE, "wrong use of the API"},
    {CONFD_ERR_DEADLOCK, "call could only wait for itself"},
    {CONFD_ERR_TOO_LONG, "text too long"},
    {CONFD_ERR_GONE, "daemon has gone"},
    {CONFD_ERR_EXTERNAL, "refused by a callback"},
    {CONFD_ERR_FAILED, "operation refused"},
    {CONFD_ERR_CONFLICT, "changed by another commit"},
};

static_assert(CONFD_ERR_NOEXISTS == int(ErrorCode::noexists));
static_assert(CONFD_ERR_ALREADY_EXISTS == int(ErrorCode::already_exists));
static_assert(CONFD_ERR_ACCESS == int(ErrorCode::access));
static_assert(CONFD_ERR_BADPATH == int(ErrorCode::badpath));
static_assert(CONFD_ERR_BADTYPE == int(ErrorCode::badtype));
static_assert(CONFD_ERR_BADVALUE == int(ErrorCode::badvalue));
static_assert(CONFD_ERR_MALLOC == int(ErrorCode::malloc));
static_assert(CONFD_ERR_OS == int(ErrorCode::os));
static_assert(CONFD_ERR_PROTOCOL == int(ErrorCode::protocol));
static_assert(CONFD_ERR_NOSESSION == int(ErrorCode::nosession));
static_assert(CONFD_ERR_INUSE == int(ErrorCode::inuse));
static_assert(CONFD_ERR_NO_KEYS == int(ErrorCode::no_keys));
static_assert(CONFD_ERR_XPATH == int(ErrorCode::xpath));
static_assert(CONFD_ERR_APIUSE == int(ErrorCode::apiuse));
static_assert(CONFD_ERR_DEADLOCK == int(ErrorCode::deadlock));
static_assert(CONFD_ERR_TOO_LONG == int(ErrorCode::too_long));
static_assert(CONFD_ERR_GONE == int(ErrorCode::gone));
static_assert(CONFD_ERR_EXTERNAL == int(ErrorCode::external));
static_assert(CONFD_ERR_FAILED == int(ErrorCode::failed));
static_assert(CONFD_ERR_CONFLICT == int(ErrorCode::conflict));

}  // namespace

int fail(int code, std::string_view text) {
  t_code = code;
  if (text.empty()) text = confd_strerror(code);
  const std::size_t n = std::min(text.size(), kTextRoom - 1);
  std::memcpy(t_text, text.data(), n);
  t_text[n] = '\0';
  // What is not there is an answer more often than a fault.
  if (code != CONFD_ERR_NOEXISTS && tracing(CONFD_DEBUG))
    trace_line("error " + std::to_string(code) + ": " + std::string(text));
  return CONFD_ERR;
}

int fail_os(std::string_view attempted, int error) {
  return fail(CONFD_ERR_OS, std::string(attempted) + ": " + std::generic_category().message(error));
}

int fail_for_current_exception() {
  try {
    throw;
  } catch (const ApiError& e) {
    return fail(e.code, e.what());
  } catch (const PathError& e) {
    return fail(CONFD_ERR_BADPATH, e.what());
  } catch (const WireError& e) {
    return fail(CONFD_ERR_PROTOCOL, e.what());
  } catch (const std::bad_alloc&) {
    return fail(CONFD_ERR_MALLOC);
  } catch (const std::exception& e) {
    return fail(CONFD_ERR_PROTOCOL, e.what());
  } catch (...) {
    return fail(CONFD_ERR_PROTOCOL, "unexpected exception");
  }
}

}  // namespace standin

using namespace standin;

int* confd_errno_location(void) { return &t_code; }

const char* confd_lasterr(void) { return t_text; }

const char* confd_strerror(int code) {
  for (const CodeText& known : kCodeTexts)
    if (known.code == code) return known.text;
  return "unknown error";
}

void confd_fatal(const char* fmt, ...) {
  va_list args;
  va_start(args, fmt);
  std::string text = format_text(fmt, args);
  va_end(args);
  if (text.empty() || text.back() != '\n') text += '\n';
  write_line(STDERR_FILENO, text);
  std::fflush(stderr);
  // The other thread may be in the middle of anything: no destructor can run safely now.
  _exit(1);
}

void confd_assert_failed(const char* expression, const char* file, int line) {
  write_line(STDERR_FILENO, std::string(file) + ":" + std::to_string(line) + ": Assertion `" +
                                expression + "' failed.\n");
  std::abort();
}
