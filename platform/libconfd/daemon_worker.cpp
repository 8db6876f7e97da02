// The worker sockets: callbacks, read, called, answered.
#include <utility>

#include "callback_frame.h"
#include "change_counts.h"
#include "connection.h"
#include "convert.h"
#include "daemon.h"
#include "error.h"
#include "keypath_print.h"
#include "op_names.h"
#include "trace.h"

namespace standin {

std::uint64_t callback_bits(const confd_data_cbs& cbs) {
  const std::pair<Op, bool> has[] = {
      {Op::cb_exists_optional, cbs.exists_optional != nullptr},
      {Op::cb_get_elem, cbs.get_elem != nullptr},
      {Op::cb_get_next, cbs.get_next != nullptr},
      {Op::cb_set_elem, cbs.set_elem != nullptr},
      {Op::cb_create, cbs.create != nullptr},
      {Op::cb_remove, cbs.remove != nullptr},
      {Op::cb_get_case, cbs.get_case != nullptr},
      {Op::cb_set_case, cbs.set_case != nullptr},
      {Op::cb_get_attrs, cbs.get_attrs != nullptr},
      {Op::cb_set_attr, cbs.set_attr != nullptr},
  };
  std::uint64_t bits = 0;
  for (const auto& [op, present] : has)
    if (present) bits |= 1u << (unsigned(op) - unsigned(Op::cb_exists_optional));
  return bits;
}

namespace {

using Expects = Transaction::Expects;

// A callback request, with its elements read before anything is called.
struct Request {
  Op op{};
  int handle = 0;
  std::uint64_t change_count = 0;
  std::string callpoint;
  Keypath path;
  std::int64_t next = 0;
  Value value;                  // the new value, or the choice
  std::optional<Value> second;  // case, attribute's value, validated value
  std::vector<u_int32_t> attrs;
  u_int32_t attr = 0;
};

u_int32_t read_attr(FrameReader& from) {
  const std::uint64_t number = from.number();
  if (number > UINT32_MAX) throw WireError("attribute number out of range");
  return static_cast<u_int32_t>(number);
}

std::optional<Value> read_optional(FrameReader& from) {
  if (from.skip_nil()) return std::nullopt;
  return from.value();
}

Request read_request(const std::string& payload) {
  FrameReader from(payload);
  Request r;
  r.op = static_cast<Op>(from.number());
  if (r.op < Op::cb_exists_optional || r.op > Op::cb_validate)
    throw WireError("operation that a worker socket does not know");
  r.handle = read_handle(from);
  r.change_count = from.number();
  r.callpoint = from.text();
  r.path = from.keypath();
  switch (r.op) {
    case Op::cb_get_next:
      r.next = from.signed_number();
      break;
    case Op::cb_set_elem:
    case Op::cb_get_case:
      r.value = from.value();
      break;
    case Op::cb_set_case:
      r.value = from.value();
      r.second = read_optional(from);
      break;
    case Op::cb_get_attrs:
      for (std::size_t left = from.array(); left > 0; --left) r.attrs.push_back(read_attr(from));
      break;
    case Op::cb_set_attr:
      r.attr = read_attr(from);
      r.second = read_optional(from);
      break;
    case Op::cb_validate:
      r.second = read_optional(from);
      break;
    default:
      break;
  }
  return r;
}

bool gives_reply(Op op) {
  switch (op) {
    case Op::cb_exists_optional:
    case Op::cb_get_elem:
    case Op::cb_get_next:
    case Op::cb_get_case:
    case Op::cb_get_attrs:
      return true;
    default:
      return false;
  }
}

// The arguments of a callback, owned for the time that it runs.
struct CallbackArgs {
  explicit CallbackArgs(Request& r)
      : request(r), path(r.path), value(r.value), second(r.second.value_or(Value())) {}
  confd_value_t* optional() { return request.second ? second.get() : nullptr; }

  Request& request;
  OwnedKeypath path;
  OwnedValue value;
  OwnedValue second;
};

// The callback's result, or nothing when the daemon registered none.
using CallResult = std::optional<int>;

CallResult call_data(const confd_data_cbs& cbs, confd_trans_ctx* tctx, CallbackArgs& args) {
  const auto call = [&](auto* callback, auto... more) -> CallResult {
    if (callback == nullptr) return std::nullopt;
    return callback(tctx, args.path.get(), more...);
  };
  Request& r = args.request;
  switch (r.op) {
    case Op::cb_exists_optional:
      return call(cbs.exists_optional);
    case Op::cb_get_elem:
      return call(cbs.get_elem);
    case Op::cb_get_next:
      return call(cbs.get_next, static_cast<long>(r.next));
    case Op::cb_set_elem:
      return call(cbs.set_elem, args.value.get());
    case Op::cb_create:
      return call(cbs.create);
    case Op::cb_remove:
      return call(cbs.remove);
    case Op::cb_get_case:
      return call(cbs.get_case, args.value.get());
    case Op::cb_set_case:
      return call(cbs.set_case, args.value.get(), args.optional());
    case Op::cb_get_attrs:
      return call(cbs.get_attrs, r.attrs.empty() ? nullptr : r.attrs.data(),
                  static_cast<int>(r.attrs.size()));
    case Op::cb_set_attr:
      return call(cbs.set_attr, r.attr, args.optional());
    default:
      return std::nullopt;
  }
}

CallResult call_registered(Daemon& daemon, confd_trans_ctx* tctx, CallbackArgs& args) {
  if (args.request.op == Op::cb_validate) {
    const auto point = daemon.valpoints.find(args.request.callpoint);
    if (point == daemon.valpoints.end()) return std::nullopt;
    return point->second.validate(tctx, args.path.get(), args.optional());
  }
  const auto cbs = daemon.data_cbs.find(args.request.callpoint);
  if (cbs == daemon.data_cbs.end()) return std::nullopt;
  return call_data(cbs->second, tctx, args);
}

FrameWriter error_reply(const std::string& text) {
  FrameWriter w;
  w.put(static_cast<std::uint64_t>(ReplyKind::error)).put(text);
  return w;
}

FrameWriter bare_reply(ReplyKind kind) {
  FrameWriter w;
  w.put(static_cast<std::uint64_t>(kind));
  return w;
}

// The change count of the request holds while its callback runs.
class Watched {
 public:
  explicit Watched(const Request& r) : handle_(r.handle) {
    change_counts().begin_callback(r.handle, r.change_count);
  }
  ~Watched() { change_counts().end_callback(handle_); }
  Watched(const Watched&) = delete;
  Watched& operator=(const Watched&) = delete;

 private:
  int handle_;
};

struct Outcome {
  int result;
  FrameWriter reply;
  std::string what;  // for the trace
};

Outcome outcome_of(CallResult result, Transaction& tr, const Request& r) {
  if (!result) {
    const std::string text = r.callpoint + " has no callback for " + op_name(r.op);
    return {CONFD_OK, error_reply(text), text};
  }
  if (*result != CONFD_OK) return {*result, error_reply(tr.error_text), "refused"};
  if (!gives_reply(r.op)) return {CONFD_OK, bare_reply(ReplyKind::ok), "ok"};
  if (!tr.reply) return {CONFD_OK, bare_reply(ReplyKind::none), "no reply was given"};
  return {CONFD_OK, std::move(*tr.reply), tr.reply_name};
}

}  // namespace

int serve_worker(Daemon& daemon, int sock, const std::string& payload) {
  Request r = read_request(payload);
  const auto known = daemon.transactions.find(r.handle);
  if (known == daemon.transactions.end()) {
    FrameWriter w = error_reply("no such transaction");
    return send_message(sock, w);
  }
  Transaction& tr = *known->second;
  CallbackArgs args(r);
  const CallResult result = [&] {
    const Watched watched(r);
    return run_callback(tr, gives_reply(r.op) ? Expects::reply : Expects::nothing,
                        [&] { return call_registered(daemon, &tr.ctx, args); });
  }();
  Outcome outcome = outcome_of(result, tr, r);
  const std::string text = std::move(tr.error_text);
  tr.error_text.clear();
  tr.reply.reset();
  if (tracing(CONFD_TRACE))
    trace_line(daemon.name + ": " + op_name(r.op) + " transaction " + std::to_string(r.handle) +
               ' ' + keypath_text(r.path) + " -> " + outcome.what);
  if (const int sent = send_message(sock, outcome.reply); sent != CONFD_OK) return sent;
  return outcome.result == CONFD_OK ? CONFD_OK : refused(op_name(r.op), text);
}

}  // namespace standin
