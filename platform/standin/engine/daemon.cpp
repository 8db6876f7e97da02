#include "platform/standin/engine/daemon.h"

#include <algorithm>

namespace standin {

bool Daemon::alive() {
  if (gone_) return false;
  const bool closed =
      control_->peer_gone() || std::any_of(workers_.begin(), workers_.end(),
                                           [](const auto& w) { return w.second->peer_gone(); });
  if (closed) mark_gone();
  return !closed;
}

void Daemon::mark_gone() {
  if (gone_) return;
  gone_ = true;
  // A thread that waits on one of them holds it by a pointer of its own.
  control_->shut();
  for (const auto& [id, socket] : workers_) socket->shut();
  workers_.clear();
  control_.reset();
}

std::uint64_t Daemon::add_worker(SocketPtr socket) {
  const std::uint64_t id = next_worker_++;
  workers_.emplace(id, std::move(socket));
  return id;
}

SocketPtr Daemon::worker(std::uint64_t id) const {
  const auto found = id == 0 ? workers_.begin() : workers_.find(id);
  return found == workers_.end() ? nullptr : found->second;
}

DaemonPtr Daemons::introduce(const std::string& name, SocketPtr control) {
  if (name.empty()) throw Refusal(ErrorCode::apiuse, "a daemon needs a name");
  const auto old = by_name_.find(name);
  if (old != by_name_.end() && old->second->alive())
    throw Refusal(ErrorCode::inuse, "a daemon named " + name + " is already connected");
  auto daemon = std::make_shared<Daemon>(next_id_++, name, std::move(control));
  by_name_[name] = daemon;
  return daemon;
}

void Daemons::check(const Daemon& daemon, const std::string& point, bool known) const {
  if (!known) throw Refusal(ErrorCode::noexists, "the schema has no point named " + point);
  const auto held = by_point_.find(point);
  if (held != by_point_.end() && held->second.get() != &daemon && held->second->alive())
    throw Refusal(ErrorCode::inuse, point + " is already served by daemon " + held->second->name());
}

void Daemons::enroll(const DaemonPtr& daemon, Daemon::Registration registration) {
  if (daemon->registered) throw Refusal(ErrorCode::apiuse, "the daemon is already registered");
  for (const auto& [point, bits] : registration.callpoints)
    check(*daemon, point, schema_.has_callpoint(point));
  for (const auto& point : registration.valpoints)
    check(*daemon, point, schema_.has_valpoint(point));
  for (const auto& [point, bits] : registration.callpoints) by_point_[point] = daemon;
  for (const auto& point : registration.valpoints) by_point_[point] = daemon;
  daemon->serves = std::move(registration);
  daemon->registered = true;
}

void Daemons::withdraw(const DaemonPtr& daemon) {
  daemon->mark_gone();
  const auto mine = by_name_.find(daemon->name());
  if (!daemon->registered && mine != by_name_.end() && mine->second == daemon) by_name_.erase(mine);
}

DaemonPtr Daemons::by_id(std::uint64_t id) const {
  for (const auto& [name, daemon] : by_name_)
    if (daemon->id() == id) return daemon;
  return nullptr;
}

DaemonPtr Daemons::last_behind(const std::string& point) const {
  const auto found = by_point_.find(point);
  return found == by_point_.end() ? nullptr : found->second;
}

DaemonPtr Daemons::behind(const std::string& point) const {
  DaemonPtr daemon = last_behind(point);
  return daemon && daemon->alive() ? daemon : nullptr;
}

Serving Daemons::serving(const std::string& point) const {
  const DaemonPtr daemon = last_behind(point);
  if (!daemon) return Serving::never_registered;
  return daemon->alive() ? Serving::live : Serving::gone;
}

void Daemons::shut_all() {
  for (const auto& [name, daemon] : by_name_) daemon->mark_gone();
}

}  // namespace standin
