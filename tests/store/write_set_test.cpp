#include "platform/standin/store/write_set.h"

#include <gtest/gtest.h>

#include <functional>
#include <random>

#include "temp_dir.h"

namespace standin {
namespace {

using Model = std::map<std::string, std::string, std::less<>>;

// Keys of a small alphabet, so that the overlay often covers the store.
struct Keys {
  std::mt19937 engine;
  std::size_t below(std::size_t n) { return engine() % n; }
  std::string key() {
    std::string k;
    for (std::size_t n = 1 + below(2); n > 0; --n) k.push_back("\0af\xff"[below(4)]);
    return k;
  }
};

void expect_same_reads(WriteSet& set, const Model& model, const std::string& key) {
  const auto record = [&](auto it) {
    return it == model.end() ? std::nullopt : std::optional<Record>(*it);
  };
  const auto it = model.find(key);
  ASSERT_EQ(set.get(key), it == model.end() ? std::nullopt : std::optional(it->second));
  ASSERT_EQ(set.seek(key), record(model.lower_bound(key)));
  ASSERT_EQ(set.next(key), record(model.upper_bound(key)));
}

class AgainstModel : public testing::TestWithParam<unsigned> {};

TEST_P(AgainstModel, RandomWritesAndRollbacksReadAsAMapDoes) {
  SCOPED_TRACE("seed " + std::to_string(GetParam()));
  Keys random{std::mt19937(GetParam())};
  MemoryStore store;
  for (int i = 0; i < 8; ++i) store.records[random.key()] = "stored";
  const CommitLog log;
  WriteSet set(store, log);
  Model model = store.records;
  std::vector<std::pair<std::size_t, Model>> marks;

  for (int i = 0; i < 300; ++i) {
    const std::string key = random.key();
    const std::uint64_t changes = set.change_count();
    const std::size_t action = random.below(10);
    if (action < 4) {
      set.put(key, std::to_string(i));
      model[key] = std::to_string(i);
      ASSERT_GT(set.change_count(), changes);
    } else if (action < 6) {
      set.erase(key);
      model.erase(key);
    } else if (action < 7) {
      const std::string to = std::max(key, random.key());
      set.erase_range(key, to);
      model.erase(model.lower_bound(key), model.upper_bound(to));
      ASSERT_FALSE(set.any_in(key, to));
    } else if (action < 9 || marks.empty()) {
      marks.emplace_back(set.mark(), model);
    } else {
      marks.resize(1 + random.below(marks.size()));
      set.rollback(marks.back().first);
      model = marks.back().second;
      marks.pop_back();
      ASSERT_GT(set.change_count(), changes);
    }
    ASSERT_NO_FATAL_FAILURE(expect_same_reads(set, model, random.key()));
  }
  store.apply(set.writes());
  EXPECT_EQ(store.records, model);
  set.clear();
  EXPECT_TRUE(set.empty());
}

INSTANTIATE_TEST_SUITE_P(Seeds, AgainstModel, testing::Range(1U, 41U));

// A transaction does something, another commit changes a key, the transaction wants to commit.
struct Conflict {
  const char* name;
  std::function<void(WriteSet&)> own;
  const char* changed;
  bool conflicts;
};

class Conflicts : public testing::TestWithParam<Conflict> {};

TEST_P(Conflicts, AreFoundByWhatWasTouched) {
  MemoryStore store;
  store.records = {{"b", "1"}, {"c", "2"}, {"x", "3"}};
  CommitLog log;
  log.record({{GetParam().changed, "before"}});  // before the transaction: never a conflict
  WriteSet set(store, log);
  GetParam().own(set);
  EXPECT_FALSE(set.conflicts());
  log.record({{GetParam().changed, std::nullopt}});
  EXPECT_EQ(set.conflicts(), GetParam().conflicts);
  set.clear();
  EXPECT_FALSE(set.conflicts());
}

INSTANTIATE_TEST_SUITE_P(
    Table, Conflicts,
    testing::Values(
        Conflict{"write", [](WriteSet& s) { s.put("b", ""); }, "b", true},
        Conflict{"erase", [](WriteSet& s) { s.erase("b"); }, "b", true},
        Conflict{"single_read", [](WriteSet& s) { s.get("b", true); }, "b", true},
        Conflict{"walk", [](WriteSet& s) { s.next(s.seek("a")->first); }, "c", false},
        Conflict{"added_to_empty_range", [](WriteSet& s) { s.erase_range("m", "n"); }, "mm", true},
        Conflict{"behind_erased_range", [](WriteSet& s) { s.erase_range("b", "d"); }, "dd", false},
        Conflict{"undone_write", [](WriteSet& s) { s.put("b", ""), s.rollback(0); }, "b", false},
        Conflict{"undone_erased_range", [](WriteSet& s) { s.erase_range("b", "d"), s.rollback(0); },
                 "bb", false},
        Conflict{"write_before_the_mark",
                 [](WriteSet& s) {
                   s.put("b", "");
                   const auto mark = s.mark();
                   s.put("b", "again");
                   s.rollback(mark);
                 },
                 "b", true},
        Conflict{"undone_write_that_was_read_too",
                 [](WriteSet& s) { s.put("b", ""), s.get("b", true), s.rollback(0); }, "b", true}),
    [](const auto& param_info) { return param_info.param.name; });

TEST(CommitLog, TouchedBetweenTwoCommitsComparesWithThatTime) {
  MemoryStore store;
  CommitLog log;
  WriteSet set(store, log);
  set.put("a", "");
  log.record({{"z", ""}});
  set.put("z", "");  // written after the other commit, which it saw
  EXPECT_FALSE(set.conflicts());
  set.put("a", "again");
  log.record({{"a", ""}});
  EXPECT_TRUE(set.conflicts());
}

TEST(CommitLog, ForgettingKeepsWhatLaterCommitsWrote) {
  CommitLog log;
  log.record({{"a", ""}, {"b", ""}});
  log.record({{"a", ""}});
  log.forget_before(log.last());
  EXPECT_FALSE(log.changed_since("b", "b", 0));
  EXPECT_TRUE(log.changed_since("a", "a", 1));
  log.forget_before(log.last() + 1);
  EXPECT_FALSE(log.changed_since("a", "b", 0));
}

}  // namespace
}  // namespace standin
