#include "core/options.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "status/daemon-status.h"

namespace quillet {
namespace {

Options parsed(std::vector<std::string> words) {
  words.insert(words.begin(), "quillet-transform");
  std::vector<char*> argv;
  for (std::string& word : words) argv.push_back(word.data());
  argv.push_back(nullptr);
  return parse_options(static_cast<int>(words.size()), argv.data());
}

TEST(Options, WithoutAnyAreTheDefaults) {
  const Options options = parsed({});
  EXPECT_FALSE(options.wait_for_init || options.watch_stdin || options.print_running);
  EXPECT_EQ(options.confd_port, 4565);
  EXPECT_EQ(options.debug_level, 2);
  EXPECT_EQ(status_get_port(), 8879);
}

TEST(Options, LastDebugLevelWins) {
  const std::pair<std::vector<std::string>, int> cases[] = {
      {{"-s"}, 0},       {{"-d"}, 1},       {{"-t"}, 2},   {{"-p"}, 3},
      {{"-d", "-p"}, 3}, {{"-p", "-d"}, 1}, {{"-pst"}, 2},
  };
  for (const auto& [words, level] : cases) EXPECT_EQ(parsed(words).debug_level, level);
}

TEST(Options, IgnoredOnesTakeTheirArgumentsAlong) {
  const Options options = parsed({"-n", "-c", "-r", "-S", "operand", "-P", "99"});
  EXPECT_FALSE(options.watch_stdin);
  EXPECT_TRUE(options.print_running);
  EXPECT_EQ(options.confd_port, 99);
}

TEST(Options, UnknownOnesAreReportedAndSkipped) {
  ::testing::internal::CaptureStderr();
  const Options options = parsed({"-x", "--no-such", "-c"});
  EXPECT_NE(::testing::internal::GetCapturedStderr().find("invalid option"), std::string::npos);
  EXPECT_TRUE(options.watch_stdin);
}

TEST(Options, NumbersAreReadLikeAtoi) {
  const std::pair<const char*, int> cases[] = {
      {"12", 12}, {" 7x", 7}, {"-3", -3}, {"", 0}, {"port", 0}};
  for (const auto& [text, number] : cases) {
    EXPECT_EQ(parsed({"-P", text}).confd_port, number) << text;
  }
}

TEST(Options, StatusPortCountsInBothModes) {
  EXPECT_TRUE(parsed({"--status-port", "1234", "--wait-for-init"}).wait_for_init);
  EXPECT_EQ(status_get_port(), 1234);
  EXPECT_FALSE(parsed({"--status-port=8879"}).wait_for_init);
  EXPECT_EQ(status_get_port(), 8879);
}

}  // namespace
}  // namespace quillet
