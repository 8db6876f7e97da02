// An agent of the distribution, given the rows as they stand in the three tables, shows what RFC
// 3415 allows.
#include <gmock/gmock.h>

#include <set>
#include <sstream>

#include "snmpd.h"
#include "vacm.h"

namespace scenario {
namespace {

constexpr char kSystem[] = "1.3.6.1.2.1.1";

using Oid = std::vector<std::uint32_t>;

Oid parse_oid(const std::string& text) {
  Oid oid;
  std::istringstream in(text);
  for (std::string part; std::getline(in, part, '.');) {
    if (!part.empty()) oid.push_back(static_cast<std::uint32_t>(std::stoul(part)));
  }
  return oid;
}

// A row of vacmViewTreeFamilyTable.
struct Family {
  std::string view, oid, mask;  // the mask as "ff:a0"
  bool included = false;

  // RFC 3415 section 4, vacmViewTreeFamilyMask: bits past the end are ones.
  bool covers(const Oid& object) const {
    const Oid subtree = parse_oid(oid);
    if (object.size() < subtree.size()) return false;
    for (std::size_t i = 0; i < subtree.size(); ++i) {
      const std::size_t digits = i / 8 * 3;
      const unsigned octet =
          digits < mask.size()
              ? static_cast<unsigned>(std::stoul(mask.substr(digits, 2), nullptr, 16))
              : 0xffU;
      if ((octet & (0x80U >> i % 8)) != 0 && object[i] != subtree[i]) return false;
    }
    return true;
  }
};

// RFC 3415 section 4, vacmViewTreeFamilyTable: the longest family decides, then the greatest.
bool in_view(const std::vector<Family>& families, const std::string& view, const Oid& object) {
  const Family* best = nullptr;
  const auto rank = [](const Family& f) {
    const Oid oid = parse_oid(f.oid);
    return std::pair(oid.size(), oid);
  };
  for (const Family& f : families) {
    if (f.view != view || !f.covers(object)) continue;
    if (best == nullptr || rank(*best) < rank(f)) best = &f;
  }
  return best != nullptr && best->included;
}

class VacmAgent : public Vacm {
 protected:
  void SetUp() override {
    Vacm::SetUp();
    snmpd_ = std::make_unique<Snmpd>(file("snmp"), port());
    answers(snmpd_->settings());
  }

  std::string value(const std::string& path) {
    std::string text = get(path);
    if (!text.empty()) text.pop_back();
    return text;
  }
  std::vector<Strings> rows(const std::string& table) {
    std::vector<Strings> all;
    std::istringstream lines(cli({"keys", table}).out);
    for (std::string line; std::getline(lines, line);) {
      std::istringstream words(line);
      Strings keys;
      for (std::string word; words >> word;) keys.push_back(word);
      all.push_back(keys);
    }
    return all;
  }
  std::vector<Family> families() {
    std::vector<Family> all;
    for (const Strings& keys : rows(kViewRows)) {
      const std::string row = kViewRows + "{" + keys[0] + " " + keys[1] + "}/vacmViewTreeFamily";
      all.push_back({keys[0], keys[1], value(row + "Mask"), value(row + "Type") == "included"});
    }
    return all;
  }

  // Each security name is its own community.
  static Strings community(const std::string& name) {
    return {"create " + keyed(kCommunities, name),
            "set " + keyed(kCommunities, name) + "/sec-name " + name};
  }

  // The objects below `system` that a community sees.
  std::set<Oid> walk(const std::string& community) {
    std::istringstream lines(snmpd_->ask(
        {"snmpwalk", "-v2c", "-c", community, "-On", "-Oq", "-t", "10", "-r", "1"}, {kSystem}));
    std::set<Oid> seen;
    for (std::string line; std::getline(lines, line);) {
      if (line.find("No ") == std::string::npos && line.front() == '.')
        seen.insert(parse_oid(line.substr(0, line.find(' '))));
    }
    return seen;
  }

  std::unique_ptr<Snmpd> snmpd_;
};

TEST_F(VacmAgent, WalksShowExactlyWhatTheViewsAllow) {
  const std::string table = std::string(kSystem) + ".9.1";
  struct View {
    std::string name;
    std::vector<std::pair<std::string, std::string>> subtrees;  // text, type
  };
  const View views[] = {
      {"everything", {{"1.3", "included"}}},
      {"scalar", {{std::string(kSystem) + ".5", "included"}}},
      // One row of the table, all columns; the mask's bits reach into its second octet.
      {"onerow", {{table + ".*.2", "included"}}},
      {"wild-all", {{"*.*.6", "included"}}},
      {"but-table", {{kSystem, "included"}, {std::string(kSystem) + ".9", "excluded"}}},
      {"but-row", {{kSystem, "included"}, {table + ".*.3", "excluded"}}},
      {"but-back",
       {{kSystem, "included"},
        {std::string(kSystem) + ".9", "excluded"},
        {table + ".*.1", "included"}}},
      {"elsewhere", {{"1.3.6.1.4", "included"}}},
  };
  Strings lines;
  for (const View& v : views) {
    for (const auto& [text, type] : v.subtrees)
      lines.push_back("create " + subtree(v.name, text) + "/" + type);
    for (const std::string& line : community(v.name)) lines.push_back(line);
    lines.push_back("create " + models("g-" + v.name, v.name) + "{v2c}");
    lines.push_back("set " + group("g-" + v.name) + "/access{\"\" any no-auth-no-priv}/read-view " +
                    v.name);
  }
  answers(lines);
  snmpd_->start();
  ASSERT_FALSE(HasFatalFailure());

  const std::set<Oid> all = walk("everything");
  ASSERT_GT(all.size(), 20U) << "the agent has a table below system";
  const std::vector<Family> all_families = families();
  for (const View& v : views) {
    SCOPED_TRACE(v.name);
    std::set<Oid> allowed;
    for (const Oid& object : all) {
      if (in_view(all_families, v.name, object)) allowed.insert(object);
    }
    EXPECT_EQ(walk(v.name), allowed);
    // Each view of the table above has another content.
    EXPECT_EQ(allowed.empty(), v.name == "elsewhere");
    EXPECT_EQ(allowed == all, v.name == "everything" || v.name == "wild-all");
  }
  EXPECT_TRUE(snmpd_->agent().alive());
}

}  // namespace
}  // namespace scenario
