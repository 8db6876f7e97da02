// A server in this process, raw clients of it, and daemons whose callbacks the test writes.
#pragma once

#include <gtest/gtest.h>

#include <condition_variable>
#include <functional>
#include <memory>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

#include "platform/client/northbound.h"
#include "platform/standin/engine/server.h"
#include "platform/wire/frame.h"
#include "platform/wire/messages.h"
#include "tests/store/temp_dir.h"

namespace standin {

inline constexpr std::chrono::seconds kPatience{60};

// Starts as most messages do.
FrameWriter message(Op op);
FrameWriter success();

class RawClient {
 public:
  explicit RawClient(std::uint16_t port);
  RawClient(std::uint16_t port, SocketKind kind, const std::string& name, std::uint64_t daemon = 0);
  ~RawClient();
  RawClient(const RawClient&) = delete;
  RawClient& operator=(const RawClient&) = delete;

  int fd() const { return fd_; }
  // The number that the server answered the greeting with.
  std::uint64_t id() const { return id_; }
  bool send(std::string_view octets);
  bool receive(std::string& payload);
  // Sends and reads the answer. Throws Refused.
  FrameReader request(FrameWriter& frame);
  FrameReader request(FrameWriter&& frame) { return request(frame); }
  // The same for MAAPI: passes over the change count.
  FrameReader maapi(FrameWriter& frame);
  FrameReader maapi(FrameWriter&& frame) { return maapi(frame); }
  // The server has closed the connection, whatever it said before.
  bool closed();
  void shut();

 private:
  int fd_;
  std::uint64_t id_ = 0;
};

// Where threads of the test wait for each other; every wait has an end.
class Gate {
 public:
  void open();
  bool wait(std::chrono::milliseconds patience = kPatience);

 private:
  std::mutex mutex_;
  std::condition_variable changed_;
  bool open_ = false;
};

struct Call {
  Op op;
  std::uint64_t handle;
};

// One thread serves its control and worker socket, as a daemon's does.
class ScriptedDaemon {
 public:
  // Answers a callback, perhaps after calls of its own.
  using Script = std::function<FrameWriter(ScriptedDaemon&, Op, std::uint64_t handle)>;

  ScriptedDaemon(std::uint16_t port, const std::string& name, const std::string& callpoint,
                 Script script);
  ~ScriptedDaemon();

  // Calls of its own, in the transaction of the callback that runs.
  std::string get(std::uint64_t handle, const std::string& path);
  void set(std::uint64_t handle, const std::string& path, const std::string& text);

  std::vector<Call> calls() const;  // init, finish and callbacks so far
  std::size_t count(Op op) const;
  bool wait_for(Op op, std::size_t count);
  // Ends it in the middle of whatever it does.
  void die();

 private:
  void run();
  bool serve(RawClient& socket);

  RawClient control_, worker_, maapi_;
  Script script_;
  mutable std::mutex mutex_;
  std::condition_variable changed_;
  std::vector<Call> calls_;
  std::thread thread_;
};

FrameWriter reply(ReplyKind kind);
FrameWriter reply(const Value& v);

inline Path at(const std::string& text) { return parse_path(text); }

// A server with the project's own model.
class ServerTest : public ::testing::Test {
 protected:
  void SetUp() override { serve(std::chrono::seconds(20)); }
  void TearDown() override { stop(); }
  void serve(std::chrono::milliseconds timeout, const std::string& init = {});
  void stop();
  std::uint16_t port() const { return server_->port(); }
  const std::string& directory() const { return directory_.path(); }
  using Access = NorthboundSession::Access;

 private:
  TempDir directory_;
  std::unique_ptr<Engine> engine_;
  std::unique_ptr<Server> server_;
  std::unique_ptr<Descriptor> stop_;
  std::thread thread_;
};

inline const std::string kSysName = "/SNMPv2_MIB:SNMPv2-MIB/system/sysName";
inline const std::string kSysContact = "/SNMPv2_MIB:SNMPv2-MIB/system/sysContact";

}  // namespace standin
