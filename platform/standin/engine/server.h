// Accepts connections and gives each a thread.
#pragma once

#include <atomic>
#include <cstdint>
#include <list>
#include <memory>
#include <mutex>
#include <thread>

#include "platform/standin/engine/engine.h"

namespace standin {

// A descriptor of the process's own that closes with its owner.
class Descriptor {
 public:
  explicit Descriptor(int fd = -1) : fd_(fd) {}
  ~Descriptor();
  Descriptor(const Descriptor&) = delete;
  Descriptor& operator=(const Descriptor&) = delete;
  int fd() const { return fd_; }

 private:
  int fd_;
};

inline constexpr int kMostConnections = 512;

class Server {
 public:
  // Listens on 127.0.0.1; port 0 picks a free one. Throws std::runtime_error: busy port.
  Server(Engine& engine, std::uint16_t port);
  // Ends the connections and waits for their threads.
  ~Server();
  Server(const Server&) = delete;
  Server& operator=(const Server&) = delete;

  std::uint16_t port() const { return port_; }
  // Serves until `stop_fd` is readable.
  void run(int stop_fd);

 private:
  struct Served {
    std::shared_ptr<const Socket> socket;
    std::thread thread;
    bool done = false;
  };

  // False when the system has no descriptor or memory to give.
  bool accept_one();
  void start(int fd);
  void reap();

  Engine& engine_;
  Descriptor listening_;
  Descriptor ended_;  // readable when a thread has ended
  std::uint16_t port_ = 0;
  std::shared_ptr<std::atomic<int>> open_ = std::make_shared<std::atomic<int>>(0);
  std::mutex mutex_;  // of `served_`; never held while the engine's lock is taken
  std::list<Served> served_;
};

}  // namespace standin
