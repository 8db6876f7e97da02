#include "platform/standin/engine/session.h"

namespace standin {
namespace {

Refusal no_session(std::uint64_t handle) {
  return {ErrorCode::nosession, "no transaction " + std::to_string(handle) + " on this connection"};
}

}  // namespace

void Session::close() {
  for (const auto& [handle, opened] : opened_) engine_.close(opened.transaction);
  opened_.clear();
  attached_.clear();
}

std::uint64_t Session::open(bool read_write) {
  const auto kind = read_write ? Transaction::Kind::read_write : Transaction::Kind::read;
  TransactionPtr transaction = engine_.open(kind, socket_);
  const std::uint64_t handle = transaction->id();
  opened_.emplace(handle, Opened{kind, std::move(transaction)});
  return handle;
}

void Session::close(std::uint64_t handle) {
  const TransactionPtr transaction = opened(handle);
  engine_.close(transaction);
  opened_.erase(handle);
}

void Session::renew(std::uint64_t handle) {
  engine_.close(opened(handle));
  Opened& entry = opened_.at(handle);
  const TransactionPtr ended = std::move(entry.transaction);
  entry.transaction = engine_.open(entry.kind, socket_);
  entry.transaction->follow(*ended);
}

void Session::attach(std::uint64_t handle) {
  const TransactionPtr transaction = engine_.find(handle);
  if (!transaction)
    throw Refusal(ErrorCode::nosession, "no open transaction " + std::to_string(handle));
  attached_[handle] = transaction;
}

std::uint64_t Session::attach_initial() {
  const TransactionPtr transaction = engine_.initial();
  if (!transaction) throw Refusal(ErrorCode::nosession, "there is no initial transaction");
  attached_[transaction->id()] = transaction;
  return transaction->id();
}

TransactionPtr Session::transaction(std::uint64_t handle) {
  if (opened_.contains(handle)) return opened(handle);
  const auto found = attached_.find(handle);
  if (found == attached_.end()) throw no_session(handle);
  TransactionPtr transaction = found->second.lock();
  if (transaction && !transaction->ended()) return transaction;
  attached_.erase(found);
  throw no_session(handle);
}

TransactionPtr Session::opened(std::uint64_t handle) {
  const auto found = opened_.find(handle);
  if (found == opened_.end()) throw no_session(handle);
  return found->second.transaction;
}

}  // namespace standin
