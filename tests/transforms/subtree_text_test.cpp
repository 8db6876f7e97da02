#include <gtest/gtest.h>

#include <random>
#include <string>

#include "transforms/subtree-text.h"

namespace quillet {
namespace {

using Octets = std::vector<std::uint8_t>;

std::string repeated(const std::string& component, int n) {
  std::string text = component;
  for (int i = 1; i < n; ++i) text += "." + component;
  return text;
}

TEST(SubtreeText, AcceptedTextsGiveOidAndMask) {
  const struct {
    std::string text;
    std::vector<std::uint32_t> oid;
    Octets mask;
  } cases[] = {
      {"1.3.6.1.2.1", {1, 3, 6, 1, 2, 1}, {}},
      {"1.3.6.1.*.1", {1, 3, 6, 1, 0, 1}, {0xf4}},
      {"1.3.6.1.2.1.1.1.*", {1, 3, 6, 1, 2, 1, 1, 1, 0}, {0xff, 0x00}},
      {"1.3.6.1.2.1.1.*", {1, 3, 6, 1, 2, 1, 1, 0}, {0xfe}},
      {"*", {0}, {0x00}},
      {"*.*", {0, 0}, {0x00}},
      {"4294967295", {4294967295U}, {}},
  };
  for (const auto& c : cases) {
    const auto subtree = parse_subtree_text(c.text);
    ASSERT_TRUE(subtree) << c.text;
    EXPECT_EQ(subtree->oid, c.oid) << c.text;
    EXPECT_EQ(subtree->mask, c.mask) << c.text;
  }
}

TEST(SubtreeText, MaskGrowsByAnOctetForEveryEightComponents) {
  for (const auto& [n, octets] :
       {std::pair{8, 1}, {9, 2}, {16, 2}, {17, 3}, {127, 16}, {128, 16}}) {
    const auto subtree = parse_subtree_text("*." + repeated("1", n - 1));
    ASSERT_TRUE(subtree) << n;
    EXPECT_EQ(subtree->mask.size(), static_cast<std::size_t>(octets)) << n;
  }
}

TEST(SubtreeText, UnusableTextsAreRefused) {
  std::vector<std::string> cases = {std::string("1\0", 2), repeated("1", 129),
                                    repeated("4294967295", 24)};
  for (const char* text : {"", ".", ".1", "1.", "1..3", "0.1", "1.0", "1.03", "1.3x", "1.a", "*5.1",
                           "**", "1.*.", " 1", "1,3", "１", "1.+3", "1.-3", "4294967296"})
    cases.emplace_back(text);
  for (const auto& text : cases) EXPECT_FALSE(parse_subtree_text(text)) << text;
}

TEST(SubtreeText, AcceptedTextComesBackUnchanged) {
  std::mt19937 random(20);  // NOLINT: the same texts in every run
  for (int round = 0; round < 2000; ++round) {
    std::string text;
    const int n = std::uniform_int_distribution<int>(1, 24)(random);
    for (int i = 0; i < n; ++i) {
      const bool wildcard = std::uniform_int_distribution<int>(0, 3)(random) == 0;
      const auto number = std::uniform_int_distribution<std::uint32_t>(1)(random) >>
                          std::uniform_int_distribution<int>(0, 31)(random);
      text += (i > 0 ? "." : "") + (wildcard || number == 0 ? "*" : std::to_string(number));
    }
    const auto subtree = parse_subtree_text(text);
    if (text.size() > kMaxSubtreeText) {
      EXPECT_FALSE(subtree) << text;
    } else {
      ASSERT_TRUE(subtree) << text;
      EXPECT_EQ(subtree_text(subtree->oid.data(), subtree->oid.size()), text);
    }
  }
}

}  // namespace
}  // namespace quillet
