// What each daemon registers, as tables of getters, and the registration itself.
#pragma once

#include <confd_dp.h>

namespace quillet {

// A row of a table; a null getter ends it. The label is for the failure message only.
struct TransformRegistration {
  confd_data_cbs* (*get_cbs)();
  const char* label;
};
struct ValidationRegistration {
  confd_valpoint_cb* (*get_cb)();
  const char* label;
};

extern const TransformRegistration transform_registrations[];
extern const TransformRegistration hook_registrations[];
extern const ValidationRegistration validation_registrations[];

// Register everything of a daemon; a registration that fails ends the process.
void register_transform_daemon(confd_daemon_ctx* dctx);
void register_hook_daemon(confd_daemon_ctx* dctx);

}  // namespace quillet
