// Values: what each kind of type reads, prints and refuses.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "platform/standin/schema/text_rules.h"
#include "schema_fixture.h"

namespace standin {
namespace {

using testing::HasSubstr;
using testing::Not;

const std::string kTargetRow = "/SNMP-TARGET-MIB/snmpTargetAddrTable/snmpTargetAddrEntry{a}/";
const std::string kUserRow = "/SNMP-USER-BASED-SM-MIB/usmUserTable/usmUserEntry{80:00:00:01:05 a}/";
const std::string kUser = "/snmp/usm/local/user{u}/";

std::string repeat(const std::string& text, std::size_t n) {
  std::string out;
  while (n-- > 0) out += text;
  return out;
}

struct Good {
  std::string path, text;
  Value value;
  std::string printed;  // empty: as the text
};

TEST(SchemaValues, TextIsReadCheckedAndPrinted) {
  const std::string kMaxOid = "4294967295" + repeat(".4294967295", 127);
  const std::vector<Good> kGood = {
      {"/snmp/target{a}/retries", "255", Value::unsigned_number(Type::uint8, 255), ""},
      {"/snmp/target{a}/timeout", "2147483647", Value::unsigned_number(Type::uint32, 2147483647),
       ""},
      {kTargetRow + "snmpTargetAddrTimeout", "+5", Value::int32(5), "5"},
      {"/confdConfig/snmpAgent/snmpEngine/snmpEngineMaxMessageSize", "18446744073709551615",
       Value::unsigned_number(Type::uint64, 18446744073709551615U), ""},
      {"/snmp/agent/max-message-size", "-1", Value::int32(-1), ""},
      {"/snmp/agent/enabled", "true", Value::boolean(true), ""},
      {"/snmp/notify{n}/type", "inform", Value::enumeration(2), ""},
      {"/snmp/agent/ip", "192.0.2.1", Value::address("\xc0" + std::string("\0\2\1", 3)), ""},
      {"/snmp/agent/ip", "2001:DB8:0:0::1",
       Value::address(std::string("\x20\x01\x0d\xb8\0\0\0\0\0\0\0\0\0\0\0\1", 16)), "2001:db8::1"},
      {"/snmp/target{a}/engine-id", "80:00:7E:D9:05",
       Value::octets(std::string("\x80\x00\x7e\xd9\x05", 5)), "80:00:7e:d9:05"},
      {kTargetRow + "snmpTargetAddrEngineID", "", Value::octets(""), ""},
      {kTargetRow + "snmpTargetAddrTDomain", "0", Value::oid({0}), ""},
      {kTargetRow + "snmpTargetAddrTDomain", kMaxOid, Value::oid(Oid(128, 4294967295U)), ""},
      {"/snmp/agent/location", "a\tb\n\xc3\xa4", Value::buf("a\tb\n\xc3\xa4"), ""},
      {"/snmp/vacm/view{v}/subtree{x}/oid", "", Value::buf(""), ""},
      {kUser + "auth/md5/password", "12345678", Value::buf("12345678"), ""},
      {kUser + "auth/md5/password", repeat("\xc3\xa4", 255), Value::buf(repeat("\xc3\xa4", 255)),
       ""},
      {kUser + "auth/md5/password", "$8$" + repeat("QUJD", 200),
       Value::buf("$8$" + repeat("QUJD", 200)), ""},
  };
  for (const auto& g : kGood) {
    const Node& node = node_at(g.path);
    Value value;
    EXPECT_EQ(refusal_of([&] { value = product_schema().parse(node, g.text); }), "") << g.path;
    EXPECT_EQ(value, g.value) << g.path << ' ' << g.text;
    const std::string printed = g.printed.empty() ? g.text : g.printed;
    EXPECT_EQ(product_schema().print(node, value), printed) << g.path;
    EXPECT_EQ(product_schema().check(node, value), value) << g.path;
    EXPECT_EQ(product_schema().parse(node, printed), value) << g.path;
  }
}

TEST(SchemaValues, TextThatTheTypeLacksIsRefusedWithTheReason) {
  struct Bad {
    std::string path, text, reason;
  };
  const std::vector<Bad> kBad = {
      {"/snmp/target{a}/retries", "256", "a whole number of 0 to 255 is needed"},
      {"/snmp/target{a}/retries", "-1", "0 to 255"},
      {"/snmp/target{a}/retries", "0x10", "0 to 255"},
      {"/snmp/target{a}/retries", "", "0 to 255"},
      {"/snmp/target{a}/timeout", "2147483648", "0 to 2147483647"},
      {"/snmp/agent/max-message-size", "2147483648", "-2147483648 to 2147483647"},
      {"/snmp/agent/enabled", "yes", "true or false is needed"},
      {"/snmp/notify{n}/type", "1", "one of trap, inform is needed"},
      {"/snmp/agent/ip", "192.0.2.001", "an IPv4 or IPv6 address is needed"},
      {"/snmp/agent/ip", "fe80::1%lo", "an IPv4 or IPv6 address is needed"},
      {"/snmp/target{a}/engine-id", "80:00:7e:d9", "5 to 32 octets are needed"},
      {"/snmp/target{a}/engine-id", "80:00:7e:d9:05:", "octets are needed as pairs"},
      {"/snmp/target{a}/engine-id", "8000:7e:d9:05x", "octets are needed as pairs"},
      {kTargetRow + "snmpTargetAddrTDomain", "", "numbers"},
      {kTargetRow + "snmpTargetAddrTDomain", "1.03", "without leading zeros"},
      {kTargetRow + "snmpTargetAddrTDomain", "1..3", "numbers"},
      {kTargetRow + "snmpTargetAddrTDomain", "1.4294967296", "4294967295"},
      {kTargetRow + "snmpTargetAddrTDomain", "1" + repeat(".1", 128), "1 to 128 numbers"},
      {"/snmp/agent/location", "a\rb", "control characters"},
      {"/snmp/agent/location", "\xed\xa0\x80", "UTF-8"},
      {"/snmp/target{a}/tag", "a b", "white space"},
      {"/snmp/agent/version/v1", "x", "takes no value"},
  };
  for (const auto& b : kBad) {
    ErrorCode code{};
    const Node& node = node_at(b.path);
    const std::string text = refusal_of([&] { product_schema().parse(node, b.text); }, &code);
    EXPECT_THAT(text, HasSubstr(b.reason)) << b.path << ' ' << b.text;
    EXPECT_THAT(text, HasSubstr(node.name));
    EXPECT_EQ(code, ErrorCode::badvalue);
    EXPECT_FALSE(product_schema().admits(node, Value::text(b.text))) << b.path;
  }
}

// Columns are measured in octets, lengths of the model in characters.
TEST(SchemaValues, LengthsBoundOctetsAsWellAsCharacters) {
  const std::string kAe = "\xc3\xa4";
  struct Limit {
    std::string path;
    std::size_t octets;
  };
  const std::vector<Limit> kLimits = {
      {"/snmp/community{a}/index", 32},
      {"/snmp/community{a}/target-tag", 255},
      {"/snmp/vacm/group{g}/access{\"\" usm auth-priv}/read-view", 32},
      {kTargetRow + "snmpTargetAddrTagList", 255},
      {"/SNMPv2-MIB/system/sysContact", 255},
      {"/attr-list{a}/target-path", 8191},
  };
  for (const auto& [path, octets] : kLimits) {
    const Node& node = node_at(path);
    const std::string most = repeat(kAe, octets / 2) + repeat("x", octets % 2);
    EXPECT_TRUE(product_schema().admits(node, Value::buf(most))) << path;
    EXPECT_FALSE(product_schema().admits(node, Value::buf(most + "x"))) << path;
    EXPECT_FALSE(product_schema().admits(node, Value::buf(repeat(kAe, octets)))) << path;
  }
}

TEST(SchemaValues, OctetColumnsHaveTheSizesOfTheMib) {
  struct Size {
    std::string path;
    std::vector<std::size_t> good, bad;
  };
  const std::vector<Size> kSizes = {
      {kUser + "auth/md5/key", {16}, {0, 15, 17, 20}},
      {kUser + "auth/sha/key", {20}, {16, 19, 21}},
      {kUser + "priv/des/key", {16}, {0, 20}},
      {kUser + "priv/aes/key", {16}, {20}},
      {kTargetRow + "snmpTargetAddrTAddress", {1, 6, 18, 255}, {0, 256}},
      {kTargetRow + "snmpTargetAddrEngineID", {0, 32}, {33}},
      {kUserRow + "usmUserEngineID", {5, 32}, {0, 4, 33}},
      {"/snmp/agent/engine-id/from-mac-address", {0, 6, 300}, {}},
  };
  for (const auto& s : kSizes) {
    const Node& node = node_at(s.path);
    for (const auto n : s.good) {
      EXPECT_EQ(product_schema().check(node, Value::octets(std::string(n, '\xab'))).bytes().size(),
                n)
          << s.path;
    }
    for (const auto n : s.bad) {
      EXPECT_FALSE(product_schema().admits(node, Value::octets(std::string(n, '\xab'))))
          << s.path << ' ' << n;
    }
  }
}

TEST(SchemaValues, TypedValueOfAnotherTypeIsABadType) {
  const std::vector<std::pair<std::string, Value>> kWrong = {
      {kTargetRow + "snmpTargetAddrTimeout", Value::unsigned_number(Type::uint32, 5)},
      {kTargetRow + "snmpTargetAddrTimeout", Value()},
      {kTargetRow + "snmpTargetAddrStorageType", Value::int32(3)},
      {"/snmp/agent/location", Value::list({Value::buf("a")})},
      {"/snmp/agent/version/v1", Value::boolean(true)},
      {"/snmp/agent", Value::buf("a")},
  };
  for (const auto& [path, value] : kWrong) {
    ErrorCode code{};
    const Node& node = node_at(path);
    const std::string text =
        refusal_of([&, &v = value] { product_schema().check(node, v); }, &code);
    EXPECT_THAT(text, HasSubstr(node.name)) << path;
    EXPECT_EQ(code, ErrorCode::badtype) << path;
    EXPECT_FALSE(product_schema().admits(node, value)) << path;
  }
}

TEST(SchemaValues, EnumerationNumberWithoutALabelIsRefusedButPrinted) {
  const Node& model = node_at("/snmp/vacm/group{g}/member{m}/sec-model");
  EXPECT_EQ(product_schema().print(model, Value::enumeration(3)), "usm");
  EXPECT_EQ(product_schema().print(model, Value::enumeration(7)), "7");
  EXPECT_EQ(product_schema().print(model, Value::int32(7)), "7");
  EXPECT_FALSE(product_schema().admits(model, Value::enumeration(7)));
}

TEST(SchemaValues, LeafListTakesItsValuesWholeOrOneByOne) {
  const Node& model = node_at("/snmp/vacm/group{g}/member{m}/sec-model");
  const Value both = Value::list({Value::text("v1"), Value::enumeration(3)});
  EXPECT_EQ(product_schema().check(model, both),
            Value::list({Value::enumeration(1), Value::enumeration(3)}));
  EXPECT_EQ(product_schema().check(model, Value::list({})), Value::list({}));
  EXPECT_EQ(product_schema().print(model, both), "v1 usm");
  EXPECT_FALSE(product_schema().admits(model, Value::list({Value::enumeration(9)})));
  const Node& free = node_at("/confdConfig/snmpAgent/extraIpPorts");
  EXPECT_TRUE(free.user_ordered);
  EXPECT_EQ(product_schema().print(free, Value::list({Value::buf("a b"), Value::buf("")})),
            "\"a b\" \"\"");
}

TEST(SchemaValues, SecretsStayOutOfRefusals) {
  const std::vector<std::pair<std::string, std::string>> kSecrets = {
      {kUser + "auth/md5/password", "hunter2"},
      {kUser + "auth/md5/password", repeat("hunter2-", 33)},
      {kUser + "auth/md5/password", "hunter2\x01"},
      {kUser + "auth/md5/key", "de:ad:be:ef"},
      {kUserRow + "usmUserPrivKey", "de:ad:be:ef:no"},
  };
  for (const auto& [path, secret] : kSecrets) {
    const std::string text =
        refusal_of([&, &p = path, &s = secret] { product_schema().parse(node_at(p), s); });
    EXPECT_THAT(text, HasSubstr("invalid value for ")) << path;
    EXPECT_THAT(text, Not(HasSubstr("hunter2"))) << path;
    EXPECT_THAT(text, Not(HasSubstr("de:ad"))) << path;
  }
}

TEST(SchemaValues, RefusalIsOneLineWhateverTheValue) {
  const std::string text = refusal_of([&] {
    product_schema().parse(node_at("/snmp/agent/port"), "1\n2\x1b[31m" + repeat("x", 5000));
  });
  EXPECT_THAT(text, HasSubstr("\"1\\x0a2\\x1b[31mxxx"));
  EXPECT_EQ(text.find_first_of("\n\x1b"), std::string::npos);
  EXPECT_LT(text.size(), 300U);
}

TEST(TextRules, Utf8IsReadToTheLetter) {
  for (const std::string good : {"", "a", "\xc3\xa4", "\xe2\x82\xac", "\xf0\x9f\x92\xa9", "\t\n"}) {
    EXPECT_TRUE(is_plain_text(good)) << good;
  }
  for (const std::string bad :
       {"\x80", "\xc3", "\xc1\xbf", "\xe0\x80\x80", "\xed\xbf\xbf", "\xf4\x90\x80\x80",
        "\xf8\x88\x80\x80\x80", "\xe2\x82", "\x7f", "\xc2\x80", "\r"}) {
    EXPECT_FALSE(is_plain_text(bad)) << testing::PrintToString(bad);
  }
}

}  // namespace
}  // namespace standin
