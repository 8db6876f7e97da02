#include "read_ahead.h"

#include <algorithm>

#include "platform/wire/frame.h"
#include "schema_map.h"

namespace standin {
namespace {

constexpr std::uint64_t kMostRows = 64;  // of a frame
constexpr std::size_t kMostKept = 2048;  // of a run
constexpr std::size_t kMostRuns = 8;
constexpr std::size_t kNowhere = SIZE_MAX;

// Strings are one key whether they came typed or as text.
std::string index_key(const Level& keys) {
  std::string out;
  for (const Value& v : keys) out += pack_value(v.is(Type::str) ? Value::buf(v.bytes()) : v);
  return out;
}

}  // namespace

std::size_t AheadRun::place_of(const Level& keys, std::size_t hint) const {
  if (hint < rows_.size() && rows_[hint].keys == keys) return hint;
  const auto found = by_key_.find(index_key(keys));
  return found == by_key_.end() ? kNowhere : found->second;
}

AheadRun::Found AheadRun::next(const std::optional<Level>& after, std::size_t& hint,
                               const AheadRow*& row) const {
  std::size_t place = 0;
  if (after != start_) {
    if (!after) return Found::unknown;
    place = place_of(*after, hint);
    if (place == kNowhere) return Found::unknown;
    ++place;
  }
  if (place >= rows_.size()) return end_ ? Found::end : Found::unknown;
  hint = place;
  row = &rows_[place];
  return Found::row;
}

const AheadRow* AheadRun::row(const Level& keys) {
  const auto found = by_key_.find(index_key(keys));
  if (found == by_key_.end()) return nullptr;
  ++leaf_reads_;
  wants_leaves_ = true;
  const std::size_t place = found->second;
  // The rows after one that was asked for by its key alone are likely to be asked for their leaves
  // next: they are read anew, rather than leaf by leaf.
  if (!rows_[place].with_leaves) forget_after(place);
  return &rows_[place];
}

void AheadRun::forget_after(std::size_t place) {
  for (std::size_t i = place + 1; i < rows_.size(); ++i) by_key_.erase(index_key(rows_[i].keys));
  if (place + 1 < rows_.size()) end_ = false;
  rows_.resize(place + 1);
}

void AheadRun::continue_after(const std::optional<Level>& after, std::uint64_t generation) {
  const bool goes_on = generation == generation_ && !end_ && rows_.size() < kMostKept &&
                       (rows_.empty() ? after == start_ : after && rows_.back().keys == *after);
  if (goes_on && !rows_.empty()) {
    // All rows were used; without a look at their leaves, keys alone will do.
    if (leaf_reads_ == 0) wants_leaves_ = false;
    batch_ = std::min(batch_ * 2, kMostRows);
    return;
  }
  if (generation != generation_ && !rows_.empty()) batch_ = std::max<std::uint64_t>(batch_ / 2, 1);
  generation_ = generation;
  start_ = after;
  rows_.clear();
  by_key_.clear();
  end_ = false;
}

void AheadRun::append(std::vector<AheadRow> rows, bool end) {
  const SchemaMap* schema = schema_map();
  for (AheadRow& row : rows) {
    // Secrets do not stay in memory for convenience.
    if (schema != nullptr)
      std::erase_if(row.leaves, [&](const auto& leaf) { return schema->secret(leaf.first); });
    by_key_.emplace(index_key(row.keys), rows_.size());
    rows_.push_back(std::move(row));
  }
  end_ = end;
}

AheadRun& ReadAhead::run(const Path& list, std::uint64_t generation) {
  const auto found =
      std::find_if(runs_.begin(), runs_.end(), [&](const AheadRun& r) { return r.list() == list; });
  if (found != runs_.end()) {
    std::rotate(found, found + 1, runs_.end());
    return runs_.back();
  }
  if (runs_.size() == kMostRuns) runs_.erase(runs_.begin());
  return runs_.emplace_back(list, generation);
}

const Value* ReadAhead::leaf(const Path& path, std::uint64_t generation) {
  if (path.size() < 3) return nullptr;
  const PathStep& keys = path[path.size() - 2];
  const PathStep& leaf = path.back();
  if (keys.kind != PathStep::Kind::keys || leaf.kind == PathStep::Kind::keys) return nullptr;
  for (AheadRun& run : runs_) {
    if (run.generation() != generation || run.list().size() != path.size() - 2 ||
        !std::equal(run.list().begin(), run.list().end(), path.begin()))
      continue;
    const AheadRow* row = run.row(keys.keys);
    if (row == nullptr) return nullptr;
    const std::uint32_t number =
        leaf.kind == PathStep::Kind::tag ? leaf.tag.tag : tag_number(leaf.name);
    const Value* value = nullptr;
    for (const auto& [tag, v] : row->leaves) {
      if (tag.tag != number || (leaf.kind == PathStep::Kind::tag && tag.ns != leaf.tag.ns))
        continue;
      // Two modules may have a leaf of that name here.
      if (value != nullptr) return nullptr;
      value = &v;
    }
    return value;
  }
  return nullptr;
}

}  // namespace standin
