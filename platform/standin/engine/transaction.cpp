#include "platform/standin/engine/transaction.h"

#include "platform/standin/engine/caller.h"

namespace standin {
namespace {

// The initial transaction calls nobody: stored subtrees are written without their daemon, and
// what only a daemon could answer is not there.
class NoCallouts : public Callouts {
 public:
  Serving serving(const std::string&) override { return Serving::live; }
  bool has(const std::string&, Op) override { return false; }
  Answer call(const std::string&, Op, const NodePath&, const Arguments&) override {
    throw Refusal(ErrorCode::access, "no daemon is called in the initial transaction");
  }
  void validation(const std::string&, bool) override {}
};

}  // namespace

Transaction::Transaction(std::uint64_t id, Kind kind, Surroundings around, SocketPtr client)
    : id_(id),
      handle_(id),
      kind_(kind),
      around_(around),
      client_(std::move(client)),
      began_after_(around.repository.log().last()),
      writes_(around.repository.store(), around.repository.log()),
      stored_(around.repository.schema(), writes_, around.repository.secrets()),
      callouts_(make_callouts()),
      data_(std::make_unique<Data>(around.repository.schema(), writes_, stored_, *callouts_)) {}

Transaction::~Transaction() = default;

std::unique_ptr<Callouts> Transaction::make_callouts() {
  if (kind_ == Kind::initial) return std::make_unique<NoCallouts>();
  auto caller = std::make_unique<Caller>(*this, around_);
  caller_ = caller.get();
  return caller;
}

void Transaction::require_writable() {
  if (kind_ == Kind::read) throw Refusal(ErrorCode::access, "the transaction is read-only");
  if (data_->validating())
    throw Refusal(ErrorCode::access, "nothing can be written while the transaction is validated");
  if (ending_) throw Refusal(ErrorCode::access, "the transaction has ended");
  if (client_gone()) throw Refusal(ErrorCode::access, "the transaction's client has gone");
}

void Transaction::require_daemons() {
  if (caller_) caller_->require_daemons();
}

void Transaction::finish() {
  ending_ = true;
  try {
    around_.monitor.wait([&] { return operations_ == 0; });
    const Operation last(around_.monitor, *this);
    if (caller_) caller_->finish();
  } catch (const Refusal&) {
    // The server stops: there is nobody left to tell.
  }
  ended_ = true;
  around_.monitor.changed.notify_all();
}

Operation::Operation(Monitor& monitor, Transaction& transaction)
    : monitor_(monitor), transaction_(transaction) {
  ++transaction_.waiting_operations_;
  monitor_.wait([&] {
    return transaction_.ended_ || transaction_.operations_ == transaction_.outstanding_.size();
  });
  --transaction_.waiting_operations_;
  if (transaction_.ended_) throw Refusal(ErrorCode::nosession, "the transaction has ended");
  if (monitor_.stopping) throw Refusal(ErrorCode::nosession, "the server stops");
  if (transaction_.operations_++ == 0) transaction_.work_ = {};
  transaction_.last_request_ = Clock::now();
}

Operation::~Operation() {
  --transaction_.operations_;
  transaction_.last_request_ = Clock::now();
  monitor_.changed.notify_all();
}

void Operation::refused(const std::string& text) {
  if (!transaction_.outstanding_.empty()) transaction_.outstanding_.back().last_refusal = text;
}

}  // namespace standin
