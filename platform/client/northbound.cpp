#include "northbound.h"

#include <arpa/inet.h>
#include <netinet/tcp.h>
#include <sys/socket.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>

#include "platform/wire/cipher.h"

namespace standin {
namespace {

[[noreturn]] void lost(const std::string& what) { throw ConnectionLost(what); }

int open_socket(std::uint16_t port) {
  const int fd = ::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
  if (fd < 0) lost(std::string("cannot open a socket: ") + std::strerror(errno));
  sockaddr_in address{};
  address.sin_family = AF_INET;
  address.sin_port = htons(port);
  address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
  int result = 0;
  do {
    result = ::connect(fd, reinterpret_cast<const sockaddr*>(&address), sizeof address);
  } while (result != 0 && errno == EINTR);
  if (result != 0) {
    const int error = errno;
    ::close(fd);
    lost("no server on port " + std::to_string(port) + ": " + std::strerror(error));
  }
  const int one = 1;
  ::setsockopt(fd, IPPROTO_TCP, TCP_NODELAY, &one, sizeof one);
  return fd;
}

std::optional<std::string> optional_text(FrameReader& in) {
  if (in.skip_nil()) return std::nullopt;
  return in.text();
}

FrameWriter opening(Op op) {
  FrameWriter frame;
  frame.put(std::uint64_t{static_cast<unsigned>(op)});
  return frame;
}

// Reads the head of an answer; a refusal is thrown.
FrameReader checked(const std::string& payload) {
  FrameReader in(payload);
  const std::uint64_t code = in.number();
  if (code != 0) throw Refused(static_cast<ErrorCode>(code), in.text());
  return in;
}

// What nb_get answers is told apart by its last element, which stands behind what is to be read:
// so each form is read from the start of the frame.
std::optional<std::vector<std::string>> texts_of(const std::string& payload) {
  FrameReader in = checked(payload);
  in.number();
  try {
    std::vector<std::string> texts = in.texts();
    return texts;
  } catch (const WireError&) {
    return std::nullopt;
  }
}

}  // namespace

NorthboundSession::Socket::~Socket() { ::close(fd); }

NorthboundSession::NorthboundSession(std::uint16_t port, const std::string& client_name,
                                     Access access)
    : socket_(open_socket(port)) {
  request(opening(Op::hello)
              .put(kWireVersion)
              .put(std::uint64_t{static_cast<unsigned>(SocketKind::maapi)})
              .put(client_name)
              .put(std::uint64_t{0}));
  if (access == Access::none) return;
  handle_ = call(opening(Op::nb_open).put(access == Access::write)).number();
}

std::string NorthboundSession::exchange(FrameWriter& frame) {
  std::string octets;
  try {
    octets = frame.take();
  } catch (const WireError& e) {
    throw Refused(ErrorCode::too_long, e.what());
  }
  const IoResult sent = send_frame(socket_.fd, octets);
  cleanse(octets);  // it may have held a password
  if (sent != IoResult::ok) lost("connection to the server lost");
  if (wait_) wait_();
  std::string payload;
  if (recv_frame(socket_.fd, payload) != IoResult::ok) lost("connection to the server lost");
  return payload;
}

FrameReader NorthboundSession::request(FrameWriter& frame) { return checked(exchange(frame)); }

FrameReader NorthboundSession::call(FrameWriter& frame) {
  FrameReader in = request(frame);
  in.number();
  return in;
}

FrameReader NorthboundSession::ask(Op op) {
  FrameWriter frame = message(op);
  return call(frame);
}

FrameWriter NorthboundSession::message(Op op) const {
  FrameWriter frame = opening(op);
  frame.put(handle_);
  return frame;
}

std::optional<NorthboundSession::Got> NorthboundSession::get(const Path& path) {
  FrameWriter frame = message(Op::nb_get);
  frame.put(path);
  const std::string payload = exchange(frame);
  FrameReader in = checked(payload);
  in.number();
  if (in.skip_nil()) return std::nullopt;
  if (auto texts = texts_of(payload)) return Got{true, std::move(*texts)};
  return Got{false, {in.text()}};
}

bool NorthboundSession::exists(const Path& path) {
  FrameWriter frame = message(Op::nb_exists);
  frame.put(path);
  return call(frame).boolean();
}

std::vector<std::vector<std::string>> NorthboundSession::keys(const Path& path) {
  FrameWriter frame = message(Op::nb_keys);
  frame.put(path);
  FrameReader in = call(frame);
  std::vector<std::vector<std::string>> entries(in.array());
  for (auto& entry : entries) entry = in.texts();
  return entries;
}

std::optional<std::string> NorthboundSession::selected_case(const Path& path,
                                                            const std::string& choice) {
  FrameWriter frame = message(Op::nb_case);
  frame.put(path).put(choice);
  FrameReader in = call(frame);
  return optional_text(in);
}

NorthboundSession::Tree NorthboundSession::show(const Path& path) {
  FrameWriter frame = message(Op::nb_show);
  frame.put(path);
  FrameReader in = call(frame);
  Tree tree;
  tree.nodes = read_nodes(in);
  tree.complete = in.boolean();
  return tree;
}

AttributeValues NorthboundSession::attributes(const Path& path) {
  FrameWriter frame = message(Op::nb_get_attrs);
  frame.put(path);
  FrameReader in = call(frame);
  AttributeValues attributes;
  for (std::size_t n = in.array(); n > 0; --n) {
    in.array();
    const auto number = static_cast<std::uint32_t>(in.number());
    attributes.emplace_back(number, in.value());
  }
  return attributes;
}

void NorthboundSession::set(const Path& path, const std::vector<std::string>& values) {
  FrameWriter frame = message(Op::nb_set);
  frame.put(path).put(values);
  call(frame);
}

void NorthboundSession::create(const Path& path) {
  FrameWriter frame = message(Op::nb_create);
  frame.put(path);
  call(frame);
}

void NorthboundSession::remove(const Path& path) {
  FrameWriter frame = message(Op::nb_delete);
  frame.put(path);
  call(frame);
}

void NorthboundSession::set_attribute(const Path& path, std::uint32_t number, const Value* value) {
  FrameWriter frame = message(Op::nb_set_attr);
  frame.put(path).put(number);
  if (value != nullptr) {
    frame.put(*value);
  } else {
    frame.put_nil();
  }
  call(frame);
}

std::uint64_t NorthboundSession::load(const std::string& json) {
  FrameWriter frame = message(Op::nb_load);
  frame.put(std::string_view(json));
  return call(frame).number();
}

void NorthboundSession::validate() { ask(Op::nb_validate); }
void NorthboundSession::commit() { ask(Op::nb_commit); }
void NorthboundSession::abort() { ask(Op::nb_abort); }

std::vector<Change> NorthboundSession::diff() {
  FrameReader in = ask(Op::nb_diff);
  std::vector<Change> changes(in.array());
  for (Change& change : changes) {
    in.array();
    const std::string kind = in.text();
    change.kind = kind.empty() ? '~' : kind.front();
    change.path = in.text();
    change.before = optional_text(in);
    change.after = optional_text(in);
  }
  return changes;
}

bool NorthboundSession::start() {
  FrameWriter frame = opening(Op::nb_start);
  return call(frame).boolean();
}

ServerState NorthboundSession::status() {
  FrameWriter frame = opening(Op::nb_status);
  FrameReader in = call(frame);
  ServerState state;
  state.port = in.number();
  state.phase = in.number();
  state.daemons.resize(in.array());
  for (DaemonState& daemon : state.daemons) {
    in.array();
    daemon.name = in.text();
    daemon.connected = in.boolean();
    daemon.callpoints = in.texts();
  }
  state.transactions = in.number();
  state.traffic.frames_received = in.number();
  state.traffic.frames_sent = in.number();
  state.traffic.octets_received = in.number();
  state.traffic.octets_sent = in.number();
  return state;
}

std::vector<std::string> NorthboundSession::complete(const Path& path, Wanted wanted,
                                                     const std::vector<std::string>& given,
                                                     const std::string& begun) {
  FrameWriter frame = message(Op::nb_complete);
  frame.put(path).put(wanted == Wanted::key).put(given).put(begun);
  return call(frame).texts();
}

Description NorthboundSession::describe(const Path& path) {
  FrameWriter frame = opening(Op::nb_describe);
  frame.put(path);
  FrameReader in = call(frame);
  return read_description(in);
}

NorthboundSession::Watched NorthboundSession::watch(int handle, bool stop) {
  FrameWriter frame = opening(Op::nb_watch);
  frame.put(static_cast<std::uint64_t>(handle)).put(stop);
  FrameReader in = call(frame);
  const std::uint64_t done = in.number();
  return {done, in.number()};
}

}  // namespace standin
