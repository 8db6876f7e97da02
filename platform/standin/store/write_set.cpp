#include "write_set.h"

#include <algorithm>
#include <utility>

namespace standin {

void CommitLog::record(const Batch& batch) {
  Commit commit{++last_, {}};
  commit.keys.reserve(batch.size());
  for (const auto& [key, value] : batch)
    commit.keys.push_back(written_.insert_or_assign(key, last_).first);
  commits_.push_back(std::move(commit));
}

bool CommitLog::changed_since(std::string_view from, std::string_view to,
                              std::uint64_t since) const {
  if (since == last_) return false;
  for (auto it = written_.lower_bound(from); it != written_.end() && it->first <= to; ++it)
    if (it->second > since) return true;
  return false;
}

void CommitLog::forget_before(std::uint64_t commit) {
  for (; !commits_.empty() && commits_.front().number < commit; commits_.pop_front())
    for (const Written::iterator& key : commits_.front().keys)
      // A key that was written again belongs to the later commit.
      if (key->second == commits_.front().number) written_.erase(key);
}

std::optional<std::string> WriteSet::get(std::string_view key, bool note) {
  if (note) touch(key, key, kRead);
  if (const auto it = writes_.find(key); it != writes_.end()) return it->second;
  return store_.get(key);
}

// The store's next record that is not written over, against the first written one.
std::optional<Record> WriteSet::seek(std::string_view key) {
  auto written = writes_.lower_bound(key);
  auto stored = store_.seek(key);
  while (true) {
    if (written == writes_.end() || (stored && stored->first < written->first)) return stored;
    const bool hides = stored && stored->first == written->first;
    if (written->second) return Record(written->first, *written->second);
    if (hides) stored = store_.next(stored->first);
    ++written;
  }
}

std::optional<Record> WriteSet::next(std::string_view key) {
  // No octet string stands between a key and the key with a zero octet behind it.
  return seek(std::string(key).append(1, '\0'));
}

bool WriteSet::any_in(std::string_view from, std::string_view to) {
  const auto first = seek(from);
  return first && first->first <= to;
}

void WriteSet::put(std::string_view key, std::string value) {
  touch(key, key, undo_.size());
  write(key, std::move(value));
}

void WriteSet::erase(std::string_view key) {
  touch(key, key, undo_.size());
  write(key, std::nullopt);
}

void WriteSet::erase_range(std::string_view from, std::string_view to) {
  const std::size_t mark = undo_.size();
  auto record = seek(from);
  for (; record && record->first <= to; record = next(record->first))
    write(record->first, std::nullopt);
  // Where nothing stood there is no write whose undoing could take the touch away.
  touch(from, to, undo_.size() > mark ? mark : kRead);
}

void WriteSet::write(std::string_view key, std::optional<std::string> value) {
  const auto [it, added] = writes_.try_emplace(std::string(key));
  undo_.push_back({it->first, !added, std::move(it->second)});
  it->second = std::move(value);
  ++changes_;
}

void WriteSet::touch(std::string_view from, std::string_view to, std::size_t undo) {
  const auto [begin, end] = touched_.equal_range(from);
  const auto same = std::find_if(begin, end, [&](const auto& t) { return t.second.to == to; });
  if (same == end)
    touched_.emplace(std::string(from), Touched{std::string(to), log_.last(), undo});
  else if (undo == kRead)
    same->second.undo = kRead;
}

void WriteSet::rollback(std::size_t mark) {
  while (undo_.size() > mark) {
    Undo& last = undo_.back();
    if (last.was_written)
      writes_[last.key] = std::move(last.value);
    else
      writes_.erase(last.key);
    undo_.pop_back();
  }
  std::erase_if(touched_,
                [&](const auto& t) { return t.second.undo != kRead && t.second.undo >= mark; });
  ++changes_;
}

bool WriteSet::conflicts() const {
  return std::any_of(touched_.begin(), touched_.end(), [&](const auto& t) {
    return log_.changed_since(t.first, t.second.to, t.second.since);
  });
}

void WriteSet::clear() {
  writes_.clear();
  undo_.clear();
  touched_.clear();
  ++changes_;
}

}  // namespace standin
