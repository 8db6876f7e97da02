#include <poll.h>
#include <sys/socket.h>

#include <algorithm>
#include <array>
#include <atomic>
#include <cerrno>
#include <limits>

#include "platform/wire/frame.h"
#include "platform/wire/frame_counts.h"

namespace standin {
namespace {

constexpr std::size_t kGrowth = 1u << 20;

// One direction's traffic. Relaxed: numbers for people, nothing is ordered by them.
struct Traffic {
  std::atomic<std::uint64_t> frames{0}, octets{0};
  void add(std::size_t size) {
    frames.fetch_add(1, std::memory_order_relaxed);
    octets.fetch_add(size, std::memory_order_relaxed);
  }
};
Traffic received, sent;

int milliseconds_left(const std::optional<Deadline>& deadline) {
  if (!deadline) return -1;
  // Rounded up: poll must not return just before the deadline and spin.
  const auto left =
      std::chrono::ceil<std::chrono::milliseconds>(*deadline - std::chrono::steady_clock::now());
  return static_cast<int>(
      std::clamp<std::int64_t>(left.count(), 0, std::numeric_limits<int>::max()));
}

// Until the descriptor is ready for `events`, or has something to tell by failing.
IoResult wait_ready(int fd, short events, const std::optional<Deadline>& deadline) {
  for (;;) {
    pollfd entry{fd, events, 0};
    const int ready = poll(&entry, 1, milliseconds_left(deadline));
    if (ready > 0) return IoResult::ok;
    if (ready == 0 && milliseconds_left(deadline) == 0) return IoResult::timeout;
    if (ready < 0 && errno != EINTR) return IoResult::error;
  }
}

// With a deadline even a blocking socket must not block.
int call_flags(const std::optional<Deadline>& deadline) {
  return MSG_NOSIGNAL | (deadline ? MSG_DONTWAIT : 0);
}

// What a failed send or recv means; `ok`: try again.
IoResult after_failure(int fd, short events, const std::optional<Deadline>& deadline) {
  if (errno == EINTR) return IoResult::ok;
  if (errno == EAGAIN || errno == EWOULDBLOCK) return wait_ready(fd, events, deadline);
  return errno == EPIPE || errno == ECONNRESET ? IoResult::closed : IoResult::error;
}

IoResult recv_exactly(int fd, char* data, std::size_t size,
                      const std::optional<Deadline>& deadline) {
  while (size > 0) {
    const ssize_t got = recv(fd, data, size, call_flags(deadline));
    if (got == 0) return IoResult::closed;
    if (got > 0) {
      data += got;
      size -= static_cast<std::size_t>(got);
      continue;
    }
    const IoResult result = after_failure(fd, POLLIN, deadline);
    if (result != IoResult::ok) return result;
  }
  return IoResult::ok;
}

}  // namespace

IoResult send_frame(int fd, std::string_view frame, std::optional<Deadline> deadline) {
  const std::size_t size = frame.size();
  while (!frame.empty()) {
    const ssize_t taken = send(fd, frame.data(), frame.size(), call_flags(deadline));
    if (taken >= 0) {
      frame.remove_prefix(static_cast<std::size_t>(taken));
      continue;
    }
    const IoResult result = after_failure(fd, POLLOUT, deadline);
    if (result != IoResult::ok) return result;
  }
  sent.add(size);
  return IoResult::ok;
}

IoResult recv_frame(int fd, std::string& payload, std::optional<Deadline> deadline,
                    std::size_t limit) {
  payload.clear();
  std::array<char, kFrameHeader> header{};
  IoResult result = recv_exactly(fd, header.data(), header.size(), deadline);
  if (result != IoResult::ok) return result;
  std::size_t length = 0;
  for (const char c : header) length = length << 8 | static_cast<unsigned char>(c);
  if (length > limit) {
    errno = EMSGSIZE;
    return IoResult::error;
  }
  while (payload.size() < length) {
    const std::size_t have = payload.size();
    const std::size_t step = std::min(length - have, kGrowth);
    payload.resize(have + step);
    result = recv_exactly(fd, payload.data() + have, step, deadline);
    if (result != IoResult::ok) {
      payload.clear();
      return result;
    }
  }
  received.add(kFrameHeader + length);
  return IoResult::ok;
}

FrameCounts frame_counts() {
  const auto now = [](const std::atomic<std::uint64_t>& count) {
    return count.load(std::memory_order_relaxed);
  };
  return {now(received.frames), now(sent.frames), now(received.octets), now(sent.octets)};
}

}  // namespace standin
