#include <gtest/gtest.h>

#include "agent-world.h"

namespace scenario {
namespace {

class ListenAddresses : public Running {};

const std::string kList = kSettings + "/extraIpPorts";
const std::string kEntries = kAgent + "/extra-ip-port";
const std::string kMixed =
    "10.0.0.2:161 host:161 [::1]:161 10.0.0.1:162 2001:db8::1 10.0.0.1 2001:db8::1:161"
    " [2001:db8::2] \"\" 10.0.0.1:1000 fe80::1%lo:161 [fe80::1%1]:161 9.255.0.0:5";

std::string entry(const std::string& keys) { return kEntries + "{" + keys + "}"; }

TEST_F(ListenAddresses, AllFormsAreListedInKeyOrderAndTheRestIsNot) {
  answers({"set " + kAgent + "/port 1161", "set " + kList + " " + kMixed});
  EXPECT_EQ(cli({"keys", kEntries}).out,
            "9.255.0.0 5\n10.0.0.1 162\n10.0.0.1 1000\n10.0.0.1 1161\n10.0.0.2 161\n::1 161\n"
            "2001:db8::1 161\n2001:db8::2 1161\n");
  EXPECT_EQ(answers({"get " + entry("2001:db8::2 1161") + "/ip",
                     "get " + entry("2001:db8::2 1161") + "/port",
                     "exists " + entry("2001:db8::2 161"), "exists " + entry("2001:db8:: 1")}),
            "2001:db8::2\n1161\nfalse\nfalse\n");
}

TEST_F(ListenAddresses, WithoutAPortOfTheAgentItemsWithoutOneAreSkipped) {
  answers({"create " + kSettings, "set " + kList + " " + kMixed});
  EXPECT_EQ(cli({"keys", kEntries}).out,
            "9.255.0.0 5\n10.0.0.1 162\n10.0.0.1 1000\n10.0.0.2 161\n::1 161\n2001:db8::1 161\n");
  EXPECT_EQ(cli({"exists", entry("10.0.0.1 1161")}).status, 1);
  answers({"create " + entry("10.0.0.1 1161")});
  EXPECT_EQ(cli({"get", kList}).out, kMixed + " 10.0.0.1:1161\n");
}

TEST_F(ListenAddresses, CreationAppendsDeletionTakesExactlyThatItemAndRefusalsNothing) {
  const std::string stored = "host:161 10.0.0.1 [::1]:161 10.0.0.1:1161 \"\" ::1";
  answers({"set " + kAgent + "/port 161", "set " + kList + " " + stored});
  const std::pair<std::string, std::string> cases[] = {
      {"create " + entry("10.0.0.1 161"), "already exists"},
      {"create " + entry("0:0:0:0:0:0:0:1 161"), "already exists"},
      {"delete " + entry("10.0.0.1 162"), "not there"},
      {"create " + entry("fe80::1%1 161"), "ip"},
      {"create " + entry("10.0.0.1 65536"), "port"},
      {"create " + entry("host 161"), "ip"},
  };
  for (const auto& [command, text] : cases) refused({command}, text, kSettings);
  answers({"create " + entry("192.0.2.1 161"), "create " + entry("2001:db8::1 65535")});
  EXPECT_EQ(get(kList), stored + " 192.0.2.1:161 2001:db8::1:65535\n");
  answers({"delete " + entry("192.0.2.1 161"), "delete " + entry("2001:db8::1 65535"),
           "delete " + entry("10.0.0.1 161"), "delete " + entry("::1 161")});
  EXPECT_EQ(get(kList), "host:161 10.0.0.1:1161 \"\" ::1\n");
}

TEST_F(ListenAddresses, ItemsOfAnyLengthAreReadAndKept) {
  const std::string name(5000, 'x');
  const std::string number = "10.0.0.1:" + std::string(5000, '0') + "161";
  answers({"create " + kSettings, "set " + kList + " " + name + " " + number});
  EXPECT_EQ(answers({"keys " + kEntries, "create " + entry("::1 1"), "keys " + kEntries}),
            "10.0.0.1 161\n10.0.0.1 161\n::1 1\n");
  EXPECT_EQ(answers({"delete " + entry("::1 1"), "get " + kList}), name + " " + number + "\n");
}

}  // namespace
}  // namespace scenario
