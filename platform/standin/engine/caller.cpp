#include "platform/standin/engine/caller.h"

#include <poll.h>

#include <algorithm>
#include <cerrno>

#include "platform/standin/engine/callback_frames.h"

namespace standin {
namespace {

// Callback answers are values, keys and attributes: this is far more than any of them needs.
constexpr std::size_t kMostReply = 16u << 20;

std::string seconds(std::chrono::milliseconds t) {
  const auto whole = t.count() / 1000;
  const auto rest = t.count() % 1000;
  return std::to_string(whole) + (rest ? "." + std::to_string(rest / 100) : "") + " s";
}

}  // namespace

class Caller::Turn {
 public:
  Turn(Caller& caller, DaemonPtr daemon, const std::string& what)
      : caller_(caller), daemon_(std::move(daemon)) {
    daemon_->queue.push_back(me());
    try {
      wait(what);
    } catch (...) {
      std::erase(daemon_->queue, me());
      caller_.transaction_.waits_for_ = nullptr;
      caller_.around_.monitor.changed.notify_all();
      throw;
    }
    daemon_->queue.pop_front();
    daemon_->holder = me();
  }
  ~Turn() {
    daemon_->holder = nullptr;
    caller_.around_.monitor.changed.notify_all();
  }
  Turn(const Turn&) = delete;
  Turn& operator=(const Turn&) = delete;

 private:
  const Transaction* me() const { return &caller_.transaction_; }

  void wait(const std::string& what) {
    const auto mine = [this] {
      return daemon_->holder == nullptr && daemon_->queue.front() == me();
    };
    while (!mine()) {
      refuse_deadlock(what);
      caller_.transaction_.waits_for_ = daemon_.get();
      caller_.around_.monitor.changed.wait(caller_.around_.monitor.mutex);
      caller_.transaction_.waits_for_ = nullptr;
    }
    if (daemon_->gone())
      throw Refusal(ErrorCode::gone, what + ": daemon " + daemon_->name() + " has gone");
  }

  // Follows who waits for whom. Whoever closes a cycle by waiting finds it here: the others in it
  // already wait.
  void refuse_deadlock(const std::string& what) const {
    const Transaction* t = daemon_->holder;
    while (t != nullptr && t != me()) t = t->waits_for_ ? t->waits_for_->holder : nullptr;
    if (t == me())
      throw Refusal(ErrorCode::deadlock, what + ": daemon " + daemon_->name() +
                                             " is waiting for this very request to end");
  }

  Caller& caller_;
  DaemonPtr daemon_;
};

Serving Caller::serving(const std::string& point) { return around_.daemons.serving(point); }

bool Caller::has(const std::string& point, Op callback) {
  const DaemonPtr daemon = around_.daemons.last_behind(point);
  if (!daemon) return false;
  if (callback == Op::cb_validate) return daemon->serves.valpoints.contains(point);
  const auto found = daemon->serves.callpoints.find(point);
  if (found == daemon->serves.callpoints.end()) return false;
  const auto bit = static_cast<unsigned>(callback) - static_cast<unsigned>(Op::cb_exists_optional);
  return (found->second >> bit & 1u) != 0;
}

DaemonPtr Caller::daemon_behind(const std::string& point) const {
  DaemonPtr daemon = around_.daemons.last_behind(point);
  if (!daemon) throw Refusal(ErrorCode::gone, "no daemon serves " + point);
  if (daemon->alive()) return daemon;
  throw Refusal(ErrorCode::gone,
                "daemon " + daemon->name() + ", which served " + point + ", has gone");
}

Answer Caller::call(const std::string& point, Op callback, const NodePath& path,
                    const Arguments& arguments) {
  if (finishing_) throw Refusal(ErrorCode::access, "the transaction has ended");
  if (transaction_.outstanding_.empty() && transaction_.client_gone())
    throw Refusal(ErrorCode::access, "the transaction's client has gone");
  // What a daemon asks for in the midst of a callback is still served: it must not fail by this.
  if (transaction_.outstanding_.empty()) transaction_.require_going_on();
  const DaemonPtr daemon = daemon_behind(point);
  const std::string what = point + ": " + callback_name(callback);
  const Turn turn(*this, daemon, what);
  const Touch& touched = touch(daemon, point);
  const SocketPtr socket = daemon->worker(touched.worker);
  if (!socket) lose(*daemon, what, "has no such worker socket");
  const CallbackRequest request{transaction_.id(), transaction_.writes().change_count(), point,
                                path};
  const std::string payload =
      exchange(*daemon, socket, callback_frame(callback, request, arguments), what);
  CallbackReply reply;
  try {
    reply = read_reply(payload);
  } catch (const WireError& e) {
    lose(*daemon, what, std::string("answered nonsense: ") + e.what());
  }
  const std::string where = around_.repository.schema().to_text(path);
  if (reply.kind == ReplyKind::error) {
    if (reply.error.empty()) reply.error = last_refusal_;
    throw Refusal(ErrorCode::failed,
                  reply.error.empty() ? where + ": refused by " + what : reply.error);
  }
  if (!fits(callback, reply.kind))
    throw Refusal(ErrorCode::failed, where + ": " + what + " of daemon " + daemon->name() +
                                         " gave no answer that fits");
  // Looked up again: the table may have changed during the call.
  if (const auto mine = touched_.find(daemon->name()); writes(callback) && mine != touched_.end())
    mine->second.written = true;
  return reply.answer;
}

void Caller::validation(const std::string& point, bool start) {
  const DaemonPtr daemon = daemon_behind(point);
  const std::string what = point + (start ? ": validation's start" : ": validation's stop");
  const Turn turn(*this, daemon, what);
  touch(daemon, point);
  if ((daemon->serves.hooks & (start ? kHasValidateInit : kHasValidateStop)) == 0) return;
  const std::uint64_t worker =
      control(*daemon, start ? Op::validate_init : Op::validate_stop, what);
  const auto touched = touched_.find(daemon->name());
  if (start && worker != 0 && touched != touched_.end()) touched->second.worker = worker;
}

Caller::Touch& Caller::touch(const DaemonPtr& daemon, const std::string& point) {
  if (const auto known = touched_.find(daemon->name()); known != touched_.end()) {
    if (known->second.daemon == daemon) return known->second;
    // It has come back. What its former self had taken of this transaction is lost.
    if (known->second.written) require_daemons();
    touched_.erase(known);
  }
  const std::uint64_t worker = control(*daemon, Op::trans_init, point + ": transaction's start");
  return touched_.insert_or_assign(daemon->name(), Touch{daemon, worker}).first->second;
}

void Caller::finish() {
  finishing_ = true;
  for (const auto& [name, touched] : touched_) {
    if (!touched.daemon->alive()) continue;
    const std::string what = "transaction's end";
    try {
      const Turn turn(*this, touched.daemon, what);
      control(*touched.daemon, Op::trans_finish, what);
    } catch (const Refusal&) {
      // It has gone, or has said no: the transaction ends all the same.
    }
  }
  touched_.clear();
}

void Caller::require_daemons() const {
  for (const auto& [name, touched] : touched_)
    if (touched.written && !touched.daemon->alive())
      throw Refusal(ErrorCode::gone, "daemon " + name +
                                         " has gone since it took writes of this transaction: "
                                         "abort it and begin again");
}

std::uint64_t Caller::control(Daemon& daemon, Op op, const std::string& what) {
  FrameWriter frame;
  frame.put(std::uint64_t{static_cast<std::uint16_t>(op)}).put(transaction_.id());
  const std::string payload = exchange(daemon, daemon.control(), frame.take(), what);
  try {
    FrameReader in(payload);
    const std::uint64_t code = in.number();
    if (code == 0) return in.at_end() ? 0 : in.number();
    const std::string text = in.text();
    throw Refusal(ErrorCode::failed,
                  text.empty() ? what + ": refused by daemon " + daemon.name() : text);
  } catch (const WireError& e) {
    lose(daemon, what, std::string("answered nonsense: ") + e.what());
  }
}

std::string Caller::exchange(Daemon& daemon, const SocketPtr& socket, std::string_view frame,
                             const std::string& what) {
  transaction_.outstanding_.emplace_back();
  const std::size_t depth = transaction_.outstanding_.size();
  transaction_.last_request_ = Clock::now();
  around_.monitor.changed.notify_all();
  std::string failure;
  std::string payload;
  {
    const Released released(around_.monitor.mutex);
    if (send_frame(socket->fd(), frame, Clock::now() + around_.timeout) != IoResult::ok)
      failure = "cannot be reached";
    else
      payload = receive(*socket, depth, failure);
  }
  // Not before what the daemon still has running here is done: operations nest.
  around_.monitor.changed.wait(around_.monitor.mutex,
                               [&] { return transaction_.operations_ <= depth; });
  last_refusal_ = std::move(transaction_.outstanding_.back().last_refusal);
  transaction_.outstanding_.pop_back();
  if (!failure.empty()) lose(daemon, what, failure);
  return payload;
}

// Called without the lock. `depth`: how many operations there were when the call was made.
std::string Caller::receive(const Socket& socket, std::size_t depth, std::string& failure) {
  Clock::time_point deadline = Clock::now() + around_.timeout;
  for (;;) {
    const auto left = std::chrono::ceil<std::chrono::milliseconds>(deadline - Clock::now()).count();
    pollfd entry{socket.fd(), POLLIN, 0};
    const int ready = ::poll(&entry, 1, static_cast<int>(std::max<long>(left, 0)));
    if (ready > 0) break;
    if (ready < 0 && errno != EINTR) break;
    if (!silent_too_long(deadline, depth)) continue;
    failure = "did not answer within " + seconds(around_.timeout);
    return {};
  }
  std::string payload;
  switch (recv_frame(socket.fd(), payload, Clock::now() + around_.timeout, kMostReply)) {
    case IoResult::ok:
      return payload;
    case IoResult::closed:
      failure = "ended during the call";
      break;
    case IoResult::timeout:
      failure = "stopped in the middle of its answer";
      break;
    case IoResult::error:
      failure = errno == EMSGSIZE ? "answered nonsense" : "cannot be reached";
      break;
  }
  return {};
}

// Called without the lock, when the deadline has passed; moves it when the daemon was not silent.
bool Caller::silent_too_long(Clock::time_point& deadline, std::size_t depth) {
  const std::lock_guard lock(around_.monitor.mutex);
  const auto now = Clock::now();
  // It waits for us: its own request is being served, or waits for its turn.
  const bool served = transaction_.operations_ > depth || transaction_.waiting_operations_ > 0;
  deadline = (served ? now : transaction_.last_request_) + around_.timeout;
  return deadline <= now;
}

void Caller::lose(Daemon& daemon, const std::string& what, const std::string& failure) {
  daemon.mark_gone();
  around_.monitor.changed.notify_all();
  throw Refusal(ErrorCode::gone, what + ": daemon " + daemon.name() + " " + failure);
}

}  // namespace standin
