// Rows of lists that were read before they were asked for. To the server a leaf answered from here
// is part of a walk, not a single read: a commit does not compare it.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <unordered_map>
#include <utility>
#include <vector>

#include "platform/wire/path.h"

namespace standin {

struct AheadRow {
  Level keys;
  // The leaves directly in the entry that exist. Empty when they were not asked for, and for lists
  // that daemons are behind, whose leaves are never read ahead.
  std::vector<std::pair<Tag, Value>> leaves;
  bool with_leaves = false;  // as it was asked for
};

// A run of rows of one list without a gap, in one generation of its transaction.
class AheadRun {
 public:
  AheadRun(Path list, std::uint64_t generation) : list_(std::move(list)), generation_(generation) {}

  const Path& list() const { return list_; }
  std::uint64_t generation() const { return generation_; }

  enum class Found { row, end, unknown };
  // What follows that key; without one, the first row. `hint`, where the key probably stands,
  // becomes the place of the row found.
  Found next(const std::optional<Level>& after, std::size_t& hint, const AheadRow*& row) const;

  // The row of that key, perhaps of keys as text, or null.
  const AheadRow* row(const Level& keys);

  // Begins anew behind `after`, in that generation, unless it can go on there.
  void continue_after(const std::optional<Level>& after, std::uint64_t generation);
  void append(std::vector<AheadRow> rows, bool end);

  // How many rows to ask for, and whether with leaves. Grows while rows are used, shrinks when
  // they had to be thrown away.
  std::uint64_t batch() const { return batch_; }
  bool wants_leaves() const { return wants_leaves_; }

 private:
  std::size_t place_of(const Level& keys, std::size_t hint) const;
  void forget_after(std::size_t place);

  Path list_;
  std::uint64_t generation_;
  std::optional<Level> start_;  // the key before the first row
  std::vector<AheadRow> rows_;
  std::unordered_map<std::string, std::size_t> by_key_;
  bool end_ = false;
  std::uint64_t batch_ = 8;
  bool wants_leaves_ = true;
  std::size_t leaf_reads_ = 0;
};

// The runs of one transaction on one socket.
class ReadAhead {
 public:
  // The run of a list, begun where there is none. Few lists are walked at a time: the run longest
  // unused gives way.
  AheadRun& run(const Path& list, std::uint64_t generation);

  // The leaf that a path names, when it stands in a row that was read in that generation. Null
  // when it is not known; that it is absent is for the server to say.
  const Value* leaf(const Path& path, std::uint64_t generation);

 private:
  std::vector<AheadRun> runs_;  // the latest used last
};

}  // namespace standin
