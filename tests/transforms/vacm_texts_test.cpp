#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <vector>

#include "transforms/security-model.h"
#include "transforms/vacm-conflicts.h"
#include "transforms/vacm-views.h"

namespace quillet {
namespace {

std::string key(int model, const std::string& name, const std::string& group) {
  return conflict_key(int32_value(model), buf_value(name), buf_value(group));
}

TEST(ConflictKey, TwoTriplesNeverGiveOneText) {
  const std::string names[] = {"a", "a;b", "b", ";", "\"a\"", "\"", "\\", "a;\"b", "", "a\";\"b"};
  std::vector<std::string> keys;
  for (const int model : {0, 1}) {
    for (const std::string& name : names) {
      for (const std::string& group : names) keys.push_back(key(model, name, group));
    }
  }
  std::sort(keys.begin(), keys.end());
  EXPECT_EQ(std::adjacent_find(keys.begin(), keys.end()), keys.end());
}

TEST(ConflictKey, LongNamesAreKeptWhole) {
  const std::string name(400, 'n'), group(300, 'g');
  EXPECT_EQ(key(2147483647, name, group), "2147483647;" + name + ";" + group);
}

TEST(SecurityModel, ConvertsLabelledModelsOnly) {
  for (const int number : {0, 1, 2, 3}) {
    confd_value_t v = int32_value(number);
    tr_sec_model_to_yang(&v);
    ASSERT_EQ(v.type, C_ENUM_VALUE) << number;
    tr_sec_model_to_mib(&v);
    ASSERT_EQ(v.type, C_INT32) << number;
    EXPECT_EQ(CONFD_GET_INT32(&v), number);
  }
  for (const int number : {-1, 4, 2147483647}) {
    confd_value_t v = int32_value(number);
    tr_sec_model_to_yang(&v);
    EXPECT_EQ(v.type, C_INT32) << number;
  }
  confd_value_t text = buf_value("1");
  tr_sec_model_to_mib(&text);
  tr_sec_model_to_yang(&text);
  EXPECT_EQ(text.type, C_BUF);
  tr_sec_model_to_mib(nullptr);
  tr_sec_model_to_yang(nullptr);
}

TEST(ViewSubtree, OidThatPrintsTooLongHasNoText) {
  confd_snmp_oid longest{};
  longest.len = 128;
  for (u_int32_t& number : longest.oid) number = 1;
  confd_value_t v;
  CONFD_SET_OID(&v, &longest);
  EXPECT_EQ(oid_to_subtree_text(v)->type, C_BUF) << "128 digits and 127 dots";
  longest.oid[0] = 10;
  EXPECT_EQ(oid_to_subtree_text(v)->type, C_NOEXISTS);
}

}  // namespace
}  // namespace quillet
