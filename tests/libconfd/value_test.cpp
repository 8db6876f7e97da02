#include <arpa/inet.h>
#include <confd_lib.h>
#include <gtest/gtest.h>

#include <cstdlib>
#include <cstring>
#include <functional>
#include <string>
#include <thread>

extern "C" int api_from_c(void);

namespace {

std::string printed(const confd_value_t& v) {
  char buf[256];
  const int n = confd_pp_value(buf, sizeof buf, &v);
  EXPECT_EQ(n, static_cast<int>(std::strlen(buf)));
  return buf;
}

confd_snmp_oid g_oid{{1, 3, 4294967295u}, 3};
confd_snmp_oid g_zero{{0}, 1};
unsigned char g_octets[] = {0x80, 0x00, 0x7e, 0xd9};
char g_text[] = "a \"b\"";
confd_value_t g_items[2];

// One value of every type, freshly set.
struct Sample {
  const char* text;
  std::function<void(confd_value_t*)> set;
};
const Sample kSamples[] = {
    {"", [](auto* v) { CONFD_SET_NOEXISTS(v); }},
    {"77", [](auto* v) { CONFD_SET_XMLTAG(v, 77, 99); }},
    {"a \"b\"", [](auto* v) { CONFD_SET_BUF(v, g_text, 5); }},
    {"", [](auto* v) { CONFD_SET_BUF(v, nullptr, 0); }},
    {"80:00:7e:d9", [](auto* v) { CONFD_SET_BINARY(v, g_octets, 4); }},
    {"-2147483648", [](auto* v) { CONFD_SET_INT32(v, INT32_MIN); }},
    {"255", [](auto* v) { CONFD_SET_UINT8(v, 255); }},
    {"65535", [](auto* v) { CONFD_SET_UINT16(v, 65535); }},
    {"4294967295", [](auto* v) { CONFD_SET_UINT32(v, UINT32_MAX); }},
    {"18446744073709551615", [](auto* v) { CONFD_SET_UINT64(v, UINT64_MAX); }},
    {"true", [](auto* v) { CONFD_SET_BOOL(v, 1); }},
    {"3", [](auto* v) { CONFD_SET_ENUM_VALUE(v, 3); }},
    {"1.3.4294967295", [](auto* v) { CONFD_SET_OID(v, &g_oid); }},
    {"0", [](auto* v) { CONFD_SET_OID(v, &g_zero); }},
    {"127.0.0.1",
     [](auto* v) {
       in_addr a;
       inet_pton(AF_INET, "127.0.0.1", &a);
       CONFD_SET_IPV4(v, a);
     }},
    {"fe80::1",
     [](auto* v) {
       in6_addr a;
       inet_pton(AF_INET6, "fe80:0::1", &a);
       CONFD_SET_IPV6(v, a);
     }},
    {"1 a \"b\"",
     [](auto* v) {
       CONFD_SET_INT32(&g_items[0], 1);
       CONFD_SET_BUF(&g_items[1], g_text, 5);
       CONFD_SET_LIST(v, g_items, 2);
     }},
    {"", [](auto* v) { CONFD_SET_LIST(v, nullptr, 0); }},
};

TEST(ApiHeaders, UsedFromCGivesBackWhatWasSet) { EXPECT_EQ(api_from_c(), 0); }

TEST(PpValue, EachTypeGivesItsText) {
  for (const Sample& s : kSamples) {
    confd_value_t v;
    s.set(&v);
    EXPECT_EQ(printed(v), s.text) << "type " << v.type;
  }
}

TEST(PpValue, ShortBufferGivesCutTextAndWholeLength) {
  confd_value_t v;
  CONFD_SET_STR(&v, "community");
  char buf[5] = "####";
  EXPECT_EQ(confd_pp_value(buf, 5, &v), 9);
  EXPECT_STREQ(buf, "comm");
  EXPECT_EQ(confd_pp_value(buf, 1, &v), 9);
  EXPECT_STREQ(buf, "");
  EXPECT_EQ(confd_pp_value(nullptr, 0, &v), 9);
}

TEST(PpValue, BrokenValueGivesEmptyText) {
  confd_value_t v;
  v.type = static_cast<confd_vtype>(63);
  EXPECT_EQ(printed(v), "");
  confd_snmp_oid broken{{1}, 129};
  CONFD_SET_OID(&v, &broken);
  EXPECT_EQ(printed(v), "");
}

TEST(ValueDup, CopyIsEqualAndItsOwn) {
  for (const Sample& s : kSamples) {
    confd_value_t v, copy;
    s.set(&v);
    ASSERT_EQ(confd_value_dup_to(&v, &copy), &copy);
    EXPECT_EQ(confd_val_eq(&v, &copy), 1) << "type " << v.type;
    if (v.type == C_BUF && v.val.buf.size != 0) {
      EXPECT_NE(copy.val.buf.ptr, v.val.buf.ptr);
    }
    confd_free_value(&copy);
    EXPECT_EQ(copy.type, C_NOEXISTS);
    confd_free_value(&copy);
  }
  confd_value_t v, copy;
  CONFD_SET_STR(&v, "text");
  confd_value_dup_to(&v, &copy);
  EXPECT_EQ(copy.type, C_BUF);
  confd_free_value(&copy);
  confd_free_value(&v);  // must not free the literal
}

TEST(ValEq, OnlySameTypeAndContentAreEqual) {
  for (const Sample& a : kSamples) {
    for (const Sample& b : kSamples) {
      confd_value_t left, right;
      a.set(&left);
      b.set(&right);
      EXPECT_EQ(confd_val_eq(&left, &right), &a == &b) << left.type << " and " << right.type;
    }
  }
  confd_value_t shorter, longer;
  CONFD_SET_BUF(&shorter, g_text, 2);
  CONFD_SET_BUF(&longer, g_text, 3);
  EXPECT_EQ(confd_val_eq(&shorter, &longer), 0);
}

TEST(GetterDeathTest, WrongTypeEndsWithTheExpressionAsText) {
  confd_value_t v;
  CONFD_SET_INT32(&v, 1);
  confd_value_t* tag = &v;
  EXPECT_DEATH((void)CONFD_GET_XMLTAG(tag), "\\(tag\\)->type == C_XMLTAG");
}

TEST(Errors, EachThreadHasItsOwnUntilTheNextFailure) {
  EXPECT_NE(confd_mmap_schemas("/nowhere/schema"), CONFD_OK);
  const int code = confd_errno;
  const std::string text = confd_lasterr();
  EXPECT_NE(text, "");
  std::thread([] {
    EXPECT_EQ(confd_errno, 0);
    EXPECT_STREQ(confd_lasterr(), "");
    confd_errno = 5;
  }).join();
  confd_value_t v;
  CONFD_SET_INT32(&v, 1);
  printed(v);  // a success in between
  EXPECT_EQ(confd_errno, code);
  EXPECT_EQ(confd_lasterr(), text);
}

TEST(Errors, EveryCodeHasATextOfItsOwn) {
  const std::string unknown = confd_strerror(9999);
  for (int code = 0; code <= CONFD_ERR_CONFLICT; ++code)
    EXPECT_EQ(confd_strerror(code) == unknown, code == 18) << code;
}

TEST(FatalDeathTest, EndsWithStatus1AndTheTextFromAnyThread) {
  EXPECT_EXIT(confd_fatal("no %s %d%%", "server", 5), testing::ExitedWithCode(1), "no server 5%");
  EXPECT_EXIT(std::thread([] { confd_fatal("from a thread"); }).join(), testing::ExitedWithCode(1),
              "from a thread");
}

TEST(InitDeathTest, OtherVersionOrDimensionsEndTheProcess) {
  EXPECT_EXIT(confd_init_vsn_sz("t", stderr, CONFD_SILENT, CONFD_LIB_VSN + 1, MAXDEPTH, MAXKEYLEN),
              testing::ExitedWithCode(1), "version");
  EXPECT_EXIT(confd_init_vsn_sz("t", stderr, CONFD_SILENT, CONFD_LIB_VSN, MAXDEPTH + 1, MAXKEYLEN),
              testing::ExitedWithCode(1), "levels");
}

}  // namespace
