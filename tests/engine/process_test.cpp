// The program: how it starts, what it says when it cannot, how it ends, and what survives.
#include <fcntl.h>
#include <poll.h>
#include <signal.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <filesystem>
#include <fstream>

#include "world.h"

namespace standin {
namespace {

// A running server; its streams come through one pipe each.
class Program {
 public:
  explicit Program(std::vector<std::string> arguments, bool close_standard = false) {
    int out[2], err[2];
    if (::pipe2(out, O_CLOEXEC) != 0 || ::pipe2(err, O_CLOEXEC) != 0)
      throw std::runtime_error("no pipe");
    arguments.insert(arguments.begin(), CONFD_STANDIN);
    std::vector<char*> argv;
    for (std::string& a : arguments) argv.push_back(a.data());
    argv.push_back(nullptr);
    pid_ = ::fork();
    if (pid_ == 0) {
      ::dup2(out[1], 1);
      ::dup2(err[1], 2);
      if (close_standard) {
        ::close(0);
        ::close(2);
      }
      ::execv(argv[0], argv.data());
      ::_exit(127);
    }
    ::close(out[1]);
    ::close(err[1]);
    out_ = out[0];
    err_ = err[0];
  }
  ~Program() {
    if (pid_ > 0) {
      ::kill(pid_, SIGKILL);
      ::waitpid(pid_, nullptr, 0);
    }
    ::close(out_);
    ::close(err_);
  }
  Program(const Program&) = delete;
  Program& operator=(const Program&) = delete;

  pid_t pid() const { return pid_; }
  // Port of the line that says where it listens; 0 when the program ends first.
  std::uint16_t port() {
    const std::string line = read_until(out_, '\n');
    const std::string head = "listening on 127.0.0.1:";
    if (!line.starts_with(head)) return 0;
    return static_cast<std::uint16_t>(std::stoi(line.substr(head.size())));
  }
  std::string errors() { return read_until(err_, '\0'); }
  int end(int signal = 0) {
    if (signal != 0) ::kill(pid_, signal);
    int status = 0;
    ::waitpid(pid_, &status, 0);
    pid_ = -1;
    return WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
  }

 private:
  static std::string read_until(int fd, char last) {
    std::string text;
    pollfd entry{fd, POLLIN, 0};
    char c = 0;
    while (::poll(&entry, 1, 20000) > 0 && ::read(fd, &c, 1) == 1 && c != last) text += c;
    return text;
  }

  pid_t pid_ = -1;
  int out_ = -1, err_ = -1;
};

TEST(Start, FailuresAreOneLineAndStatusOneBadOptionsThree) {
  const TempDirectory place;
  const std::string text_database = place.path() + "/text";
  std::filesystem::create_directory(text_database);
  std::ofstream(text_database + "/config.db") << "this is a letter, not a database\n";
  const std::string bad_yang = place.path() + "/yang";
  std::filesystem::create_directory(bad_yang);
  std::ofstream(bad_yang + "/broken.yang") << "module broken {";
  std::ofstream(place.path() + "/bad.json") << "{ this is not JSON";
  std::ofstream(place.path() + "/file") << "x";
  const std::string fresh = place.path() + "/fresh";
  Program holder({"--port=0", "--dir", place.path() + "/held"});
  const std::uint16_t busy = holder.port();
  ASSERT_NE(busy, 0);

  struct Case {
    const char* what;
    std::vector<std::string> arguments;
    int status;
    std::string mentions;
  };
  const Case cases[] = {
      {"busy port", {"--port", std::to_string(busy), "--dir", fresh}, 1, std::to_string(busy)},
      {"directory in use", {"--port=0", "--dir", place.path() + "/held"}, 1, "held"},
      {"directory is a file", {"--port=0", "--dir", place.path() + "/file"}, 1, "file"},
      {"database is text", {"--port=0", "--dir", text_database}, 1, "config.db"},
      {"bad YANG", {"--port=0", "--dir", fresh, "--yang", bad_yang}, 1, "broken"},
      {"bad JSON",
       {"--port=0", "--dir", fresh, "--init", place.path() + "/bad.json"},
       1,
       "bad.json"},
      {"no such file", {"--port=0", "--dir", fresh, "--init", place.path() + "/no"}, 1, "/no"},
      {"unknown option", {"--prot", "0"}, 3, "--prot"},
      {"no number", {"--port", "many"}, 3, "many"},
      {"value missing", {"--dir"}, 3, "--dir"},
      {"stray word", {"start"}, 3, "start"},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.what);
    Program program(c.arguments);
    const std::string errors = program.errors();
    EXPECT_EQ(program.end(), c.status) << errors;
    EXPECT_EQ(std::count(errors.begin(), errors.end(), '\n'), 1) << errors;
    EXPECT_NE(errors.find(c.mentions), std::string::npos) << errors;
  }
}

TEST(Start, TerminationIsCleanAndTheFilesArePrivate) {
  const TempDirectory place;
  const std::string directory = place.path() + "/new";
  for (const int signal : {SIGTERM, SIGINT}) {
    Program program({"--port=0", "--dir", directory});
    const std::uint16_t port = program.port();
    ASSERT_NE(port, 0);
    // Somebody is connected and has a transaction open.
    NorthboundSession session(port, "test", NorthboundSession::Access::write);
    session.set(at(kSysName), {"uncommitted"});
    EXPECT_EQ(program.end(signal), 0);
  }
  const auto mode = [](const std::string& file) {
    struct stat status {};
    return ::stat(file.c_str(), &status) == 0 ? status.st_mode & 0777u : 0u;
  };
  EXPECT_EQ(mode(directory), 0700U);
  EXPECT_EQ(mode(directory + "/config.db"), 0600U);
  EXPECT_EQ(mode(directory + "/keys"), 0600U);
  EXPECT_EQ(mode(directory + "/schema"), 0644U);
}

TEST(Start, ClosedStandardDescriptorsAreNotTakenBySockets) {
  const TempDirectory place;
  Program program({"--port=0", "--dir", place.path()}, true);
  const std::uint16_t port = program.port();
  ASSERT_NE(port, 0);
  const NorthboundSession session(port, "test", NorthboundSession::Access::read);
  for (const char* fd : {"0", "2"}) {
    const auto file = "/proc/" + std::to_string(program.pid()) + "/fd/" + fd;
    EXPECT_EQ(std::filesystem::read_symlink(file), "/dev/null");
  }
}

TEST(Durability, AcknowledgedCommitsSurviveAKill) {
  const TempDirectory place;
  std::string last;
  for (int round = 0; round < 5; ++round) {
    Program program({"--port=0", "--dir", place.path()});
    const std::uint16_t port = program.port();
    ASSERT_NE(port, 0);
    NorthboundSession session(port, "test", NorthboundSession::Access::write);
    if (!last.empty()) {
      const auto kept = session.get(at(kSysName));
      ASSERT_TRUE(kept.has_value());
      EXPECT_EQ(kept->texts.front(), last);
      EXPECT_FALSE(session.get(at(kSysContact)).has_value());
    }
    for (int i = 0; i < 3; ++i) {
      last = std::to_string(round) + "." + std::to_string(i);
      session.set(at(kSysName), {last});
      session.commit();
    }
    session.set(at(kSysContact), {"never committed"});
    EXPECT_EQ(program.end(SIGKILL), 128 + SIGKILL);
  }
}

// A file that may not grow any further is as good as a full disk.
TEST(Durability, CommitThatCannotBeStoredIsRefusedAndTheServerLives) {
  const TempDirectory place;
  Program program({"--port=0", "--dir", place.path()});
  const std::uint16_t port = program.port();
  ASSERT_NE(port, 0);
  NorthboundSession session(port, "test", NorthboundSession::Access::write);
  session.set(at(kSysName), {"stored"});
  session.commit();
  // The signal that goes with the limit is not what is tested.
  const rlimit none{1, RLIM_INFINITY};
  ASSERT_EQ(::prlimit(program.pid(), RLIMIT_FSIZE, &none, nullptr), 0);
  session.set(at(kSysName), {"lost"});
  EXPECT_THROW(session.commit(), Refused);
  const rlimit all{RLIM_INFINITY, RLIM_INFINITY};
  ASSERT_EQ(::prlimit(program.pid(), RLIMIT_FSIZE, &all, nullptr), 0);
  session.commit();
  EXPECT_EQ(session.get(at(kSysName))->texts.front(), "lost");
}

}  // namespace
}  // namespace standin
