// Log lines of the daemon: a console, an extra stream and the system log, each with a threshold.
//
// Thread safety: every function may be called from any thread. One mutex is held for the whole of
// each log call, so lines never interleave and every sink has them in the same order.
#pragma once

#include <cstddef>
#include <cstdio>

namespace quillet {

// 0 to 7 are the syslog priorities of the same name (RFC 5424, table 2).
constexpr int LOG_LEVEL_OFF = -1;
constexpr int LOG_LEVEL_EMERG = 0;
constexpr int LOG_LEVEL_ALERT = 1;
constexpr int LOG_LEVEL_CRIT = 2;
constexpr int LOG_LEVEL_ERR = 3;
constexpr int LOG_LEVEL_WARNING = 4;
constexpr int LOG_LEVEL_NOTICE = 5;
constexpr int LOG_LEVEL_INFO = 6;
constexpr int LOG_LEVEL_DEBUG = 7;
constexpr int LOG_LEVEL_TRACE = 10;

// One error line, "SECONDS.MICROS [THREAD] LEVEL FILE:LINE: \e[91m MESSAGE\e[0m\n", to standard
// error, the error stream and the system log. `file` is the caller's source module. Control
// characters of the formatted message are escaped as \xNN: names of any origin are safe as
// arguments. A standard error that nobody reads costs the line, never the caller's time.
void log_error(int level, const char* file, int line, const char* format, ...)
    __attribute__((format(printf, 4, 5)));

// One ordinary line, "SECONDS.MICROS [THREAD] LEVEL FILE:LINE: TAG1TAG2 MESSAGE\n", to standard
// output, the message stream and the system log. Null tags are empty; the blank before the message
// goes with tag2.
void log_message(int level, const char* file, int line, const char* tag1, const char* tag2,
                 const char* format, ...) __attribute__((format(printf, 6, 7)));

// "EMERG" ... "TRACE", "OFF", or "UNKNOWN".
const char* log_level_name(int level);

void log_open_syslog(const char* ident, int option, int facility);
// Null disables a stream.
void log_set_streams(std::FILE* message_stream, std::FILE* error_stream);

// A line of level L passes a threshold T when L <= T. All are LOG_LEVEL_ERR at first.
void log_set_console_level(int level);
void log_set_stream_level(int level);
void log_set_syslog_level(int level);
int log_get_console_level();
int log_get_stream_level();
int log_get_syslog_level();

// Writes `text` to standard error as it is, dropping what a reader that has stalled cannot take.
// The descriptor's flags stay as they are, since other processes may share it.
void log_write_stderr(const char* text, std::size_t size);

}  // namespace quillet
