// What serves the requests of a MAAPI connection: one frame in, one frame out.
#pragma once

#include <cstdint>

#include "platform/standin/engine/session.h"
#include "platform/wire/frame.h"
#include "platform/wire/messages.h"

namespace standin {

// All REQUIRE the lock, may let go of it, and throw Refusal, or WireError for a message that is
// none. Answers begin with [0, change count].
FrameWriter serve_maapi(Session& session, Op op, FrameReader& in);
// `port`: the server's, for its status.
FrameWriter serve_northbound(Session& session, Op op, FrameReader& in, std::uint16_t port);

// The head of an answer.
FrameWriter answer(std::uint64_t changes = 0);
inline FrameWriter answer(Transaction& transaction) {
  return answer(transaction.writes().change_count());
}

// Runs `work` as one operation of the transaction whose handle comes next in the message. What it
// wrote is undone when it is refused.
template <class Work>
FrameWriter in_transaction(Session& session, FrameReader& in, Work work) {
  const TransactionPtr transaction = session.transaction(in.number());
  Operation operation(session.engine().monitor(), *transaction);
  const bool first = operation.outermost();
  const std::size_t mark = transaction->writes().mark();
  const auto undo = [&] {
    if (transaction->writes().mark() > mark) transaction->writes().rollback(mark);
  };
  try {
    FrameWriter out = work(*transaction);
    if (first) transaction->require_going_on();
    return out;
  } catch (const Refusal& e) {
    undo();
    // That something is absent is an answer rather than a refusal.
    if (e.code != ErrorCode::noexists) operation.refused(e.what());
    throw;
  } catch (...) {
    undo();
    throw;
  }
}

// The same for work that writes.
template <class Work>
FrameWriter writing(Session& session, FrameReader& in, Work work) {
  return in_transaction(session, in, [&](Transaction& transaction) {
    transaction.require_writable();
    work(transaction);
    return answer(transaction);
  });
}

}  // namespace standin
