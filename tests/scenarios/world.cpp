#include "world.h"

#include <gmock/gmock.h>

#include <iostream>

namespace scenario {

std::ostream& operator<<(std::ostream& out, const Ran& ran) {
  return out << "status " << ran.status << "\n--- output\n" << ran.out << "--- errors\n" << ran.err;
}

void World::TearDown() {
  if (daemon_ != nullptr) {
    EXPECT_TRUE(daemon_->alive()) << "the daemon has ended: " << daemon_->errors();
  }
  if (server_ != nullptr) {
    EXPECT_TRUE(server_->alive()) << "the server has ended: " << server_->errors();
  }
  if (!HasFailure()) return;
  if (daemon_ != nullptr) std::cerr << "daemon:\n" << daemon_->errors();
  if (server_ != nullptr) std::cerr << "server:\n" << server_->errors();
}

Ran World::cli(const Strings& words, const std::string& input) {
  const auto process = start_cli(words, Process::Input::pipe);
  Ran ran;
  if (!process->communicate(input, ran.out)) ADD_FAILURE() << "the client hangs";
  ran.status = process->wait().value_or(-1);
  ran.err = process->errors();
  return ran;
}

Ran World::batch(const Strings& lines, const Strings& options) {
  std::string input;
  for (const std::string& line : lines) input += line + '\n';
  Strings words{"batch"};
  words.insert(words.end(), options.begin(), options.end());
  return cli(words, input);
}

std::string World::answers(const Strings& lines) {
  const Ran ran = batch(lines);
  EXPECT_EQ(ran.status, 0) << ran;
  return ran.out;
}

void World::refused(const Strings& lines, const std::string& text, const std::string& kept) {
  SCOPED_TRACE(lines.back());
  const std::string before = json(kept);
  const Ran ran = batch(lines);
  EXPECT_EQ(ran.status, 2) << ran;
  EXPECT_THAT(ran.err, testing::AllOf(testing::StartsWith("error: "), testing::HasSubstr(text)));
  EXPECT_EQ(json(kept), before);
}

void World::loads_back(const std::string& path, const Strings& deletions) {
  const std::string shown = json(path);
  answers(deletions);
  EXPECT_NE(json(path), shown);
  EXPECT_EQ(cli({"load", write_file("shown.json", shown)}), (Ran{0, "", ""}));
  EXPECT_EQ(json(path), shown);
}

}  // namespace scenario
