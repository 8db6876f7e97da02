#include "platform/libconfd/path_format.h"

#include <confd_lib.h>
#include <gtest/gtest.h>

#include "peer.h"
#include "platform/libconfd/convert.h"
#include "platform/libconfd/error.h"

namespace standin {
namespace {

Path parsed(const char* fmt, ...) {
  va_list args;
  va_start(args, fmt);
  struct End {
    va_list& a;
    ~End() { va_end(a); }
  } end{args};
  return path_from_format(fmt, args);
}

PathStep name(const char* n) { return {PathStep::Kind::name, n, {}, {}}; }
PathStep keys(Level k) { return {PathStep::Kind::keys, {}, {}, std::move(k)}; }
PathStep tag(const char* n) { return {PathStep::Kind::tag, {}, tag_of(n), {}}; }

confd_value_t text_value(const char* s) {
  confd_value_t v;
  CONFD_SET_STR(&v, s);
  return v;
}

TEST(PathFormat, KeysTravelTypedWhateverTheyHold) {
  confd_value_t model, str = text_value("}/x{ \"%s\\"), empty = text_value("");
  CONFD_SET_INT32(&model, 3);
  confd_snmp_oid oid{{1, 3}, 2};
  confd_value_t o;
  CONFD_SET_OID(&o, &oid);
  EXPECT_EQ(parsed("/p:a/b{%x %x}/c", &model, &str),
            (Path{name("p:a"), name("b"), keys({Value::int32(3), Value::text("}/x{ \"%s\\")}),
                  name("c")}));
  EXPECT_EQ(parsed("/b{%x}", &empty), (Path{name("b"), keys({Value::text("")})}));
  EXPECT_EQ(parsed("/b{%x %x %x %x}/c/", &o, &model, &o, &model),
            (Path{name("b"),
                  keys({Value::oid({1, 3}), Value::int32(3), Value::oid({1, 3}), Value::int32(3)}),
                  name("c")}));
}

TEST(PathFormat, KeypathAndTagsAreSteps) {
  const Keypath path = {element("snmp"), element("user"), {Value::buf("a}b")}};
  OwnedKeypath kp(path);
  confd_value_t t;
  CONFD_SET_XMLTAG(&t, tag_of("auth").tag, tag_of("auth").ns);
  const Path user = {tag("snmp"), tag("user"), keys({Value::buf("a}b")})};
  EXPECT_EQ(parsed("%h", kp.get()), user);
  Path deeper = user;
  deeper.push_back(name("sec-name"));
  EXPECT_EQ(parsed("%h/sec-name", kp.get()), deeper);
  EXPECT_EQ(parsed("/a/%x/%x/key", &t, &t),
            (Path{name("a"), tag("auth"), tag("auth"), name("key")}));
}

TEST(PathFormat, TextIsSplicedAndSlashesAreForgiven) {
  EXPECT_EQ(parsed("%s/d%d", "/a{k \"x y\"}", 5),
            (Path{name("a"), keys({Value::text("k"), Value::text("x y")}), name("d5")}));
  EXPECT_EQ(parsed("/a//b/"), (Path{name("a"), name("b")}));
  EXPECT_EQ(parsed("/a{%s %d}", "two }words", -1),
            (Path{name("a"), keys({Value::text("two }words"), Value::text("-1")})}));
  EXPECT_EQ(parsed("/a{\"l%s\" m}", "\"q"),
            (Path{name("a"), keys({Value::text("l\"q"), Value::text("m")})}));
}

TEST(PathFormat, MalformedFormatIsRefused) {
  confd_value_t key = text_value("k"), t;
  CONFD_SET_XMLTAG(&t, 1, 1);
  const char* bad[] = {"",     "a",      "/a{",     "/a{}",    "/a{%x}b", "/a{%x}{%x}", "{%x}",
                       "/a%q", "/a{%q}", "/a{x%x}", "/a{%xx}", "/a/%x",   "/a{\"b}",    "/a/%"};
  for (const char* fmt : bad) {
    try {
      parsed(fmt, &key, &key);
      ADD_FAILURE() << fmt;
    } catch (const ApiError& e) {
      EXPECT_EQ(e.code, CONFD_ERR_BADPATH) << fmt;
    } catch (const PathError&) {
    }
  }
  EXPECT_THROW(parsed("/a%x", &t), ApiError);
  EXPECT_THROW(parsed(nullptr), ApiError);
  EXPECT_THROW(parsed("/a{%x}", nullptr), ApiError);
  EXPECT_THROW(parsed("%h", nullptr), ApiError);
  EXPECT_THROW(parsed("/a%s", nullptr), ApiError);
  CONFD_SET_LIST(&t, nullptr, 0);
  EXPECT_THROW(parsed("/a{%x}", &t), ApiError);
}

}  // namespace
}  // namespace standin
