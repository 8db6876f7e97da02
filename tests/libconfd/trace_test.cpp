#include <confd_maapi.h>
#include <fcntl.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <cstdio>
#include <memory>

#include "daemon_fixture.h"
#include "platform/wire/cipher.h"

namespace standin {
namespace {

constexpr int kHandle = 3;

class TraceTest : public DaemonFixture {
 protected:
  TraceTest() : DaemonFixture([](Op, FrameReader&) { return ok_answer().take(); }) {}
  ~TraceTest() override { confd_init("t", nullptr, CONFD_SILENT); }

  void SetUp() override {
    DaemonFixture::SetUp();
    ASSERT_EQ(maapi_connect(maapi_, peer_.address(), Peer::address_size()), CONFD_OK);
    begin(kHandle);
  }

  // One callback with a refused call inside and a password in its value.
  void work() {
    on_create = [this](confd_trans_ctx* t, confd_hkeypath_t*) {
      confd_value_t form;
      const std::string encrypted = encrypt_text("hunter2", std::string(kKeyOctets, 'k'));
      CONFD_SET_STR(&form, encrypted.c_str());
      maapi_set_elem2(maapi_, kHandle, "hunter2", "/a:b/password");
      maapi_set_elem(maapi_, kHandle, &form, "/a:b{%x}/password", &form);
      maapi_delete(maapi_, kHandle, "bad");
      confd_trans_seterr(t, "text");
      return CONFD_ERR;
    };
    serve(callback(Op::cb_create, kHandle));
    reply();
  }

  std::string traced(confd_debug_level level) {
    char* text = nullptr;
    std::size_t size = 0;
    FILE* stream = open_memstream(&text, &size);
    confd_init("t", stream, level);
    work();
    confd_init("t", nullptr, CONFD_SILENT);
    std::fclose(stream);
    const std::string out(text, size);
    std::free(text);
    return out;
  }

  Socket maapi_;
};

TEST_F(TraceTest, EachLevelWritesItsLinesAndNoSecrets) {
  const struct {
    confd_debug_level level;
    const char *has, *has_not;
  } cases[] = {
      {CONFD_DEBUG, "error 4", "transaction"},
      {CONFD_TRACE, "create transaction 3", "octets"},
      {CONFD_TRACE, "refused", "octets"},
      {CONFD_PROTO_TRACE, "set_elem transaction 3 /a:b{***}/password", "hunter2"},
      {CONFD_PROTO_TRACE, "octets", "$8$"},
  };
  for (const auto& c : cases) {
    const std::string out = traced(c.level);
    EXPECT_NE(out.find(c.has), std::string::npos) << out;
    EXPECT_EQ(out.find(c.has_not), std::string::npos) << out;
    EXPECT_EQ(out.back(), '\n');
  }
  EXPECT_EQ(traced(CONFD_SILENT), "");
}

TEST_F(TraceTest, FullPipeIsNotWaitedFor) {
  int ends[2];
  ASSERT_EQ(::pipe(ends), 0);
  ASSERT_EQ(::fcntl(ends[1], F_SETPIPE_SZ, 4096), 4096);
  const std::string full(4096, 'x');
  ASSERT_EQ(::write(ends[1], full.data(), full.size()), 4096);
  std::unique_ptr<FILE, int (*)(FILE*)> stream(::fdopen(ends[1], "w"), std::fclose);
  confd_init("t", stream.get(), CONFD_PROTO_TRACE);
  work();
  EXPECT_EQ(::fcntl(ends[1], F_GETFL) & O_NONBLOCK, 0);  // the flags are the others' too
  // Once somebody reads, whole lines go on.
  char drained[4096];
  ASSERT_EQ(::read(ends[0], drained, sizeof drained), 4096);
  maapi_delete(maapi_, kHandle, "bad");
  const ssize_t n = ::read(ends[0], drained, sizeof drained);
  ASSERT_GT(n, 0);
  EXPECT_EQ(std::string(drained, 7), "error 4");
  EXPECT_EQ(drained[n - 1], '\n');
  confd_init("t", nullptr, CONFD_SILENT);
  ::close(ends[0]);
}

}  // namespace
}  // namespace standin
