// A northbound session: one connection, one open transaction, one method for each operation.
#pragma once

#include <functional>
#include <optional>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

#include "platform/client/description.h"
#include "platform/client/tree.h"
#include "platform/wire/frame.h"
#include "platform/wire/frame_counts.h"
#include "platform/wire/messages.h"
#include "platform/wire/path.h"

namespace standin {

// The server refused an operation; the session and its transaction go on.
struct Refused : std::runtime_error {
  Refused(ErrorCode c, const std::string& text) : std::runtime_error(text), code(c) {}
  ErrorCode code;
};

// There is no server, or it has gone. The session is of no more use.
struct ConnectionLost : std::runtime_error {
  using std::runtime_error::runtime_error;
};

struct DaemonState {
  std::string name;
  bool connected = false;
  std::vector<std::string> callpoints;
};

struct ServerState {
  std::uint64_t port = 0;
  std::uint64_t phase = 0;
  std::vector<DaemonState> daemons;
  std::uint64_t transactions = 0;
  FrameCounts traffic;  // of the server since its start
};

struct Change {
  char kind = '~';  // '+' created, '-' deleted, '~' changed
  std::string path;
  std::optional<std::string> before, after;
};

using AttributeValues = std::vector<std::pair<std::uint32_t, Value>>;

// Every method throws Refused, ConnectionLost, or WireError for an answer that cannot be read.
// Not to be shared between threads.
class NorthboundSession {
 public:
  enum class Access : std::uint8_t { none, read, write };

  // Connects to 127.0.0.1 and opens a transaction unless `access` is none. When the session goes,
  // the server aborts what was not committed.
  NorthboundSession(std::uint16_t port, const std::string& client_name, Access access);
  // For MAAPI calls on the same connection and transaction.
  int fd() const { return socket_.fd; }
  int handle() const { return static_cast<int>(handle_); }

  // A leaf's text or a leaf-list's texts; nothing when not there.
  struct Got {
    bool is_list = false;
    std::vector<std::string> texts;
  };
  std::optional<Got> get(const Path& path);
  bool exists(const Path& path);
  std::vector<std::vector<std::string>> keys(const Path& path);
  std::optional<std::string> selected_case(const Path& path, const std::string& choice);
  struct Tree {
    std::vector<ShownNode> nodes;
    bool complete = true;  // no read was refused
  };
  Tree show(const Path& path);
  AttributeValues attributes(const Path& path);

  void set(const Path& path, const std::vector<std::string>& values);
  void create(const Path& path);
  void remove(const Path& path);
  // A null value removes the attribute.
  void set_attribute(const Path& path, std::uint32_t number, const Value* value);
  std::uint64_t load(const std::string& json);

  void validate();
  void commit();  // then a new transaction is open
  void abort();   // likewise
  std::vector<Change> diff();

  bool start();  // true when the phase changed
  ServerState status();
  // Words that may come next and begin with `begun`: the next key of an entry of `path`, those in
  // `given` being there already, or a value of it.
  enum class Wanted : std::uint8_t { key, value };
  std::vector<std::string> complete(const Path& path, Wanted wanted,
                                    const std::vector<std::string>& given,
                                    const std::string& begun);
  // Keys on the way may be missing.
  Description describe(const Path& path);

  // How far the load of another session's transaction is, by its handle; `stop` also tells it, or
  // whatever else it does, to end as refused.
  struct Watched {
    std::uint64_t done = 0, total = 0;  // list entries; 0 and 0: nothing is loaded
  };
  Watched watch(int handle, bool stop);
  // Called with each request on its way; returns once there is something to read, or never.
  void while_waiting(std::function<void()> wait) { wait_ = std::move(wait); }

 private:
  std::string exchange(FrameWriter& frame);
  FrameReader request(FrameWriter& frame);
  FrameReader call(FrameWriter& frame);  // passes over the change count too
  FrameReader ask(Op op);                // a call with the handle alone
  FrameWriter message(Op op) const;

  struct Socket {
    explicit Socket(int opened) : fd(opened) {}
    ~Socket();
    Socket(const Socket&) = delete;
    Socket& operator=(const Socket&) = delete;
    int fd;
  };
  Socket socket_;
  std::function<void()> wait_;
  std::uint64_t handle_ = 0;
};

}  // namespace standin
