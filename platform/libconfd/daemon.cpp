#include "daemon.h"

#include <algorithm>
#include <cstring>
#include <mutex>

#include "connection.h"
#include "error.h"
#include "trace.h"

namespace standin {

Daemon::Daemon(std::string daemon_name) : name(std::move(daemon_name)) { ctx.impl = this; }

Transaction::Transaction(confd_daemon_ctx* dx, int handle) {
  ctx.thandle = handle;
  ctx.dx = dx;
  ctx.uinfo = &user;
  ctx.impl = this;
  user.impl = this;
}

namespace {

// Contexts live as long as the process.
confd_daemon_ctx* keep(std::unique_ptr<Daemon> daemon) {
  static std::mutex lock;
  static auto* all = new std::vector<std::unique_ptr<Daemon>>;
  const std::scoped_lock guard(lock);
  all->push_back(std::move(daemon));
  return &all->back()->ctx;
}

// A name of a fixed array, or an empty one when it is not terminated.
template <std::size_t N>
std::string bounded_name(const char (&name)[N]) {
  const std::size_t n = ::strnlen(name, N);
  return n < N ? std::string(name, n) : std::string();
}

template <typename Body>
int before_done(confd_daemon_ctx* dx, const void* record, Body&& body) {
  return guarded([&] {
    if (dx == nullptr || record == nullptr) return fail(CONFD_ERR_APIUSE, "nothing to register");
    Daemon& daemon = Daemon::of(dx);
    if (daemon.registered) return fail(CONFD_ERR_APIUSE, "registrations are closed already");
    return body(daemon);
  });
}

FrameWriter registration(const Daemon& daemon) {
  FrameWriter w = request(Op::register_daemon);
  w.array(daemon.data_cbs.size());
  for (const auto& [callpoint, cbs] : daemon.data_cbs)
    w.array(2).put(callpoint).put(callback_bits(cbs));
  std::vector<std::string> points;
  for (const auto& [point, cb] : daemon.valpoints) points.push_back(point);
  w.put(points);
  // The library keeps a context for each transaction, so that it has to hear of both its ends
  // whether or not the daemon does.
  std::uint64_t hooks = kHasInit | kHasFinish;
  if (daemon.validate_cbs.init != nullptr) hooks |= kHasValidateInit;
  if (daemon.validate_cbs.stop != nullptr) hooks |= kHasValidateStop;
  w.put(hooks);
  return w;
}

}  // namespace
}  // namespace standin

using namespace standin;

struct confd_daemon_ctx* confd_init_daemon(const char* name) {
  try {
    return keep(std::make_unique<Daemon>(name == nullptr ? program_name() : name));
  } catch (...) {
    fail_for_current_exception();
    return nullptr;
  }
}

int confd_connect(struct confd_daemon_ctx* dx, int sock, enum confd_sock_type type,
                  const struct sockaddr* addr, int addrlen) {
  return guarded([&] {
    if (dx == nullptr) return fail(CONFD_ERR_APIUSE, "no daemon context");
    Daemon& daemon = Daemon::of(dx);
    const bool control = type == CONTROL_SOCKET;
    if (!control && type != WORKER_SOCKET) return fail(CONFD_ERR_APIUSE, "no such kind of socket");
    if (control == (daemon.control_sock >= 0))
      return fail(CONFD_ERR_APIUSE, control ? "the daemon has its control socket already"
                                            : "the control socket goes first");
    std::uint64_t id = 0;
    const int result =
        connect_and_greet(sock, addr, addrlen, control ? SocketKind::control : SocketKind::worker,
                          daemon.name, control ? 0 : daemon.id, id);
    if (result != CONFD_OK) return result;
    if (control) {
      daemon.control_sock = sock;
      daemon.id = id;
    } else {
      daemon.workers.push_back({sock, id});
    }
    return CONFD_OK;
  });
}

int confd_register_trans_cb(struct confd_daemon_ctx* dx, const struct confd_trans_cbs* cbs) {
  return before_done(dx, cbs, [&](Daemon& daemon) {
    daemon.trans_cbs = *cbs;
    return CONFD_OK;
  });
}

int confd_register_trans_validate_cb(struct confd_daemon_ctx* dx,
                                     const struct confd_trans_validate_cbs* cbs) {
  return before_done(dx, cbs, [&](Daemon& daemon) {
    daemon.validate_cbs = *cbs;
    return CONFD_OK;
  });
}

int confd_register_data_cb(struct confd_daemon_ctx* dx, const struct confd_data_cbs* cbs) {
  return before_done(dx, cbs, [&](Daemon& daemon) {
    const std::string name = bounded_name(cbs->callpoint);
    if (name.empty()) return fail(CONFD_ERR_APIUSE, "a callpoint needs a name");
    daemon.data_cbs[name] = *cbs;
    return CONFD_OK;
  });
}

int confd_register_valpoint_cb(struct confd_daemon_ctx* dx, const struct confd_valpoint_cb* cb) {
  return before_done(dx, cb, [&](Daemon& daemon) {
    const std::string name = bounded_name(cb->valpoint);
    if (name.empty() || cb->validate == nullptr)
      return fail(CONFD_ERR_APIUSE, "a validation point needs a name and a callback");
    daemon.valpoints[name] = *cb;
    return CONFD_OK;
  });
}

int confd_register_done(struct confd_daemon_ctx* dx) {
  return before_done(dx, dx, [&](Daemon& daemon) {
    if (daemon.control_sock < 0) return fail(CONFD_ERR_APIUSE, "the daemon is not connected");
    FrameWriter message = registration(daemon);
    std::string payload;
    if (send_message(daemon.control_sock, message) != CONFD_OK) return CONFD_ERR;
    if (receive_payload(daemon.control_sock, payload) != CONFD_OK) return CONFD_ERR;
    FrameReader answer(payload);
    if (answer_status(answer) != CONFD_OK) return CONFD_ERR;
    daemon.registered = true;
    return CONFD_OK;
  });
}

int confd_fd_ready(struct confd_daemon_ctx* dx, int fd) {
  return guarded([&] {
    if (dx == nullptr) return fail(CONFD_ERR_APIUSE, "no daemon context");
    Daemon& daemon = Daemon::of(dx);
    const bool control = fd >= 0 && fd == daemon.control_sock;
    const bool worker = std::any_of(daemon.workers.begin(), daemon.workers.end(),
                                    [&](const Daemon::Worker& w) { return w.sock == fd; });
    if (!control && !worker) return fail(CONFD_ERR_APIUSE, "not a socket of this daemon");
    std::string payload;
    if (const int result = receive_payload(fd, payload); result != CONFD_OK) return result;
    return control ? serve_control(daemon, payload) : serve_worker(daemon, fd, payload);
  });
}

void confd_trans_set_fd(struct confd_trans_ctx* tctx, int sock) {
  if (tctx != nullptr && tctx->impl != nullptr) Transaction::of(tctx).worker_sock = sock;
}
