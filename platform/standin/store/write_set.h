// A transaction's ordered write-set over the store, with undo and with what a commit must compare.
#pragma once

#include <cstdint>
#include <deque>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "store.h"

namespace standin {

// What commits changed lately: the number of the last commit that wrote each key. Entries older
// than the oldest open transaction are dropped.
class CommitLog {
 public:
  std::uint64_t last() const { return last_; }
  void record(const Batch& batch);  // counts one commit
  // Some key in [from, to] was written by a commit later than `since`.
  bool changed_since(std::string_view from, std::string_view to, std::uint64_t since) const;
  void forget_before(std::uint64_t commit);

 private:
  using Written = std::map<std::string, std::uint64_t, std::less<>>;
  struct Commit {
    std::uint64_t number;
    std::vector<Written::iterator> keys;
  };
  std::uint64_t last_ = 0;
  Written written_;
  std::deque<Commit> commits_;  // oldest first, so that forgetting does not look at every key
};

class WriteSet {
 public:
  WriteSet(Store& store, const CommitLog& log) : store_(store), log_(log) {}

  // Reads see the writes. `note` marks a single read, which the commit compares.
  std::optional<std::string> get(std::string_view key, bool note = false);
  std::optional<Record> seek(std::string_view key);
  std::optional<Record> next(std::string_view key);
  bool any_in(std::string_view from, std::string_view to);

  void put(std::string_view key, std::string value);
  void erase(std::string_view key);
  // Everything in [from, to]; also what another commit adds there meanwhile is a conflict.
  void erase_range(std::string_view from, std::string_view to);

  // Undo: everything written since the mark. Marks nest.
  std::size_t mark() const { return undo_.size(); }
  void rollback(std::size_t mark);

  bool empty() const { return writes_.empty(); }
  // Grows with every write, rollback and other commit, since others' writes are seen at once.
  std::uint64_t change_count() const { return changes_ + log_.last(); }
  const Batch& writes() const { return writes_; }
  // Another commit changed a key that was written or read singly, after that.
  bool conflicts() const;
  void clear();

 private:
  struct Undo {
    std::string key;
    bool was_written;
    std::optional<std::string> value;
  };
  // A range from a key on, and the last commit when it was first touched. What only a write
  // touched is forgotten when that write is undone.
  struct Touched {
    std::string to;
    std::uint64_t since;
    std::size_t undo;  // kRead, or where the write stands in the undo list
  };
  static constexpr std::size_t kRead = SIZE_MAX;
  void touch(std::string_view from, std::string_view to, std::size_t undo);
  void write(std::string_view key, std::optional<std::string> value);

  Store& store_;
  const CommitLog& log_;
  Batch writes_;
  std::vector<Undo> undo_;
  std::multimap<std::string, Touched, std::less<>> touched_;
  std::uint64_t changes_ = 0;
};

}  // namespace standin
