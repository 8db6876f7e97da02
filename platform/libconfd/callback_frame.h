// What both kinds of a daemon's sockets do around a callback.
#pragma once

#include <climits>
#include <string>

#include "daemon.h"
#include "error.h"

namespace standin {

inline int read_handle(FrameReader& from) {
  const std::uint64_t handle = from.number();
  if (handle > INT_MAX) throw WireError("transaction handle out of range");
  return static_cast<int>(handle);
}

// Calls `callback` with the transaction ready for it, and gives its result.
template <typename Callback>
auto run_callback(Transaction& tr, Transaction::Expects expects, Callback&& callback) {
  tr.expects = expects;
  tr.reply.reset();
  tr.reply_name = "none";
  tr.error_text.clear();
  const auto result = callback();
  tr.expects = Transaction::Expects::no_callback;
  return result;
}

// After a callback that answered other than CONFD_OK, whatever its own calls left behind.
inline int refused(const char* op, const std::string& text) {
  return fail(CONFD_ERR_EXTERNAL, std::string(op) + " refused" + (text.empty() ? "" : ": ") + text);
}

}  // namespace standin
