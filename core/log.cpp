#include "core/log.h"

#include <limits.h>
#include <poll.h>
#include <pthread.h>
#include <sys/time.h>
#include <syslog.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstdarg>
#include <cstring>
#include <mutex>
#include <string>

namespace quillet {
namespace {

// A line's head and the caller's format, before its arguments are filled in; the rest is cut.
constexpr std::size_t kFormatSize = 1024;

struct LogState {
  std::mutex mutex;
  int console_level = LOG_LEVEL_ERR;
  int stream_level = LOG_LEVEL_ERR;
  int syslog_level = LOG_LEVEL_ERR;
  bool syslog_enabled = false;
  std::FILE* message_stream = nullptr;
  std::FILE* error_stream = nullptr;
};

// Never destroyed in effect: all members are trivial to destroy, so that the other thread can log
// while the process exits.
constinit LogState state;

struct Sinks {
  bool console;
  bool stream;
  bool system;
  bool any() const { return console || stream || system; }
};

Sinks sinks_for(int level, const std::FILE* stream) {
  return {
      .console = level <= state.console_level,
      .stream = stream != nullptr && level <= state.stream_level,
      .system = state.syslog_enabled && level <= LOG_LEVEL_DEBUG && level <= state.syslog_level};
}

// A line before its arguments: `head` and `tail` stand as they are, `body` is the caller's format.
struct LineFormat {
  std::string head;
  std::string body;
  std::string tail;

  // Keeps the first `size` characters of the whole.
  void cut(std::size_t size) {
    for (std::string* part : {&head, &body, &tail}) {
      part->resize(std::min(part->size(), size));
      size -= part->size();
    }
  }
};

std::string line_head(int level, const char* file, int line) {
  timeval now{};
  gettimeofday(&now, nullptr);
  std::array<char, kFormatSize> head{};
  std::snprintf(head.data(), head.size(),
                "%lu.%06lu [%lx] %s %s:%d: ", static_cast<unsigned long>(now.tv_sec),
                static_cast<unsigned long>(now.tv_usec), static_cast<unsigned long>(pthread_self()),
                log_level_name(level), file, line);
  return head.data();
}

std::string formatted(const char* format, std::va_list args) {
  std::va_list measured;
  va_copy(measured, args);
  const int size = std::vsnprintf(nullptr, 0, format, measured);
  va_end(measured);
  if (size < 0) return format;  // a conversion that the cut went through
  std::string text(static_cast<std::size_t>(size) + 1, '\0');
  std::vsnprintf(text.data(), text.size(), format, args);
  text.pop_back();
  return text;
}

std::string escaped(const std::string& text) {
  std::string result;
  result.reserve(text.size());
  for (const char c : text) {
    const auto octet = static_cast<unsigned char>(c);
    if (octet >= 0x20 && octet != 0x7f) {
      result += c;
      continue;
    }
    std::array<char, 5> code{};
    std::snprintf(code.data(), code.size(), "\\x%02x", octet);
    result += code.data();
  }
  return result;
}

std::string complete(LineFormat line, std::va_list args) {
  line.cut(kFormatSize - 1);
  return line.head + escaped(formatted(line.body.c_str(), args)) + line.tail;
}

void write_sinks(const Sinks& sinks, int level, const std::string& text, std::FILE* stream) {
  if (sinks.stream) {
    std::fwrite(text.data(), 1, text.size(), stream);
    std::fflush(stream);
  }
  if (sinks.system) syslog(level, "%s", text.c_str());
}

void set_level(int& threshold, int level) {
  const std::lock_guard lock(state.mutex);
  threshold = level;
}

int get_level(const int& threshold) {
  const std::lock_guard lock(state.mutex);
  return threshold;
}

}  // namespace

void log_error(int level, const char* file, int line, const char* format, ...) {
  const std::lock_guard lock(state.mutex);
  const Sinks sinks = sinks_for(level, state.error_stream);
  if (!sinks.any()) return;
  std::va_list args;
  va_start(args, format);
  const std::string text =
      complete({line_head(level, file, line) + "\x1b[91m ", format, "\x1b[0m\n"}, args);
  va_end(args);
  if (sinks.console) log_write_stderr(text.data(), text.size());
  write_sinks(sinks, level, text, state.error_stream);
}

void log_message(int level, const char* file, int line, const char* tag1, const char* tag2,
                 const char* format, ...) {
  const std::lock_guard lock(state.mutex);
  const Sinks sinks = sinks_for(level, state.message_stream);
  if (!sinks.any()) return;
  std::string head = line_head(level, file, line);
  if (tag1 != nullptr) head += tag1;
  if (tag2 != nullptr) head.append(tag2).append(" ");
  std::va_list args;
  va_start(args, format);
  const std::string text = complete({std::move(head), format, "\n"}, args);
  va_end(args);
  if (sinks.console) {
    std::fwrite(text.data(), 1, text.size(), stdout);
    std::fflush(stdout);
  }
  write_sinks(sinks, level, text, state.message_stream);
}

const char* log_level_name(int level) {
  static constexpr std::array<const char*, 8> kNames = {"EMERG",   "ALERT",  "CRIT", "ERR",
                                                        "WARNING", "NOTICE", "INFO", "DEBUG"};
  if (level == LOG_LEVEL_OFF) return "OFF";
  if (level == LOG_LEVEL_TRACE) return "TRACE";
  if (level < 0 || level >= static_cast<int>(kNames.size())) return "UNKNOWN";
  return kNames[static_cast<std::size_t>(level)];
}

void log_open_syslog(const char* ident, int option, int facility) {
  const std::lock_guard lock(state.mutex);
  openlog(ident, option, facility);
  state.syslog_enabled = true;
}

void log_set_streams(std::FILE* message_stream, std::FILE* error_stream) {
  const std::lock_guard lock(state.mutex);
  state.message_stream = message_stream;
  state.error_stream = error_stream;
}

void log_set_console_level(int level) { set_level(state.console_level, level); }
void log_set_stream_level(int level) { set_level(state.stream_level, level); }
void log_set_syslog_level(int level) { set_level(state.syslog_level, level); }
int log_get_console_level() { return get_level(state.console_level); }
int log_get_stream_level() { return get_level(state.stream_level); }
int log_get_syslog_level() { return get_level(state.syslog_level); }

// A pipe that polls writable takes PIPE_BUF octets without blocking, and takes them whole.
void log_write_stderr(const char* text, std::size_t size) {
  while (size > 0) {
    pollfd entry = {.fd = STDERR_FILENO, .events = POLLOUT, .revents = 0};
    if (poll(&entry, 1, 0) <= 0 || (entry.revents & POLLOUT) == 0) return;
    const ssize_t written = write(STDERR_FILENO, text, std::min<std::size_t>(size, PIPE_BUF));
    if (written < 0 && errno == EINTR) continue;
    if (written <= 0) return;
    text += written;
    size -= static_cast<std::size_t>(written);
  }
}

}  // namespace quillet
