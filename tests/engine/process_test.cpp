// The program: how it starts, what it says when it cannot, how it ends, and what survives.
#include "tests/scenarios/process.h"

#include <signal.h>
#include <sys/resource.h>

#include <algorithm>
#include <filesystem>

#include "world.h"

namespace standin {
namespace {

using scenario::Process;
using scenario::Strings;

class Program : public ::testing::Test {
 protected:
  std::unique_ptr<Process> start(const Strings& arguments) {
    Strings argv{CONFD_STANDIN};
    argv.insert(argv.end(), arguments.begin(), arguments.end());
    return std::make_unique<Process>(argv, place_ / "errors" + std::to_string(++started_));
  }
  // 0 when it ends without serving.
  static std::uint16_t port_of(Process& program) {
    const std::string head = "listening on 127.0.0.1:";
    const auto line = program.line_beginning(head);
    return line ? static_cast<std::uint16_t>(std::stoi(line->substr(head.size()))) : 0;
  }

  TempDir place_;
  int started_ = 0;
};

TEST_F(Program, FailuresAreOneLineAndStatusOneBadOptionsThree) {
  const std::string text_database = place_ / "text", bad_yang = place_ / "yang";
  std::filesystem::create_directory(text_database);
  write_file(text_database + "/config.db", "this is a letter, not a database\n");
  std::filesystem::create_directory(bad_yang);
  write_file(bad_yang + "/broken.yang", "module broken {");
  write_file(place_ / "bad.json", "{ this is not JSON");
  write_file(place_ / "file", "x");
  const std::string fresh = place_ / "fresh", held = place_ / "held";
  const auto holder = start({"--port=0", "--dir", held});
  const std::string busy = std::to_string(port_of(*holder));
  ASSERT_NE(busy, "0");

  struct Case {
    const char* what;
    Strings arguments;
    int status;
    std::string mentions;
  };
  const Case cases[] = {
      {"busy port", {"--port", busy, "--dir", fresh}, 1, busy},
      {"directory in use", {"--port=0", "--dir", held}, 1, "held"},
      {"directory is a file", {"--port=0", "--dir", place_ / "file"}, 1, "file"},
      {"database is text", {"--port=0", "--dir", text_database}, 1, "config.db"},
      {"bad YANG", {"--port=0", "--dir", fresh, "--yang", bad_yang}, 1, "broken"},
      {"bad JSON", {"--port=0", "--dir", fresh, "--init", place_ / "bad.json"}, 1, "bad.json"},
      {"no such file", {"--port=0", "--dir", fresh, "--init", place_ / "no"}, 1, "/no"},
      {"unknown option", {"--prot", "0"}, 3, "--prot"},
      {"no number", {"--port", "many"}, 3, "many"},
      {"value missing", {"--dir"}, 3, "--dir"},
      {"stray word", {"start"}, 3, "start"},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.what);
    const auto program = start(c.arguments);
    EXPECT_EQ(program->wait(), c.status);
    const std::string errors = program->errors();
    EXPECT_EQ(std::count(errors.begin(), errors.end(), '\n'), 1) << errors;
    EXPECT_NE(errors.find(c.mentions), std::string::npos) << errors;
  }
}

TEST_F(Program, TerminationIsCleanAndTheFilesArePrivate) {
  const std::string directory = place_ / "new";
  for (const int signal : {SIGTERM, SIGINT}) {
    const auto program = start({"--port=0", "--dir", directory});
    // Somebody is connected and has a transaction open.
    NorthboundSession session(port_of(*program), "test", NorthboundSession::Access::write);
    session.set(at(kSysName), {"uncommitted"});
    program->signal(signal);
    EXPECT_EQ(program->wait(), 0);
  }
  EXPECT_EQ(mode_of(directory), 0700U);
  EXPECT_EQ(mode_of(directory + "/config.db"), 0600U);
  EXPECT_EQ(mode_of(directory + "/keys"), 0600U);
  EXPECT_EQ(mode_of(directory + "/schema"), 0644U);
}

TEST_F(Program, ClosedStandardDescriptorsAreNotTakenBySockets) {
  Process program(
      {"/bin/sh", "-c", "exec \"$0\" --port=0 --dir \"$1\" <&- 2>&-", CONFD_STANDIN, place_.path()},
      place_ / "errors");
  const NorthboundSession session(port_of(program), "test", NorthboundSession::Access::read);
  for (const char* fd : {"0", "2"}) {
    const auto file = "/proc/" + std::to_string(program.pid()) + "/fd/" + fd;
    EXPECT_EQ(std::filesystem::read_symlink(file), "/dev/null");
  }
}

// A file that may not grow any further is as good as a full disk.
TEST_F(Program, CommitThatCannotBeStoredIsRefusedAndTheServerLives) {
  const auto program = start({"--port=0", "--dir", place_.path()});
  using Access = NorthboundSession::Access;
  const std::uint16_t port = port_of(*program);
  NorthboundSession session(port, "test", Access::write);
  session.set(at(kSysName), {"stored"});
  session.commit();
  // The signal that goes with the limit is not what is tested.
  const rlimit none{1, RLIM_INFINITY};
  ASSERT_EQ(::prlimit(program->pid(), RLIMIT_FSIZE, &none, nullptr), 0);
  session.set(at(kSysName), {"late"});
  session.set(at(kSysContact), {"late"});
  try {
    session.commit();
    ADD_FAILURE() << "stored without room";
  } catch (const Refused& e) {
    EXPECT_NE(std::string(e.what()).find("cannot write the database"), std::string::npos);
  }
  NorthboundSession reader(port, "reader", Access::read);
  EXPECT_EQ(reader.get(at(kSysName))->texts.front(), "stored");
  EXPECT_FALSE(reader.get(at(kSysContact)).has_value());
  const rlimit all{RLIM_INFINITY, RLIM_INFINITY};
  ASSERT_EQ(::prlimit(program->pid(), RLIMIT_FSIZE, &all, nullptr), 0);
  session.commit();
  EXPECT_EQ(reader.get(at(kSysName))->texts.front(), "late");
}

}  // namespace
}  // namespace standin
