#include "platform/standin/store/store.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sqlite3.h>
#include <sys/wait.h>

#include <csignal>
#include <functional>

#include "platform/standin/store/server_records.h"
#include "platform/wire/file_descriptor.h"
#include "temp_dir.h"

namespace standin {
namespace {

using testing::HasSubstr;

// What a stream of batches looks like: batch n gives all its records the value n.
constexpr int kRecords = 50;

std::string record_key(int i) { return "record" + std::to_string(i); }

Batch numbered_batch(int n) {
  Batch batch;
  for (int i = 0; i < kRecords; ++i) batch[record_key(i)] = std::to_string(n);
  return batch;
}

TEST(Store, ReopenedHoldsWhatWasApplied) {
  const TempDir dir;
  const std::string zero("\0", 1);
  {
    const auto store = Store::open(dir / "db");
    store->apply({{"", "empty key"}, {zero, ""}, {"b", "1"}, {"c", "2"}});
    store->apply({{"b", "new"}, {"c", std::nullopt}, {"not there", std::nullopt}});
    store->close();
    EXPECT_THAT(refusal_of([&] { store->get("b"); }), HasSubstr("closed"));
  }
  const auto store = Store::open(dir / "db");
  EXPECT_EQ(store->get(""), "empty key");
  EXPECT_EQ(store->get(zero), "");
  EXPECT_EQ(store->get("c"), std::nullopt);
  EXPECT_EQ(store->seek("a"), Record("b", "new"));
  EXPECT_EQ(store->seek("b"), Record("b", "new"));
  EXPECT_EQ(store->next(""), Record(zero, ""));
  EXPECT_EQ(store->next("b"), std::nullopt);
}

TEST(Store, FilesAreTheOwnersAlone) {
  const TempDir dir;
  write_file(dir / "db", "");
  std::filesystem::permissions(dir / "db", std::filesystem::perms(0644));
  const auto store = Store::open(dir / "db");
  store->apply({{"a", "1"}});
  for (const char* name : {"db", "db-wal", "db-shm", "db-lock"})
    EXPECT_EQ(mode_of(dir / name), 0600U) << name;
}

void make_database(const std::string& file, const char* sql) {
  sqlite3* db = nullptr;
  ASSERT_EQ(sqlite3_open(file.c_str(), &db), SQLITE_OK);
  EXPECT_EQ(sqlite3_exec(db, sql, nullptr, nullptr, nullptr), SQLITE_OK);
  sqlite3_close(db);
}

TEST(Store, FilesThatAreNotThisDatabaseAreRefusedAndLeftAlone) {
  const TempDir dir;
  const struct {
    const char* name;
    std::function<void(const std::string&)> make;
    const char* reason;
  } cases[] = {
      {"text", [](auto& f) { write_file(f, std::string(2000, 'x')); }, "not a database"},
      {"other", [](auto& f) { make_database(f, "CREATE TABLE t (a)"); }, "another program"},
      {"marked", [](auto& f) { make_database(f, "PRAGMA application_id = 7"); }, "another program"},
      {"newer",
       [](auto& f) {
         Store::open(f);
         make_database(f, "PRAGMA user_version = 99");
       },
       "format 99"},
      {"directory", [](auto& f) { std::filesystem::create_directory(f); }, "directory"},
  };
  for (const auto& c : cases) {
    const std::string file = dir / c.name;
    c.make(file);
    const std::string before = read_file(file);
    const std::string text = refusal_of([&] { Store::open(file); });
    EXPECT_THAT(text, HasSubstr(file));
    EXPECT_THAT(text, HasSubstr(c.reason)) << c.name;
    EXPECT_EQ(text.find('\n'), std::string::npos) << c.name;
    EXPECT_EQ(read_file(file), before) << c.name;
  }
  EXPECT_THAT(refusal_of([&] { Store::open(dir / "text/db"); }), HasSubstr("Not a directory"));
  EXPECT_THAT(refusal_of([&] { Store::open(dir / "nowhere/db"); }), HasSubstr("No such file"));
}

// The child applies batches for ever and reports each on the pipe when the store has taken it.
[[noreturn]] void apply_for_ever(const std::string& file, int first, int pipe) {
  const auto store = Store::open(file);
  for (int n = first;; ++n) {
    store->apply(numbered_batch(n));
    if (::write(pipe, &n, sizeof n) != sizeof n) _exit(1);
  }
}

// Kills the child after `count` reports; returns the last batch that it reported, 0 for none.
int kill_after(const std::string& file, int first, int count) {
  int ends[2];
  if (::pipe(ends) != 0) return 0;
  const pid_t child = ::fork();
  if (child == 0) apply_for_ever(file, first, ends[1]);
  const FileDescriptor in(ends[0]);
  ::close(ends[1]);
  int n = 0, last = 0;
  while (::read(in.get(), &n, sizeof n) == sizeof n) {
    last = n;
    if (--count == 0) ::kill(child, SIGKILL);
  }
  ::waitpid(child, nullptr, 0);
  return last;
}

TEST(Store, KilledInAStreamOfBatchesLosesNoAcknowledgedOneAndKeepsNoneHalf) {
  const TempDir dir;
  int last = 0;
  for (int round = 0; round < 15; ++round) {
    const int acknowledged = kill_after(dir / "db", last + 1, 1 + round * 7 % 40);
    ASSERT_GT(acknowledged, last);
    const auto store = Store::open(dir / "db");
    last = std::stoi(store->get(record_key(0)).value_or("0"));
    EXPECT_GE(last, acknowledged);
    EXPECT_LE(last, acknowledged + 1);
    for (int i = 1; i < kRecords; ++i)
      ASSERT_EQ(store->get(record_key(i)), std::to_string(last)) << record_key(i);
  }
}

// ---- the server's own records

struct Records : testing::Test {
  Records() {
    top.name = "top", top.module = "m";
    first.name = "first", second.name = "second", third.name = "third";
    for (Node* n : {&first, &second, &third}) n->module = "m", n->parent = &top;
  }
  MemoryStore store;
  Node top, first, second, third;
};

TEST_F(Records, NumbersStayWhenNodesComeAndGo) {
  assign_node_ids({&top, &first, &second}, store);
  const auto number = second.id;
  EXPECT_NE(first.id, second.id);
  first.id = second.id = top.id = 0;
  assign_node_ids({&top, &third, &second}, store);
  EXPECT_EQ(second.id, number);
  EXPECT_GT(third.id, number);  // not the number of the node that went
  Node augmented = second;
  augmented.module = "other", augmented.id = 0;
  assign_node_ids({&augmented}, store);
  EXPECT_GT(augmented.id, third.id);
}

TEST_F(Records, DamagedOrUsedUpNumbersAreRefused) {
  const std::string path("\0\0/m:top/m:first", 16);
  for (const std::string& damaged :
       {std::string("\0\0", 2), std::string("x"), std::string("\xff\xf1")}) {
    store.records[path] = damaged;
    EXPECT_THAT(refusal_of([&] { assign_node_ids({&top}, store); }), HasSubstr("/m:top/m:first"));
  }
  store.records[path] = std::string("\xff\xf0");
  EXPECT_THAT(refusal_of([&] { assign_node_ids({&top}, store); }), HasSubstr("too many"));
  store.records[std::string("\0\0/m:top", 8)] = std::string("\xff\xf0");
  EXPECT_THAT(refusal_of([&] { assign_node_ids({&top}, store); }), HasSubstr("two nodes"));
}

}  // namespace
}  // namespace standin
