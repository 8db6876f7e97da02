#include "transforms/vacm-access.h"

#include <confd_maapi.h>

#include <array>
#include <optional>
#include <vector>

#include "core/daemon-sockets.h"
#include "model/snmp-tags.h"
#include "transforms/security-model.h"
#include "transforms/vacm-group-rows.h"
#include "transforms/vacm-groups.h"
#include "util/tag-table.h"

namespace quillet {
namespace {

#define VACM_ACCESS_TABLE VACM_MIB "/vacmAccessTable/vacmAccessEntry"
#define VACM_ACCESS_ROW VACM_ACCESS_TABLE "{%x %x %x %x}/"

constexpr char kStorageType[] = VACM_ACCESS_ROW "vacmAccessStorageType";
constexpr char kSecurityModel[] = VACM_ACCESS_ROW "vacmAccessSecurityModel";
constexpr int kNonVolatile = 3;

// The two security leaves are keys whose reads depend on more than their column.
enum class Read { column, sec_model, sec_level };
enum class Write { to_column, sec_model, ignored };
enum class Remove { column, sec_model, refused };

struct Column {
  u_int32_t tag;
  const char* path;
  Read read;
  Write write;
  Remove remove;
};

constexpr Column kColumns[] = {
    {tags::snmp::context, VACM_ACCESS_ROW "vacmAccessContextPrefix", Read::column, Write::ignored,
     Remove::refused},
    {tags::snmp::sec_model, kSecurityModel, Read::sec_model, Write::sec_model, Remove::sec_model},
    {tags::snmp::sec_level, VACM_ACCESS_ROW "vacmAccessSecurityLevel", Read::sec_level,
     Write::to_column, Remove::column},
    {tags::snmp::context_match, VACM_ACCESS_ROW "vacmAccessContextMatch", Read::column,
     Write::to_column, Remove::refused},
    {tags::snmp::read_view, VACM_ACCESS_ROW "vacmAccessReadViewName", Read::column,
     Write::to_column, Remove::column},
    {tags::snmp::write_view, VACM_ACCESS_ROW "vacmAccessWriteViewName", Read::column,
     Write::to_column, Remove::column},
    {tags::snmp::notify_view, VACM_ACCESS_ROW "vacmAccessNotifyViewName", Read::column,
     Write::to_column, Remove::column},
};

// The indexes of a row, for the path formats.
struct AccessKeys {
  const confd_value_t* group;
  const confd_value_t* context;
  confd_value_t model;
  const confd_value_t* level;

  // From the level of a keypath that holds an entry's keys.
  AccessKeys(const confd_hkeypath_t* kp, int level_of_keys)
      : group(vacm_group_key(kp)),
        context(kp_value(kp, level_of_keys, 0)),
        model(mib_sec_model(kp_value(kp, level_of_keys, 1))),
        level(kp_value(kp, level_of_keys, 2)) {}
};

// The row of a leaf; nothing for a leaf that is not an access entry's.
std::optional<AccessKeys> keys_of_leaf(const confd_hkeypath_t* kp) {
  constexpr int kShortest = 6;
  if (kp->len < kShortest) return std::nullopt;
  return AccessKeys(kp, 1);
}

bool row_exists(const confd_trans_ctx* tctx, const AccessKeys& k) {
  return maapi_exists(maapi_sock, tctx->thandle, VACM_ACCESS_ROW, k.group, k.context, &k.model,
                      k.level) == 1;
}

// Calls `each(keys)` for the rows of the group, in table order; it answers whether to go on.
template <typename Each>
void walk_access_rows(const confd_trans_ctx* tctx, const confd_value_t* group, const Each& each) {
  MaapiCursor rows;
  snmp_assert_ok(rows.init(maapi_sock, tctx->thandle, VACM_ACCESS_TABLE), kVacmModule, __LINE__);
  for (;;) {
    snmp_assert_ok(rows.next(), kVacmModule, __LINE__);
    if (rows.at_end()) return;
    if (confd_val_eq(rows.key(0), group) && each(rows.key(0)) == Walk::stop) return;
  }
}

// Whether the group has a row with this security model, in whatever context and level.
bool model_has_row(const confd_trans_ctx* tctx, const AccessKeys& k) {
  if (row_exists(tctx, k)) return true;
  bool found = false;
  walk_access_rows(tctx, k.group, [&](const confd_value_t* keys) {
    found = confd_val_eq(&keys[2], &k.model) != 0;
    return found ? Walk::stop : Walk::go_on;
  });
  return found;
}

int reply_if(confd_trans_ctx* tctx, bool there, const confd_value_t& v) {
  if (there) {
    confd_data_reply_value(tctx, &v);
  } else {
    confd_data_reply_not_found(tctx);
  }
  return CONFD_OK;
}

int create_row(confd_trans_ctx* tctx, const AccessKeys& k) {
  const int result = maapi_create(maapi_sock, tctx->thandle, VACM_ACCESS_ROW, k.group, k.context,
                                  &k.model, k.level);
  return snmp_write_result(tctx, result, kVacmModule, __LINE__);
}

int delete_row(confd_trans_ctx* tctx, const confd_value_t* group, const confd_value_t* context,
               const confd_value_t* model, const confd_value_t* level) {
  const int result =
      maapi_delete(maapi_sock, tctx->thandle, VACM_ACCESS_ROW, group, context, model, level);
  return snmp_write_result(tctx, result, kVacmModule, __LINE__);
}

int write_column(const confd_trans_ctx* tctx, const AccessKeys& k, const char* path,
                 confd_value_t* v) {
  return maapi_set_elem(maapi_sock, tctx->thandle, v, path, k.group, k.context, &k.model, k.level);
}

}  // namespace

// /group{name}/access
int group_next_access(confd_trans_ctx* tctx, confd_hkeypath_t* kp, long next) {
  const confd_value_t* group = vacm_group_key(kp);
  auto* record = next == -1 ? snmp_cursor_open(maapi_sock, tctx, VACM_ACCESS_TABLE)
                            : reinterpret_cast<snmp_cursor*>(next);
  const maapi_cursor& row = record->cursor;
  do {
    snmp_assert_ok(maapi_get_next(&record->cursor), kVacmModule, __LINE__);
    if (row.n == 0) {
      snmp_cursor_close(tctx, record);
      return snmp_reply_list_end(tctx);
    }
  } while (!confd_val_eq(&row.keys[0], group));
  record->has_saved = 3;
  for (int i = 0; i < record->has_saved; ++i) {
    confd_free_value(&record->saved[i]);
    confd_value_dup_to(&row.keys[i + 1], &record->saved[i]);
  }
  tr_sec_model_to_yang(&record->saved[1]);
  confd_data_reply_next_key(tctx, record->saved, record->has_saved, reinterpret_cast<long>(record));
  return CONFD_OK;
}

// /group{name}/access{context sec-model sec-level}/LEAF
int access_get_elem(confd_trans_ctx* tctx, confd_hkeypath_t* kp) {
  const confd_value_t* tag = kp_value(kp, 0);
  const Column* column = find_by_tag(kColumns, CONFD_GET_XMLTAG(tag));
  const auto k = keys_of_leaf(kp);
  if (column == nullptr || !k) {
    confd_data_reply_not_found(tctx);
    return CONFD_OK;
  }
  switch (column->read) {
    case Read::sec_model: {
      confd_value_t model = k->model;
      tr_sec_model_to_yang(&model);
      return reply_if(tctx, row_exists(tctx, *k), model);
    }
    case Read::sec_level:
      return reply_if(tctx, model_has_row(tctx, *k), *k->level);
    case Read::column:
      break;
  }
  return snmp_reply_mib_elem_fmt(tctx, column->path, k->group, k->context, &k->model, k->level);
}

// /group{name}/access{context sec-model sec-level}/LEAF
int access_set_elem(confd_trans_ctx* tctx, confd_hkeypath_t* kp, confd_value_t* newval) {
  const confd_value_t* tag = kp_value(kp, 0);
  const Column* column = find_by_tag(kColumns, CONFD_GET_XMLTAG(tag));
  const auto k = keys_of_leaf(kp);
  if (column == nullptr || !k || column->write == Write::ignored) return CONFD_OK;
  if (column->write == Write::to_column) return write_column(tctx, *k, column->path, newval);
  if (!row_exists(tctx, *k) && create_row(tctx, *k) != CONFD_OK) return CONFD_ERR;
  confd_value_t model = mib_sec_model(newval);
  return write_column(tctx, *k, kSecurityModel, &model);
}

// /group{name}/access{context sec-model sec-level}/LEAF
int access_delete_elem(confd_trans_ctx* tctx, confd_hkeypath_t* kp) {
  const confd_value_t* tag = kp_value(kp, 0);
  const Column* column = find_by_tag(kColumns, CONFD_GET_XMLTAG(tag));
  const auto k = keys_of_leaf(kp);
  if (column == nullptr || !k) return snmp_refuse_delete(tctx, tag);
  switch (column->remove) {
    case Remove::sec_model:
      return snmp_refuse(tctx, "Delete invoked on list's key: sec-model");
    case Remove::refused:
      return snmp_refuse_delete(tctx, tag);
    case Remove::column:
      break;
  }
  return maapi_delete(maapi_sock, tctx->thandle, column->path, k->group, k->context, &k->model,
                      k->level);
}

// /group{name}/access{context sec-model sec-level}
int access_create(confd_trans_ctx* tctx, confd_hkeypath_t* kp) {
  const AccessKeys k(kp, 0);
  if (create_row(tctx, k) != CONFD_OK) return CONFD_ERR;
  confd_value_t storage = enum_value(kNonVolatile);
  return snmp_write_result(tctx, write_column(tctx, k, kStorageType, &storage), kVacmModule,
                           __LINE__);
}

// /group{name}/access{context sec-model sec-level}
int access_delete(confd_trans_ctx* tctx, confd_hkeypath_t* kp) {
  const AccessKeys k(kp, 0);
  return delete_row(tctx, k.group, k.context, &k.model, k.level);
}

int delete_access_rows(confd_trans_ctx* tctx, const confd_value_t* group) {
  struct Row {
    Value context, model, level;
  };
  std::vector<Row> rows;
  walk_access_rows(tctx, group, [&](const confd_value_t* keys) {
    rows.push_back({Value::copy_of(keys[1]), Value::copy_of(keys[2]), Value::copy_of(keys[3])});
    return Walk::go_on;
  });
  for (const Row& row : rows) {
    const int result = delete_row(tctx, group, row.context.get(), row.model.get(), row.level.get());
    if (result != CONFD_OK) return result;
  }
  return CONFD_OK;
}

}  // namespace quillet
