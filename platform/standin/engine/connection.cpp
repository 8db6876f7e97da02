#include "platform/standin/engine/connection.h"

#include <limits>

#include "platform/standin/engine/service.h"
#include "platform/wire/frame.h"

namespace standin {
namespace {

constexpr std::size_t kMostHello = 64u << 10;
constexpr std::size_t kMostRegistration = 1u << 20;

struct Hello {
  SocketKind kind = SocketKind::maapi;
  std::string name;
  std::uint64_t daemon = 0;
};

Op read_op(FrameReader& in) {
  const std::uint64_t op = in.number();
  if (op > std::numeric_limits<std::uint16_t>::max()) throw WireError("an unknown request");
  return static_cast<Op>(op);
}

Hello read_hello(std::string_view payload) {
  FrameReader in(payload);
  if (read_op(in) != Op::hello) throw WireError("the first message is not hello");
  if (in.number() != kWireVersion) throw WireError("another version of the protocol");
  Hello hello;
  const std::uint64_t kind = in.number();
  if (kind > static_cast<std::uint64_t>(SocketKind::cdb))
    throw WireError("an unknown kind of socket");
  hello.kind = static_cast<SocketKind>(kind);
  hello.name = in.text();
  hello.daemon = in.number();
  return hello;
}

Daemon::Registration read_registration(std::string_view payload) {
  FrameReader in(payload);
  if (read_op(in) != Op::register_daemon) throw WireError("not a registration");
  Daemon::Registration registration;
  for (std::size_t n = in.array(); n > 0; --n) {
    if (in.array() != 2) throw WireError("a callpoint is a name and its callbacks");
    const std::string point = in.text();
    registration.callpoints[point] = in.number();
  }
  for (std::string& point : in.texts()) registration.valpoints.insert(std::move(point));
  registration.hooks = in.number();
  return registration;
}

std::string error_frame(ErrorCode code, std::string_view text) {
  FrameWriter out;
  out.put(std::uint64_t{static_cast<std::uint32_t>(code)}).put(text);
  return out.take();
}

std::string short_answer(std::initializer_list<std::uint64_t> results) {
  FrameWriter out;
  out.put(std::uint64_t{0});
  for (const std::uint64_t n : results) out.put(n);
  return out.take();
}

class Connection {
 public:
  Connection(Engine& engine, const SocketPtr& socket, std::uint16_t port)
      : engine_(engine), socket_(socket), port_(port) {}

  void run() {
    std::string payload;
    const auto deadline = std::chrono::steady_clock::now() + kHelloTimeout;
    if (recv_frame(socket_->fd(), payload, deadline, kMostHello) != IoResult::ok) return;
    Hello hello;
    if (!answered([&] { hello = read_hello(payload); })) return;
    switch (hello.kind) {
      case SocketKind::control:
        return control(hello);
      case SocketKind::worker:
        return worker(hello);
      case SocketKind::maapi:
        return maapi();
      case SocketKind::cdb:
        return cdb();
    }
  }

 private:
  bool send(std::string_view frame) { return send_frame(socket_->fd(), frame) == IoResult::ok; }
  bool receive(std::string& payload, std::size_t limit) {
    return recv_frame(socket_->fd(), payload, std::nullopt, limit) == IoResult::ok;
  }

  // Runs `work`; false when it threw, and the peer has been told why.
  template <class Work>
  bool answered(Work work) {
    std::string error;
    try {
      work();
      return true;
    } catch (const Refusal& e) {
      error = error_frame(e.code, e.what());
    } catch (const WireError& e) {
      error = error_frame(ErrorCode::protocol, e.what());
    }
    send(error);
    return false;
  }

  // The socket is the daemon's when this returns, and its callers read from it.
  void control(const Hello& hello) {
    DaemonPtr daemon;
    const bool introduced = answered([&] {
      const std::lock_guard lock(engine_.monitor().mutex);
      daemon = engine_.daemons().introduce(hello.name, socket_);
    });
    if (!introduced) return;
    if (send(short_answer({daemon->id()})) && enroll(daemon)) return;
    const std::lock_guard lock(engine_.monitor().mutex);
    engine_.daemons().withdraw(daemon);
  }

  bool enroll(const DaemonPtr& daemon) {
    std::string payload;
    if (!receive(payload, kMostRegistration)) return false;
    return answered([&] {
      Daemon::Registration registration = read_registration(payload);
      const std::lock_guard lock(engine_.monitor().mutex);
      engine_.daemons().enroll(daemon, std::move(registration));
      // Under the lock: no request may overtake this answer.
      if (!send(short_answer({}))) daemon->mark_gone();
    });
  }

  void worker(const Hello& hello) {
    answered([&] {
      const std::lock_guard lock(engine_.monitor().mutex);
      const DaemonPtr daemon = engine_.daemons().by_id(hello.daemon);
      if (!daemon || !daemon->alive())
        throw Refusal(ErrorCode::noexists, "no such daemon: the control socket goes first");
      send(short_answer({daemon->add_worker(socket_)}));
    });
  }

  void cdb() {
    if (!send(short_answer({0}))) return;
    std::string payload;
    while (receive(payload, kMostHello)) {
      const bool fine = answered([&] {
        FrameReader in(payload);
        if (read_op(in) != Op::cdb_phase) throw WireError("not a request of this connection");
        unsigned phase = 0;
        {
          const std::lock_guard lock(engine_.monitor().mutex);
          phase = engine_.phase();
        }
        send(short_answer({phase, phase == 0 ? 1u : 0u}));
      });
      if (!fine) return;
    }
  }

  void maapi() {
    if (!send(short_answer({0}))) return;
    Session session(engine_, socket_);
    std::string payload;
    while (receive(payload, kMaxFrame)) {
      bool readable = true;
      const std::string reply = serve(session, payload, readable);
      if (!send(reply) || !readable) break;
    }
    const std::lock_guard lock(engine_.monitor().mutex);
    session.close();
  }

  std::string serve(Session& session, std::string_view payload, bool& readable) {
    try {
      FrameReader in(payload);
      const Op op = read_op(in);
      const std::lock_guard lock(engine_.monitor().mutex);
      const bool northbound = op >= Op::nb_open && op <= Op::nb_watch;
      return (northbound ? serve_northbound(session, op, in, port_) : serve_maapi(session, op, in))
          .take();
    } catch (const Refusal& e) {
      return error_frame(e.code, e.what());
    } catch (const PathError& e) {
      return error_frame(ErrorCode::badpath, e.what());
    } catch (const WireError& e) {
      readable = false;
      return error_frame(ErrorCode::protocol, e.what());
    } catch (const std::exception& e) {
      // The store could not be read, or memory is short: this request fails, the server goes on.
      // Not by the code of a system call, which a daemon takes for a broken connection.
      return error_frame(ErrorCode::failed, e.what());
    }
  }

  Engine& engine_;
  const SocketPtr& socket_;
  const std::uint16_t port_;
};

}  // namespace

void serve_connection(Engine& engine, const SocketPtr& socket, std::uint16_t port) {
  try {
    Connection(engine, socket, port).run();
  } catch (const std::exception&) {
    // Without memory for this one, the others go on.
  }
}

}  // namespace standin
