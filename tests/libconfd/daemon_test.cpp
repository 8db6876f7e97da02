#include <confd_dp.h>
#include <gtest/gtest.h>

#include "daemon_fixture.h"

namespace standin {
namespace {

constexpr int kHandle = 5;

class DaemonTest : public DaemonFixture {
 protected:
  // Callbacks whose arguments are noted.
  void extend(confd_data_cbs& data) override {
    data.get_next = [](confd_trans_ctx* t, confd_hkeypath_t*, long next) {
      confd_value_t keys[2];
      CONFD_SET_STR(&keys[0], "row");
      CONFD_SET_INT32(&keys[1], 2);
      return next == -1 ? confd_data_reply_next_key(t, keys, 2, 77)
                        : confd_data_reply_next_key(t, nullptr, -1, -1);
    };
    data.set_case = [](confd_trans_ctx* t, confd_hkeypath_t*, confd_value_t* choice,
                       confd_value_t* value) {
      confd_trans_seterr(t, "%u to %u", CONFD_GET_XMLTAG(choice),
                         value == nullptr ? 0 : CONFD_GET_XMLTAG(value));
      return CONFD_ERR;
    };
    data.get_attrs = [](confd_trans_ctx* t, confd_hkeypath_t*, u_int32_t* attrs, int n) {
      if (n == 0) return confd_data_reply_not_found(t);
      confd_attr_value_t answer;
      answer.attr = attrs[n - 1];
      CONFD_SET_STR(&answer.v, "note");
      return confd_data_reply_attrs(t, &answer, 1);
    };
    data.set_attr = [](confd_trans_ctx* t, confd_hkeypath_t*, u_int32_t attr, confd_value_t* v) {
      confd_trans_seterr(t, "%u %s", attr, v == nullptr ? "removed" : "set");
      return CONFD_ERR;
    };
  }

  std::string error_of(FrameWriter w) {
    EXPECT_EQ(serve(std::move(w)), CONFD_ERR);
    EXPECT_EQ(confd_errno, CONFD_ERR_EXTERNAL);
    FrameReader answer = reply();
    EXPECT_EQ(answer.number(), std::uint64_t(ReplyKind::error));
    return answer.text();
  }
};

TEST(Registration, NamesCallpointsAndTheirCallbacksInOneRequest) {
  Peer peer;
  std::uint64_t bits = 0, hooks = 0;
  std::string callpoint;
  std::vector<std::string> points;
  peer.registration = [&](FrameReader& r) {
    EXPECT_EQ(r.array(), 1u);
    EXPECT_EQ(r.array(), 2u);
    callpoint = r.text();
    bits = r.number();
    points = r.texts();
    hooks = r.number();
    return refusal(ErrorCode::inuse).put("held by another").take();
  };
  Socket control;
  confd_daemon_ctx* dx = confd_init_daemon("d");
  ASSERT_EQ(confd_connect(dx, control, CONTROL_SOCKET, peer.address(), Peer::address_size()), 0);
  confd_data_cbs data{};
  EXPECT_EQ(confd_register_data_cb(dx, &data), CONFD_ERR);  // no name
  std::strcpy(data.callpoint, "cp");
  data.get_elem = [](confd_trans_ctx*, confd_hkeypath_t*) { return CONFD_OK; };
  data.set_attr = [](confd_trans_ctx*, confd_hkeypath_t*, u_int32_t, confd_value_t*) {
    return CONFD_OK;
  };
  confd_valpoint_cb point{};
  std::strcpy(point.valpoint, "vp");
  point.validate = [](confd_trans_ctx*, confd_hkeypath_t*, confd_value_t*) { return CONFD_OK; };
  EXPECT_EQ(confd_register_data_cb(dx, &data), CONFD_OK);
  EXPECT_EQ(confd_register_valpoint_cb(dx, &point), CONFD_OK);
  EXPECT_EQ(confd_register_done(dx), CONFD_ERR);
  EXPECT_EQ(confd_errno, CONFD_ERR_INUSE);
  EXPECT_EQ(callpoint, "cp");
  EXPECT_EQ(bits, (1u << 1) | (1u << 9));
  EXPECT_EQ(points, std::vector<std::string>{"vp"});
  EXPECT_EQ(hooks & (kHasValidateInit | kHasValidateStop), 0u);
}

TEST(Registration, NameInUseAndWorkerBeforeControlAreRefused) {
  Peer peer;
  peer.greeting = refusal(ErrorCode::inuse).put("name in use").take();
  Socket named, sock;
  confd_daemon_ctx* dx = confd_init_daemon("d");
  EXPECT_EQ(confd_connect(dx, named, CONTROL_SOCKET, peer.address(), Peer::address_size()),
            CONFD_ERR);
  EXPECT_EQ(confd_errno, CONFD_ERR_INUSE);
  EXPECT_EQ(confd_connect(dx, sock, WORKER_SOCKET, peer.address(), Peer::address_size()),
            CONFD_ERR);
  EXPECT_EQ(confd_errno, CONFD_ERR_APIUSE);
  EXPECT_EQ(confd_register_done(dx), CONFD_ERR);
}

TEST_F(DaemonTest, InitNamesTheWorkerSocketAndFinishEndsTheContext) {
  int opaque = 0;
  bool finished = false;
  on_init = [&](confd_trans_ctx* t) {
    EXPECT_EQ(t->thandle, kHandle);
    EXPECT_EQ(t->dx, dx_);
    EXPECT_EQ(t->t_opaque, nullptr);
    EXPECT_NE(t->uinfo, nullptr);
    t->t_opaque = &opaque;
    confd_trans_set_fd(t, worker_);
    return CONFD_OK;
  };
  on_validate_init = [&](confd_trans_ctx* t) {
    EXPECT_EQ(t->t_opaque, &opaque);
    EXPECT_EQ(t->v_opaque, nullptr);
    return CONFD_OK;
  };
  on_finish = [&](confd_trans_ctx* t) {
    finished = t->t_opaque == &opaque;
    return CONFD_OK;
  };
  ASSERT_EQ(control(Op::trans_init, kHandle), CONFD_OK);
  FrameReader answer = peer_.receive(SocketKind::control);
  EXPECT_EQ(answer.number(), 0u);
  EXPECT_EQ(answer.number(), 7u);
  EXPECT_EQ(control(Op::validate_init, kHandle), CONFD_OK);
  EXPECT_EQ(peer_.receive(SocketKind::control).number(), 0u);
  EXPECT_EQ(control(Op::validate_stop, kHandle), CONFD_OK);  // not registered: nothing to call
  EXPECT_EQ(peer_.receive(SocketKind::control).number(), 0u);
  EXPECT_EQ(control(Op::trans_finish, kHandle), CONFD_OK);
  EXPECT_EQ(peer_.receive(SocketKind::control).number(), 0u);
  EXPECT_TRUE(finished);
  EXPECT_EQ(serve(callback(Op::cb_get_elem, kHandle)), CONFD_OK);
  EXPECT_EQ(reply_kind(), ReplyKind::error);
}

TEST_F(DaemonTest, InitRefusedGivesItsTextAndNoContext) {
  on_init = [](confd_trans_ctx* t) {
    confd_trans_seterr(t, "not %s", "now");
    return CONFD_ERR;
  };
  EXPECT_EQ(control(Op::trans_init, kHandle), CONFD_ERR);
  EXPECT_EQ(confd_errno, CONFD_ERR_EXTERNAL);
  FrameReader answer = peer_.receive(SocketKind::control);
  EXPECT_EQ(answer.number(), std::uint64_t(ErrorCode::failed));
  EXPECT_EQ(answer.text(), "not now");
  EXPECT_EQ(control(Op::trans_finish, kHandle), CONFD_OK);
  EXPECT_EQ(peer_.receive(SocketKind::control).number(), std::uint64_t(ErrorCode::nosession));
}

TEST_F(DaemonTest, EachReplyTravelsInItsForm) {
  begin(kHandle);
  on_get = [](confd_trans_ctx* t, confd_hkeypath_t* kp) {
    EXPECT_EQ(kp->len, 2);
    return confd_data_reply_value(t, &kp->v[0][0]);
  };
  ASSERT_EQ(serve(callback(Op::cb_get_elem, kHandle)), CONFD_OK);
  FrameReader value = reply();
  EXPECT_EQ(value.number(), std::uint64_t(ReplyKind::value));
  EXPECT_EQ(value.value(), Value::buf("k"));

  const std::pair<OnPath, ReplyKind> plain[] = {
      {[](auto* t, auto*) { return confd_data_reply_not_found(t); }, ReplyKind::not_found},
      {[](auto* t, auto*) { return confd_data_reply_found(t); }, ReplyKind::found},
      {[](auto*, auto*) { return CONFD_OK; }, ReplyKind::none},  // forgotten
  };
  for (const auto& [get, kind] : plain) {
    on_get = get;
    ASSERT_EQ(serve(callback(Op::cb_get_elem, kHandle)), CONFD_OK);
    EXPECT_EQ(reply_kind(), kind);
  }

  ASSERT_EQ(serve(std::move(callback(Op::cb_get_next, kHandle).put(std::int64_t{-1}))), CONFD_OK);
  FrameReader row = reply();
  EXPECT_EQ(row.number(), std::uint64_t(ReplyKind::next_key));
  EXPECT_EQ(row.level(), (Level{Value::text("row"), Value::int32(2)}));
  EXPECT_EQ(row.signed_number(), 77);
  ASSERT_EQ(serve(std::move(callback(Op::cb_get_next, kHandle).put(std::int64_t{77}))), CONFD_OK);
  FrameReader end = reply();
  EXPECT_EQ(end.number(), std::uint64_t(ReplyKind::next_key));
  EXPECT_TRUE(end.level().empty());

  FrameWriter wanted = callback(Op::cb_get_attrs, kHandle);
  wanted.array(2).put(1u).put(9u);
  ASSERT_EQ(serve(std::move(wanted)), CONFD_OK);
  FrameReader attrs = reply();
  EXPECT_EQ(attrs.number(), std::uint64_t(ReplyKind::attrs));
  EXPECT_EQ(attrs.array(), 1u);
  EXPECT_EQ(attrs.array(), 2u);
  EXPECT_EQ(attrs.number(), 9u);

  ASSERT_EQ(serve(callback(Op::cb_create, kHandle)), CONFD_OK);
  EXPECT_EQ(reply_kind(), ReplyKind::ok);
}

TEST_F(DaemonTest, OptionalArgumentsArriveAsNull) {
  begin(kHandle);
  const Value choice = Value::tag({4, 1}), selected = Value::tag({6, 1});
  EXPECT_EQ(error_of(std::move(callback(Op::cb_set_case, kHandle).put(choice).put(selected))),
            "4 to 6");
  EXPECT_EQ(error_of(std::move(callback(Op::cb_set_case, kHandle).put(choice).put_nil())),
            "4 to 0");
  EXPECT_EQ(error_of(std::move(callback(Op::cb_set_attr, kHandle).put(3u).put(choice))), "3 set");
  EXPECT_EQ(error_of(std::move(callback(Op::cb_set_attr, kHandle).put(3u).put_nil())), "3 removed");
}

TEST_F(DaemonTest, SecondOrMisplacedReplyIsRefusedAndTheFirstCounts) {
  begin(kHandle);
  confd_trans_ctx* kept = nullptr;
  on_get = [&](confd_trans_ctx* t, confd_hkeypath_t*) {
    kept = t;
    EXPECT_EQ(confd_data_reply_found(t), CONFD_OK);
    EXPECT_EQ(confd_data_reply_not_found(t), CONFD_ERR);
    EXPECT_EQ(confd_errno, CONFD_ERR_APIUSE);
    return CONFD_OK;
  };
  EXPECT_EQ(serve(callback(Op::cb_get_elem, kHandle)), CONFD_OK);
  EXPECT_EQ(reply_kind(), ReplyKind::found);
  EXPECT_EQ(confd_data_reply_found(kept), CONFD_ERR);
}

TEST_F(DaemonTest, LatestErrorTextGoesOutAndIsDroppedOnSuccess) {
  begin(kHandle);
  int result = CONFD_ERR;
  bool with_text = true;
  on_create = [&](confd_trans_ctx* t, confd_hkeypath_t*) {
    if (!with_text) return result;
    confd_trans_seterr(t, "first");
    confd_error_seterr(t->uinfo, "latest %d%%", 5);
    return result;
  };
  EXPECT_EQ(error_of(callback(Op::cb_create, kHandle)), "latest 5%");
  result = CONFD_OK;
  EXPECT_EQ(serve(callback(Op::cb_create, kHandle)), CONFD_OK);
  EXPECT_EQ(reply_kind(), ReplyKind::ok);
  with_text = false;
  result = CONFD_ERR;
  EXPECT_EQ(error_of(callback(Op::cb_create, kHandle)), "");
}

TEST_F(DaemonTest, RefusalIsExternalWhateverItsOwnCallsLeft) {
  begin(kHandle);
  on_create = [](confd_trans_ctx*, confd_hkeypath_t*) {
    EXPECT_EQ(maapi_create(98765, 1, "/a"), CONFD_ERR);
    EXPECT_EQ(confd_errno, CONFD_ERR_APIUSE);
    return 17;
  };
  EXPECT_EQ(error_of(callback(Op::cb_create, kHandle)), "");
}

TEST_F(DaemonTest, UnregisteredCallbackIsAnErrorReplyOnly) {
  begin(kHandle);
  EXPECT_EQ(serve(callback(Op::cb_remove, kHandle)), CONFD_OK);
  EXPECT_EQ(reply_kind(), ReplyKind::error);
  EXPECT_EQ(serve(callback(Op::cb_get_elem, kHandle, 0, "other point")), CONFD_OK);
  EXPECT_EQ(reply_kind(), ReplyKind::error);
}

TEST_F(DaemonTest, ClosedSocketsGiveEof) {
  peer_.close_socket(SocketKind::worker);
  EXPECT_EQ(confd_fd_ready(dx_, worker_), CONFD_EOF);
  peer_.close_socket(SocketKind::control);
  EXPECT_EQ(confd_fd_ready(dx_, control_), CONFD_EOF);
}

TEST_F(DaemonTest, GarbageIsAProtocolErrorOnEitherSocket) {
  begin(kHandle);
  const auto expect_protocol_error = [](int result) {
    EXPECT_EQ(result, CONFD_ERR);
    EXPECT_EQ(confd_errno, CONFD_ERR_PROTOCOL);
  };
  const auto of_path = [](const Keypath& path) {
    FrameWriter w = frame(Op::cb_get_elem);
    return std::move(w.put(std::uint64_t{kHandle}).put(0u).put("point").put(path));
  };
  bool called = false;
  on_get = [&](auto*, auto*) { return called = true, CONFD_OK; };
  expect_protocol_error(serve(frame(Op::cb_get_elem)));  // cut
  expect_protocol_error(serve(frame(Op::trans_init)));   // of the other socket
  expect_protocol_error(serve(of_path(Keypath(26, element("a")))));
  expect_protocol_error(serve(of_path(Keypath(1, Level(17, Value::int32(1))))));
  EXPECT_FALSE(called);
  peer_.send(SocketKind::worker, std::string("\xff\xff\xff\xff", 4));
  expect_protocol_error(confd_fd_ready(dx_, worker_));
  expect_protocol_error(control(Op::cb_get_elem, kHandle));
  EXPECT_EQ(confd_fd_ready(dx_, 98765), CONFD_ERR);
  EXPECT_EQ(confd_errno, CONFD_ERR_APIUSE);
}

}  // namespace
}  // namespace standin
