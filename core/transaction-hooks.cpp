#include "core/transaction-hooks.h"

#include <confd_maapi.h>

#include "core/daemon-sockets.h"
#include "util/snmp-attribute-store.h"
#include "util/snmp-transform-utils.h"

namespace quillet {
namespace {

constexpr char kModule[] = "quillet-transform";

}  // namespace

int transform_trans_init(confd_trans_ctx* tctx) {
  snmp_assert_ok(maapi_attach(maapi_sock, 0, tctx), kModule, __LINE__);
  confd_trans_set_fd(tctx, daemon_sockets(tctx).worker_sock);
  snmp_set_validation_map(tctx, qmap_str_str_new());
  attr_set_maapi_sock(maapi_sock);
  return CONFD_OK;
}

int transform_trans_finish(confd_trans_ctx* tctx) {
  while (snmp_cursor* cursor = snmp_open_cursors(tctx)) snmp_cursor_close(tctx, cursor);
  qmap_str_str_destroy(snmp_validation_map(tctx));
  snmp_set_validation_map(tctx, nullptr);
  maapi_detach(maapi_sock, tctx);
  return CONFD_OK;
}

int validate_init(confd_trans_ctx* tctx) {
  confd_trans_set_fd(tctx, daemon_sockets(tctx).worker_sock);
  return CONFD_OK;
}

int validate_stop(confd_trans_ctx* /*tctx*/) { return CONFD_OK; }

int hook_trans_init(confd_trans_ctx* tctx) {
  const DaemonSockets& sockets = daemon_sockets(tctx);
  snmp_assert_ok(maapi_attach(sockets.maapi_sock, 0, tctx), kModule, __LINE__);
  confd_trans_set_fd(tctx, sockets.worker_sock);
  return CONFD_OK;
}

int hook_trans_finish(confd_trans_ctx* tctx) {
  maapi_detach(daemon_sockets(tctx).maapi_sock, tctx);
  return CONFD_OK;
}

}  // namespace quillet
