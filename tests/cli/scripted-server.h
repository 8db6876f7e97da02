// A server of one connection that answers as it was told, and remembers what it was asked.
#pragma once

#include <cstdint>
#include <string>
#include <thread>
#include <vector>

#include "platform/wire/frame.h"
#include "platform/wire/messages.h"

namespace standin::cli {

class ScriptedServer {
 public:
  // Serves hello and nb_open by itself, then gives these answers in turn, and then closes.
  explicit ScriptedServer(std::vector<std::string> answers);
  ~ScriptedServer();
  ScriptedServer(const ScriptedServer&) = delete;
  ScriptedServer& operator=(const ScriptedServer&) = delete;

  std::uint16_t port() const { return port_; }
  // The operations that were asked for, nb_open the first. Waits for the connection's end.
  std::vector<Op> asked();

 private:
  void serve(const std::vector<std::string>& answers);

  int listener_ = -1;
  std::uint16_t port_ = 0;
  std::vector<Op> asked_;
  std::thread thread_;
};

// Answers, ready to be sent.
FrameWriter granted();  // the head; results are to be appended
std::string refused(ErrorCode code, const std::string& text);

}  // namespace standin::cli
