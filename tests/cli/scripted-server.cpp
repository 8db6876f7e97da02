#include "scripted-server.h"

#include <arpa/inet.h>
#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>

#include <stdexcept>

namespace standin::cli {

ScriptedServer::ScriptedServer(std::vector<std::string> answers)
    : listener_(::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0)) {
  sockaddr_in address{};
  address.sin_family = AF_INET;
  address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
  socklen_t size = sizeof address;
  auto* generic = reinterpret_cast<sockaddr*>(&address);
  if (::bind(listener_, generic, size) != 0 || ::listen(listener_, 1) != 0 ||
      ::getsockname(listener_, generic, &size) != 0) {
    throw std::runtime_error("no scripted server");
  }
  port_ = ntohs(address.sin_port);
  thread_ = std::thread([this, script = std::move(answers)] { serve(script); });
}

ScriptedServer::~ScriptedServer() {
  ::shutdown(listener_, SHUT_RDWR);  // ends an accept that nobody came to
  if (thread_.joinable()) thread_.join();
  ::close(listener_);
}

std::vector<Op> ScriptedServer::asked() {
  thread_.join();
  return asked_;
}

void ScriptedServer::serve(const std::vector<std::string>& answers) {
  const int fd = ::accept(listener_, nullptr, nullptr);
  if (fd < 0) return;
  std::vector<std::string> all;
  FrameWriter hello;
  all.push_back(hello.put(std::uint64_t{0}).put(std::uint64_t{0}).take());
  all.push_back(granted().put(std::uint64_t{7}).take());
  all.insert(all.end(), answers.begin(), answers.end());
  std::string payload;
  for (std::size_t i = 0; i < all.size() && recv_frame(fd, payload) == IoResult::ok; ++i) {
    if (i > 0) asked_.push_back(static_cast<Op>(FrameReader(payload).number()));
    if (send_frame(fd, all[i]) != IoResult::ok) break;
  }
  ::close(fd);
}

FrameWriter granted() {
  FrameWriter frame;
  frame.put(std::uint64_t{0}).put(std::uint64_t{1});
  return frame;
}

std::string refused(ErrorCode code, const std::string& text) {
  FrameWriter frame;
  return frame.put(std::uint64_t{static_cast<unsigned>(code)}).put(std::string_view(text)).take();
}

}  // namespace standin::cli
