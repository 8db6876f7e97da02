#include <confd_maapi.h>
#include <gtest/gtest.h>

#include <cstdlib>
#include <cstring>
#include <memory>

#include "peer.h"
#include "platform/wire/cipher.h"

namespace standin {
namespace {

constexpr int kHandle = 12;

// A MAAPI socket whose peer notes each request, and answers `next`.
class Maapi : public testing::Test {
 protected:
  void SetUp() override {
    ASSERT_EQ(maapi_connect(sock_, peer_.address(), Peer::address_size()), CONFD_OK);
  }

  void answer(FrameWriter w) { next_ = w.take(); }
  void refuse(ErrorCode code, const char* text) { answer(std::move(refusal(code).put(text))); }
  Op op() const { return op_; }
  // The elements of the last request, behind its handle where it had one.
  FrameReader& elements() { return *request_; }
  // Checks handle and path of the last request.
  void expect_request(Op op, const Path& path) {
    EXPECT_EQ(op_, op);
    EXPECT_EQ(request_->number(), std::uint64_t{kHandle});
    EXPECT_EQ(request_->path(), path);
  }

  std::string next_ = ok_answer().take();
  Op op_{};
  std::unique_ptr<FrameReader> request_;
  Peer peer_{[this](Op op, FrameReader& request) {
    op_ = op;
    request_ = std::make_unique<FrameReader>(std::move(request));
    return next_;
  }};
  Socket sock_;
};

const Path kLeaf = {{PathStep::Kind::name, "a:b", {}, {}}, {PathStep::Kind::name, "c", {}, {}}};

TEST_F(Maapi, AttachAndDetachNameTheTransaction) {
  confd_trans_ctx tctx{};
  tctx.thandle = kHandle;
  EXPECT_EQ(maapi_attach(sock_, 0, &tctx), CONFD_OK);
  EXPECT_EQ(op(), Op::attach);
  EXPECT_EQ(elements().number(), std::uint64_t{kHandle});
  EXPECT_EQ(maapi_detach(sock_, &tctx), CONFD_OK);
  EXPECT_EQ(op(), Op::detach);
  refuse(ErrorCode::nosession, "it has ended");
  EXPECT_EQ(maapi_detach(sock_, &tctx), CONFD_ERR);
  EXPECT_EQ(confd_errno, CONFD_ERR_NOSESSION);
}

TEST_F(Maapi, CallsWithoutATransactionGiveTheirResult) {
  answer(std::move(ok_answer().put(31u)));
  int handle = 0;
  EXPECT_EQ(maapi_attach_init(sock_, &handle), CONFD_OK);
  EXPECT_EQ(handle, 31);
  answer(std::move(ok_answer().put("/var/schema")));
  char* path = nullptr;
  EXPECT_EQ(maapi_get_schema_file_path(sock_, &path), CONFD_OK);
  EXPECT_STREQ(path, "/var/schema");
  std::free(path);
}

TEST_F(Maapi, ExistsGivesOneZeroOrAnError) {
  for (const bool there : {true, false}) {
    answer(std::move(ok_answer().put(there)));
    EXPECT_EQ(maapi_exists(sock_, kHandle, "/a:b/c"), there ? 1 : 0);
    expect_request(Op::exists, kLeaf);
  }
  refuse(ErrorCode::badpath, "no c below b");
  EXPECT_LT(maapi_exists(sock_, kHandle, "/a:b/c"), 0);
  EXPECT_EQ(confd_errno, CONFD_ERR_BADPATH);
  EXPECT_STREQ(confd_lasterr(), "no c below b");
}

TEST_F(Maapi, WritesSendTheirElements) {
  confd_value_t v, object[3];
  CONFD_SET_STR(&v, "x");
  EXPECT_EQ(maapi_create(sock_, kHandle, "/a:b/c"), CONFD_OK);
  expect_request(Op::create, kLeaf);
  EXPECT_EQ(maapi_delete(sock_, kHandle, "/a:b/c/"), CONFD_OK);
  expect_request(Op::remove, kLeaf);
  EXPECT_EQ(maapi_set_elem(sock_, kHandle, &v, "/%s:b/c", "a"), CONFD_OK);
  expect_request(Op::set_elem, kLeaf);
  EXPECT_EQ(elements().value(), Value::text("x"));
  EXPECT_EQ(maapi_set_elem2(sock_, kHandle, "clear", "/a:b/c"), CONFD_OK);
  expect_request(Op::set_elem_text, kLeaf);
  EXPECT_EQ(elements().text(), "clear");
  CONFD_SET_INT32(&object[0], 1);
  CONFD_SET_NOEXISTS(&object[1]);
  CONFD_SET_ENUM_VALUE(&object[2], 3);
  const Level sent = {Value::int32(1), Value(), Value::enumeration(3)};
  EXPECT_EQ(maapi_set_object(sock_, kHandle, object, 3, "/a:b/c"), CONFD_OK);
  expect_request(Op::set_object, kLeaf);
  EXPECT_EQ(elements().level(), sent);
  EXPECT_EQ(maapi_move(sock_, kHandle, &v, 1, "/a:b/c"), CONFD_OK);
  expect_request(Op::move, kLeaf);
  EXPECT_EQ(elements().level(), Level{Value::text("x")});
}

TEST_F(Maapi, RefusalGivesCodeAndText) {
  refuse(ErrorCode::badvalue, "port: 70000 is past 65535");
  confd_value_t v;
  CONFD_SET_INT32(&v, 70000);
  EXPECT_EQ(maapi_set_elem(sock_, kHandle, &v, "/a:b/c"), CONFD_ERR);
  EXPECT_EQ(confd_errno, CONFD_ERR_BADVALUE);
  EXPECT_STREQ(confd_lasterr(), "port: 70000 is past 65535");
}

TEST_F(Maapi, BadPathsAreRefusedWithoutARequest) {
  confd_value_t none;
  CONFD_SET_NOEXISTS(&none);
  const char* no_format = nullptr;
  EXPECT_EQ(maapi_create(sock_, kHandle, no_format), CONFD_ERR);
  EXPECT_EQ(confd_errno, CONFD_ERR_BADPATH);
  EXPECT_EQ(maapi_delete(sock_, kHandle, "/a:b{"), CONFD_ERR);
  EXPECT_EQ(confd_errno, CONFD_ERR_BADPATH);
  EXPECT_EQ(maapi_exists(sock_, kHandle, "/a:b{%x}", &none), CONFD_ERR);
  EXPECT_EQ(confd_errno, CONFD_ERR_BADVALUE);
  EXPECT_FALSE(request_);
}

TEST_F(Maapi, TypedGettersCheckTheType) {
  u_int32_t number = 0;
  char text[6];
  unsigned char* octets = nullptr;
  int size = 0;
  answer(std::move(ok_answer().put(Value::unsigned_number(Type::uint32, 4000000000u))));
  EXPECT_EQ(maapi_get_u_int32_elem(sock_, kHandle, &number, "/a:b/c"), CONFD_OK);
  EXPECT_EQ(number, 4000000000u);
  EXPECT_EQ(maapi_get_str_elem(sock_, kHandle, text, 6, "/a:b/c"), CONFD_ERR);
  EXPECT_EQ(confd_errno, CONFD_ERR_BADTYPE);
  EXPECT_EQ(maapi_get_binary_elem(sock_, kHandle, &octets, &size, "/a:b/c"), CONFD_ERR);
  EXPECT_EQ(confd_errno, CONFD_ERR_BADTYPE);

  answer(std::move(ok_answer().put(Value::buf("12345"))));
  EXPECT_EQ(maapi_get_u_int32_elem(sock_, kHandle, &number, "/a:b/c"), CONFD_ERR);
  EXPECT_EQ(confd_errno, CONFD_ERR_BADTYPE);
  EXPECT_EQ(maapi_get_str_elem(sock_, kHandle, text, 6, "/a:b/c"), CONFD_OK);
  EXPECT_STREQ(text, "12345");
  EXPECT_EQ(maapi_get_str_elem(sock_, kHandle, text, 5, "/a:b/c"), CONFD_ERR);
  EXPECT_EQ(confd_errno, CONFD_ERR_TOO_LONG);
  EXPECT_EQ(maapi_get_buf_elem(sock_, kHandle, &octets, &size, "/a:b/c"), CONFD_OK);
  EXPECT_EQ(std::string(reinterpret_cast<char*>(octets), size), "12345");
  std::free(octets);

  answer(std::move(ok_answer().put(Value::octets({"\0\1", 2}))));
  EXPECT_EQ(maapi_get_binary_elem(sock_, kHandle, &octets, &size, "/a:b/c"), CONFD_OK);
  ASSERT_EQ(size, 2);
  EXPECT_EQ(octets[1], 1);
  std::free(octets);
}

TEST_F(Maapi, GetElemGivesAnOwnedValueOrNotThere) {
  answer(std::move(ok_answer().put(Value::list({Value::buf("a"), Value::buf("")}))));
  confd_value_t v;
  ASSERT_EQ(maapi_get_elem(sock_, kHandle, &v, "/a:b/c"), CONFD_OK);
  expect_request(Op::get_elem, kLeaf);
  ASSERT_EQ(CONFD_GET_LISTSIZE(&v), 2u);
  EXPECT_EQ(CONFD_GET_BUFSIZE(&CONFD_GET_LIST(&v)[0]), 1u);
  confd_free_value(&v);
  refuse(ErrorCode::noexists, "/a:b/c is not there");
  EXPECT_EQ(maapi_get_elem(sock_, kHandle, &v, "/a:b/c"), CONFD_ERR);
  EXPECT_EQ(confd_errno, CONFD_ERR_NOEXISTS);
}

TEST_F(Maapi, GetCaseGivesTheTag) {
  answer(std::move(ok_answer().put(Value::tag(tag_of("from-ip")))));
  confd_value_t v;
  ASSERT_EQ(maapi_get_case(sock_, kHandle, "method", &v, "/a:b/c"), CONFD_OK);
  EXPECT_EQ(CONFD_GET_XMLTAG(&v), tag_of("from-ip").tag);
  expect_request(Op::get_case, kLeaf);
  EXPECT_EQ(elements().text(), "method");
}

TEST_F(Maapi, GetObjectGivesTheNumberOfValues) {
  answer(std::move(ok_answer().put(Level{Value::buf("key"), Value(), Value::int32(3)})));
  confd_value_t values[4];
  ASSERT_EQ(maapi_get_object(sock_, kHandle, values, 4, "/a:b/c"), 3);
  EXPECT_EQ(values[0].type, C_BUF);
  EXPECT_EQ(values[1].type, C_NOEXISTS);
  EXPECT_EQ(values[2].type, C_INT32);
  EXPECT_EQ(values[3].type, C_NOEXISTS);
  confd_free_value(&values[0]);
  EXPECT_EQ(maapi_get_object(sock_, kHandle, values, 2, "/a:b/c"), CONFD_ERR);
  EXPECT_EQ(confd_errno, CONFD_ERR_PROTOCOL);
}

TEST_F(Maapi, AttributesTravelBothWays) {
  FrameWriter w = ok_answer();
  w.array(2).array(2).put(CONFD_ATTR_ANNOTATION).put(Value::buf("note"));
  w.array(2).put(9u).put(Value::boolean(true));
  answer(std::move(w));
  u_int32_t wanted[] = {CONFD_ATTR_ANNOTATION, 9};
  confd_attr_value_t* attrs = nullptr;
  int count = -1;
  ASSERT_EQ(maapi_get_attrs(sock_, kHandle, wanted, 2, &attrs, &count, "/a:b/c"), CONFD_OK);
  ASSERT_EQ(count, 2);
  EXPECT_EQ(attrs[0].attr, CONFD_ATTR_ANNOTATION);
  EXPECT_EQ(CONFD_GET_BOOL(&attrs[1].v), 1);
  confd_free_value(&attrs[0].v);
  std::free(attrs);
  expect_request(Op::get_attrs, kLeaf);
  EXPECT_EQ(elements().array(), 2u);

  refuse(ErrorCode::noexists, "not there");
  EXPECT_EQ(maapi_get_attrs(sock_, kHandle, nullptr, 0, &attrs, &count, "/a:b/c"), CONFD_ERR);
  EXPECT_EQ(count, 0);
  answer(ok_answer());
  confd_value_t none;
  CONFD_SET_NOEXISTS(&none);
  EXPECT_EQ(maapi_set_attr(sock_, kHandle, 9, &none, "/a:b/c"), CONFD_OK);
  expect_request(Op::set_attr, kLeaf);
  EXPECT_EQ(elements().number(), 9u);
  EXPECT_TRUE(elements().skip_nil());
}

struct XpathSeen {
  int sock;
  int stop_after;
  std::vector<std::string> nodes;
};

int note_and_delete(confd_hkeypath_t* kp, confd_value_t* v, void* state) {
  auto& seen = *static_cast<XpathSeen*>(state);
  seen.nodes.push_back(std::to_string(kp->len) + (v == nullptr ? "-" : "+"));
  EXPECT_EQ(maapi_delete(seen.sock, kHandle, "%h", kp), CONFD_OK);
  return static_cast<int>(seen.nodes.size()) == seen.stop_after ? ITER_STOP : ITER_CONTINUE;
}

TEST_F(Maapi, XpathResultIsReadWholeThenGivenOut) {
  FrameWriter w = ok_answer();
  w.array(3);
  w.array(2).put(Keypath{element("a")}).put_nil();
  w.array(2).put(Keypath{element("a"), element("b")}).put(Value::buf("v"));
  w.array(2).put(Keypath{element("c")}).put_nil();
  answer(std::move(w));
  XpathSeen seen{sock_, 2, {}};
  EXPECT_EQ(maapi_xpath_eval(sock_, kHandle, "/a | /b", note_and_delete, nullptr, &seen, nullptr),
            CONFD_OK);
  EXPECT_EQ(seen.nodes, (std::vector<std::string>{"1-", "2+"}));
  EXPECT_EQ(op(), Op::remove);
  refuse(ErrorCode::xpath, "syntax");
  EXPECT_EQ(maapi_xpath_eval(sock_, kHandle, "///", note_and_delete, nullptr, &seen, nullptr),
            CONFD_ERR);
  EXPECT_EQ(confd_errno, CONFD_ERR_XPATH);
}

TEST_F(Maapi, DecryptionNeedsTheRightKey) {
  const std::string key(kKeyOctets, 'k'), other(kKeyOctets, 'o');
  const std::string form = encrypt_text("secret", key);
  char out[200] = {};
  const auto decrypt = [&](const std::string& text) {
    return confd_decrypt(text.data(), static_cast<int>(text.size()), out);
  };
  EXPECT_LT(decrypt(form), 0);
  EXPECT_EQ(confd_errno, CONFD_ERR_NO_KEYS);
  answer(std::move(ok_answer().put("short")));
  EXPECT_EQ(maapi_install_crypto_keys(sock_), CONFD_ERR);
  answer(std::move(ok_answer().put(key)));
  ASSERT_EQ(maapi_install_crypto_keys(sock_), CONFD_OK);
  EXPECT_EQ(decrypt(form), 6);
  EXPECT_EQ(std::string(out), "secret");
  EXPECT_LT(decrypt("secret"), 0);
  EXPECT_LT(decrypt(encrypt_text("secret", other)), 0);
}

TEST_F(Maapi, AnswerThatIsNoneIsAProtocolError) {
  confd_value_t v;
  answer(ok_answer());  // no value
  EXPECT_EQ(maapi_get_elem(sock_, kHandle, &v, "/a:b/c"), CONFD_ERR);
  EXPECT_EQ(confd_errno, CONFD_ERR_PROTOCOL);
  next_ = std::string("\0\0\0\3\xc1\xc1\xc1", 7);  // no msgpack
  EXPECT_EQ(maapi_create(sock_, kHandle, "/a:b/c"), CONFD_ERR);
  EXPECT_EQ(confd_errno, CONFD_ERR_PROTOCOL);
  answer(std::move(frame(std::uint64_t{4711}).put("?")));
  EXPECT_EQ(maapi_create(sock_, kHandle, "/a:b/c"), CONFD_ERR);
  EXPECT_EQ(confd_errno, CONFD_ERR_PROTOCOL);
  next_ = std::string("\xff\xff\xff\xff", 4);  // a length that no frame has
  EXPECT_EQ(maapi_create(sock_, kHandle, "/a:b/c"), CONFD_ERR);
  EXPECT_EQ(confd_errno, CONFD_ERR_PROTOCOL);
  answer(ok_answer());  // the connection is lost all the same
  EXPECT_EQ(maapi_create(sock_, kHandle, "/a:b/c"), CONFD_ERR);
}

TEST_F(Maapi, ServerThatHasGoneIsAnError) {
  next_.clear();
  EXPECT_EQ(maapi_create(sock_, kHandle, "/a:b/c"), CONFD_ERR);
  EXPECT_EQ(confd_errno, CONFD_ERR_OS);
}

TEST(MaapiConnect, RefusalAndForeignSocketAreErrors) {
  Peer peer;
  peer.greeting = refusal(ErrorCode::protocol).put("other version").take();
  Socket sock;
  EXPECT_EQ(maapi_connect(sock, peer.address(), Peer::address_size()), CONFD_ERR);
  EXPECT_EQ(confd_errno, CONFD_ERR_PROTOCOL);
  EXPECT_EQ(maapi_create(12345, 1, "/a"), CONFD_ERR);
  EXPECT_EQ(confd_errno, CONFD_ERR_APIUSE);
}

}  // namespace
}  // namespace standin
