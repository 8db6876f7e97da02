// A connected and registered daemon whose callbacks are functions of the test.
#pragma once

#include <confd_dp.h>
#include <confd_maapi.h>

#include <cstring>

#include "peer.h"

namespace standin {

class DaemonFixture : public testing::Test {
 protected:
  using OnPath = std::function<int(confd_trans_ctx*, confd_hkeypath_t*)>;

  explicit DaemonFixture(Peer::Answer maapi = nullptr) : peer_(std::move(maapi)) {
    current_ = this;
  }
  ~DaemonFixture() override { current_ = nullptr; }

  void SetUp() override {
    dx_ = confd_init_daemon("tester");
    ASSERT_NE(dx_, nullptr);
    ASSERT_EQ(confd_connect(dx_, control_, CONTROL_SOCKET, peer_.address(), Peer::address_size()),
              CONFD_OK);
    ASSERT_EQ(confd_connect(dx_, worker_, WORKER_SOCKET, peer_.address(), Peer::address_size()),
              CONFD_OK);
    confd_trans_cbs trans{};
    trans.init = [](confd_trans_ctx* t) { return current_->on_init(t); };
    trans.finish = [](confd_trans_ctx* t) { return current_->on_finish(t); };
    confd_data_cbs data{};
    std::strcpy(data.callpoint, "point");
    data.get_elem = [](confd_trans_ctx* t, confd_hkeypath_t* kp) {
      return current_->on_get(t, kp);
    };
    data.create = [](confd_trans_ctx* t, confd_hkeypath_t* kp) {
      return current_->on_create(t, kp);
    };
    extend(data);
    confd_trans_validate_cbs validate{};
    validate.init = [](confd_trans_ctx* t) { return current_->on_validate_init(t); };
    ASSERT_EQ(confd_register_trans_cb(dx_, &trans), CONFD_OK);
    ASSERT_EQ(confd_register_data_cb(dx_, &data), CONFD_OK);
    ASSERT_EQ(confd_register_trans_validate_cb(dx_, &validate), CONFD_OK);
    ASSERT_EQ(confd_register_done(dx_), CONFD_OK);
  }
  virtual void extend(confd_data_cbs&) {}

  // Sends a control request and has it served.
  int control(Op op, int handle) {
    peer_.send(SocketKind::control, frame(op).put(std::uint64_t(handle)));
    return confd_fd_ready(dx_, control_);
  }
  // Begins a transaction and drops the answer.
  void begin(int handle) {
    ASSERT_EQ(control(Op::trans_init, handle), CONFD_OK);
    EXPECT_EQ(peer_.receive(SocketKind::control).number(), 0u);
  }
  static FrameWriter callback(Op op, int handle, std::uint64_t count = 0,
                              const char* point = "point") {
    FrameWriter w = frame(op);
    w.put(std::uint64_t(handle))
        .put(count)
        .put(point)
        .put(Keypath{element("a"), {Value::buf("k")}});
    return w;
  }
  int serve(FrameWriter w) {
    peer_.send(SocketKind::worker, w);
    return confd_fd_ready(dx_, worker_);
  }
  FrameReader reply() { return peer_.receive(SocketKind::worker); }
  ReplyKind reply_kind() { return static_cast<ReplyKind>(reply().number()); }

  static inline DaemonFixture* current_ = nullptr;
  std::function<int(confd_trans_ctx*)> on_init = [](auto*) { return CONFD_OK; };
  std::function<int(confd_trans_ctx*)> on_finish = [](auto*) { return CONFD_OK; };
  std::function<int(confd_trans_ctx*)> on_validate_init = [](auto*) { return CONFD_OK; };
  OnPath on_get = [](auto*, auto*) { return CONFD_OK; };
  OnPath on_create = [](auto*, auto*) { return CONFD_OK; };

  Peer peer_;
  Socket control_, worker_;
  confd_daemon_ctx* dx_ = nullptr;
};

}  // namespace standin
