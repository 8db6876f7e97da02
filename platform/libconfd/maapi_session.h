// The state of one MAAPI socket, and requests on it.
#pragma once

#include <confd_maapi.h>

#include <map>
#include <memory>
#include <optional>
#include <string>

#include "connection.h"
#include "read_ahead.h"

namespace standin {

// Used by one thread at a time, as its socket is.
struct MaapiSession {
  int sock = -1;
  // A frame was lost half-way: what follows on the socket cannot be told apart.
  bool broken = false;
  std::map<int, ReadAhead> ahead;  // by transaction handle
};

// Opens the state of a socket that was just connected, in place of what an earlier socket of the
// same number left.
void open_session(int sock);
// Throws ApiError (CONFD_ERR_APIUSE) for a socket that no maapi_connect() succeeded for.
std::shared_ptr<MaapiSession> session_of(int sock);

// One request in a transaction, and its answer.
class MaapiCall {
 public:
  // A changing request makes stale whatever this process has read ahead in the transaction.
  enum class Effect { reads, changes };

  MaapiCall(int sock, Op op);                             // outside any transaction
  MaapiCall(int sock, Op op, int handle, Effect effect);  // the handle comes first
  MaapiCall(int sock, Op op, int handle, Path path, Effect effect);

  FrameWriter& elements() { return request_; }
  MaapiSession& session() { return *session_; }

  // CONFD_OK: answer() stands at the first result. CONFD_ERR with the error set.
  int run();
  FrameReader& answer() { return *answer_; }
  // The generation of the transaction that the answer describes; nothing when it is not certain.
  std::optional<std::uint64_t> generation() const { return generation_; }

 private:
  int exchange(std::string& payload);
  void trace(int result) const;

  std::shared_ptr<MaapiSession> session_;
  Op op_;
  std::optional<int> handle_;
  std::optional<Path> path_;
  Effect effect_ = Effect::reads;
  FrameWriter request_;
  std::optional<FrameReader> answer_;
  std::optional<std::uint64_t> generation_;
};

}  // namespace standin
