#include "core/registration.h"

#include "core/transaction-hooks.h"
#include "transforms/snmp-agent-transform.h"
#include "transforms/snmp-community-transform.h"
#include "transforms/snmp-notification-transform.h"
#include "transforms/snmp-target-transform.h"
#include "transforms/snmp-usm-transform.h"
#include "transforms/snmp-vacm-transform.h"

namespace quillet {

const TransformRegistration transform_registrations[] = {
    {community_get_cbs, "transform cb: COMMUNITY"},
    {notify_get_cbs, "transform cb: NOTIFY"},
    {get_target_cbs, "transform cb: TARGET"},
    {get_agent_cbs, "transform cb: AGENT"},
    {vacm_group_get_cbs, "transform cb: VACM_GROUP"},
    {vacm_view_get_cbs, "transform cb: VACM_VIEW"},
    {usm_get_cbs, "transform cb: USM"},
    {nullptr, nullptr},
};

const TransformRegistration hook_registrations[] = {
    {community_hook_get_cbs, "hook cb: COMMUNITY"},
    {nullptr, nullptr},
};

const ValidationRegistration validation_registrations[] = {
    {vacm_group_get_valpoint, "validation cb: VACM_GROUP "},
    {nullptr, nullptr},
};

namespace {

void register_trans_callbacks(confd_daemon_ctx* dctx, int (*init)(confd_trans_ctx*),
                              int (*finish)(confd_trans_ctx*)) {
  confd_trans_cbs callbacks{};
  callbacks.init = init;
  callbacks.finish = finish;
  confd_register_trans_cb(dctx, &callbacks);
}

void register_data_callbacks(confd_daemon_ctx* dctx, const TransformRegistration* row) {
  for (; row->get_cbs != nullptr; ++row) {
    if (confd_register_data_cb(dctx, row->get_cbs()) == CONFD_ERR) {
      confd_fatal("Failed to register %s\n", row->label);
    }
  }
}

void register_validation(confd_daemon_ctx* dctx, const ValidationRegistration* row) {
  confd_trans_validate_cbs callbacks{};
  callbacks.init = validate_init;
  callbacks.stop = validate_stop;
  confd_register_trans_validate_cb(dctx, &callbacks);
  for (; row->get_cb != nullptr; ++row) {
    if (confd_register_valpoint_cb(dctx, row->get_cb()) == CONFD_ERR) {
      confd_fatal("Failed to register %s\n", row->label);
    }
  }
}

}  // namespace

void register_transform_daemon(confd_daemon_ctx* dctx) {
  register_trans_callbacks(dctx, transform_trans_init, transform_trans_finish);
  register_data_callbacks(dctx, transform_registrations);
  register_validation(dctx, validation_registrations);
  if (confd_register_done(dctx) != CONFD_OK) confd_fatal("Failed to complete registration \n");
}

void register_hook_daemon(confd_daemon_ctx* dctx) {
  register_trans_callbacks(dctx, hook_trans_init, hook_trans_finish);
  register_data_callbacks(dctx, hook_registrations);
  if (confd_register_done(dctx) != CONFD_OK) {
    confd_fatal("Failed to complete hook registration \n");
  }
}

}  // namespace quillet
