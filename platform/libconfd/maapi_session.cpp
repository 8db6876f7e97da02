#include "maapi_session.h"

#include <mutex>
#include <unordered_map>

#include "change_counts.h"
#include "error.h"
#include "keypath_print.h"
#include "op_names.h"
#include "platform/wire/cipher.h"
#include "trace.h"

namespace standin {
namespace {

struct Sessions {
  std::mutex lock;
  std::unordered_map<int, std::shared_ptr<MaapiSession>> by_sock;
};
Sessions& sessions() {
  static auto* one = new Sessions;
  return *one;
}

}  // namespace

void open_session(int sock) {
  auto fresh = std::make_shared<MaapiSession>();
  fresh->sock = sock;
  const std::scoped_lock guard(sessions().lock);
  sessions().by_sock[sock] = std::move(fresh);
}

std::shared_ptr<MaapiSession> session_of(int sock) {
  const std::scoped_lock guard(sessions().lock);
  const auto found = sessions().by_sock.find(sock);
  if (found == sessions().by_sock.end())
    throw ApiError(CONFD_ERR_APIUSE, "not a MAAPI socket: " + std::to_string(sock));
  return found->second;
}

MaapiCall::MaapiCall(int sock, Op op)
    : session_(session_of(sock)), op_(op), request_(request(op)) {}

MaapiCall::MaapiCall(int sock, Op op, int handle, Effect effect) : MaapiCall(sock, op) {
  if (handle < 0) throw ApiError(CONFD_ERR_NOSESSION, "no transaction has a negative handle");
  handle_ = handle;
  effect_ = effect;
  request_.put(static_cast<std::uint64_t>(handle));
}

MaapiCall::MaapiCall(int sock, Op op, int handle, Path path, Effect effect)
    : MaapiCall(sock, op, handle, effect) {
  path_ = std::move(path);
  request_.put(*path_);
}

int MaapiCall::run() {
  std::uint64_t asked_in = 0;
  if (handle_) {
    // Before the request is out: from now on a change by it may be seen by another thread.
    if (effect_ == Effect::changes) change_counts().touch(*handle_);
    asked_in = change_counts().state(*handle_).generation;
  }
  std::string payload;
  int result = exchange(payload);
  if (result == CONFD_OK) {
    answer_.emplace(payload);
    if (op_ == Op::crypto_keys) cleanse(payload);
    result = answer_status(*answer_);
  }
  if (result == CONFD_OK) {
    const std::uint64_t count = answer_->number();
    if (handle_) generation_ = change_counts().observe(*handle_, count, asked_in);
  }
  trace(result);
  return result;
}

int MaapiCall::exchange(std::string& payload) {
  if (session_->broken) return fail(CONFD_ERR_OS, "connection to the server is broken");
  int result = send_message(session_->sock, request_);
  if (result == CONFD_OK) result = receive_payload(session_->sock, payload);
  if (result == CONFD_OK) return CONFD_OK;
  session_->broken = true;
  return CONFD_ERR;
}

void MaapiCall::trace(int result) const {
  if (!tracing(CONFD_PROTO_TRACE)) return;
  std::string line = std::string("maapi ") + op_name(op_);
  if (handle_) line += " transaction " + std::to_string(*handle_);
  if (path_) line += ' ' + path_text(*path_);
  line += result == CONFD_OK ? " -> ok" : " -> error " + std::to_string(confd_errno);
  trace_line(line);
}

}  // namespace standin
