#include <confd_maapi.h>
#include <gtest/gtest.h>

#include "daemon_fixture.h"

namespace standin {
namespace {

constexpr int kHandle = 8;

// A server with one list "/t:table/row{name}", each row with the leaf "value" when it has one.
struct Table {
  std::mutex lock;
  std::map<std::string, std::string> rows;  // an empty value: no leaf
  std::uint64_t changes = 0;
  std::vector<Op> requests;
  bool behind_daemon = false;  // whose leaves come one by one

  std::string answer(Op op, FrameReader& r) {
    const std::scoped_lock guard(lock);
    requests.push_back(op);
    r.number();
    const Path path = r.path();
    switch (op) {
      case Op::next_rows:
        return next_rows(r);
      case Op::get_elem: {
        const auto row = rows.find(path[2].keys[0].bytes());
        if (row == rows.end() || row->second.empty())
          return refusal(ErrorCode::noexists).put("not there").take();
        return ok_answer(changes).put(Value::buf(row->second)).take();
      }
      case Op::remove:
        rows.erase(path[2].keys[0].bytes());
        break;
      default:
        break;
    }
    return ok_answer(++changes).take();
  }

  std::string next_rows(FrameReader& r) {
    auto from = rows.begin();
    if (!r.skip_nil()) from = rows.upper_bound(r.level()[0].bytes());
    const std::uint64_t most = r.number();
    const bool leaves = r.boolean() && !behind_daemon;
    std::vector<decltype(from)> sent;
    for (; from != rows.end() && sent.size() < most; ++from) sent.push_back(from);
    FrameWriter w = ok_answer(changes);
    w.put(from == rows.end()).array(sent.size());
    for (const auto& row : sent) {
      w.array(2).put(Level{Value::buf(row->first)});
      w.array(!leaves ? 0 : row->second.empty() ? 1 : 2);
      if (!leaves) continue;
      w.array(2).put(Value::tag(tag_of("name"))).put(Value::buf(row->first));
      if (!row->second.empty())
        w.array(2).put(Value::tag(tag_of("value"))).put(Value::buf(row->second));
    }
    return w.take();
  }

  std::size_t count(Op op) {
    const std::scoped_lock guard(lock);
    return static_cast<std::size_t>(std::count(requests.begin(), requests.end(), op));
  }
};

class ReadAheadTest : public DaemonFixture {
 protected:
  ReadAheadTest() : ReadAheadTest(std::make_shared<Table>()) {}
  explicit ReadAheadTest(std::shared_ptr<Table> table)
      : DaemonFixture([table](Op op, FrameReader& r) { return table->answer(op, r); }),
        table_(std::move(table)) {}

  void SetUp() override {
    DaemonFixture::SetUp();
    for (Socket* sock : {&maapi_, &other_})
      ASSERT_EQ(maapi_connect(*sock, peer_.address(), Peer::address_size()), CONFD_OK);
    begin(kHandle);
  }

  void fill(int n) {
    for (int i = 0; i < n; ++i) {
      const std::string key = "r" + std::to_string(1000 + i);
      table_->rows[key] = "v" + key;
    }
  }

  // Runs `body` inside a callback whose request carries the table's change count.
  void inside(const std::function<void()>& body) {
    on_create = [&](auto*, auto*) { return body(), CONFD_OK; };
    ASSERT_EQ(serve(callback(Op::cb_create, kHandle, table_->changes)), CONFD_OK);
    ASSERT_EQ(reply_kind(), ReplyKind::ok);
  }

  struct Cursor {
    explicit Cursor(int sock) { maapi_init_cursor(sock, kHandle, &mc, "/t:table/row"); }
    ~Cursor() { maapi_destroy_cursor(&mc); }
    // The next row's key, or "" at the end.
    std::string next() {
      EXPECT_EQ(maapi_get_next(&mc), CONFD_OK);
      return mc.n == 0 ? "" : std::string(reinterpret_cast<char*>(CONFD_GET_BUFPTR(&mc.keys[0])));
    }
    maapi_cursor mc;
  };

  std::string leaf(const std::string& key, const char* name = "value") {
    confd_value_t k, v;
    CONFD_SET_STR(&k, key.c_str());
    if (maapi_get_elem(maapi_, kHandle, &v, "/t:table/row{%x}/%s", &k, name) != CONFD_OK)
      return "error " + std::to_string(confd_errno);
    const std::string text(reinterpret_cast<char*>(CONFD_GET_BUFPTR(&v)), CONFD_GET_BUFSIZE(&v));
    confd_free_value(&v);
    return text;
  }

  std::shared_ptr<Table> table_;
  Socket maapi_, other_;
};

TEST_F(ReadAheadTest, WalksAndTheirColumnsCostFewFrames) {
  const struct {
    const char* what;
    bool behind_daemon;
    std::vector<bool> walks;  // each with its column read, or not
    std::size_t requests, single_reads;
  } cases[] = {{"a column after keys alone", false, {false, true}, 20, 1},
               {"a column", false, {true}, 10, 0},
               {"nothing changed in between", false, {true, true}, 10, 0},
               {"leaves that a daemon answers one by one", true, {true}, 310, 300}};
  for (const auto& c : cases) {
    SCOPED_TRACE(c.what);
    ++table_->changes;
    table_->requests.clear();
    fill(300);
    table_->behind_daemon = c.behind_daemon;
    for (const bool column : c.walks) {
      inside([&] {
        Cursor cursor(maapi_);
        int rows = 0;
        for (std::string key = cursor.next(); !key.empty(); key = cursor.next(), ++rows) {
          if (column) {
            EXPECT_EQ(leaf(key), "v" + key);
          }
        }
        EXPECT_EQ(rows, 300);
        EXPECT_EQ(cursor.next(), "");
      });
    }
    EXPECT_LE(table_->requests.size(), c.requests);
    EXPECT_EQ(table_->count(Op::get_elem), c.single_reads);
  }
}

TEST_F(ReadAheadTest, OwnWriteOnAnySocketMakesItStale) {
  fill(6);
  inside([&] {
    Cursor c(maapi_);
    EXPECT_EQ(c.next(), "r1000");
    EXPECT_EQ(maapi_delete(maapi_, kHandle, "/t:table/row{r1001}"), CONFD_OK);
    EXPECT_EQ(c.next(), "r1002");
    EXPECT_EQ(maapi_delete(other_, kHandle, "/t:table/row{r1003}"), CONFD_OK);
    EXPECT_EQ(leaf("r1003"), "error 1");
    EXPECT_EQ(c.next(), "r1004");
    EXPECT_EQ(maapi_delete(maapi_, kHandle, "/t:table/row{r1004}"), CONFD_OK);
    EXPECT_EQ(c.next(), "r1005");  // goes on behind a row that is gone
    EXPECT_EQ(c.next(), "");
  });
}

TEST_F(ReadAheadTest, ForeignChangeMakesItStaleBetweenCallbacksAndWhenAnAnswerTellsOfIt) {
  fill(3);
  Cursor c(maapi_);
  inside([&] {
    EXPECT_EQ(c.next(), "r1000");
    EXPECT_EQ(leaf("r1001"), "vr1001");
  });
  table_->rows = {{"r1001", "new"}, {"r1001b", "x"}, {"r1002", "y"}};
  ++table_->changes;
  inside([&] {
    EXPECT_EQ(leaf("r1001"), "new");
    EXPECT_EQ(c.next(), "r1001");
    table_->rows.erase("r1001b");
    ++table_->changes;
    EXPECT_EQ(leaf("r1001", "elsewhere"), "new");  // asked for, and brings the new count
    EXPECT_EQ(c.next(), "r1002");
    EXPECT_EQ(c.next(), "");
  });
}

TEST_F(ReadAheadTest, EndedTransactionLeavesNothingToTheNextOfItsHandle) {
  fill(2);
  inside([&] { EXPECT_EQ(Cursor(maapi_).next(), "r1000"); });
  ASSERT_EQ(control(Op::trans_finish, kHandle), CONFD_OK);
  peer_.receive(SocketKind::control);
  table_->rows = {{"other", "x"}};  // with the count of before
  begin(kHandle);
  inside([&] { EXPECT_EQ(Cursor(maapi_).next(), "other"); });
}

TEST_F(ReadAheadTest, AbsentLeafAndAbsentRowAreNotThere) {
  table_->rows = {{"a", ""}, {"b", "x"}};
  inside([&] {
    Cursor c(maapi_);
    EXPECT_EQ(c.next(), "a");
    EXPECT_EQ(leaf("a"), "error 1");
    EXPECT_EQ(leaf("b"), "x");
    EXPECT_EQ(leaf("c"), "error 1");
    EXPECT_EQ(leaf("b", "name"), "b");
  });
}

TEST_F(ReadAheadTest, OutsideCallbacksNothingIsAssumed) {
  fill(3);
  Cursor c(maapi_);
  EXPECT_EQ(c.next(), "r1000");
  table_->rows.erase("r1001");  // no count tells of it
  EXPECT_EQ(c.next(), "r1002");
  table_->rows["r1002"] = "new";
  EXPECT_EQ(leaf("r1002"), "new");
  EXPECT_EQ(c.next(), "");
}

TEST_F(ReadAheadTest, DestroyedTwiceOrUnopenedCursorIsHarmless) {
  maapi_cursor mc;
  EXPECT_EQ(maapi_init_cursor(maapi_, kHandle, &mc, "no path"), CONFD_ERR);
  maapi_destroy_cursor(&mc);
  maapi_destroy_cursor(&mc);
  EXPECT_EQ(maapi_get_next(&mc), CONFD_ERR);
  EXPECT_EQ(confd_errno, CONFD_ERR_APIUSE);
}

}  // namespace
}  // namespace standin
