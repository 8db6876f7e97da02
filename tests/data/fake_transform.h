// A daemon in memory: it keeps what is created and set, answers reads from it, and writes down
// every callback in order.
#pragma once

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <functional>
#include <map>
#include <set>
#include <string>
#include <vector>

#include "platform/standin/data/data.h"
#include "platform/standin/store/server_records.h"
#include "tests/store/temp_dir.h"

namespace standin::test {

class FakeTransform : public Callouts {
 public:
  explicit FakeTransform(const Schema& schema) : schema_(schema) {}

  std::vector<std::string> calls;                  // "create /snmp:snmp/target{a}"
  std::map<std::string, std::string> refuse;       // a call: the text it is refused with
  std::map<std::string, Value> answers;            // a leaf's path: what get_elem answers instead
  std::map<std::string, Serving> not_live;         // callpoints
  std::set<std::pair<std::string, Op>> lacks;      // callbacks that are not registered
  std::set<std::string> hidden;                    // entries whose key leaf reads as not there
  std::function<void(const std::string&)> during;  // runs inside each callback

  Serving serving(const std::string& point) override;
  bool has(const std::string& point, Op callback) override;
  Answer call(const std::string& point, Op callback, const NodePath& path,
              const Arguments& arguments) override;
  void validation(const std::string& point, bool start) override;

  std::vector<std::string> take_calls();

 private:
  void act(Op callback, const NodePath& path, const Arguments& arguments, Answer& answer);
  bool there(const std::string& text) const { return nodes_.count(text) != 0; }
  void next(const NodePath& list, std::int64_t after, Answer& answer) const;

  const Schema& schema_;
  std::map<std::string, std::pair<NodePath, Value>> nodes_;
  std::map<std::string, Value> cases_;  // "holder choice": the case
};

// A transaction's data over the real modules, with a fresh database.
class DataTest : public ::testing::Test {
 protected:
  DataTest();

  NodePath at(const std::string& path) const { return schema().resolve(parse_path(path)); }
  static Schema& schema();
  void create(const std::string& path) { data.create(at(path), Data::Ancestors::create); }
  void set(const std::string& path, const std::string& text) {
    data.set(at(path), Value::text(text), Data::Ancestors::create);
  }
  void set_list(const std::string& path, const std::vector<std::string>& texts);
  void remove(const std::string& path) { data.remove(at(path), Data::Ancestors::create); }
  // In the client's syntax; "not there" when it is not.
  std::string get(const std::string& path);
  // The text of the refusal; "" when there was none.
  static std::string refusal(const std::function<void()>& body);

 private:
  TempDir directory_;

 protected:
  std::unique_ptr<Store> store;
  CommitLog log;
  std::unique_ptr<WriteSet> writes;
  std::unique_ptr<Secrets> secrets;
  std::unique_ptr<StoredTree> stored;
  FakeTransform daemon;
  Data data;

 private:
  void open();
};

using Calls = std::vector<std::string>;

}  // namespace standin::test
