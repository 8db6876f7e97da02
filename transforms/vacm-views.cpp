#include "transforms/vacm-views.h"

#include <confd_maapi.h>

#include <array>
#include <cstring>
#include <vector>

#include "core/daemon-sockets.h"
#include "model/snmp-tags.h"
#include "util/keypath.h"
#include "util/snmp-attribute-store.h"
#include "util/snmp-transform-utils.h"
#include "util/tag-table.h"

namespace quillet {
namespace {

constexpr char kModule[] = "snmp-vacm-transform";

#define VACM_VIEW_TABLE                                                       \
  "/SNMP_VIEW_BASED_ACM_MIB:SNMP-VIEW-BASED-ACM-MIB/vacmViewTreeFamilyTable/" \
  "vacmViewTreeFamilyEntry"
#define VACM_VIEW_ROW VACM_VIEW_TABLE "{%x %x}"

constexpr char kMask[] = VACM_VIEW_ROW "/vacmViewTreeFamilyMask";
constexpr char kType[] = VACM_VIEW_ROW "/vacmViewTreeFamilyType";
constexpr char kStorageType[] = VACM_VIEW_ROW "/vacmViewTreeFamilyStorageType";
constexpr int kNonVolatile = 3;

struct TypeCase {
  u_int32_t tag;
  int type;
};
constexpr TypeCase kTypeCases[] = {{tags::snmp::included, 1}, {tags::snmp::excluded, 2}};

int invalid_subtree_err(confd_trans_ctx* tctx, const confd_value_t* text) {
  std::array<char, 256> printed{};
  confd_pp_value(printed.data(), static_cast<int>(printed.size()), text);
  return snmp_refuse(tctx, "Invalid subtree: %s", printed.data());
}

int reply_not_found(confd_trans_ctx* tctx) {
  confd_data_reply_not_found(tctx);
  return CONFD_OK;
}

// The row of a subtree entry.
class ViewRow {
 public:
  // From the level of a keypath that holds the subtree's key; the view's is two levels out.
  ViewRow(const confd_hkeypath_t* kp, int level)
      : view_(kp_value(kp, level + 2)), text_(kp_value(kp, level)) {
    valid_ = get_mib_oids(*text_, oid_, mask_) == 0;
  }

  bool valid() const { return valid_; }
  int refuse(confd_trans_ctx* tctx) const { return invalid_subtree_err(tctx, text_); }
  confd_value_t* mask() { return mask_.get(); }

  int create(confd_trans_ctx* tctx) {
    return checked(tctx, maapi_create(maapi_sock, tctx->thandle, VACM_VIEW_ROW, view_, oid_.get()));
  }
  int remove(confd_trans_ctx* tctx) {
    return checked(tctx, maapi_delete(maapi_sock, tctx->thandle, VACM_VIEW_ROW, view_, oid_.get()));
  }
  int read(confd_trans_ctx* tctx, const char* column, Value& out) {
    return maapi_get_elem(maapi_sock, tctx->thandle, out.out(), column, view_, oid_.get());
  }
  int write(confd_trans_ctx* tctx, const char* column, confd_value_t* v) {
    return checked(tctx, maapi_set_elem(maapi_sock, tctx->thandle, v, column, view_, oid_.get()));
  }

 private:
  static int checked(confd_trans_ctx* tctx, int result) {
    return snmp_write_result(tctx, result, kModule, __LINE__);
  }

  const confd_value_t* view_;
  const confd_value_t* text_;
  Value oid_, mask_;
  bool valid_;
};

// Calls `each(keys)` for every row of the view until it answers false.
template <typename Each>
void walk_view(const confd_trans_ctx* tctx, const confd_value_t* view, const Each& each) {
  MaapiCursor rows;
  snmp_assert_ok(rows.init(maapi_sock, tctx->thandle, VACM_VIEW_TABLE), kModule, __LINE__);
  for (;;) {
    snmp_assert_ok(rows.next(), kModule, __LINE__);
    if (rows.at_end()) return;
    if (confd_val_eq(rows.key(0), view) && !each(rows.key(0))) return;
  }
}

bool view_exists(const confd_trans_ctx* tctx, const confd_value_t* view) {
  bool found = false;
  walk_view(tctx, view, [&](const confd_value_t* /*keys*/) {
    found = true;
    return false;
  });
  return found;
}

int delete_view(confd_trans_ctx* tctx, const confd_value_t* view) {
  std::vector<Value> subtrees;
  walk_view(tctx, view, [&](const confd_value_t* keys) {
    subtrees.push_back(Value::copy_of(keys[1]));
    return true;
  });
  for (const Value& oid : subtrees) {
    const int result = maapi_delete(maapi_sock, tctx->thandle, VACM_VIEW_ROW, view, oid.get());
    if (snmp_write_result(tctx, result, kModule, __LINE__) != CONFD_OK) return CONFD_ERR;
  }
  return CONFD_OK;
}

// A list walk: the first row from the cursor on for which `key_of(keys)` makes a key gives the
// next entry. The key said last stays in the cursor's record.
template <typename KeyOf>
int next_entry(confd_trans_ctx* tctx, long next, const KeyOf& key_of) {
  auto* record = next == -1 ? snmp_cursor_open(maapi_sock, tctx, VACM_VIEW_TABLE)
                            : reinterpret_cast<snmp_cursor*>(next);
  const maapi_cursor& row = record->cursor;
  Value key;
  do {
    snmp_assert_ok(maapi_get_next(&record->cursor), kModule, __LINE__);
    if (row.n == 0) {
      snmp_cursor_close(tctx, record);
      return snmp_reply_list_end(tctx);
    }
    key = key_of(row.keys, record->saved[0]);
  } while (key->type == C_NOEXISTS);
  confd_free_value(&record->saved[0]);
  record->saved[0] = key.release();
  record->has_saved = 1;
  confd_data_reply_next_key(tctx, record->saved, 1, reinterpret_cast<long>(record));
  return CONFD_OK;
}

// The rows of a view stand together, so a name other than the last is a new one.
int next_view(confd_trans_ctx* tctx, long next) {
  return next_entry(tctx, next, [](const confd_value_t* keys, const confd_value_t& last) {
    return confd_val_eq(&keys[0], &last) ? Value() : Value::copy_of(keys[0]);
  });
}

int next_subtree(confd_trans_ctx* tctx, const confd_value_t* view, long next) {
  return next_entry(tctx, next, [&](const confd_value_t* keys, const confd_value_t& /*last*/) {
    return confd_val_eq(&keys[0], view) ? oid_to_subtree_text(keys[1]) : Value();
  });
}

}  // namespace

int vacm_view_get_next(confd_trans_ctx* tctx, confd_hkeypath_t* kp, long next) {
  const confd_value_t* tag = kp_value(kp, 0);
  switch (CONFD_GET_XMLTAG(tag)) {
    case tags::snmp::view:
      return next_view(tctx, next);
    case tags::snmp::subtree:
      return next_subtree(tctx, kp_value(kp, 1), next);
    default:
      return snmp_reply_list_end(tctx);
  }
}

// /view{name}/name and /view{name}/subtree{oid}/oid
int vacm_view_get_elem(confd_trans_ctx* tctx, confd_hkeypath_t* kp) {
  const confd_value_t* tag = kp_value(kp, 0);
  const confd_value_t* key = kp_value(kp, 1);
  switch (CONFD_GET_XMLTAG(tag)) {
    case tags::snmp::oid: {
      ViewRow row(kp, 1);
      if (!row.valid()) return row.refuse(tctx);
      // The subtree column is the row's key, and its text the one asked for; the mask, which has a
      // default, tells whether the row is there.
      Value mask;
      if (row.read(tctx, kMask, mask) != CONFD_OK) return snmp_reply_read_failure(tctx);
      break;
    }
    case tags::snmp::name:
      if (!view_exists(tctx, key)) return reply_not_found(tctx);
      break;
    default:
      return reply_not_found(tctx);
  }
  confd_data_reply_value(tctx, key);
  return CONFD_OK;
}

int vacm_view_set_elem(confd_trans_ctx* tctx, confd_hkeypath_t* kp, confd_value_t* /*newval*/) {
  const confd_value_t* tag = kp_value(kp, 0);
  switch (CONFD_GET_XMLTAG(tag)) {
    case tags::snmp::oid:
    case tags::snmp::name:
      return CONFD_OK;
    default:
      return snmp_refuse_unknown_tag(tctx, tag);
  }
}

// /view{name}, /view{name}/subtree{oid}, and the leaf of a type, which set_case has written
int vacm_view_create(confd_trans_ctx* tctx, confd_hkeypath_t* kp) {
  if (kp_is_tag(kp, 0)) return CONFD_OK;
  const confd_value_t* tag = kp_value(kp, 1);
  if (CONFD_GET_XMLTAG(tag) == tags::snmp::view) return CONFD_OK;
  if (CONFD_GET_XMLTAG(tag) != tags::snmp::subtree) return snmp_refuse_unknown_tag(tctx, tag);
  ViewRow row(kp, 0);
  if (!row.valid()) return row.refuse(tctx);
  confd_value_t storage = enum_value(kNonVolatile);
  int result = row.create(tctx);
  if (result == CONFD_OK) result = row.write(tctx, kMask, row.mask());
  if (result == CONFD_OK) result = row.write(tctx, kStorageType, &storage);
  return result;
}

// /view{name}, /view{name}/subtree{oid}; the leaf of a type goes with its row
int vacm_view_delete(confd_trans_ctx* tctx, confd_hkeypath_t* kp) {
  int result = CONFD_OK;
  if (!kp_is_tag(kp, 0)) {
    const confd_value_t* tag = kp_value(kp, 1);
    switch (CONFD_GET_XMLTAG(tag)) {
      case tags::snmp::subtree: {
        ViewRow row(kp, 0);
        result = row.valid() ? row.remove(tctx) : row.refuse(tctx);
        break;
      }
      case tags::snmp::view:
        result = delete_view(tctx, kp_value(kp, 0));
        break;
      default:
        result = snmp_refuse_unknown_tag(tctx, tag);
    }
  }
  return result == CONFD_OK ? snmp_attrs_delete_under(tctx, kp) : result;
}

// /view{name}/subtree{oid}, choice `type`
int vacm_view_get_case(confd_trans_ctx* tctx, confd_hkeypath_t* kp, confd_value_t* choice) {
  if (CONFD_GET_XMLTAG(choice) != tags::snmp::type) return snmp_refuse_unknown_tag(tctx, choice);
  ViewRow row(kp, 0);
  if (!row.valid()) return row.refuse(tctx);
  Value type;
  if (row.read(tctx, kType, type) != CONFD_OK) return snmp_reply_read_failure(tctx);
  const int number = CONFD_GET_ENUM_VALUE(type.get());
  for (const TypeCase& c : kTypeCases) {
    if (c.type != number) continue;
    const confd_value_t selected = xmltag_value(c.tag, tags::snmp::ns);
    confd_data_reply_value(tctx, &selected);
    return CONFD_OK;
  }
  return snmp_refuse(tctx, "Unsupported enumeration value stored in MIB - %d", number);
}

// /view{name}/subtree{oid}, choice `type`
int vacm_view_set_case(confd_trans_ctx* tctx, confd_hkeypath_t* kp, confd_value_t* choice,
                       confd_value_t* caseval) {
  if (CONFD_GET_XMLTAG(choice) != tags::snmp::type) return snmp_refuse_unknown_tag(tctx, choice);
  if (caseval == nullptr) {
    return snmp_refuse(tctx, "Missing mandatory choice: excluded/included");
  }
  const TypeCase* selected = find_by_tag(kTypeCases, CONFD_GET_XMLTAG(caseval));
  if (selected == nullptr) return snmp_refuse_unknown_tag(tctx, caseval);
  ViewRow row(kp, 0);
  if (!row.valid()) return row.refuse(tctx);
  confd_value_t type = enum_value(selected->type);
  return row.write(tctx, kType, &type);
}

// /view{name}/subtree{oid}/included and .../excluded
int vacm_view_exists_optional(confd_trans_ctx* tctx, confd_hkeypath_t* kp) {
  const TypeCase* leaf =
      kp_is_tag(kp, 0) ? find_by_tag(kTypeCases, CONFD_GET_XMLTAG(kp_value(kp, 0))) : nullptr;
  if (leaf == nullptr) return reply_not_found(tctx);
  ViewRow row(kp, 1);
  if (!row.valid()) return row.refuse(tctx);
  Value type;
  if (row.read(tctx, kType, type) != CONFD_OK) return snmp_reply_read_failure(tctx);
  if (CONFD_GET_ENUM_VALUE(type.get()) != leaf->type) return reply_not_found(tctx);
  confd_data_reply_found(tctx);
  return CONFD_OK;
}

confd_data_cbs* vacm_view_get_cbs() {
  static confd_data_cbs cbs;
  cbs = {};
  std::strcpy(cbs.callpoint, "vacm_view");
  cbs.get_elem = vacm_view_get_elem;
  cbs.get_next = vacm_view_get_next;
  cbs.set_elem = vacm_view_set_elem;
  cbs.create = vacm_view_create;
  cbs.remove = vacm_view_delete;
  cbs.get_case = vacm_view_get_case;
  cbs.set_case = vacm_view_set_case;
  cbs.exists_optional = vacm_view_exists_optional;
  cbs.get_attrs = snmp_get_attrs;
  cbs.set_attr = snmp_set_attr;
  return &cbs;
}

}  // namespace quillet
