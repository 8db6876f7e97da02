#include "world.h"

#include <arpa/inet.h>
#include <netinet/in.h>
#include <poll.h>
#include <sys/eventfd.h>
#include <sys/socket.h>
#include <unistd.h>

#include <algorithm>
#include <cstdlib>
#include <filesystem>

namespace standin {
namespace {

int connect_to(std::uint16_t port) {
  const int fd = ::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
  sockaddr_in address{};
  address.sin_family = AF_INET;
  address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
  address.sin_port = htons(port);
  if (::connect(fd, reinterpret_cast<const sockaddr*>(&address), sizeof address) != 0)
    throw std::runtime_error("no server");
  return fd;
}

Deadline patience() { return std::chrono::steady_clock::now() + kPatience; }

}  // namespace

FrameWriter message(Op op) {
  FrameWriter out;
  out.put(std::uint64_t{static_cast<std::uint16_t>(op)});
  return out;
}

FrameWriter success() {
  FrameWriter out;
  out.put(std::uint64_t{0});
  return out;
}

RawClient::RawClient(std::uint16_t port) : fd_(connect_to(port)) {}

RawClient::RawClient(std::uint16_t port, SocketKind kind, const std::string& name,
                     std::uint64_t daemon)
    : RawClient(port) {
  FrameWriter hello = message(Op::hello);
  hello.put(kWireVersion).put(std::uint64_t{static_cast<std::uint8_t>(kind)}).put(name).put(daemon);
  id_ = request(hello).number();
}

RawClient::~RawClient() { ::close(fd_); }

bool RawClient::send(std::string_view octets) {
  return send_frame(fd_, octets, patience()) == IoResult::ok;
}

bool RawClient::receive(std::string& payload) {
  return recv_frame(fd_, payload, patience()) == IoResult::ok;
}

FrameReader RawClient::request(FrameWriter& frame) {
  std::string payload;
  if (!send(frame.take()) || !receive(payload)) throw std::runtime_error("connection closed");
  FrameReader in(payload);
  const std::uint64_t code = in.number();
  if (code != 0) throw Refused(static_cast<ErrorCode>(code), in.text());
  return in;
}

FrameReader RawClient::maapi(FrameWriter& frame) {
  FrameReader in = request(frame);
  in.number();
  return in;
}

bool RawClient::closed() {
  std::string payload;
  for (;;) {
    switch (recv_frame(fd_, payload, patience())) {
      case IoResult::ok:
        continue;
      case IoResult::timeout:
        return false;
      default:
        return true;
    }
  }
}

void RawClient::shut() { ::shutdown(fd_, SHUT_RDWR); }

void Gate::open() {
  const std::lock_guard lock(mutex_);
  open_ = true;
  changed_.notify_all();
}

bool Gate::wait(std::chrono::milliseconds patience) {
  std::unique_lock lock(mutex_);
  return changed_.wait_for(lock, patience, [this] { return open_; });
}

FrameWriter reply(ReplyKind kind) {
  FrameWriter out;
  out.put(std::uint64_t{static_cast<std::uint8_t>(kind)});
  return out;
}

FrameWriter reply(const Value& v) { return std::move(reply(ReplyKind::value).put(v)); }

ScriptedDaemon::ScriptedDaemon(std::uint16_t port, const std::string& name,
                               const std::string& callpoint, Script script)
    : control_(port, SocketKind::control, name),
      worker_(port, SocketKind::worker, name, control_.id()),
      maapi_(port, SocketKind::maapi, name),
      script_(std::move(script)) {
  FrameWriter registration = message(Op::register_daemon);
  registration.array(1).array(2).put(callpoint).put(std::uint64_t{0x3ff});
  control_.request(registration.put(std::vector<std::string>{}).put(std::uint64_t{0xf}));
  thread_ = std::thread([this] { run(); });
}

ScriptedDaemon::~ScriptedDaemon() {
  die();
  thread_.join();
}

void ScriptedDaemon::die() {
  control_.shut();
  worker_.shut();
}

void ScriptedDaemon::run() {
  for (;;) {
    pollfd entries[] = {{control_.fd(), POLLIN, 0}, {worker_.fd(), POLLIN, 0}};
    ::poll(entries, 2, -1);
    if (entries[0].revents != 0 && !serve(control_)) return;
    if (entries[1].revents != 0 && !serve(worker_)) return;
  }
}

bool ScriptedDaemon::serve(RawClient& socket) {
  std::string payload;
  if (!socket.receive(payload)) return false;
  FrameReader in(payload);
  const Op op = static_cast<Op>(in.number());
  const std::uint64_t handle = in.number();
  {
    const std::lock_guard lock(mutex_);
    calls_.push_back({op, handle});
    changed_.notify_all();
  }
  if (op < Op::cb_exists_optional) {
    if (op == Op::trans_init) maapi_.request(std::move(message(Op::attach).put(handle)));
    return socket.send(std::move(success().put(std::uint64_t{0})).take());
  }
  return socket.send(script_(*this, op, handle).take());
}

std::string ScriptedDaemon::get(std::uint64_t handle, const std::string& path) {
  FrameWriter frame = message(Op::get_elem);
  frame.put(handle).put(at(path));
  return to_text(maapi_.maapi(frame).value());
}

void ScriptedDaemon::set(std::uint64_t handle, const std::string& path, const std::string& text) {
  maapi_.request(std::move(message(Op::set_elem).put(handle).put(at(path)).put(Value::buf(text))));
}

std::vector<Call> ScriptedDaemon::calls() const {
  const std::lock_guard lock(mutex_);
  return calls_;
}

std::size_t ScriptedDaemon::count(Op op) const {
  const auto all = calls();
  return static_cast<std::size_t>(
      std::count_if(all.begin(), all.end(), [op](const Call& c) { return c.op == op; }));
}

bool ScriptedDaemon::wait_for(Op op, std::size_t count) {
  std::unique_lock lock(mutex_);
  return changed_.wait_for(lock, kPatience, [&] {
    return std::count_if(calls_.begin(), calls_.end(), [op](const Call& c) {
             return c.op == op;
           }) >= static_cast<std::ptrdiff_t>(count);
  });
}

void ServerTest::serve(std::chrono::milliseconds timeout, const std::string& init) {
  stop();
  EngineOptions options;
  options.directory = directory();
  options.yang = {ENGINE_TEST_MODEL, ENGINE_TEST_YANG};
  options.timeout = timeout;
  options.init_file = init;
  engine_ = std::make_unique<Engine>(options);
  server_ = std::make_unique<Server>(*engine_, 0);
  stop_ = std::make_unique<Descriptor>(::eventfd(0, EFD_CLOEXEC));
  thread_ = std::thread([this] { server_->run(stop_->fd()); });
}

void ServerTest::stop() {
  if (!thread_.joinable()) return;
  const std::uint64_t one = 1;
  ASSERT_EQ(::write(stop_->fd(), &one, sizeof one), 8);
  thread_.join();
  server_.reset();
  engine_.reset();
}

}  // namespace standin
