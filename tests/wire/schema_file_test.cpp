#include "platform/wire/schema_file.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <functional>
#include <iterator>
#include <tuple>

namespace standin {
namespace {

using Kind = SchemaFileNode::Kind;

SchemaFile sample() {
  const std::uint32_t ns = 9;
  SchemaFile schema;
  schema.nodes = {
      {{1, ns}, "snmp", "snmp", Kind::container, 0, Type::xmltag, false, {}, {}},
      {{2, ns}, "usm", "snmp", Kind::list, 1, Type::buf, false, {{3, ns}, {4, ns}}, {}},
      {{3, ns}, "name", "snmp", Kind::leaf, 2, Type::buf, false, {}, {}},
      {{4, ns},
       "level",
       "snmp",
       Kind::leaf,
       2,
       Type::enumeration,
       false,
       {},
       {{-1, "none"}, {3, "auth-priv"}}},
      {{5, ns}, "protocol", "snmp", Kind::choice, 2, Type::buf, false, {}, {}},
      {{6, ns}, "md5", "snmp", Kind::case_, 5, Type::buf, false, {}, {}},
      {{7, ns}, "password", "snmp", Kind::leaf, 6, Type::buf, true, {}, {}},
      {{8, ns}, "tag", "snmp", Kind::leaf_list, 2, Type::uint32, false, {}, {}},
  };
  return schema;
}

class SchemaFileTest : public ::testing::Test {
 protected:
  SchemaFileTest() {
    std::string pattern = ::testing::TempDir() + "schema.XXXXXX";
    directory_ = mkdtemp(pattern.data());
    path_ = directory_ / "schema";
  }
  ~SchemaFileTest() override { std::filesystem::remove_all(directory_); }

  std::string octets() const {
    std::ifstream in(path_, std::ios::binary);
    return {std::istreambuf_iterator<char>(in), {}};
  }
  void overwrite(const std::string& octets) const {
    std::ofstream(path_, std::ios::binary) << octets;
  }

  std::filesystem::path directory_;
  std::filesystem::path path_;
};

TEST_F(SchemaFileTest, WrittenSchemaIsReadBackAndTheOnlyFileReadableByAll) {
  overwrite("an older file");
  write_schema_file(path_, sample());
  const auto parts = [](const SchemaFileNode& n) {
    return std::tie(n.tag, n.name, n.prefix, n.kind, n.parent, n.type, n.secret, n.keys, n.labels);
  };
  const SchemaFile schema = read_schema_file(path_), expected = sample();
  ASSERT_EQ(schema.nodes.size(), expected.nodes.size());
  for (std::size_t i = 0; i < expected.nodes.size(); ++i)
    EXPECT_TRUE(parts(schema.nodes[i]) == parts(expected.nodes[i])) << i;
  EXPECT_EQ(std::filesystem::status(path_).permissions(), std::filesystem::perms(0644));
  EXPECT_EQ(std::distance(std::filesystem::directory_iterator(directory_), {}), 1);
}

TEST_F(SchemaFileTest, FailedWriteLeavesNothingBehind) {
  std::filesystem::create_directories(path_ / "in the way");
  EXPECT_THROW(write_schema_file(path_, sample()), std::runtime_error);
  EXPECT_EQ(std::distance(std::filesystem::directory_iterator(directory_), {}), 1);
  EXPECT_THROW(write_schema_file(directory_ / "absent" / "schema", sample()), std::runtime_error);
}

TEST_F(SchemaFileTest, CutProlongedOrForeignFileIsRefused) {
  for (const auto& place : {path_, directory_})
    EXPECT_THROW(read_schema_file(place), std::runtime_error);
  write_schema_file(path_, sample());
  const std::string whole = octets();
  std::vector<std::string> bad = {whole + '\0', std::string(1000, 'Q')};
  for (std::size_t size = 0; size < whole.size(); ++size) bad.push_back(whole.substr(0, size));
  for (const std::string& file : bad) {
    overwrite(file);
    EXPECT_THROW(read_schema_file(path_), std::runtime_error) << file.size();
  }
}

TEST_F(SchemaFileTest, ChangedOctetsNeverDoMoreThanFail) {
  write_schema_file(path_, sample());
  const std::string whole = octets();
  for (std::size_t i = 0; i < 13; ++i) {  // magic, length, the message's array
    std::string changed = whole;
    changed[i] = static_cast<char>(changed[i] ^ 0x40);
    overwrite(changed);
    EXPECT_THROW(read_schema_file(path_), std::runtime_error) << i;
  }
  for (std::size_t i = 13; i < whole.size(); ++i) {
    for (const int bits : {0x01, 0x80, 0xff}) {
      std::string changed = whole;
      changed[i] = static_cast<char>(changed[i] ^ bits);
      overwrite(changed);
      try {
        read_schema_file(path_);
      } catch (const std::runtime_error&) {  // as good
      }
    }
  }
}

TEST_F(SchemaFileTest, FileThatLiesIsRefused) {
  const std::pair<const char*, std::function<void(SchemaFile&)>> lies[] = {
      {"node before its parent", [](SchemaFile& s) { s.nodes[1].parent = 2; }},
      {"parent past the end", [](SchemaFile& s) { s.nodes[7].parent = 4000000000u; }},
      {"node below a leaf", [](SchemaFile& s) { s.nodes[3].parent = 3; }},
      {"unknown kind", [](SchemaFile& s) { s.nodes[2].kind = static_cast<Kind>(6); }},
      {"unknown type", [](SchemaFile& s) { s.nodes[2].type = static_cast<Type>(3); }},
      {"keys of a leaf",
       [](SchemaFile& s) {
         s.nodes[2].keys = {{3, 9}};
       }},
      {"key that is no leaf",
       [](SchemaFile& s) {
         s.nodes[1].keys = {{7, 9}};
       }},
  };
  for (const auto& [what, lie] : lies) {
    SchemaFile schema = sample();
    lie(schema);
    write_schema_file(path_, schema);
    EXPECT_THROW(read_schema_file(path_), std::runtime_error) << what;
  }
}

}  // namespace
}  // namespace standin
