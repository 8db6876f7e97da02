#include "platform/standin/store/stored_tree.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "platform/standin/store/key_codec.h"
#include "platform/standin/store/server_records.h"
#include "platform/wire/cipher.h"
#include "temp_dir.h"

namespace standin {
namespace {

using testing::HasSubstr;
using testing::Not;

constexpr const char* kRow = "/t:box/row{1 a}";

// One transaction, with the operations of StoredTree on paths and texts.
class Session {
 public:
  Session(const Schema& schema, Store& store, const CommitLog& log, const Secrets& secrets)
      : schema_(schema), writes(store, log), tree(schema, writes, secrets) {}

  NodePath at(const std::string& path) const { return schema_.resolve(parse_path(path)); }
  bool exists(const std::string& path) { return tree.exists(at(path)); }
  void create(const std::string& path) { tree.create(at(path)); }
  void remove(const std::string& path) { tree.remove(at(path)); }
  void set(const std::string& path, const std::string& text) {
    tree.set(at(path), Value::text(text));
  }
  void set_list(const std::string& path, const std::vector<std::string>& texts) {
    std::vector<Value> items;
    for (const auto& t : texts) items.push_back(Value::text(t));
    tree.set(at(path), Value::list(items));
  }
  // The value printed; "-" for none.
  std::string get(const std::string& path) {
    const auto v = tree.get(at(path));
    return v ? to_text(*v) : "-";
  }
  std::string selected(const std::string& choice) {
    const NodePath row = at(kRow);
    const auto c = tree.selected(row, *schema_.find_choice(row.node(), choice));
    return c ? (*c)->name : "-";
  }
  // Keys of all entries, in the order of the walk.
  std::vector<std::string> walk(const std::string& list) {
    std::vector<std::string> entries;
    const NodePath path = at(list);
    for (auto keys = tree.next(path, nullptr); keys; keys = tree.next(path, &*keys)) {
      std::string text;
      for (const Value& v : *keys) text += (text.empty() ? "" : " ") + to_text(v);
      entries.push_back(text);
    }
    return entries;
  }
  void commit(Store& store, CommitLog& log) {
    store.apply(writes.writes());
    log.record(writes.writes());
    writes.clear();
  }

 private:
  const Schema& schema_;

 public:
  WriteSet writes;
  StoredTree tree;
};

class Tree : public testing::Test {
 protected:
  static void SetUpTestSuite() { schema = Schema::load({MODULES, TEST_MODULES}).release(); }
  static void TearDownTestSuite() { delete std::exchange(schema, nullptr); }

  Tree() : secrets(dir / "key", false), t(open()) { t.create(kRow); }

  // Numbers come from the store, so they are given before the first operation.
  Session open() {
    assign_node_ids(schema->all(), store);
    return Session(*schema, store, log, secrets);
  }
  std::string row(const std::string& below) const { return kRow + ("/" + below); }

  template <typename F>
  void expect_refused(ErrorCode code, const std::string& text, F f) {
    const Batch before = t.writes.writes();
    try {
      f();
      ADD_FAILURE() << "accepted; expected: " << text;
    } catch (const Refusal& r) {
      EXPECT_EQ(r.code, code) << r.what();
      EXPECT_THAT(r.what(), HasSubstr(text));
    }
    EXPECT_EQ(t.writes.writes(), before) << "a refused operation wrote something";
  }

  static inline Schema* schema = nullptr;
  TempDir dir;
  MemoryStore store;
  CommitLog log;
  Secrets secrets;
  Session t;
};

TEST_F(Tree, DefaultsAreThereWhileTheParentIs) {
  const struct {
    const char* path;
    const char* absent;  // what its parent is made by, if anything
    const char* value;
  } cases[] = {{"/t:box/timeout", nullptr, "7"},
               {"/t:box/row{2 b}/colour", "/t:box/row{2 b}", "red"},
               {"/t:box/row{1 a}/extra/depth", "/t:box/row{1 a}/extra", "3"}};
  for (const auto& c : cases) {
    if (c.absent) {
      EXPECT_EQ(t.get(c.path), "-") << c.path;
      EXPECT_FALSE(t.exists(c.path)) << c.path;
      t.create(c.absent);
    }
    EXPECT_EQ(t.get(c.path), c.value);
    EXPECT_TRUE(t.exists(c.path)) << c.path;
    t.set(c.path, "9");
    EXPECT_EQ(t.get(c.path), "9");
    t.remove(c.path);
    t.remove(c.path);  // holds its default: done
    EXPECT_EQ(t.get(c.path), c.value);
  }
}

TEST_F(Tree, WritesBelowAbsentAncestorsNameTheAncestor) {
  const struct {
    const char* path;
    const char* ancestor;
  } cases[] = {{"/t:box/row{9 z}/colour", "row{9 z} does not exist"},
               {"/t:box/row{9 z}/side/left", "row{9 z} does not exist"},
               {"/t:box/row{9 z}/extra/depth", "row{9 z} does not exist"},
               {"/t:box/row{1 a}/extra/depth", "row{1 a}/extra does not exist"},
               {"/t:box/row{1 a}/part{1}/text", "row{1 a}/part{1} does not exist"}};
  for (const auto& c : cases) {
    expect_refused(ErrorCode::noexists, c.ancestor, [&] { t.set(c.path, "1"); });
    expect_refused(ErrorCode::noexists, c.ancestor, [&] { t.remove(c.path); });
  }
  expect_refused(ErrorCode::noexists, "row{9 z}", [&] { t.create("/t:box/row{9 z}/part{1}"); });
}

TEST_F(Tree, CreateRefusesWhatIsThereAndWhatIsOnlyWritten) {
  for (const char* path : {"extra", "flag", "part{3}", "ports{x}"}) {
    EXPECT_FALSE(t.exists(row(path))) << path;
    t.create(row(path));
    EXPECT_TRUE(t.exists(row(path))) << path;
    expect_refused(ErrorCode::already_exists, std::string(path) + " already exists",
                   [&] { t.create(row(path)); });
  }
  for (const char* path : {"colour", "side", "tags"})
    expect_refused(ErrorCode::badtype, path, [&] { t.create(row(path)); });
}

TEST_F(Tree, KeyLeavesAnswerFromThePathAndKeepTheirValue) {
  EXPECT_EQ(t.get(row("size")), "1");
  EXPECT_EQ(t.get(row("name")), "a");
  EXPECT_EQ(t.get("/t:box/row{2 b}/name"), "-");
  t.set(row("size"), "1");
  expect_refused(ErrorCode::badvalue, "size", [&] { t.set(row("size"), "2"); });
  expect_refused(ErrorCode::access, "name", [&] { t.remove(row("name")); });
}

TEST_F(Tree, RefusedValuesAreNotStored) {
  t.create(row("extra"));
  expect_refused(ErrorCode::badvalue, "depth", [&] { t.set(row("extra/depth"), "256"); });
  expect_refused(ErrorCode::badtype, "extra", [&] { t.set(row("extra"), "1"); });
  expect_refused(ErrorCode::badvalue, "twice", [&] { t.set_list(row("tags"), {"a", "a"}); });
}

TEST_F(Tree, WriteInAnotherCaseTakesTheOldOneAway) {
  const struct {
    const char* write;  // one after another, a leaf each
    const char* kind;
    const char* inner;
    std::vector<std::string> there;
  } steps[] = {{"a", "one", "-", {"a"}},
               {"b", "one", "inner:b", {"a", "b"}},
               {"c", "one", "inner:c", {"a", "c"}},
               {"d/e", "two", "-", {"d/e"}},
               {"f", "f", "-", {"f"}},
               {"b", "one", "inner:b", {"b"}}};
  EXPECT_EQ(t.selected("kind"), "-");
  for (const auto& step : steps) {
    SCOPED_TRACE(step.write);
    t.set(row(step.write), "x");
    EXPECT_EQ(t.selected("kind"), step.kind);
    const std::string inner = t.selected("inner");
    EXPECT_EQ(inner == "-" ? inner : "inner:" + inner, step.inner);
    for (const char* leaf : {"a", "b", "c", "d/e", "f"})
      EXPECT_EQ(t.exists(row(leaf)),
                std::find(step.there.begin(), step.there.end(), leaf) != step.there.end())
          << leaf;
  }
}

TEST_F(Tree, RemoveTakesAllBelowWithAttributes) {
  const Value text = Value::text("remark");
  const auto fill = [&] {
    t.set(row("colour"), "blue");
    t.set(row("side/deep/right"), "r");
    t.create(row("extra"));
    t.create(row("part{1}"));
    t.set(row("part{1}/text"), "p");
    for (const char* path : {"", "/colour", "/side", "/side/deep", "/extra", "/part{1}", "/name"})
      t.tree.set_attribute(t.at(kRow + std::string(path)), 1, &text);
  };
  const std::size_t bare = t.writes.writes().size();
  fill();
  for (const char* path : {"colour", "side", "extra", "part{1}"}) {
    t.remove(row(path));
    EXPECT_TRUE(t.exists(kRow));
  }
  EXPECT_FALSE(t.exists(row("side")));
  expect_refused(ErrorCode::noexists, "extra does not exist", [&] { t.remove(row("extra")); });
  expect_refused(ErrorCode::noexists, "part{1} does not exist", [&] { t.remove(row("part{1}")); });
  t.remove(row("side"));  // without presence: nothing to do
  fill();
  t.remove(kRow);
  EXPECT_GT(t.writes.writes().size(), bare);
  for (const auto& [key, value] : t.writes.writes()) EXPECT_FALSE(value);
  EXPECT_FALSE(t.exists("/t:box"));
}

TEST_F(Tree, ContainersWithoutPresenceLoseTheirAttributesWithTheirContent) {
  const Value text = Value::text("remark");
  t.set(row("side/deep/right"), "r");
  t.tree.set_attribute(t.at(row("side")), 1, &text);
  t.remove(row("side/deep/right"));
  EXPECT_FALSE(t.exists(row("side")));
  t.set(row("side/left"), "l");
  EXPECT_TRUE(t.tree.attributes(t.at(row("side"))).empty());
}

TEST_F(Tree, LeafListsKeepTheirOrderOrKeyOrder) {
  EXPECT_EQ(t.get(row("ports")), "-");
  t.set_list(row("ports"), {"c", "a", "b"});
  t.set_list(row("tags"), {"c", "a", "b"});
  EXPECT_EQ(t.get(row("ports")), "c a b");
  EXPECT_EQ(t.get(row("tags")), "a b c");
  t.create(row("ports{aa}"));
  t.create(row("tags{aa}"));
  EXPECT_EQ(t.walk(row("ports")), (std::vector<std::string>{"c", "a", "b", "aa"}));
  EXPECT_EQ(t.walk(row("tags")), (std::vector<std::string>{"a", "aa", "b", "c"}));
  const Value text = Value::text("remark");
  for (const char* gone : {"ports{a}", "ports{c}"}) t.tree.set_attribute(t.at(row(gone)), 1, &text);
  t.remove(row("ports{a}"));
  EXPECT_FALSE(t.exists(row("ports{a}")));
  t.set_list(row("ports"), {"a"});
  EXPECT_EQ(t.get(row("ports{a}")), "a");
  EXPECT_TRUE(t.tree.attributes(t.at(row("ports{a}"))).empty());
  expect_refused(ErrorCode::noexists, "ports{c}", [&] { t.remove(row("ports{c}")); });
  t.set_list(row("ports"), {});
  EXPECT_EQ(t.tree.get(t.at(row("ports"))), Value::list({}));
  EXPECT_FALSE(t.exists(row("ports")));
  t.remove(row("ports"));
  EXPECT_EQ(t.get(row("ports")), "-");
}

TEST_F(Tree, WalkIsInKeyOrderOverStoreAndWritesWithOneSeekARow) {
  const std::vector<std::string> stored = {"-5 z", "2 a", "10 a", "10 aa"};
  for (const auto& keys : stored) {
    t.create("/t:box/row{" + keys + "}");
    t.set("/t:box/row{" + keys + "}/side/left", "x");
  }
  t.commit(store, log);
  store.seeks = 0;
  EXPECT_EQ(t.walk("/t:box/row"),
            (std::vector<std::string>{"-5 z", "1 a", "2 a", "10 a", "10 aa"}));
  EXPECT_EQ(store.seeks, 6);
  t.create("/t:box/row{3 \"\"}");
  t.remove("/t:box/row{10 a}");
  EXPECT_EQ(t.walk("/t:box/row"), (std::vector<std::string>{"-5 z", "1 a", "2 a", "3 ", "10 aa"}));
  const Level between{Value::int32(2), Value::buf("b")};  // not there: a position all the same
  EXPECT_EQ(t.tree.next(t.at("/t:box/row"), &between), (Level{Value::int32(3), Value::buf("")}));
}

TEST_F(Tree, AttributesNeedTheirNode) {
  const Value words = Value::list({Value::text("a"), Value::text("b")});
  for (const char* absent : {"flag", "extra", "part{1}", "side", "ports{x}", "note"}) {
    const std::string path = absent == std::string("note") ? "/t:box/note" : row(absent);
    expect_refused(ErrorCode::noexists, absent,
                   [&] { t.tree.set_attribute(t.at(path), 1, &words); });
    expect_refused(ErrorCode::noexists, absent, [&] { t.tree.attributes(t.at(path)); });
  }
  for (const char* there : {"name", "colour"}) {
    const NodePath path = t.at(row(there));
    t.tree.set_attribute(path, 0xffffffff, &words);
    t.tree.set_attribute(path, 2, &words);
    t.tree.set_attribute(path, 2, nullptr);
    t.tree.set_attribute(path, 3, nullptr);
    EXPECT_EQ(t.tree.attributes(path),
              (Attributes{{0xffffffff, Value::list({Value::buf("a"), Value::buf("b")})}}));
  }
}

TEST_F(Tree, EncryptedLeavesAreNeverKeptInTheClear) {
  t.set(row("password"), "maplesyrup");
  const std::string form = t.get(row("password"));
  EXPECT_EQ(decrypt_text(form, secrets.key()), "maplesyrup");
  for (const auto& [key, value] : t.writes.writes())
    EXPECT_THAT(value.value_or(""), Not(HasSubstr("maplesyrup")));
  t.set(row("password"), form);  // longer than the type admits, and kept as it is
  EXPECT_EQ(t.get(row("password")), form);
}

TEST_F(Tree, DamagedRecordsRefuseTheRead) {
  t.set(row("colour"), "blue");
  t.writes.put(store_key(t.at(row("colour"))), "\xc1");
  EXPECT_THAT(refusal_of([&] { t.get(row("colour")); }), HasSubstr("colour"));
}

// Another transaction commits between this one's operation and its commit.
TEST_F(Tree, CommitsInBetweenAreConflictsWhenTheyMeet) {
  t.commit(store, log);
  const struct {
    const char* name;
    std::function<void(Session&)> own;
    std::function<void(Session&)> other;
    bool conflict;
  } cases[] = {
      {"leaf of a row that goes", [&](Session& s) { s.set(row("colour"), "x"); },
       [&](Session& s) { s.remove(kRow); }, true},
      {"two cases", [&](Session& s) { s.set(row("a"), "x"); },
       [&](Session& s) { s.set(row("d/e"), "x"); }, true},
      {"leaf added to a row that goes", [&](Session& s) { s.remove(kRow); },
       [&](Session& s) { s.set(row("colour"), "x"); }, true},
      {"default that was read", [&](Session& s) { s.get(row("colour")); },
       [&](Session& s) { s.set(row("colour"), "x"); }, true},
      {"rows seen by a walk", [](Session& s) { s.walk("/t:box/row"); },
       [&](Session& s) { s.remove(kRow); }, false},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.name);
    const auto before = store.records;
    Session own = open();
    Session other = open();
    c.own(own);
    c.other(other);
    EXPECT_FALSE(own.writes.conflicts());
    other.commit(store, log);
    EXPECT_EQ(own.writes.conflicts(), c.conflict);
    store.records = before;
  }
}

}  // namespace
}  // namespace standin
