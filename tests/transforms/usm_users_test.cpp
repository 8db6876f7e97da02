#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "transforms/snmp-usm-internal.h"

namespace quillet {
namespace {

constexpr char kRow[] =
    "/SNMP_USER_BASED_SM_MIB:SNMP-USER-BASED-SM-MIB/usmUserTable/usmUserEntry{%x %x}/usm-crypto";

Value oid_of(const std::vector<u_int32_t>& components) {
  confd_snmp_oid oid{};
  for (const u_int32_t c : components) oid.oid[oid.len++] = c;
  confd_value_t v;
  CONFD_SET_OID(&v, &oid);
  return Value::copy_of(v);
}

struct Numbered {
  int status;
  u_int32_t family, last;
};
const Numbered kNumbered[] = {
    {PROTO_NONE, 1, 1},    {int{tags::snmp::md5}, 1, 2}, {int{tags::snmp::sha}, 1, 3},
    {PROTO_UNKNOWN, 1, 4}, {PROTO_NONE, 2, 1},           {int{tags::snmp::des}, 2, 2},
    {PROTO_UNKNOWN, 2, 3}, {int{tags::snmp::aes}, 2, 4}, {PROTO_UNKNOWN, 3, 2},
    {PROTO_UNKNOWN, 0, 1},
};

TEST(UsmProtocol, NinthAndTenthNumberTell) {
  for (const Numbered& c : kNumbered) {
    const Value usual = oid_of({1, 3, 6, 1, 6, 3, 10, 1, c.family, c.last});
    const Value odd = oid_of({9, 9, 9, 9, 9, 9, 9, 9, c.family, c.last, 7});
    EXPECT_EQ(_get_protocol_tag_from_oid(usual.get()), c.status) << c.family << "." << c.last;
    EXPECT_EQ(_get_protocol_tag_from_oid(odd.get()), c.status) << c.family << "." << c.last;
  }
}

TEST(UsmProtocol, ShortOidIsUnknown) {
  for (const std::vector<u_int32_t>& oid :
       {std::vector<u_int32_t>{0}, {1, 3, 6, 1, 6, 3, 10, 1, 1}}) {
    EXPECT_EQ(_get_protocol_tag_from_oid(oid_of(oid).get()), PROTO_UNKNOWN);
  }
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

// From the root to the leaf; 0 stands for a list entry's key.
confd_hkeypath_t keypath(const std::vector<u_int32_t>& from_root) {
  constexpr u_int32_t kKey = 0;
  confd_hkeypath_t kp{};
  kp.len = static_cast<int>(from_root.size());
  for (int i = 0; i < kp.len; ++i) {
    const u_int32_t tag = from_root[from_root.size() - 1 - static_cast<std::size_t>(i)];
    kp.v[i][0] = tag == kKey ? buf_value("k") : xmltag_value(tag, tags::snmp::ns);
    CONFD_SET_NOEXISTS(&kp.v[i][1]);
  }
  CONFD_SET_NOEXISTS(&kp.v[kp.len][0]);
  return kp;
}

TEST(UsmCryptoPath, SideAndKindComeFromTheArgumentsOrTheKeypath) {
  using namespace tags::snmp;
  const std::vector<u_int32_t> local_user{snmp, usm, local, user, 0};
  const std::vector<u_int32_t> remote_user{snmp, usm, remote, 0, user, 0};
  struct Asked {
    std::vector<u_int32_t> below;
    u_int32_t side, kind;
    std::string path;  // below usm-crypto
  };
  const Asked cases[] = {
      {{auth}, 0, 0, "/auth"},
      {{priv}, 0, 0, "/priv"},
      {{auth, md5}, 0, 0, "/auth"},
      {{auth, md5, key}, 0, 0, "/auth/key"},
      {{priv, aes, password}, 0, 0, "/priv/password"},
      {{priv, aes, password}, 0, key, "/priv/key"},
      {{auth, sha}, 0, password, "/auth/password"},
      {{auth}, priv, password, "/priv/password"},
      {{}, priv, key, "/priv/key"},
  };
  for (const std::vector<u_int32_t>& path : {local_user, remote_user}) {
    for (const Asked& c : cases) {
      std::vector<u_int32_t> whole = path;
      whole.insert(whole.end(), c.below.begin(), c.below.end());
      const confd_hkeypath_t kp = keypath(whole);
      EXPECT_EQ(_usm_get_crypto_path(&kp, c.side, c.kind), kRow + c.path) << whole.size();
    }
  }
}

TEST(UsmCryptoPath, NothingForOtherListsAndSides) {
  using namespace tags::snmp;
  const confd_hkeypath_t elsewhere = keypath({snmp, usm, user, 0, auth, md5, key, key});
  EXPECT_EQ(_usm_get_crypto_path(&elsewhere, auth, key), std::nullopt);
  const confd_hkeypath_t no_side = keypath({snmp, usm, local, user, 0, name});
  EXPECT_EQ(_usm_get_crypto_path(&no_side, 0, 0), std::nullopt);
}

}  // namespace
}  // namespace quillet
