#include "change_counts.h"

namespace standin {

ChangeCounts& change_counts() {
  static auto* one = new ChangeCounts;
  return *one;
}

ChangeCounts::Entry& ChangeCounts::entry(int handle) {
  auto [it, added] = entries_.try_emplace(handle);
  if (added) it->second.generation = ++last_generation_;
  return it->second;
}

void ChangeCounts::begin_callback(int handle, std::uint64_t count) {
  const std::scoped_lock guard(lock_);
  Entry& e = entry(handle);
  if (e.count != count) e.generation = ++last_generation_;
  e.count = count;
  ++e.callbacks;
}

void ChangeCounts::end_callback(int handle) {
  const std::scoped_lock guard(lock_);
  Entry& e = entry(handle);
  if (e.callbacks > 0) --e.callbacks;
}

void ChangeCounts::touch(int handle) {
  const std::scoped_lock guard(lock_);
  entry(handle).generation = ++last_generation_;
}

void ChangeCounts::forget(int handle) {
  const std::scoped_lock guard(lock_);
  entries_.erase(handle);
}

ChangeCounts::State ChangeCounts::state(int handle) {
  const std::scoped_lock guard(lock_);
  const Entry& e = entry(handle);
  return {e.generation, e.callbacks > 0};
}

std::optional<std::uint64_t> ChangeCounts::observe(int handle, std::uint64_t count,
                                                   std::uint64_t asked_in) {
  const std::scoped_lock guard(lock_);
  Entry& e = entry(handle);
  const bool moved = e.generation != asked_in;
  if (e.count != count) e.generation = ++last_generation_;
  e.count = count;
  if (moved) return std::nullopt;
  return e.generation;
}

}  // namespace standin
