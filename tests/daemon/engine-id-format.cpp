#include "transforms/engine-id-format.h"

#include <gtest/gtest.h>

#include <string>

namespace quillet {
namespace {

TEST(BuildEngineId, NumberWithTopBitThenFormatThenData) {
  const Octets loopback6 = {0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 1};
  Octets ipv6 = {0x80, 0x00, 0x7e, 0xd9, 0x02};
  ipv6.insert(ipv6.end(), loopback6.begin(), loopback6.end());
  const struct {
    std::uint32_t number;
    EngineIdFormat format;
    Octets data;
    Octets id;
  } cases[] = {
      {32473, EngineIdFormat::ipv4, {192, 0, 2, 1}, {0x80, 0, 0x7e, 0xd9, 1, 0xc0, 0, 2, 1}},
      {32473, EngineIdFormat::ipv6, loopback6, ipv6},
      {32473,
       EngineIdFormat::mac,
       {0, 0x11, 0x22, 0x33, 0x44, 0x55},
       {0x80, 0, 0x7e, 0xd9, 3, 0, 0x11, 0x22, 0x33, 0x44, 0x55}},
      {32473, EngineIdFormat::text, {'a', 'b'}, {0x80, 0, 0x7e, 0xd9, 4, 0x61, 0x62}},
      {32473, EngineIdFormat::octets, {}, {0x80, 0, 0x7e, 0xd9, 5}},
      {0, EngineIdFormat::text, {}, {0x80, 0, 0, 0, 4}},
      {0xffffffffu, EngineIdFormat::none, {}, {0xff, 0xff, 0xff, 0xff, 0}},
  };
  for (const auto& c : cases) EXPECT_EQ(build_engine_id(c.number, c.format, c.data), c.id);
}

TEST(ParseOctetGroups, HexadecimalWithColons) {
  const std::pair<const char*, Octets> accepted[] = {
      {"", {}}, {"01:02:03", {1, 2, 3}}, {"fF:0:a", {255, 0, 10}}, {"7e", {0x7e}}};
  for (const auto& [text, octets] : accepted) EXPECT_EQ(parse_octet_groups(text), octets) << text;
  for (const char* text : {":", "1:", ":1", "1::2", "123", "g0", "1 2", "-1", "+1", "0x1"}) {
    EXPECT_EQ(parse_octet_groups(text), std::nullopt) << text;
  }
}

}  // namespace
}  // namespace quillet
