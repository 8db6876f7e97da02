// Writing members: every write becomes creations, updates and deletions of rows.
#include <algorithm>
#include <utility>
#include <vector>

#include "transforms/security-model.h"
#include "transforms/vacm-group-rows.h"
#include "transforms/vacm-groups.h"

namespace quillet {
namespace {

struct GroupRow {
  Value model, name, group;
};

// Collected before anything is written: a write in the middle of a walk costs the rows that were
// read ahead.
using GroupRows = std::vector<GroupRow>;

int collect_rows(confd_trans_ctx* tctx, GroupRows& rows) {
  return walk_group_table(
      tctx, [&](const confd_value_t& model, const confd_value_t& name, const confd_value_t& group) {
        rows.push_back({Value::copy_of(model), Value::copy_of(name), Value::copy_of(group)});
        return Walk::go_on;
      });
}

int collect_rows_of_member(confd_trans_ctx* tctx, const confd_value_t* member, GroupRows& rows) {
  const IntQueue models(queue_int_new());
  const int result = member_sec_models(tctx, member, nullptr, models.get());
  if (result != CONFD_OK) return snmp_write_result(tctx, result, kVacmModule, __LINE__);
  while (models->count > 0) {
    GroupRow row{Value(int32_value(queue_int_out(models.get()))), Value::copy_of(*member), Value()};
    if (read_row_group(tctx, row.model.get(), member, row.group) != CONFD_OK) return CONFD_ERR;
    rows.push_back(std::move(row));
  }
  return CONFD_OK;
}

// Whether a C_INT32 of the array is that number.
bool intval_in_value_array(const std::vector<confd_value_t>& values, int number) {
  return std::any_of(values.begin(), values.end(), [number](const confd_value_t& v) {
    return v.type == C_INT32 && CONFD_GET_INT32(&v) == number;
  });
}

int create_row(confd_trans_ctx* tctx, const confd_value_t* model, const confd_value_t* name) {
  const int result = maapi_create(maapi_sock, tctx->thandle, VACM_GROUP_ROW "/", model, name);
  return snmp_write_result(tctx, result, kVacmModule, __LINE__);
}

int set_row_group(confd_trans_ctx* tctx, const confd_value_t* model, const confd_value_t* name,
                  const confd_value_t* group) {
  const int result = maapi_set_elem(maapi_sock, tctx->thandle, const_cast<confd_value_t*>(group),
                                    VACM_GROUP_ROW "/vacmGroupName", model, name);
  return snmp_write_result(tctx, result, kVacmModule, __LINE__);
}

int delete_row(confd_trans_ctx* tctx, const confd_value_t* model, const confd_value_t* name) {
  const int result = maapi_delete(maapi_sock, tctx->thandle, VACM_GROUP_ROW, model, name);
  return snmp_write_result(tctx, result, kVacmModule, __LINE__);
}

// Gives an existing row to the group, unless it has it.
int take_row(confd_trans_ctx* tctx, const confd_value_t* model, const confd_value_t* name,
             const confd_value_t& owner, const confd_value_t* group, ConflictChanges& conflicts) {
  if (confd_val_eq(&owner, group)) return CONFD_OK;
  if (owner.type != C_NOEXISTS) conflicts.record(*model, *name, owner, *group);
  return set_row_group(tctx, model, name, group);
}

// A model that the member's new list does not have.
int give_up_row(confd_trans_ctx* tctx, const GroupRow& row, const confd_value_t* group,
                ConflictChanges& conflicts) {
  if (confd_val_eq(row.group.get(), group)) {
    return delete_row(tctx, row.model.get(), row.name.get());
  }
  conflicts.withdraw(*row.model, *row.name, *group);
  return CONFD_OK;
}

}  // namespace

int member_set_sec_models(confd_trans_ctx* tctx, confd_hkeypath_t* kp,
                          const confd_value_t* models) {
  const confd_value_t* member = kp_value(kp, 1);
  const confd_value_t* group = vacm_group_key(kp);
  const confd_value_t* list = CONFD_GET_LIST(models);
  std::vector<confd_value_t> wanted(list, list + CONFD_GET_LISTSIZE(models));
  for (confd_value_t& model : wanted) tr_sec_model_to_mib(&model);

  GroupRows rows;
  if (collect_rows_of_member(tctx, member, rows) != CONFD_OK) return CONFD_ERR;
  ConflictChanges conflicts(tctx);
  std::vector<int> found;
  for (const GroupRow& row : rows) {
    const int model = CONFD_GET_INT32(row.model.get());
    int result = CONFD_OK;
    if (intval_in_value_array(wanted, model)) {
      found.push_back(model);
      result = take_row(tctx, row.model.get(), member, *row.group, group, conflicts);
    } else {
      result = give_up_row(tctx, row, group, conflicts);
    }
    if (result != CONFD_OK) return result;
  }
  for (const confd_value_t& wanted_model : wanted) {
    const confd_value_t* model = &wanted_model;
    if (std::find(found.begin(), found.end(), CONFD_GET_INT32(model)) != found.end()) continue;
    if (create_row(tctx, model, member) != CONFD_OK) return CONFD_ERR;
    if (set_row_group(tctx, model, member, group) != CONFD_OK) return CONFD_ERR;
  }
  conflicts.apply();
  return CONFD_OK;
}

// /group{group}/member{sec-name}/sec-model{model}
int member_create_sec_model(confd_trans_ctx* tctx, confd_hkeypath_t* kp) {
  const confd_value_t model = mib_sec_model(kp_value(kp, 0));
  const confd_value_t* member = kp_value(kp, 2);
  const confd_value_t* group = vacm_group_key(kp);
  Value owner;
  if (read_row_group(tctx, &model, member, owner) != CONFD_OK) return CONFD_ERR;
  if (owner->type == C_NOEXISTS &&
      maapi_exists(maapi_sock, tctx->thandle, VACM_GROUP_ROW, &model, member) == 0 &&
      create_row(tctx, &model, member) != CONFD_OK) {
    return CONFD_ERR;
  }
  ConflictChanges conflicts(tctx);
  if (take_row(tctx, &model, member, *owner, group, conflicts) != CONFD_OK) return CONFD_ERR;
  conflicts.apply();
  return CONFD_OK;
}

// /group{group}/member{sec-name}/sec-model{model}
int member_delete_sec_model(confd_trans_ctx* tctx, confd_hkeypath_t* kp) {
  const confd_value_t model = mib_sec_model(kp_value(kp, 0));
  return delete_row(tctx, &model, kp_value(kp, 2));
}

int delete_member_rows(confd_trans_ctx* tctx, const confd_value_t* group,
                       const confd_value_t* member, ConflictChanges& conflicts) {
  GroupRows rows;
  const int collected =
      member != nullptr ? collect_rows_of_member(tctx, member, rows) : collect_rows(tctx, rows);
  if (collected != CONFD_OK) return collected;
  for (const GroupRow& row : rows) {
    if (!confd_val_eq(row.group.get(), group)) continue;
    if (conflicts.withdraw(*row.model, *row.name, *group)) continue;
    if (delete_row(tctx, row.model.get(), row.name.get()) != CONFD_OK) return CONFD_ERR;
  }
  return CONFD_OK;
}

}  // namespace quillet
