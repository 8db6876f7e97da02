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
  const std::vector<std::pair<std::uint32_t, std::string>> kTags = {
      {tag::community, "community"},
      {tag::sec_name, "sec-name"},
      {tag::params, "params"},
      {tag::from_mac_address, "from-mac-address"},
      {tag::key_type, "key-type"},
      {tag::v2c, "v2c"},
      {tag::included, "included"},
      {tag::secure_transport, "secure-transport"},
      {quillet::tags::quillet_attributes::attr_list, "attr-list"},
  };
  for (const auto& [number, name] : kTags) EXPECT_EQ(number, tag_number(name)) << name;
  EXPECT_EQ(tag::ns, node_at("/snmp").tag.ns);
  EXPECT_EQ(quillet::tags::quillet_attributes::ns, node_at("/attr-list").tag.ns);
  EXPECT_NE(tag::ns, quillet::tags::quillet_attributes::ns);
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
