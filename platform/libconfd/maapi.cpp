// MAAPI: connections, attaching, existence, creation, removal, moves.
#include <confd_maapi.h>

#include <cstring>

#include "change_counts.h"
#include "convert.h"
#include "crypto.h"
#include "error.h"
#include "maapi_session.h"
#include "path_format.h"
#include "trace.h"

using namespace standin;
using Effect = MaapiCall::Effect;

namespace {

// A request of a transaction and a path, without more.
int on_path(int sock, int thandle, Op op, Effect effect, const char* fmt, va_list args) {
  return guarded(
      [&] { return MaapiCall(sock, op, thandle, path_from_format(fmt, args), effect).run(); });
}

}  // namespace

int maapi_connect(int sock, const struct sockaddr* addr, int addrlen) {
  return guarded([&] {
    std::uint64_t id = 0;
    const int result =
        connect_and_greet(sock, addr, addrlen, SocketKind::maapi, program_name(), 0, id);
    if (result == CONFD_OK) open_session(sock);
    return result;
  });
}

int maapi_attach(int sock, int /*hashed_ns*/, struct confd_trans_ctx* tctx) {
  return guarded([&] {
    if (tctx == nullptr) return fail(CONFD_ERR_APIUSE, "no transaction to attach to");
    MaapiCall call(sock, Op::attach, tctx->thandle, Effect::reads);
    call.session().ahead.erase(tctx->thandle);
    return call.run();
  });
}

int maapi_attach_init(int sock, int* thandle) {
  return guarded([&] {
    MaapiCall call(sock, Op::attach_init);
    if (call.run() != CONFD_OK) return CONFD_ERR;
    *thandle = static_cast<int>(call.answer().number());
    return CONFD_OK;
  });
}

int maapi_detach(int sock, struct confd_trans_ctx* tctx) {
  return guarded([&] {
    if (tctx == nullptr) return fail(CONFD_ERR_APIUSE, "no transaction to detach from");
    MaapiCall call(sock, Op::detach, tctx->thandle, Effect::reads);
    call.session().ahead.erase(tctx->thandle);
    return call.run();
  });
}

int maapi_get_schema_file_path(int sock, char** path) {
  return guarded([&] {
    MaapiCall call(sock, Op::schema_path);
    if (call.run() != CONFD_OK) return CONFD_ERR;
    *path = ::strdup(call.answer().text().c_str());
    return *path != nullptr ? CONFD_OK : fail(CONFD_ERR_MALLOC);
  });
}

int maapi_install_crypto_keys(int sock) {
  return guarded([&] {
    MaapiCall call(sock, Op::crypto_keys);
    if (call.run() != CONFD_OK) return CONFD_ERR;
    return install_crypto_key(call.answer().text());
  });
}

int maapi_exists(int sock, int thandle, const char* fmt, ...) {
  va_list args;
  va_start(args, fmt);
  const int result = guarded([&] {
    MaapiCall call(sock, Op::exists, thandle, path_from_format(fmt, args), Effect::reads);
    if (call.run() != CONFD_OK) return CONFD_ERR;
    return call.answer().boolean() ? 1 : 0;
  });
  va_end(args);
  return result;
}

int maapi_create(int sock, int thandle, const char* fmt, ...) {
  va_list args;
  va_start(args, fmt);
  const int result = on_path(sock, thandle, Op::create, Effect::changes, fmt, args);
  va_end(args);
  return result;
}

int maapi_delete(int sock, int thandle, const char* fmt, ...) {
  va_list args;
  va_start(args, fmt);
  const int result = on_path(sock, thandle, Op::remove, Effect::changes, fmt, args);
  va_end(args);
  return result;
}

int maapi_move(int sock, int thandle, confd_value_t* tokeys, int n, const char* fmt, ...) {
  va_list args;
  va_start(args, fmt);
  const int result = guarded([&] {
    if (tokeys == nullptr || n <= 0) return fail(CONFD_ERR_APIUSE, "no keys to move to");
    MaapiCall call(sock, Op::move, thandle, path_from_format(fmt, args), Effect::changes);
    call.elements().put(to_wire(tokeys, n));
    return call.run();
  });
  va_end(args);
  return result;
}
