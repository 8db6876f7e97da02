#include "platform/standin/store/key_codec.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <random>

namespace standin {
namespace {

// Few different octets and numbers, so that values share heads and often meet.
class Random {
 public:
  std::size_t below(std::size_t n) { return engine_() % n; }

  std::string octets(std::size_t longest) {
    constexpr std::string_view kSome{"\0\1ab\xfe\xff", 6};
    std::string s;
    for (std::size_t n = below(longest + 1); n > 0; --n) s.push_back(kSome[below(kSome.size())]);
    return s;
  }

  std::uint64_t number() {
    const std::uint64_t n = engine_();
    return below(2) ? n : n >> below(64);
  }

  Value value(Type t) {
    switch (t) {
      case Type::int64: {
        const std::uint64_t n = number();
        return Value::signed_number(t, static_cast<std::int64_t>(below(2) ? n : 0 - n));
      }
      case Type::uint64:
        return Value::unsigned_number(t, number());
      case Type::buf:
        return Value::buf(octets(4));
      case Type::binary:
        return Value::octets(octets(4));
      case Type::boolean:
        return Value::boolean(below(2) == 0);
      case Type::oid: {
        Oid oid;
        for (std::size_t n = below(4); n > 0; --n)
          oid.push_back(static_cast<std::uint32_t>(below(2) ? below(3) : number()));
        return Value::oid(oid);
      }
      default:  // an address of either kind
        return Value::address(below(2) ? std::string(3, 'x') + static_cast<char>(below(256))
                                       : std::string(15, '\0') + static_cast<char>(below(256)));
    }
  }

 private:
  std::mt19937_64 engine_{testing::UnitTest::GetInstance()->random_seed() + 1U};
};

// What key order means, said without the codec. Addresses differ in type before all else.
int compare(const Value& a, const Value& b) {
  if (a.type() != b.type()) return a.type() < b.type() ? -1 : 1;
  const auto sign = [](const auto& x, const auto& y) { return x < y ? -1 : x == y ? 0 : 1; };
  switch (a.type()) {
    case Type::int64:
      return sign(a.number(), b.number());
    case Type::uint64:
      return sign(a.unsigned_number(), b.unsigned_number());
    case Type::boolean:
      return sign(a.boolean(), b.boolean());
    case Type::oid:
      return sign(a.oid(), b.oid());
    default:
      return sign(a.bytes(), b.bytes());
  }
}

int sign_of(int n) { return n < 0 ? -1 : n > 0 ? 1 : 0; }

class KeyOrder : public testing::TestWithParam<Type> {};

TEST_P(KeyOrder, BytesCompareAsValuesAndReadBack) {
  Random random;
  Node list;
  list.id = 300;
  for (int i = 0; i < 5000; ++i) {
    const Value a = random.value(GetParam());
    const Value b = random.value(GetParam());
    std::string key_a, key_b;
    append_value(key_a, a);
    append_value(key_b, b);
    ASSERT_EQ(sign_of(key_a.compare(key_b)), compare(a, b)) << to_text(a) << " | " << to_text(b);
    std::string row;
    append_step(row, {&list, {a, b}});
    std::string list_key;
    append_step(list_key, {&list, {}});
    ASSERT_EQ(entry_keys(row + "leaf", list_key, 2), (Level{a, b})) << to_text(a);
  }
}

INSTANTIATE_TEST_SUITE_P(EachType, KeyOrder,
                         testing::Values(Type::int64, Type::uint64, Type::buf, Type::binary,
                                         Type::boolean, Type::oid, Type::ipv4));

// A list with two keys, a leaf and a list of its own.
struct Nested : testing::Test {
  Nested() {
    outer.id = 0x0702;  // its octets look like a type's number
    leaf.id = 3;
    inner.id = 0xfff0;
  }

  NodePath random_path() {
    NodePath path{{{&outer, {random.value(Type::int64), random.value(Type::buf)}}}};
    if (random.below(2)) path.steps[0].keys[0] = Value::signed_number(Type::int64, -1);
    if (random.below(3) == 0) return path;
    if (random.below(2)) {
      path.steps.push_back({&leaf, {}});
    } else {
      path.steps.push_back({&inner, {random.value(Type::oid)}});
      if (random.below(2)) path.steps.push_back({&leaf, {}});
    }
    return path;
  }

  static int compare_paths(const NodePath& a, const NodePath& b) {
    for (std::size_t i = 0; i < std::min(a.steps.size(), b.steps.size()); ++i) {
      if (a.steps[i].node != b.steps[i].node)
        return a.steps[i].node->id < b.steps[i].node->id ? -1 : 1;
      for (std::size_t k = 0; k < a.steps[i].keys.size(); ++k)
        if (const int c = compare(a.steps[i].keys[k], b.steps[i].keys[k])) return c;
    }
    return sign_of(static_cast<int>(a.steps.size()) - static_cast<int>(b.steps.size()));
  }

  static bool at_or_below(const NodePath& path, const NodePath& top) {
    return path.steps.size() >= top.steps.size() &&
           std::equal(top.steps.begin(), top.steps.end(), path.steps.begin());
  }

  Random random;
  Node outer, leaf, inner;
};

TEST_F(Nested, KeysOfNestedListsStandInTreeOrderAndInTheirRanges) {
  for (int i = 0; i < 5000; ++i) {
    const NodePath a = random_path();
    const NodePath b = random_path();
    const std::string key_a = store_key(a);
    const std::string key_b = store_key(b);
    ASSERT_EQ(sign_of(key_a.compare(key_b)), compare_paths(a, b));
    ASSERT_EQ(key_a >= key_b && key_a <= range_end(key_b), at_or_below(a, b));
    const std::string attribute = attribute_key(key_a, 7);
    ASSERT_TRUE(attribute > content_end(key_a) && attribute < range_end(key_a));
    ASSERT_EQ(attribute_number(attribute, key_a), 7U);
    ASSERT_EQ(attribute_number(key_b, key_a), std::nullopt);
  }
}

TEST_F(Nested, DamagedKeysGiveNothing) {
  const NodePath row{{{&outer, {Value::oid({1, 2}), Value::buf(std::string("a\0b", 3))}}}};
  const std::string key = store_key(row);
  const std::string list_key = store_key(NodePath{{{&outer, {}}}});
  ASSERT_TRUE(entry_keys(key, list_key, 2));
  for (std::size_t n = 0; n < key.size(); ++n)
    EXPECT_FALSE(entry_keys(key.substr(0, n), list_key, 2)) << "cut to " << n;
  for (const std::string& octets :
       {list_key + "\x63", list_key + std::string("\6a\0\1\0\0", 6),
        list_key + std::string("\x12\2", 2), list_key + std::string("\x26\2\0\0\0\1\0", 7)})
    EXPECT_FALSE(entry_keys(octets, list_key, 1));
}

TEST(KeyCodec, ValuesWithoutAnOrderAreRefused) {
  std::string key;
  for (const Value& v : {Value(), Value::text("unread"), Value::list({}), Value::tag({1, 2})})
    EXPECT_THROW(append_value(key, v), Refusal) << to_text(v);
}

}  // namespace
}  // namespace standin
