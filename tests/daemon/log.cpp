#include "core/log.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <cstdlib>
#include <sstream>
#include <string>
#include <thread>
#include <vector>

namespace quillet {
namespace {

using ::testing::EndsWith;
using ::testing::HasSubstr;
using ::testing::MatchesRegex;
using ::testing::internal::CaptureStderr;
using ::testing::internal::CaptureStdout;
using ::testing::internal::GetCapturedStderr;
using ::testing::internal::GetCapturedStdout;

// A stream into memory.
class MemoryStream {
 public:
  MemoryStream() : file_(open_memstream(&text_, &size_)) {}
  ~MemoryStream() {
    std::fclose(file_);
    std::free(text_);
  }
  std::FILE* file() { return file_; }
  std::string text() {
    std::fflush(file_);
    return {text_, size_};
  }

 private:
  char* text_ = nullptr;
  std::size_t size_ = 0;
  std::FILE* file_;
};

class Log : public ::testing::Test {
 protected:
  void TearDown() override {
    log_set_streams(nullptr, nullptr);
    log_set_console_level(LOG_LEVEL_ERR);
    log_set_stream_level(LOG_LEVEL_ERR);
  }
};

TEST(LogLevelName, NamesEveryLevelAndNoOther) {
  const std::pair<int, const char*> cases[] = {{-2, "UNKNOWN"}, {-1, "OFF"},    {0, "EMERG"},
                                               {3, "ERR"},      {7, "DEBUG"},   {8, "UNKNOWN"},
                                               {10, "TRACE"},   {11, "UNKNOWN"}};
  for (const auto& [level, name] : cases) EXPECT_STREQ(log_level_name(level), name) << level;
}

TEST_F(Log, ErrorLineHasTimeThreadLevelPlaceAndColour) {
  CaptureStderr();
  log_error(LOG_LEVEL_CRIT, "daemon-status", 105, "socket() failed: %s (%d)", "Too many", 24);
  EXPECT_THAT(GetCapturedStderr(),
              MatchesRegex("[0-9]+\\.[0-9]{6} \\[[0-9a-f]+\\] CRIT daemon-status:105: \x1b\\[91m "
                           "socket\\(\\) failed: Too many \\(24\\)\x1b\\[0m\n"));
}

TEST_F(Log, MessageTagsStandBeforeTheSeparator) {
  const struct {
    const char* tag1;
    const char* tag2;
    const char* line_end;
  } cases[] = {{"one: ", nullptr, "place:1: one: text\n"},
               {"one", "two", "place:1: onetwo text\n"},
               {nullptr, "two", "place:1: two text\n"},
               {nullptr, nullptr, "place:1: text\n"}};
  for (const auto& c : cases) {
    CaptureStdout();
    log_message(LOG_LEVEL_ERR, "place", 1, c.tag1, c.tag2, "%s", "text");
    EXPECT_THAT(GetCapturedStdout(), EndsWith(c.line_end));
  }
}

TEST_F(Log, ThresholdsDecideForEachSink) {
  MemoryStream errors;
  log_set_streams(nullptr, errors.file());
  log_set_stream_level(LOG_LEVEL_TRACE);
  log_set_console_level(LOG_LEVEL_ERR);
  CaptureStderr();
  log_error(LOG_LEVEL_WARNING, "f", 1, "quiet on the console");
  log_error(LOG_LEVEL_ERR, "f", 1, "loud");
  log_set_console_level(LOG_LEVEL_OFF);
  log_error(LOG_LEVEL_EMERG, "f", 1, "off");
  const std::string console = GetCapturedStderr();
  EXPECT_THAT(console, HasSubstr("loud"));
  EXPECT_THAT(console, ::testing::Not(HasSubstr("quiet")));
  EXPECT_THAT(console, ::testing::Not(HasSubstr("off")));
  for (const char* text : {"quiet on the console", "loud", "off"}) {
    EXPECT_THAT(errors.text(), HasSubstr(text));
  }
}

TEST_F(Log, FormatIsCutBeforeItsArgumentsAreFilledIn) {
  MemoryStream errors;
  log_set_streams(nullptr, errors.file());
  log_set_console_level(LOG_LEVEL_OFF);
  const std::string longer(2000, 'x');
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wformat-security"
  log_error(LOG_LEVEL_ERR, "f", 1, longer.c_str());
#pragma GCC diagnostic pop
  EXPECT_EQ(errors.text().size(), 1023u);
  EXPECT_THAT(errors.text(), EndsWith("xxx"));
  log_error(LOG_LEVEL_ERR, "f", 1, "%s", longer.c_str());
  EXPECT_THAT(errors.text(), EndsWith("xxx\x1b[0m\n"));
}

TEST_F(Log, HostileNamesCannotForgeLinesOrFormats) {
  CaptureStderr();
  log_error(LOG_LEVEL_ERR, "100%s", 1, "user %s", "a\n0.0 CRIT\x1b[2J%n\x7f");
  const std::string line = GetCapturedStderr();
  EXPECT_THAT(line, HasSubstr("100%s:1:"));
  EXPECT_THAT(line, HasSubstr("user a\\x0a0.0 CRIT\\x1b[2J%n\\x7f\x1b[0m\n"));
}

TEST_F(Log, LinesOfTwoThreadsDoNotInterleave) {
  MemoryStream errors;
  log_set_streams(nullptr, errors.file());
  log_set_console_level(LOG_LEVEL_OFF);
  constexpr int kLines = 2000;
  const auto write_lines = [](char letter) {
    for (int i = 0; i < kLines; ++i) {
      log_error(LOG_LEVEL_ERR, "f", 1, "%s", std::string(200, letter).c_str());
    }
  };
  std::thread other(write_lines, 'b');
  write_lines('a');
  other.join();
  std::istringstream lines(errors.text());
  int count = 0;
  for (std::string line; std::getline(lines, line); ++count) {
    const bool whole = line.find(std::string(200, 'a')) != std::string::npos ||
                       line.find(std::string(200, 'b')) != std::string::npos;
    ASSERT_TRUE(whole) << line;
  }
  EXPECT_EQ(count, 2 * kLines);
}

TEST_F(Log, StalledReaderOfStandardErrorCostsTheLinesOnly) {
  int pipe_ends[2];
  ASSERT_EQ(pipe(pipe_ends), 0);
  const int saved = dup(STDERR_FILENO);
  dup2(pipe_ends[1], STDERR_FILENO);
  alarm(20);  // a call that blocks must fail the test, not hang it
  for (int i = 0; i < 3000; ++i) {
    log_error(LOG_LEVEL_ERR, "f", 1, "%s", std::string(100, 'x').c_str());
  }
  alarm(0);
  dup2(saved, STDERR_FILENO);
  char some[4096];
  EXPECT_EQ(read(pipe_ends[0], some, sizeof some), static_cast<ssize_t>(sizeof some));
  for (const int fd : {pipe_ends[0], pipe_ends[1], saved}) close(fd);
}

}  // namespace
}  // namespace quillet
