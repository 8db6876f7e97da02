#include "trace.h"

#include <errno.h>
#include <limits.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

#include <atomic>
#include <mutex>

namespace standin {
namespace {

struct TraceState {
  std::mutex lock;
  FILE* stream = nullptr;
  std::string name = "libconfd";
};
// Never destroyed: the other thread may trace while the process ends.
TraceState& state() {
  static auto* one = new TraceState;
  return *one;
}
std::atomic<int> g_level{CONFD_SILENT};

bool is_base64(char c) {
  return (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z') || (c >= '0' && c <= '9') || c == '+' ||
         c == '/' || c == '=';
}

std::string masked(std::string_view line) {
  constexpr std::string_view kForm = "$8$";
  std::string out;
  for (std::size_t at = 0; at < line.size();) {
    if (line.compare(at, kForm.size(), kForm) != 0) {
      // A line stays a line whatever a key or a text holds.
      const char c = line[at++];
      out += static_cast<unsigned char>(c) < 0x20 ? '?' : c;
      continue;
    }
    at += kForm.size();
    while (at < line.size() && is_base64(line[at])) ++at;
    out += "***";
  }
  return out;
}

}  // namespace

bool tracing(confd_debug_level level) { return g_level.load(std::memory_order_relaxed) >= level; }

void trace_line(std::string_view line) {
  std::string text = masked(line);
  text += '\n';
  const std::scoped_lock lock(state().lock);
  FILE* stream = state().stream;
  if (stream == nullptr) return;
  if (const int fd = fileno(stream); fd >= 0) {
    write_line(fd, std::move(text));
  } else {  // a stream in memory
    std::fwrite(text.data(), 1, text.size(), stream);
    std::fflush(stream);
  }
}

void write_line(int fd, std::string text) {
  if (text.size() > PIPE_BUF) {
    text.resize(PIPE_BUF);
    text.back() = '\n';
  }
  // The descriptor is shared with other processes, so that its flags are not ours to change. A
  // pipe that polls writable takes PIPE_BUF octets without blocking.
  pollfd ready{fd, POLLOUT, 0};
  if (::poll(&ready, 1, 0) != 1 || (ready.revents & (POLLERR | POLLHUP | POLLNVAL)) != 0) return;
  ssize_t written;
  do {
    // A socket polls writable with less room than the line may need.
    written = ::send(fd, text.data(), text.size(), MSG_DONTWAIT | MSG_NOSIGNAL);
    if (written < 0 && errno == ENOTSOCK) written = ::write(fd, text.data(), text.size());
  } while (written < 0 && errno == EINTR);
}

std::string program_name() {
  const std::scoped_lock lock(state().lock);
  return state().name;
}

}  // namespace standin

void confd_init_vsn_sz(const char* name, FILE* estream, const enum confd_debug_level debug, int vsn,
                       int maxdepth, int maxkeylen) {
  using namespace standin;
  if (vsn != CONFD_LIB_VSN)
    confd_fatal("libconfd: built for API version 0x%08x, asked for 0x%08x", CONFD_LIB_VSN, vsn);
  if (maxdepth != MAXDEPTH || maxkeylen != MAXKEYLEN)
    confd_fatal("libconfd: keypaths have %d levels of %d values, asked for %d of %d", MAXDEPTH,
                MAXKEYLEN, maxdepth, maxkeylen);
  const std::scoped_lock lock(state().lock);
  state().stream = estream;
  if (name != nullptr) state().name = name;
  g_level = debug;
}
