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

TEST_F(Maapi, DetachOfAnEndedTransactionGivesTheServersCode) {
  confd_trans_ctx tctx{};
  answer(std::move(refusal(ErrorCode::nosession).put("it has ended")));
  EXPECT_EQ(maapi_detach(sock_, &tctx), CONFD_ERR);
  EXPECT_EQ(confd_errno, CONFD_ERR_NOSESSION);
  EXPECT_STREQ(confd_lasterr(), "it has ended");
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

TEST_F(Maapi, GetCaseGivesTheTag) {
  answer(std::move(ok_answer().put(Value::tag(tag_of("from-ip")))));
  confd_value_t v;
  ASSERT_EQ(maapi_get_case(sock_, kHandle, "method", &v, "/a:b/c"), CONFD_OK);
  EXPECT_EQ(CONFD_GET_XMLTAG(&v), tag_of("from-ip").tag);
  EXPECT_EQ(op_, Op::get_case);
  request_->number();
  request_->path();
  EXPECT_EQ(request_->text(), "method");
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
  confd_value_t values[2];
  const auto create = [this] { return maapi_create(sock_, kHandle, "/a:b/c"); };
  const auto expect_protocol_error = [](int result) {
    EXPECT_EQ(result, CONFD_ERR);
    EXPECT_EQ(confd_errno, CONFD_ERR_PROTOCOL);
  };
  answer(ok_answer());  // no value
  expect_protocol_error(maapi_get_elem(sock_, kHandle, values, "/a:b/c"));
  answer(std::move(ok_answer().put(Level(3))));  // more than were asked for
  expect_protocol_error(maapi_get_object(sock_, kHandle, values, 2, "/a:b/c"));
  next_ = std::string("\0\0\0\3\xc1\xc1\xc1", 7);  // no msgpack
  expect_protocol_error(create());
  answer(std::move(frame(std::uint64_t{4711}).put("?")));
  expect_protocol_error(create());
  next_ = std::string("\xff\xff\xff\xff", 4);  // a length that no frame has
  expect_protocol_error(create());
  answer(ok_answer());  // the connection is lost all the same
  EXPECT_EQ(create(), CONFD_ERR);
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
