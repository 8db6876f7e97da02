#include "bench/ping-pong.h"

#include <arpa/inet.h>
#include <netinet/in.h>
#include <netinet/tcp.h>
#include <sys/socket.h>

#include <algorithm>
#include <stdexcept>
#include <string>

#include "platform/wire/frame.h"

namespace quillet::bench {
namespace {

using scenario::Descriptor;

void require(bool done, const char* what) {
  if (!done) throw std::runtime_error(std::string("ping-pong: ") + what);
}

void send_at_once(const Descriptor& socket) {
  const int on = 1;
  require(::setsockopt(socket.get(), IPPROTO_TCP, TCP_NODELAY, &on, sizeof on) == 0, "TCP_NODELAY");
}

// A frame of so many octets, header included; what it holds is looked at by nobody.
std::string frame_of(std::size_t octets) {
  const std::size_t payload = std::max(octets, standin::kFrameHeader + 1) - standin::kFrameHeader;
  std::string frame;
  for (int shift = 24; shift >= 0; shift -= 8) frame += static_cast<char>(payload >> shift & 0xff);
  return frame + std::string(payload, 'x');
}

void echo(const Descriptor& socket) {
  std::string payload;
  while (standin::recv_frame(socket.get(), payload) == standin::IoResult::ok) {
    const std::string frame = frame_of(payload.size() + standin::kFrameHeader);
    if (standin::send_frame(socket.get(), frame) != standin::IoResult::ok) return;
  }
}

}  // namespace

PingPong::PingPong() {
  const Descriptor listening(::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0));
  sockaddr_in address{};
  address.sin_family = AF_INET;
  address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
  auto* generic = reinterpret_cast<sockaddr*>(&address);
  socklen_t size = sizeof address;
  require(::bind(listening.get(), generic, size) == 0 && ::listen(listening.get(), 1) == 0 &&
              ::getsockname(listening.get(), generic, &size) == 0,
          "listen");
  near_ = Descriptor(::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0));
  require(::connect(near_.get(), generic, size) == 0, "connect");
  Descriptor far(::accept4(listening.get(), nullptr, nullptr, SOCK_CLOEXEC));
  send_at_once(near_);
  send_at_once(far);
  echo_ = std::thread([far = std::move(far)] { echo(far); });
}

PingPong::~PingPong() {
  near_.reset();
  echo_.join();
}

std::chrono::duration<double, std::micro> PingPong::exchange(std::size_t frames,
                                                             std::size_t octets) {
  const std::string frame = frame_of(octets);
  std::string payload;
  const auto start = std::chrono::steady_clock::now();
  for (std::size_t i = 0; i < frames / 2; ++i) {
    require(standin::send_frame(near_.get(), frame) == standin::IoResult::ok &&
                standin::recv_frame(near_.get(), payload) == standin::IoResult::ok,
            "connection lost");
  }
  return std::chrono::steady_clock::now() - start;
}

}  // namespace quillet::bench
