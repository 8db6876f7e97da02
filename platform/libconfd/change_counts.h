// What this process knows about the state of the transactions it works in, so that what was read
// ahead is used only while it still holds.
//
// A transaction's state is named by a generation, which is never used twice in the process. It
// moves whenever a change count arrives that differs from the last one, and with each write of
// this process, on whichever socket. While one of our callbacks runs for a transaction, its client
// waits for us and nobody can change it unseen; at other times nothing is known.
#pragma once

#include <cstdint>
#include <mutex>
#include <optional>
#include <unordered_map>

namespace standin {

class ChangeCounts {
 public:
  // Around each callback; the count came with the request.
  void begin_callback(int handle, std::uint64_t count);
  void end_callback(int handle);
  // A write is about to be sent, or its answer has come without a count.
  void touch(int handle);
  // The transaction has begun or ended; its handle may be used anew.
  void forget(int handle);

  struct State {
    std::uint64_t generation = 0;
    bool watched = false;  // one of our callbacks runs
  };
  State state(int handle);

  // An answer brought `count`; its request was sent in generation `asked_in`. Gives the generation
  // that the answer describes, or nothing when the transaction moved meanwhile.
  std::optional<std::uint64_t> observe(int handle, std::uint64_t count, std::uint64_t asked_in);

 private:
  struct Entry {
    std::uint64_t generation = 0;
    std::optional<std::uint64_t> count;
    unsigned callbacks = 0;
  };
  Entry& entry(int handle);

  std::mutex lock_;
  std::uint64_t last_generation_ = 0;
  std::unordered_map<int, Entry> entries_;
};

ChangeCounts& change_counts();

}  // namespace standin
