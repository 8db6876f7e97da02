// The generated headers agree with the schema and with the wire.
#include <gtest/gtest.h>

#include <map>

#include "model/attribute-tags.h"
#include "model/snmp-tags.h"
#include "schema_fixture.h"

namespace standin {
namespace {

namespace tag = quillet::tags::snmp;

TEST(Tags, HeadersHoldTheNumbersOfTheNames) {
  EXPECT_EQ(tag::from_mac_address, tag_number("from-mac-address"));
  EXPECT_EQ(quillet::tags::quillet_attributes::attr_list, tag_number("attr-list"));
  EXPECT_EQ(tag::ns, node_at("/snmp").tag.ns);
  EXPECT_EQ(quillet::tags::quillet_attributes::ns, node_at("/attr-list").tag.ns);
}

TEST(Tags, NumbersAreUnique) {
  std::map<std::uint32_t, std::string> names;
  for (const auto& n : product_schema().compact().nodes) {
    EXPECT_EQ(n.tag.tag, tag_number(n.name));
    EXPECT_EQ(names.emplace(n.tag.tag, n.name).first->second, n.name);
  }
  EXPECT_GT(names.size(), 150U);
}

}  // namespace
}  // namespace standin
