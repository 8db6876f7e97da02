// The control socket: beginnings and ends of transactions and validations.
#include "callback_frame.h"
#include "change_counts.h"
#include "connection.h"
#include "daemon.h"
#include "error.h"
#include "op_names.h"
#include "trace.h"

namespace standin {
namespace {

using Expects = Transaction::Expects;

int send_ok(const Daemon& daemon, std::uint64_t worker) {
  FrameWriter w;
  w.put(std::uint64_t{0}).put(worker);
  return send_message(daemon.control_sock, w);
}

int send_refusal(const Daemon& daemon, ErrorCode code, const std::string& text) {
  FrameWriter w;
  w.put(static_cast<std::uint64_t>(code)).put(text);
  return send_message(daemon.control_sock, w);
}

std::uint64_t worker_id(const Daemon& daemon, const Transaction& tr) {
  for (const Daemon::Worker& w : daemon.workers)
    if (w.sock == tr.worker_sock) return w.id;
  return 0;
}

struct Hook {
  int (*callback)(confd_trans_ctx*);
  bool begins = false;  // the transaction
  bool ends = false;
};

Hook hook_of(const Daemon& daemon, Op op) {
  switch (op) {
    case Op::trans_init:
      return {daemon.trans_cbs.init, true, false};
    case Op::trans_finish:
      return {daemon.trans_cbs.finish, false, true};
    case Op::validate_init:
      return {daemon.validate_cbs.init, false, false};
    case Op::validate_stop:
      return {daemon.validate_cbs.stop, false, false};
    default:
      throw WireError("operation that a control socket does not know");
  }
}

// The context that the hook is about: a new one for one that begins. Null when it is out of turn.
Transaction* transaction_for(Daemon& daemon, const Hook& hook, int handle) {
  const auto known = daemon.transactions.find(handle);
  if (hook.begins != (known == daemon.transactions.end())) return nullptr;
  if (!hook.begins) return known->second.get();
  return daemon.transactions.emplace(handle, std::make_unique<Transaction>(&daemon.ctx, handle))
      .first->second.get();
}

}  // namespace

int serve_control(Daemon& daemon, const std::string& payload) {
  FrameReader from(payload);
  const Op op = static_cast<Op>(from.number());
  const Hook hook = hook_of(daemon, op);
  const int handle = read_handle(from);
  if (!daemon.registered) throw WireError("request before the daemon has registered");
  Transaction* tr = transaction_for(daemon, hook, handle);
  if (tr == nullptr) return send_refusal(daemon, ErrorCode::nosession, "transaction out of turn");

  const int result = run_callback(*tr, Expects::nothing, [&] {
    return hook.callback == nullptr ? int{CONFD_OK} : hook.callback(&tr->ctx);
  });
  const std::string text = tr->error_text;
  const std::uint64_t worker = worker_id(daemon, *tr);
  if (hook.ends || (hook.begins && result != CONFD_OK)) {
    daemon.transactions.erase(handle);
    change_counts().forget(handle);
  }
  if (tracing(CONFD_TRACE))
    trace_line(daemon.name + ": " + op_name(op) + " transaction " + std::to_string(handle) +
               (result == CONFD_OK ? " -> ok" : " -> refused"));
  const int sent =
      result == CONFD_OK ? send_ok(daemon, worker) : send_refusal(daemon, ErrorCode::failed, text);
  if (sent != CONFD_OK) return sent;
  return result == CONFD_OK ? CONFD_OK : refused(op_name(op), text);
}

}  // namespace standin
