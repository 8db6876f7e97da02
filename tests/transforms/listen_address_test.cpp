#include <gtest/gtest.h>

#include <algorithm>
#include <string>

#include "transforms/listen-address.h"

namespace quillet {
namespace {

using Octets = std::vector<std::uint8_t>;

Octets ipv6(std::initializer_list<std::uint8_t> head, std::uint8_t last) {
  Octets octets(head);
  octets.resize(16);
  octets[15] = last;
  return octets;
}

TEST(ListenAddress, WrittenFormsGiveAddressAndPort) {
  const Octets documentation = ipv6({0x20, 0x01, 0x0d, 0xb8}, 1);
  const struct {
    std::string text;
    Octets ip;
    std::uint16_t port;
  } cases[] = {
      {"10.0.0.1:1161", {10, 0, 0, 1}, 1161},
      {"10.0.0.1", {10, 0, 0, 1}, 161},
      {"[2001:db8::1]:162", documentation, 162},
      {"[2001:db8::1]", documentation, 161},
      {"2001:db8::1:162", documentation, 162},
      {"10.0.0.1:", {10, 0, 0, 1}, 0},
      {"10.0.0.1:65536", {10, 0, 0, 1}, 0},
      {"10.0.0.1:65697", {10, 0, 0, 1}, 161},
      {"10.0.0.1:" + std::string(5000, '0') + "161", {10, 0, 0, 1}, 161},
  };
  for (const auto& c : cases) {
    const auto address = parse_listen_address(c.text, 161);
    ASSERT_TRUE(address) << c.text;
    EXPECT_EQ(address->ip, c.ip) << c.text;
    EXPECT_EQ(address->port, c.port) << c.text;
  }
}

TEST(ListenAddress, TextsThatAreNoAddressGiveNothing) {
  for (const std::string text : {"", ":", "[", "]", "[]", "host:161", "2001:db8::1", "10.0.0:161",
                                 "10.0.0.256", "10.0.0.1%eth0", "[fe80::1%1]:161", "[]:161", "161",
                                 ":161", "[[::1]]:161", " 10.0.0.1", "1.2.3.4.5:1"}) {
    EXPECT_FALSE(parse_listen_address(text, 161)) << text;
  }
  EXPECT_FALSE(parse_listen_address(std::string("10.0.0.1\0x:161", 14), 161));
}

TEST(ListenAddress, WithoutPortAndDefaultGivesNothing) {
  EXPECT_FALSE(parse_listen_address("10.0.0.1", std::nullopt));
  EXPECT_TRUE(parse_listen_address("10.0.0.1:161", std::nullopt));
}

TEST(ListenAddress, OrderIsFamilyThenOctetsThenPort) {
  std::vector<std::string> texts = {"10.0.0.2:161", "[::1]:161", "10.0.0.1:1000", "10.0.0.1:162",
                                    "9.255.0.0:5"};
  std::sort(texts.begin(), texts.end(), [](const std::string& a, const std::string& b) {
    return *parse_listen_address(a, {}) < *parse_listen_address(b, {});
  });
  EXPECT_EQ(texts, (std::vector<std::string>{"9.255.0.0:5", "10.0.0.1:162", "10.0.0.1:1000",
                                             "10.0.0.2:161", "[::1]:161"}));
}

}  // namespace
}  // namespace quillet
