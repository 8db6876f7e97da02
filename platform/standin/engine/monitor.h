// The server's one lock, and the event that goes with it.
#pragma once

#include <condition_variable>
#include <mutex>

namespace standin {

// Everything behind the connections is used under `mutex`; whoever blocks lets go of it. Every
// change that somebody may wait for (a daemon's turn, a transaction's operation, the commit's
// turn, the end) is announced by `changed`.
struct Monitor {
  std::mutex mutex;
  std::condition_variable_any changed;
  bool stopping = false;

  // REQUIRES: the calling thread holds the mutex.
  template <class Condition>
  void wait(Condition condition) {
    changed.wait(mutex, [&] { return stopping || condition(); });
  }
};

// Lets go of a held mutex for its scope.
class Released {
 public:
  explicit Released(std::mutex& mutex) : mutex_(mutex) { mutex_.unlock(); }
  ~Released() { mutex_.lock(); }
  Released(const Released&) = delete;
  Released& operator=(const Released&) = delete;

 private:
  std::mutex& mutex_;
};

}  // namespace standin
