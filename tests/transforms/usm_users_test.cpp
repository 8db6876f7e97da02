#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "transforms/snmp-usm-internal.h"

namespace quillet {
namespace {

Value oid_of(const std::vector<u_int32_t>& components) {
  confd_snmp_oid oid{};
  for (const u_int32_t c : components) oid.oid[oid.len++] = c;
  confd_value_t v;
  CONFD_SET_OID(&v, &oid);
  return Value::copy_of(v);
}

TEST(UsmProtocol, NinthAndTenthNumberTell) {
  struct Case {
    int status;
    u_int32_t family, last;
  };
  const Case cases[] = {
      {PROTO_NONE, 1, 1},    {int{tags::snmp::md5}, 1, 2}, {int{tags::snmp::sha}, 1, 3},
      {PROTO_UNKNOWN, 1, 4}, {PROTO_NONE, 2, 1},           {int{tags::snmp::des}, 2, 2},
      {PROTO_UNKNOWN, 2, 3}, {int{tags::snmp::aes}, 2, 4}, {PROTO_UNKNOWN, 3, 2},
      {PROTO_UNKNOWN, 0, 1},
  };
  for (const Case& c : cases) {
    const Value odd = oid_of({9, 9, 9, 9, 9, 9, 9, 9, c.family, c.last, 7});
    EXPECT_EQ(_get_protocol_tag_from_oid(odd.get()), c.status) << c.family << "." << c.last;
  }
  EXPECT_EQ(_get_protocol_tag_from_oid(oid_of({1, 3, 6, 1, 6, 3, 10, 1, 1}).get()), PROTO_UNKNOWN);
}

TEST(UsmProtocol, OidOfSideAndCase) {
  struct Built {
    u_int32_t side;
    int protocol;
    u_int32_t family, last;
  };
  const Built cases[] = {
      {tags::snmp::auth, int{tags::snmp::md5}, 1, 2},
      {tags::snmp::auth, int{tags::snmp::sha}, 1, 3},
      {tags::snmp::priv, int{tags::snmp::des}, 2, 2},
      {tags::snmp::priv, int{tags::snmp::aes}, 2, 4},
      {tags::snmp::auth, PROTO_NONE, 1, 1},
      {tags::snmp::priv, PROTO_NONE, 2, 1},
      {tags::snmp::priv, int{tags::snmp::name}, 2, 1},
      {tags::snmp::name, int{tags::snmp::sha}, 0, 3},
  };
  for (const Built& c : cases) {
    Value built;
    usm_protocol_oid(c.side, c.protocol, built);
    const Value expected = oid_of({1, 3, 6, 1, 6, 3, 10, 1, c.family, c.last});
    EXPECT_EQ(confd_val_eq(built.get(), expected.get()), 1) << c.side << " " << c.protocol;
  }
}

}  // namespace
}  // namespace quillet
