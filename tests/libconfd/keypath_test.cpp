#include <confd_lib.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <cstdlib>
#include <cstring>
#include <filesystem>

#include "peer.h"
#include "platform/libconfd/convert.h"
#include "platform/wire/schema_file.h"

namespace standin {
namespace {

using Kind = SchemaFileNode::Kind;

SchemaFileNode node(const char* name, Kind kind, std::uint32_t parent) {
  SchemaFileNode n;
  n.tag = tag_of(name);
  n.name = name;
  n.prefix = "snmp";
  n.kind = kind;
  n.parent = parent;
  return n;
}

// /snmp/access{context level} with an enumeration as key, a leaf-list of octets, and a leaf in a
// case of a choice.
SchemaFile schema() {
  SchemaFile file;
  file.nodes.push_back(node("snmp", Kind::container, 0));
  file.nodes.push_back(node("access", Kind::list, 1));
  file.nodes.back().keys = {tag_of("context"), tag_of("level")};
  file.nodes.push_back(node("context", Kind::leaf, 2));
  file.nodes.push_back(node("level", Kind::leaf, 2));
  file.nodes.back().type = Type::enumeration;
  file.nodes.back().labels = {{1, "no-auth"}, {3, "auth-priv"}};
  file.nodes.push_back(node("engine", Kind::leaf_list, 2));
  file.nodes.push_back(node("choice", Kind::choice, 2));
  file.nodes.push_back(node("case", Kind::case_, 6));
  file.nodes.push_back(node("inside", Kind::leaf, 7));
  return file;
}

class KeypathPrint : public testing::Test {
 protected:
  static void SetUpTestSuite() {
    const std::string file =
        (std::filesystem::temp_directory_path() / ("libconfd-schema-" + std::to_string(::getpid())))
            .string();
    write_schema_file(file, schema());
    ASSERT_EQ(confd_mmap_schemas(file.c_str()), CONFD_OK);
    ASSERT_EQ(confd_mmap_schemas(file.c_str()), CONFD_OK);
    std::filesystem::remove(file);
  }

  static std::string printed(const Keypath& path) {
    OwnedKeypath kp(path);
    char buf[300];
    const int n = confd_pp_kpath(buf, sizeof buf, kp.get());
    EXPECT_EQ(n, static_cast<int>(std::strlen(buf)));
    return buf;
  }
};

Level entry(const char* context, int level) {
  return {Value::buf(context), Value::enumeration(level)};
}

TEST_F(KeypathPrint, KnownNodesPrintByNameAndLabel) {
  const Level snmp = element("snmp"), access = element("access");
  const struct {
    Keypath path;
    const char* text;
  } cases[] = {
      {{}, "/"},
      {{snmp}, "/snmp:snmp"},
      {{snmp, access, entry("c", 3)}, "/snmp:snmp/access{c auth-priv}"},
      {{snmp, access, entry("", 1), element("level")}, "/snmp:snmp/access{\"\" no-auth}/level"},
      {{snmp, access, entry("a b", 2)}, "/snmp:snmp/access{\"a b\" 2}"},
      {{snmp, access, entry("q\"{\\", 1)}, "/snmp:snmp/access{\"q\\\"{\\\\\" no-auth}"},
      {{snmp, access, entry("c", 1), element("engine"), {Value::octets("\x80\x7e")}},
       "/snmp:snmp/access{c no-auth}/engine{80:7e}"},
      {{snmp, access, entry("c", 1), element("inside")}, "/snmp:snmp/access{c no-auth}/inside"},
      {{snmp, {Value::tag({42, 1})}, {Value::int32(-1)}, {Value::tag({43, 1})}},
       "/snmp:snmp/42{-1}/43"},
  };
  for (const auto& c : cases) EXPECT_EQ(printed(c.path), c.text);
}

TEST_F(KeypathPrint, ShortBufferGivesCutTextAndWholeLength) {
  OwnedKeypath kp({element("snmp")});
  char buf[6];
  EXPECT_EQ(confd_pp_kpath(buf, 6, kp.get()), 10);
  EXPECT_STREQ(buf, "/snmp");
  EXPECT_EQ(confd_pp_kpath(nullptr, 0, kp.get()), 10);
}

TEST_F(KeypathPrint, TagsPrintByNameOrNumber) {
  EXPECT_STREQ(confd_xmltag2str(7, tag_number("access")), "access");
  EXPECT_STREQ(confd_xmltag2str(7, tag_number("case")), "case");
  EXPECT_STREQ(confd_xmltag2str(8, 4294967295u), "4294967295");
  EXPECT_STREQ(confd_xmltag2str(7, 0), "0");
}

TEST(FormatKeypath, ValuesNeverRunIntoEachOther) {
  const struct {
    const char *a, *b, *text;
  } cases[] = {{"alice", "admins", "3;alice;admins"},
               {"two words", "b;c", "3;two words;\"b;c\""},
               {"", "\"\"", "3;\"\";\"\\\"\\\"\""},
               {"\\", "%s%n", "3;\"\\\\\";%s%n"}};
  for (const auto& c : cases) {
    confd_value_t v[3];
    CONFD_SET_INT32(&v[0], 3);
    CONFD_SET_BUF(&v[1], c.a, std::strlen(c.a));
    CONFD_SET_BUF(&v[2], c.b, std::strlen(c.b));
    char buf[200];
    confd_format_keypath(buf, sizeof buf, "%x;%x;%x", &v[0], &v[1], &v[2]);
    EXPECT_STREQ(buf, c.text);
  }
}

TEST(FormatKeypath, OtherConversionsGiveTheirTextCutToTheBuffer) {
  char buf[17];
  confd_value_t key;
  CONFD_SET_STR(&key, "a b");
  EXPECT_EQ(confd_format_keypath(buf, 17, "/%s{%x}/%d%%", "list", &key, -4), 16);
  EXPECT_STREQ(buf, "/list{\"a b\"}/-4%");
  EXPECT_EQ(confd_format_keypath(buf, 4, "%s", "abcdef"), 6);
  EXPECT_STREQ(buf, "abc");
  EXPECT_EQ(confd_format_keypath(buf, 4, nullptr), 0);
  EXPECT_STREQ(buf, "");
}

TEST(FreeHkeypath, MallocedKeypathIsFreedWithItsValues) {
  auto* kp = static_cast<confd_hkeypath_t*>(std::malloc(sizeof(confd_hkeypath_t)));
  confd_value_t v;
  CONFD_SET_STR(&v, "key");
  kp->len = 1;
  confd_value_dup_to(&v, &kp->v[0][0]);
  CONFD_SET_NOEXISTS(&kp->v[0][1]);
  confd_free_hkeypath(kp);  // a leak or a double free is for the sanitizers
  confd_free_hkeypath(nullptr);
}

}  // namespace
}  // namespace standin
