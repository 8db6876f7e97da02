// Reading groups and members; vacm-group-write.cpp has the writes.
#include "transforms/vacm-groups.h"

#include <memory>
#include <string>
#include <unordered_set>
#include <vector>

#include "transforms/security-model.h"
#include "transforms/vacm-group-rows.h"
#include "util/snmp-attribute-store.h"

namespace quillet {
namespace {

struct NameQueueDeleter {
  void operator()(queue_chararr* q) const { queue_chararr_destroy(q); }
};
using NameQueue = std::unique_ptr<queue_chararr, NameQueueDeleter>;

// Names, each once. The set finds repetitions without a pass over the queue for every row.
class Names {
 public:
  Names() : queue_(queue_chararr_new()) {}
  bool contains(const confd_value_t& name) const { return seen_.count(text(name)) > 0; }
  void add(const confd_value_t& name) {
    const std::string added = text(name);
    if (!seen_.insert(added).second) return;
    queue_chararr_in(queue_.get(), added.data(), static_cast<int>(added.size()));
  }
  queue_chararr_iter* sorted() const { return queue_chararr_iter_new(queue_.get()); }

 private:
  static std::string text(const confd_value_t& name) {
    return std::string(c_text(CONFD_GET_BUFPTR(&name), CONFD_GET_BUFSIZE(&name)));
  }

  NameQueue queue_;
  std::unordered_set<std::string> seen_;
};

// The next of the names that `collect(cursor, names)` finds at the first call.
template <typename Collect>
int next_sorted_name(confd_trans_ctx* tctx, long next, const Collect& collect) {
  auto* record = reinterpret_cast<snmp_cursor*>(next);
  if (next == -1) {
    record = snmp_cursor_open(maapi_sock, tctx, VACM_GROUP_TABLE);
    Names names;
    if (collect(record->cursor, names) != CONFD_OK) {
      snmp_cursor_close(tctx, record);
      return CONFD_ERR;
    }
    record->sorted_iter = names.sorted();
  }
  queue_chararr_iter* names = record->sorted_iter;
  if (names->index >= names->count) {
    snmp_cursor_close(tctx, record);
    return snmp_reply_list_end(tctx);
  }
  confd_value_t key = str_value(queue_chararr_iter_next(names));
  confd_data_reply_next_key(tctx, &key, 1, reinterpret_cast<long>(record));
  return CONFD_OK;
}

int matched_sec_name_iter(confd_hkeypath_t* /*kp*/, confd_value_t* v, void* state) {
  queue_int_in(static_cast<queue_int*>(state), CONFD_GET_INT32(v));
  return ITER_CONTINUE;
}

// "[COLUMN='NAME']", whatever the name holds.
std::string predicate(const char* column, const confd_value_t* name) {
  const auto text = c_text(CONFD_GET_BUFPTR(name), CONFD_GET_BUFSIZE(name));
  return std::string("[") + column + "=" + attr_xpath_literal(text) + "]";
}

// Answers a key leaf while its entry is there.
int reply_key_if(confd_trans_ctx* tctx, bool there, const confd_value_t* key) {
  if (there) {
    confd_data_reply_value(tctx, key);
  } else {
    confd_data_reply_not_found(tctx);
  }
  return CONFD_OK;
}

}  // namespace

int read_row_group(confd_trans_ctx* tctx, const confd_value_t* model, const confd_value_t* name,
                   Value& group) {
  const int result = maapi_get_elem(maapi_sock, tctx->thandle, group.out(),
                                    VACM_GROUP_ROW "/vacmGroupName", model, name);
  if (result == CONFD_OK || confd_errno == CONFD_ERR_NOEXISTS) return CONFD_OK;
  return snmp_write_result(tctx, result, kVacmModule, __LINE__);
}

int member_sec_models(const confd_trans_ctx* tctx, const confd_value_t* member,
                      const confd_value_t* group, queue_int* models) {
  std::string expression = VACM_GROUP_TABLE + predicate("vacmSecurityName", member);
  if (group != nullptr) expression += predicate("vacmGroupName", group);
  expression += "/vacmSecurityModel";
  return maapi_xpath_eval(maapi_sock, tctx->thandle, expression.c_str(), matched_sec_name_iter,
                          nullptr, models, nullptr);
}

int group_next_group(confd_trans_ctx* tctx, confd_hkeypath_t* /*kp*/, long next) {
  return next_sorted_name(tctx, next, [&](maapi_cursor& rows, Names& names) {
    return walk_group_rows(tctx, rows,
                           [&](const confd_value_t& /*model*/, const confd_value_t& /*name*/,
                               const confd_value_t& group) {
                             if (group.type != C_NOEXISTS) names.add(group);
                             return Walk::go_on;
                           });
  });
}

// /group{group}/member
int group_next_member(confd_trans_ctx* tctx, confd_hkeypath_t* kp, long next) {
  const confd_value_t* wanted = vacm_group_key(kp);
  return next_sorted_name(tctx, next, [&](maapi_cursor& rows, Names& names) {
    return walk_group_rows(
        tctx, rows,
        [&](const confd_value_t& /*model*/, const confd_value_t& name, const confd_value_t& group) {
          if (confd_val_eq(&group, wanted)) names.add(name);
          return Walk::go_on;
        });
  });
}

// /group{group}/member{sec-name}/sec-model
int group_next_sec_model(confd_trans_ctx* tctx, confd_hkeypath_t* kp, long next) {
  const IntQueue models(queue_int_new());
  const int result = member_sec_models(tctx, kp_value(kp, 1), vacm_group_key(kp), models.get());
  const long index = next + 1;
  if (index < 0 || index >= models->count) {
    snmp_reply_list_end(tctx);
    return result;
  }
  confd_value_t model = int32_value(queue_int_get_item(models.get(), static_cast<int>(index)));
  tr_sec_model_to_yang(&model);
  confd_data_reply_next_key(tctx, &model, 1, index);
  return result;
}

// /group{group}/name. Most groups have a row near the table's start, where the walk stops.
int group_get_name(confd_trans_ctx* tctx, confd_hkeypath_t* kp) {
  const confd_value_t* wanted = vacm_group_key(kp);
  bool there = false;
  const int result =
      walk_group_table(tctx, [&](const confd_value_t& /*model*/, const confd_value_t& /*name*/,
                                 const confd_value_t& group) {
        there = confd_val_eq(&group, wanted) != 0;
        return there ? Walk::stop : Walk::go_on;
      });
  return result == CONFD_OK ? reply_key_if(tctx, there, wanted) : result;
}

// /group{group}/member{sec-name}/sec-name
int member_get_sec_name(confd_trans_ctx* tctx, confd_hkeypath_t* kp) {
  const confd_value_t* member = kp_value(kp, 1);
  const IntQueue models(queue_int_new());
  const int result = member_sec_models(tctx, member, vacm_group_key(kp), models.get());
  if (result != CONFD_OK) return snmp_write_result(tctx, result, kVacmModule, __LINE__);
  return reply_key_if(tctx, models->count > 0, member);
}

// /group{group}/member{sec-name}/sec-model
int member_get_sec_models(confd_trans_ctx* tctx, confd_hkeypath_t* kp) {
  const IntQueue models(queue_int_new());
  const int result = member_sec_models(tctx, kp_value(kp, 1), vacm_group_key(kp), models.get());
  if (result != CONFD_OK) return snmp_write_result(tctx, result, kVacmModule, __LINE__);
  std::vector<confd_value_t> labels;
  while (models->count > 0) {
    labels.push_back(int32_value(queue_int_out(models.get())));
    tr_sec_model_to_yang(&labels.back());
  }
  confd_value_t list;
  CONFD_SET_LIST(&list, labels.data(), labels.size());
  confd_data_reply_value(tctx, &list);
  return CONFD_OK;
}

// /group{group}/member{sec-name}/sec-model{model}
int member_sec_model_exists(confd_trans_ctx* tctx, confd_hkeypath_t* kp) {
  const confd_value_t model = mib_sec_model(kp_value(kp, 0));
  if (maapi_exists(maapi_sock, tctx->thandle, VACM_GROUP_ROW, &model, kp_value(kp, 2)) == 1) {
    confd_data_reply_found(tctx);
  } else {
    confd_data_reply_not_found(tctx);
  }
  return CONFD_OK;
}

}  // namespace quillet
