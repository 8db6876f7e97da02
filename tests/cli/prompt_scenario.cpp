// The client on a terminal, with the server and the daemon behind it.
#include <gmock/gmock.h>
#include <sys/stat.h>

#include <fstream>
#include <sstream>

#include "terminal.h"
#include "tests/scenarios/world.h"

namespace scenario {
namespace {

using ::testing::AllOf;
using ::testing::HasSubstr;
using ::testing::Not;

class Prompt : public World {
 protected:
  void SetUp() override { start_both(); }

  std::unique_ptr<Terminal> terminal(const Strings& words, Strings environment = {}) {
    Strings argv{STANDIN_CLI, "-P", port()};
    argv.insert(argv.end(), words.begin(), words.end());
    environment.push_back("XDG_STATE_HOME=" + file("state"));
    return std::make_unique<Terminal>(argv, environment);
  }
  // At its first prompt.
  std::unique_ptr<Terminal> prompt() {
    auto at = terminal({});
    at->until("standin> ");
    return at;
  }
  std::string history() const {
    std::ifstream in(file("state/standin-cli/history"));
    std::ostringstream text;
    text << in.rdbuf();
    return text.str();
  }
};

const std::string kUser = "/snmp:snmp/usm/local/user{joe}";
const std::string kPassword = kUser + "/auth/sha/password";

TEST_F(Prompt, TabCompletesFromTheCommandsTheModelAndTheData) {
  answers({"create /snmp:snmp/community{\"branch office\"}", "create /snmp:snmp/community{bx}"});
  const auto at = prompt();
  struct Case {
    const char *typed, *becomes;
  };
  const Case cases[] = {
      {"sh\t", "show "},
      {"/snm\tcomm\t", "/snmp:snmp/community{"},
      {"br\t", "\"branch office\"}"},
      {"\t", "/"},
      {"sec\t", "sec-name "},
  };
  for (const Case& c : cases) {
    at->type(c.typed);
    at->until(c.becomes);
  }
  EXPECT_THAT(at->line(""), HasSubstr("branch office"));
  // Several: what they share, then the list.
  at->type("get /snmp:snmp/community{b\t");
  EXPECT_THAT(at->until("bx"), HasSubstr("\"branch office\""));
  at->until("standin> get /snmp:snmp/community{b");
  at->type("\x03");
  at->until("standin> ");
  // A view's name, from the data that the model points at; an enumeration's label.
  at->line("create /snmp:snmp/vacm/view{everything}/subtree{1}/included");
  at->type("set /snmp:snmp/vacm/group{g}/access{\"\" u\t");
  at->until("usm ");
  at->type("auth-p\t/read-v\tev\t");
  at->until("auth-priv}/read-view everything ");
}

TEST_F(Prompt, SecretsAreTypedUnseenShownAsSetAndKeptNowhere) {
  answers({"set /snmp:snmp/agent/engine-id/enterprise-number 32473",
           "set /snmp:snmp/agent/engine-id/from-text x"});
  const auto at = prompt();
  at->line("create " + kUser);
  const auto type_secret = [&](const std::string& first, const std::string& second) {
    at->type("set " + kPassword + "\n");
    at->until("password (not shown): ");
    at->type(first + "\n");
    at->until("password again: ");
    at->type(second + "\n");
    return at->until("> ");
  };
  EXPECT_THAT(type_secret("maplesyrup", "maplesirup"), HasSubstr("the two differ"));
  EXPECT_THAT(type_secret("maplesyrup", "maplesyrup"), Not(HasSubstr("error")));
  EXPECT_THAT(at->line("diff"),
              AllOf(HasSubstr("+ " + kPassword + " (set)"), HasSubstr("\x1b[32m+")));
  EXPECT_THAT(at->line("commit"), HasSubstr("committed"));
  EXPECT_THAT(at->line("show " + kUser), HasSubstr("password  \x1b[33m(set)"));
  EXPECT_THAT(at->everything(), Not(HasSubstr("maple")));
  EXPECT_THAT(cli({"get", kPassword}).out, HasSubstr("$8$"));

  at->line("set " + kPassword + " visiblesecret");
  at->line("set " + kPassword + " \"another");
  const std::string secret_file = write_file("secret", "fromthefile\n");
  EXPECT_THAT(at->line("set --from-file " + secret_file + " " + kPassword),
              Not(HasSubstr("error")));
  EXPECT_THAT(history(), AllOf(HasSubstr("create " + kUser), HasSubstr("--from-file"),
                               Not(HasSubstr("visible")), Not(HasSubstr("another"))));
  struct stat status {};
  ASSERT_EQ(::stat(file("state/standin-cli/history").c_str(), &status), 0);
  EXPECT_EQ(status.st_mode & 0777, 0600);
  // The value of a file is that of the same text typed.
  cli({"set", "--from-file", secret_file, kPassword});
  const auto key = [this] {
    const std::string rows = cli({"show", "--json",
                                  "/SNMP_USER_BASED_SM_MIB:"
                                  "SNMP-USER-BASED-SM-MIB"})
                                 .out;
    const std::size_t at_key = rows.find("usmUserAuthKey\"");
    return at_key == std::string::npos ? "" : rows.substr(at_key, rows.find('\n', at_key) - at_key);
  };
  const std::string from_file = key();
  EXPECT_NE(from_file, "");
  cli({"set", kPassword}, "fromthefile\n");
  EXPECT_EQ(key(), from_file);
}

TEST_F(Prompt, ColourIsForTerminalsThatWantIt) {
  answers({"set /snmp:snmp/agent/name x"});
  const Strings show{"show", "/snmp:snmp/agent"};
  const std::string colour = "\x1b[";
  EXPECT_THAT(terminal(show)->rest(), HasSubstr(colour));
  EXPECT_THAT(terminal(show, {"NO_COLOR=1"})->rest(),
              AllOf(HasSubstr("agent"), Not(HasSubstr(colour))));
  EXPECT_THAT(cli(show).out, Not(HasSubstr(colour)));
}

TEST_F(Prompt, ChangesAreNeverLostUnasked) {
  const auto at = prompt();
  at->line("set /snmp:snmp/agent/name x");
  at->type("half a line\x03");
  at->until("standin*> ");
  at->type("quit\n");
  at->until("1 change not committed. Leave and forget? [y/N] ");
  at->type("n\n");
  at->until("standin*> ");
  EXPECT_THAT(at->line("set /snmp:snmp/agent/nam y"),
              AllOf(HasSubstr("did you mean name?"), HasSubstr("at /snmp:snmp/agent/nam")));
  server_->signal(SIGKILL);
  server_->wait();
  daemon_ends();
  daemon_.reset();
  EXPECT_THAT(at->line("diff"), HasSubstr("the uncommitted changes are forgotten"));
  EXPECT_THAT(at->line("diff"), HasSubstr("no server on port"));
  start_server({"--port", port()});
  start_daemon();
  EXPECT_THAT(at->line("get /snmp:snmp/agent/name"), HasSubstr("not there"));
  at->type("\x04");
  EXPECT_THAT(at->rest(), Not(HasSubstr("forget")));
}

TEST_F(Prompt, LongLoadTellsHowFarItIsAndEndsWithCtrlC) {
  std::string json = R"({"snmp:snmp": {"community": [)";
  for (int i = 0; i < 50000; ++i) {
    json += (i == 0 ? "" : ",") + (R"({"index": "c)" + std::to_string(i)) + "\"}";
  }
  const std::string name = write_file("many.json", json + "]}}");
  const auto at = prompt();
  at->line("set /snmp:snmp/agent/name kept");
  at->type("load " + name + "\n");
  at->until(" of 50000 entries loaded");
  at->type("\x03");
  EXPECT_THAT(at->until("standin*> "), HasSubstr("interrupted: nothing of it was done"));
  EXPECT_THAT(at->line("diff"), HasSubstr("+ /snmp:snmp/agent/name kept"));
  EXPECT_EQ(at->line("keys " + kCommunities).find("c1"), std::string::npos);
}

TEST_F(Prompt, HelpSaysWhatANodeTakes) {
  EXPECT_THAT(cli({"help", "/snmp:snmp/vacm/group/access/sec-level"}).out,
              AllOf(HasSubstr("Least protection"), HasSubstr("auth-priv  ")));
  EXPECT_THAT(cli({"help", "/snmp:snmp/target"}).out,
              AllOf(HasSubstr("/snmp:snmp/target{NAME}"), HasSubstr("choice params, exactly one")));
  EXPECT_THAT(cli({"help", "/snmp:snmp/target/port"}).out, HasSubstr("0 to 65535"));
  EXPECT_EQ(cli({"help", "/snmp:snmp/target/prot"}).status, 2);
}

}  // namespace
}  // namespace scenario
